#ifndef HOST_DATASET_PERSON_NAME_H_
#define HOST_DATASET_PERSON_NAME_H_

#include <array>
#include <string>
#include <string_view>

namespace host {

// A person's name in up to three ways of writing: alphabetic, ideographic,
// phonetic. Each holds its components between "^".
struct PersonName {
  static constexpr std::array<std::string_view, 3> kGroupNames{
      "alphabetic", "ideographic", "phonetic"};

  std::array<std::string, 3> groups;
  bool has_more = false;  // behind a third "="
};

// `value` is decoded text.
PersonName PersonNameOf(std::string_view value);

// "family Yamada, given Tarou; ideographic: family ..., given ...". Empty for a
// name without components.
std::string ComponentsText(const PersonName& name);

}  // namespace host

#endif  // HOST_DATASET_PERSON_NAME_H_
