#include "host/module/save_file.h"

#include "host/text/failure.h"
#include "host/text/wide_text.h"

namespace host {

SaveFile::SaveFile(const std::wstring& name, const std::string& hint)
    : file_(CreateFileW(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                        CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {
  if (file_ != INVALID_HANDLE_VALUE) return;
  throw Failure(Utf8FromWide(name) + " cannot be written (" +
                SystemErrorText(GetLastError()) + "); " + hint);
}

}  // namespace host
