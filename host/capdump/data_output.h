#ifndef HOST_CAPDUMP_DATA_OUTPUT_H_
#define HOST_CAPDUMP_DATA_OUTPUT_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "host/capdump/options.h"
#include "host/capdump/report.h"
#include "host/dialogue/dialogue.h"
#include "host/objects/element_values.h"
#include "host/streams/connection.h"

namespace host {

// Shows what messages carry, element by element, as a text, as DICOM JSON or as
// chosen values; and saves it as files. Needs no module.
class DataOutput {
 public:
  // The options must outlive it. Throws UsageError for an element that is none.
  DataOutput(const Options& options, Sink sink);

  // Whether the options ask for it, in place of the lists.
  static bool IsWanted(const Options& options);

  // The connections and messages that the options choose. Throws Failure when
  // bytes cannot be read back.
  void Show(const std::vector<Connection>& connections) const;
  // Saves the data sets of the same messages, and says in a line what was
  // saved. Throws Failure when a file cannot be written.
  void Export(const std::vector<Connection>& connections) const;

 private:
  // A message that the options choose.
  struct Chosen {
    std::size_t connection;          // both count from 0
    std::optional<std::size_t> row;  // of the module's list, if it has one
    std::size_t index;               // in the dialogue
    const Dialogue& dialogue;
    const DialogueMessage& message;
    const FrameNames& names;
  };

  // In the order of the capture. Linear.
  void ForEachChosen(const std::vector<Connection>& connections,
                     const std::function<void(const Chosen&)>& take) const;
  void ShowMessage(const Chosen& chosen) const;
  void ShowValues(const Chosen& chosen) const;
  void ShowJson(const Chosen& chosen) const;

  const Options& options_;
  Sink sink_;
  std::vector<ElementPath> elements_;
};

}  // namespace host

#endif  // HOST_CAPDUMP_DATA_OUTPUT_H_
