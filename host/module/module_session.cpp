#include "host/module/module_session.h"

namespace host {

ModuleSession::ModuleSession(Module& module, DecodeView& decodes,
                             const Connection& connection)
    : module_(module),
      decodes_(decodes),
      window_(*connection.feed),
      list_(module, window_, connection.live) {}

DecodedRow ModuleSession::Display(ListKind view, std::uint32_t index) {
  DecodedRow row = decodes_.Display(module_, window_, view,
                                    static_cast<std::int32_t>(index));
  RecoverFrom(row.stopped);
  return row;
}

std::string ModuleSession::Save(ListKind view, std::uint32_t index,
                                HFILE file) {
  const std::string stopped = decodes_.Save(
      module_, window_, view, static_cast<std::int32_t>(index), file);
  RecoverFrom(stopped);
  return stopped;
}

// After a failure the module takes no further display.
void ModuleSession::RecoverFrom(const std::string& failure) {
  if (failure.empty()) return;
  module_.Reload();
  list_.ReadAgain();
}

}  // namespace host
