#include "host/objects/object_name.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace host {
namespace {

// A UID has 64 characters; a folder's name and an extension have to fit beside
// them into 255.
constexpr std::size_t kMostCharacters = 100;

constexpr std::array<std::string_view, 4> kDevices{"CON", "PRN", "AUX", "NUL"};
constexpr std::array<std::string_view, 2> kNumberedDevices{"COM", "LPT"};

bool IsKept(char character) {
  return (character >= '0' && character <= '9') ||
         (character >= 'A' && character <= 'Z') ||
         (character >= 'a' && character <= 'z') || character == '.' ||
         character == '-' || character == '_';
}

char Capital(char character) {
  return character >= 'a' && character <= 'z'
             ? static_cast<char>(character - 'a' + 'A')
             : character;
}

// With or without an extension.
bool IsDevice(std::string_view name) {
  std::string stem(name.substr(0, name.find('.')));
  std::ranges::transform(stem, stem.begin(), Capital);
  if (std::ranges::find(kDevices, stem) != kDevices.end()) return true;
  return stem.size() == 4 && stem[3] >= '0' && stem[3] <= '9' &&
         std::ranges::find(kNumberedDevices,
                           std::string_view(stem).substr(0, 3)) !=
             kNumberedDevices.end();
}

}  // namespace

std::string SafeFileName(std::string_view text) {
  std::string name(text.substr(0, kMostCharacters));
  std::ranges::replace_if(
      name, [](char character) { return !IsKept(character); }, '_');
  // No hidden file, and no end that Windows takes away.
  if (name.empty() || name.front() == '.') name.insert(0, 1, '_');
  if (name.back() == '.') name.back() = '_';
  if (IsDevice(name)) name.insert(0, 1, '_');
  return name;
}

std::string FileNames::Keep(NewFile& file, const std::string& name,
                            std::string_view extension) {
  // Names that differ in their case alone are one on some systems.
  std::string key = name + std::string(extension);
  std::ranges::transform(key, key.begin(), Capital);
  for (std::uint32_t& number = next_.try_emplace(key, 1).first->second;;) {
    std::string whole = name;
    if (number > 1) whole += "-" + std::to_string(number);
    whole += extension;
    ++number;
    if (file.KeepAs(whole)) return whole;
  }
}

}  // namespace host
