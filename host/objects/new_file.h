#ifndef HOST_OBJECTS_NEW_FILE_H_
#define HOST_OBJECTS_NEW_FILE_H_

#include <cstdint>
#include <filesystem>
#include <span>

namespace host {

// A file that gets its name when it is whole. Until then it has another one, by
// which it is removed when it is not kept: nobody sees half a file under the
// name that it was meant for.
class NewFile {
 public:
  // In this folder, which is there. Throws Failure, as the others do,
  // when the file cannot be made or written.
  explicit NewFile(const std::filesystem::path& folder);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void Write(std::span<const std::uint8_t> bytes);
  // Gives it this name in its folder, unless there is a file of the name
  // already: false then, and another name may be tried. Nothing may be written
  // behind it.
  bool KeepAs(const std::filesystem::path& name);
  // The same in place of a file that may be there.
  void ReplaceAs(const std::filesystem::path& name);

 private:
  // What the last call of the system says went wrong, as a sentence.
  [[noreturn]] void Fail() const;
  void Close();

  std::filesystem::path folder_;
  std::filesystem::path unfinished_;  // its present name; empty when kept
  std::intptr_t file_ = -1;           // the platform's handle
  bool is_open_ = true;
};

}  // namespace host

#endif  // HOST_OBJECTS_NEW_FILE_H_
