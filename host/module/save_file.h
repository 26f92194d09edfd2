#ifndef HOST_MODULE_SAVE_FILE_H_
#define HOST_MODULE_SAVE_FILE_H_

#include <cstdint>
#include <filesystem>
#include <string>

namespace host {

// A new file that the module saves decodes into, one behind the other. One that
// is there already is overwritten. Others may read it meanwhile.
class SaveFile {
 public:
  // Throws Failure; `advice` is the end of its sentence, which says what to do:
  // "name another file with --save".
  SaveFile(const std::filesystem::path& path, const std::string& advice);
  ~SaveFile();
  SaveFile(const SaveFile&) = delete;
  SaveFile& operator=(const SaveFile&) = delete;

  // What the module writes to: an HFILE, as _lcreat answers one, which takes no
  // Unicode names.
  std::int32_t Handle() const { return file_; }

 private:
  std::int32_t file_;
};

}  // namespace host

#endif  // HOST_MODULE_SAVE_FILE_H_
