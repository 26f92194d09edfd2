#ifndef HOST_CAPVIEW_COMMAND_TABLE_H_
#define HOST_CAPVIEW_COMMAND_TABLE_H_

#include <windows.h>

#include <functional>
#include <vector>

namespace host {

// One thing that the person can tell the window to do. Its text and its keys
// stand in capview.rc.
struct Command {
  int id;  // IDM_... of a menu's item and of a key, IDC_... of a button
  std::function<void()> run;
  // Whether it makes sense now; absent: always. The menu shows it grey
  // otherwise, but a key may ask for it all the same.
  std::function<bool()> is_possible = nullptr;
  // Whether the menu shows a mark at it; absent: never.
  std::function<bool()> is_on = nullptr;
};

// All commands of the window, each one row.
class CommandTable {
 public:
  explicit CommandTable(std::vector<Command> commands);

  // Nothing happens when there is no such command. Throws what the command
  // throws.
  void Run(int id) const;
  // Greys and marks the items of the menu and of those below it as the commands
  // are now.
  void ShowStates(HMENU menu) const;

 private:
  std::vector<Command> commands_;
};

}  // namespace host

#endif  // HOST_CAPVIEW_COMMAND_TABLE_H_
