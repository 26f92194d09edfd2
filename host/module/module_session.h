#ifndef HOST_MODULE_MODULE_SESSION_H_
#define HOST_MODULE_MODULE_SESSION_H_

#include <cstdint>
#include <string>

#include "host/module/decode_view.h"
#include "host/module/host_window.h"
#include "host/module/module.h"
#include "host/module/packet_list.h"
#include "host/streams/connection.h"

namespace host {

// One connection shown to the module: its host window, its list and its
// displays. When a failure leaves a display, the module is loaded again and the
// connection read anew, so that the next row can be shown.
class ModuleSession {
 public:
  // All three must outlive the session. Throws Failure.
  ModuleSession(Module& module, DecodeView& decodes,
                const Connection& connection);

  DisplayState& State() { return window_.State(); }
  PacketList& List() { return list_; }

  // `index` counts from 0.
  DecodedRow Display(ListKind view, std::uint32_t index);
  // Answers why the lines stopped early, or nothing.
  std::string Save(ListKind view, std::uint32_t index, HFILE file);

 private:
  void RecoverFrom(const std::string& failure);

  Module& module_;
  DecodeView& decodes_;
  HostWindow window_;
  PacketList list_;
};

}  // namespace host

#endif  // HOST_MODULE_MODULE_SESSION_H_
