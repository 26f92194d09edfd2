#ifndef HOST_FINDINGS_TEXT_FAULTS_H_
#define HOST_FINDINGS_TEXT_FAULTS_H_

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "host/dataset/data_set_reader.h"
#include "host/findings/finding_list.h"
#include "host/findings/scene.h"

namespace host {

// Looks at the elements of one data set as somebody reads them, for texts that
// are not in the character set that is declared for them. Keeps names of
// elements only, never their values.
class TextFaults {
 public:
  // At the reader's event.
  void Look(DataSetReader& reader);
  // Adds a finding for each kind of fault that was seen in the data set, with
  // the first element that has it.
  void Report(const SceneConnection& at, const DialogueMessage& message,
              FindingList& list) const;

 private:
  struct Seen {
    std::string element;  // of the first, "0010,0010 Patient's Name"
    std::string what;     // is wrong with it
    std::size_t count = 0;
    bool any_declared = false;  // where the first is: any character set
  };

  void Note(const DataSetReader& reader, std::size_t kind,
            std::string_view what);

  // By TextFault; in the place of kNone wrong declarations.
  std::array<Seen, 4> seen_;
};

}  // namespace host

#endif  // HOST_FINDINGS_TEXT_FAULTS_H_
