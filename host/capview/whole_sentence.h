#ifndef HOST_CAPVIEW_WHOLE_SENTENCE_H_
#define HOST_CAPVIEW_WHOLE_SENTENCE_H_

#include <string>

namespace host {

// Failures are told as capdump prints them, behind its name: a sentence that
// stands alone wants a capital and a full stop.
inline std::string WholeSentence(std::string text) {
  if (text.empty()) return text;
  if (text[0] >= 'a' && text[0] <= 'z') text[0] ^= 'a' ^ 'A';
  if (text.back() != '.') text += '.';
  return text;
}

}  // namespace host

#endif  // HOST_CAPVIEW_WHOLE_SENTENCE_H_
