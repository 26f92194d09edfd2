#ifndef HOST_MODULE_MESSAGE_BOX_ANSWERS_H_
#define HOST_MODULE_MESSAGE_BOX_ANSWERS_H_

#include <windows.h>

#include <string>
#include <vector>

namespace host {

struct MessageBoxText {
  std::string caption;  // code page 1252, as all texts of the module
  std::string text;
};

// While one exists and a Scope is open, every message box of the calling thread
// is answered with OK before it is shown, and its texts are kept: the module
// reports failures in boxes, and nobody may be there to close them. Boxes
// outside a Scope are the program's own. At most one at a time.
class MessageBoxAnswers {
 public:
  MessageBoxAnswers();
  ~MessageBoxAnswers();
  MessageBoxAnswers(const MessageBoxAnswers&) = delete;
  MessageBoxAnswers& operator=(const MessageBoxAnswers&) = delete;

  class Scope {
   public:
    explicit Scope(MessageBoxAnswers& answers) : answers_(answers) {
      ++answers_.scopes_;
    }
    ~Scope() { --answers_.scopes_; }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    MessageBoxAnswers& answers_;
  };

  // The boxes answered since the last call, oldest first.
  std::vector<MessageBoxText> Take();

 private:
  static LRESULT CALLBACK OnWindowEvent(int code, WPARAM window, LPARAM data);
  static LRESULT CALLBACK OnMessageDone(int code, WPARAM sender, LPARAM data);
  void Answer(HWND box);

  static MessageBoxAnswers* current_;
  int scopes_ = 0;
  HHOOK creation_hook_ = nullptr;
  // Sees every message of the thread, so it is there only from the creation of
  // a dialog to its initialisation.
  HHOOK message_hook_ = nullptr;
  std::vector<MessageBoxText> boxes_;
};

}  // namespace host

#endif  // HOST_MODULE_MESSAGE_BOX_ANSWERS_H_
