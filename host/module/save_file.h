#ifndef HOST_MODULE_SAVE_FILE_H_
#define HOST_MODULE_SAVE_FILE_H_

#include <windows.h>

#include <string>

namespace host {

// A new file that the module saves decodes into.
class SaveFile {
 public:
  // Throws Failure; its text ends in `hint`, which says what to do.
  SaveFile(const std::wstring& name, const std::string& hint);
  ~SaveFile() { CloseHandle(file_); }
  SaveFile(const SaveFile&) = delete;
  SaveFile& operator=(const SaveFile&) = delete;

  // The same as _lcreat answers, which takes no Unicode names.
  HFILE Handle() const {
    return static_cast<HFILE>(reinterpret_cast<ULONG_PTR>(file_));
  }

 private:
  HANDLE file_;
};

}  // namespace host

#endif  // HOST_MODULE_SAVE_FILE_H_
