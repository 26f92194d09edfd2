#ifndef HOST_OBJECTS_DICOM_JSON_H_
#define HOST_OBJECTS_DICOM_JSON_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "host/dataset/data_set_reader.h"
#include "host/dialogue/dialogue.h"
#include "host/objects/data_set_dump.h"

namespace host {

// A message's command set and data set in the DICOM JSON model, DICOM PS3.18
// annex F, as members of one object. Values of bytes up to `most_inline` stand
// in it, encapsulated ones with the headers of their fragments; of longer ones,
// and of texts that are too long for a line, it names their place:
// "BulkDataURI": "data_set?offset=1024&length=524288", counted in the data set
// as it is read. A UN of undefined length is the SQ that it is, one of defined
// length bytes. Group lengths are left out. Handed over piece by
// piece, in constant memory.
// Where `frames` has a text, members of a JSON object, it stands in each
// element behind its VR.
class DicomJson {
 public:
  DicomJson(LineSink sink, std::uint64_t most_inline, FrameText frames = {})
      : sink_(std::move(sink)),
        most_inline_(most_inline),
        frames_(std::move(frames)) {}

  // "transfer_syntax":...,"command":{...},"data_set":{...},"problems":[...]
  // without braces around; the parts that are not there are left out. Throws
  // Failure when the message's bytes cannot be read back.
  void Write(const Dialogue& dialogue, const DialogueMessage& message);

 private:
  void WriteElements(DataSetReader& reader, ElementFrames places);
  // The event's name and what stands before its value; `,` where it is due.
  void BeginMember(const DataSetEvent& event);
  void WriteElement(DataSetReader& reader);
  // Passes over what is in a sequence.
  void PassSequence(DataSetReader& reader);
  // Bytes inline, in numbers of `width` bytes, or their place; and the end of
  // their element.
  void WriteBytes(std::uint64_t offset, std::uint64_t length,
                  std::size_t width = 1);
  // The same of bytes that lie behind the reader.
  void WriteReadBytes(std::uint64_t offset, std::uint64_t length);
  void WriteInline(std::uint64_t offset, std::uint64_t length,
                   std::size_t width);
  void WritePlace(std::uint64_t offset, std::uint64_t length);
  void NoteProblem(const DataSetReader& reader);

  const LineSink sink_;
  const std::uint64_t most_inline_;
  const FrameText frames_;
  std::string frame_text_;        // of the element that begins
  ByteSource* source_ = nullptr;  // of what is being written
  // Its bytes can be read again at no cost, which a deflated one's cannot.
  bool may_go_back_ = true;
  std::string problems_;         // the sentences, as members of an array
  bool needs_comma_ = false;     // before the next member or item
  std::uint64_t fragments_ = 0;  // where those being passed begin
};

}  // namespace host

#endif  // HOST_OBJECTS_DICOM_JSON_H_
