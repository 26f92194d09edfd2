#include "host/dataset/person_name.h"

#include <cstddef>

namespace host {
namespace {

constexpr std::string_view kComponentNames[] = {"family", "given", "middle",
                                                "prefix", "suffix"};

// The part of `text` before the first `end`; `text` loses both.
std::string_view TakeUpTo(char end, std::string_view& text) {
  const std::size_t at = text.find(end);
  const std::string_view part = text.substr(0, at);
  text.remove_prefix(at == text.npos ? text.size() : at + 1);
  return part;
}

std::string GroupText(std::string_view group) {
  std::string text;
  for (const std::string_view name : kComponentNames) {
    const std::string_view component = TakeUpTo('^', group);
    if (component.empty()) continue;
    if (!text.empty()) text += ", ";
    text.append(name).append(" ").append(component);
  }
  return text;
}

}  // namespace

PersonName PersonNameOf(std::string_view value) {
  PersonName name;
  for (std::string& group : name.groups) group = TakeUpTo('=', value);
  name.has_more = !value.empty();
  return name;
}

std::string ComponentsText(const PersonName& name) {
  std::string text;
  for (std::size_t i = 0; i < name.groups.size(); ++i) {
    const std::string group = GroupText(name.groups[i]);
    if (group.empty()) continue;
    if (!text.empty()) text += "; ";
    if (i > 0) text.append(PersonName::kGroupNames[i]).append(": ");
    text += group;
  }
  const bool is_plain = name.groups[0].find('^') == std::string::npos &&
                        name.groups[1].empty() && name.groups[2].empty();
  return is_plain ? std::string() : text;
}

}  // namespace host
