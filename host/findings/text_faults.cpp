#include "host/findings/text_faults.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include "host/dataset/value_list.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr Tag kCharacterSetTag{0x0008, 0x0005};
constexpr std::size_t kDeclaration = 0;  // its place among the faults

// In the order of TextFault.
constexpr std::string_view kSlugs[] = {
    "character-set-unknown", "character-set-mismatch",
    "character-set-undeclared-escape", "character-set-likely-another"};

bool IsText(const DataSetEvent& event) {
  switch (TraitsOf(event.value_vr).kind) {
    case VrKind::kString:
    case VrKind::kText:
    case VrKind::kLongText:
    case VrKind::kUrl:
    case VrKind::kPersonName:
      return event.kind == DataSetEvent::Kind::kElement;
    default:
      return false;
  }
}

// Whether the bytes are of the repertoire that all declarations have.
bool IsPlain(std::span<const std::uint8_t> bytes) {
  return std::ranges::all_of(
      bytes, [](std::uint8_t byte) { return byte < 0x80 && byte != 0x1B; });
}

}  // namespace

void TextFaults::Look(DataSetReader& reader) {
  const DataSetEvent& event = reader.event();
  if (!IsText(event)) return;
  if (event.tag == kCharacterSetTag) {
    const auto characters = reader.characters();
    if (characters->problem().empty()) return;
    return Note(reader, kDeclaration, "says " + characters->problem());
  }
  const auto bytes = reader.Value(ByteWindow::kBytes);
  if (IsPlain(bytes)) return;
  const ValueList list = ReadValues(event, bytes, *reader.characters());
  if (list.text_fault == TextFault::kNone) return;
  const bool is_guess = list.text_fault == TextFault::kLooksLikeAnother;
  Note(reader, static_cast<std::size_t>(list.text_fault),
       (is_guess ? "is " : "") + list.finding);
}

void TextFaults::Note(const DataSetReader& reader, std::size_t kind,
                      std::string_view what) {
  Seen& seen = seen_[kind];
  if (++seen.count > 1) return;
  const auto& entry = reader.event().entry;
  seen.element = reader.PathText();
  if (entry) seen.element.append(" ").append(entry->name);
  seen.what = what;
  seen.any_declared = !reader.characters()->declared().empty();
}

void TextFaults::Report(const SceneConnection& at,
                        const DialogueMessage& message,
                        FindingList& list) const {
  for (std::size_t kind = 0; kind < seen_.size(); ++kind) {
    const Seen& seen = seen_[kind];
    if (seen.count == 0) continue;
    const std::string others =
        seen.count == 1
            ? "."
            : "; " +
                  CountText(seen.count - 1, "other element", "other elements") +
                  " of the same data set likewise.";
    Finding& found = list.Add(
        kSlugs[kind],
        "The " +
            PeerText(at, message.direction,
                     &at.dialogue->associations[message.association]) +
            " sent a data set with a " + CommandText(message.command_field) +
            (message.IsAnswer() ? " answer" : "") + " in which " +
            seen.element + " " + seen.what + others);
    SetPlace(message, found);
    // Many servers leave the declaration out of what they answer to queries,
    // and both sides are set to read it.
    if (message.command_field != kCStoreRq && !seen.any_declared) {
      found.severity = Severity::kNote;
    }
    found.likeness = at.Address(message.direction) + seen.what;
  }
}

}  // namespace host
