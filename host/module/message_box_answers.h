#ifndef HOST_MODULE_MESSAGE_BOX_ANSWERS_H_
#define HOST_MODULE_MESSAGE_BOX_ANSWERS_H_

#include <memory>
#include <string>
#include <vector>

namespace host {

struct MessageBoxText {
  std::string caption;  // code page 1252, as all texts of the module
  std::string text;
};

// Answers the module's message boxes: it reports failures in boxes, and nobody
// may be there to close them. While a Scope is open, every message box of the
// calling thread is answered with OK before it is seen, and its texts are kept;
// boxes outside a Scope are the program's own. At most one object at a time.
class MessageBoxAnswers {
 public:
  MessageBoxAnswers();
  ~MessageBoxAnswers();
  MessageBoxAnswers(const MessageBoxAnswers&) = delete;
  MessageBoxAnswers& operator=(const MessageBoxAnswers&) = delete;

  // The time in which boxes are answered: around each call of the module.
  // Scopes may nest.
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
  struct Hooks;  // how the system tells of a box, for as long as we exist

  int scopes_ = 0;  // open ones
  std::vector<MessageBoxText> boxes_;
  std::unique_ptr<Hooks> hooks_;
};

}  // namespace host

#endif  // HOST_MODULE_MESSAGE_BOX_ANSWERS_H_
