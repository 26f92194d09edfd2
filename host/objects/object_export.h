#ifndef HOST_OBJECTS_OBJECT_EXPORT_H_
#define HOST_OBJECTS_OBJECT_EXPORT_H_

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/dialogue/dialogue.h"
#include "host/objects/manifest.h"
#include "host/objects/object_name.h"

namespace host {

// Which data sets are exported.
struct ExportChoice {
  bool objects = true;       // of C-STORE requests
  bool identifiers = false;  // of all other messages
};

// Which message of the capture; all count from 0. Null names are numbers.
struct MessagePlace {
  std::size_t connection = 0;
  std::optional<std::size_t> row;     // in the module's list, if it has one
  std::size_t index = 0;              // in the dialogue
  const FrameNames* names = nullptr;  // of the capture
};

// Saves data sets as DICOM files, each as it was sent, one file a data set, and
// tells in a manifest what is in them. The files are for diagnosis, not for
// clinical use.
class ObjectExport {
 public:
  // Makes the folder if it is not there. Throws Failure when it cannot.
  ObjectExport(const std::filesystem::path& folder, ExportChoice choice);
  ~ObjectExport();

  // Saves the message's data set if it is one that was chosen. Throws Failure
  // when a file cannot be written or bytes cannot be read back; the files
  // before it stay, and no half file does.
  void Add(const MessagePlace& place, const Dialogue& dialogue);
  // The same in pieces: Begin() once, then Continue() until it answers true.
  // A data set that is not continued to its end leaves no file. The dialogue
  // must still be there.
  void Begin(const MessagePlace& place, const Dialogue& dialogue);
  bool Continue(const std::function<bool()>& time_is_up);
  // Writes manifest.csv and manifest.json. Throws Failure.
  void WriteManifest();

  // "12 objects were saved to DIR, 1 of them incomplete; manifest.csv tells
  // about each. They are for diagnosis, not for clinical use."
  std::string Summary() const;
  const std::vector<ExportedObject>& Objects() const { return objects_; }

 private:
  bool IsExported(const DialogueMessage& message) const;
  // A data set that is being written.
  struct Unfinished;

  // The file is whole: gives it its name.
  void Finish();
  void NoteSameContent(ExportedObject& object);
  void WriteText(std::string_view text, std::string_view extension);

  const std::filesystem::path folder_;
  const ExportChoice choice_;
  FileNames names_;
  std::vector<ExportedObject> objects_;
  std::map<std::string, std::size_t> by_content_;  // UID and hash: its object
  std::vector<std::uint8_t> buffer_;
  std::unique_ptr<Unfinished> unfinished_;
};

}  // namespace host

#endif  // HOST_OBJECTS_OBJECT_EXPORT_H_
