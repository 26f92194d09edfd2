#include <windows.h>

// The first object of the DLL. Its statically linked exception handling leaves
// its unwind tables to libgcc_s_dw2-1.dll when the host has loaded that one, as
// every host does that plain mingw g++ linked, and then no handler in this DLL
// is found: each throw would end the process. So the tables are registered with
// our own copy as well. This file comes first on the link line, so that the
// label below marks the beginning of the DLL's .eh_frame section.
asm(".section .eh_frame,\"dr\"\n"
    "\t.balign 4\n"
    "_own_eh_frame_begin:\n"
    "\t.text\n");

extern "C" {
extern char own_eh_frame_begin[];
void __register_frame_info(const void* begin, void* object);
void* __deregister_frame_info(const void* begin);
}

namespace {

class OwnUnwindTables {
 public:
  OwnUnwindTables()
      : registered_(::GetModuleHandleA("libgcc_s_dw2-1.dll") != nullptr) {
    if (registered_) __register_frame_info(own_eh_frame_begin, object_);
  }
  OwnUnwindTables(const OwnUnwindTables&) = delete;
  OwnUnwindTables& operator=(const OwnUnwindTables&) = delete;
  ~OwnUnwindTables() {
    if (registered_) __deregister_frame_info(own_eh_frame_begin);
  }

 private:
  bool registered_;
  void* object_[16];  // libgcc's own record of the tables; it needs six words
};

// Before every other static object, since their construction may throw.
__attribute__((init_priority(101))) OwnUnwindTables own_unwind_tables;

}  // namespace
