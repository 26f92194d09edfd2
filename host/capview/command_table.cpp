#include "host/capview/command_table.h"

#include <algorithm>
#include <utility>

namespace host {

CommandTable::CommandTable(std::vector<Command> commands)
    : commands_(std::move(commands)) {}

void CommandTable::Run(int id) const {
  const auto command = std::ranges::find(commands_, id, &Command::id);
  if (command != commands_.end()) command->run();
}

void CommandTable::ShowStates(HMENU menu) const {
  for (const Command& command : commands_) {
    const auto id = static_cast<UINT>(command.id);
    if (command.is_possible) {
      EnableMenuItem(menu, id, command.is_possible() ? MF_ENABLED : MF_GRAYED);
    }
    if (command.is_on) {
      CheckMenuItem(menu, id, command.is_on() ? MF_CHECKED : MF_UNCHECKED);
    }
  }
}

}  // namespace host
