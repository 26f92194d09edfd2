#include <utility>

#include "host/module/message_box_answers.h"
#include "port/message_box.h"

namespace host {

// The port answers every box by itself.
struct MessageBoxAnswers::Hooks {
  explicit Hooks(MessageBoxAnswers& answers) {
    port::OnMessageBox([&answers](HWND, const char* text, const char* caption) {
      if (answers.scopes_ > 0) answers.boxes_.push_back({caption, text});
    });
  }
  ~Hooks() { port::OnMessageBox(nullptr); }
  Hooks(const Hooks&) = delete;
  Hooks& operator=(const Hooks&) = delete;
};

MessageBoxAnswers::MessageBoxAnswers()
    : hooks_(std::make_unique<Hooks>(*this)) {}

MessageBoxAnswers::~MessageBoxAnswers() = default;

std::vector<MessageBoxText> MessageBoxAnswers::Take() {
  return std::exchange(boxes_, {});
}

}  // namespace host
