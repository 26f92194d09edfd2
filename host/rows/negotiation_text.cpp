#include "host/rows/negotiation_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "host/dialogue/outcome.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

// The columns in the order in which they are written: the one that may be very
// long comes last.
constexpr std::array<std::size_t, kNegotiationColumns> kOrder = {0, 1, 3, 4,
                                                                 5, 6, 2};
constexpr std::string_view kMargin = "    ";

std::string TitlesOf(const Association& association) {
  if (!association.request) return "(the request was not captured)";
  return PrintableFromCodePage1252(association.request->calling_ae_title) +
         " --> " +
         PrintableFromCodePage1252(association.request->called_ae_title);
}

std::string TableText(const std::vector<NegotiationRow>& rows) {
  std::array<std::size_t, kNegotiationColumns> widths{};
  for (std::size_t i = 0; i < widths.size(); ++i) {
    for (const NegotiationRow& row : rows) {
      widths[i] = std::max(widths[i], ColumnsOf(row[i]));
    }
    if (widths[i] != 0) {
      widths[i] = std::max(widths[i], kNegotiationTitles[i].size());
    }
  }
  std::string text;
  const auto add = [&](const auto& cells) {
    std::string line(kMargin);
    for (const std::size_t i : kOrder) {
      if (widths[i] == 0) continue;
      const std::string cell(cells[i]);
      line += cell + std::string(widths[i] - ColumnsOf(cell) + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  };
  add(kNegotiationTitles);
  for (const NegotiationRow& row : rows) add(row);
  return text;
}

}  // namespace

std::string AssociationOutcome(const Dialogue& dialogue, std::uint32_t index) {
  const Association& association = dialogue.associations[index];
  if (association.accept) {
    return PduOutcome(dialogue, association.accept->place.pdu);
  }
  if (association.reject) {
    return "rejected, " + PduOutcome(dialogue, association.reject->place.pdu);
  }
  return "no answer";
}

std::string AssociationSideText(const AssociationSide& side) {
  const std::string toolkit =
      ToolkitText(side.implementation_class_uid, side.implementation_version);
  std::string text =
      toolkit.empty()
          ? PrintableFromCodePage1252(side.implementation_class_uid + " " +
                                      side.implementation_version)
          : toolkit;
  if (side.max_pdu_bytes) {
    text += *side.max_pdu_bytes == 0
                ? ", takes PDUs of any length"
                : ", takes PDUs of " + BytesText(*side.max_pdu_bytes);
  }
  if (side.window) {
    text += ", window " + NumberText(side.window->invoked) + "/" +
            NumberText(side.window->performed);
  }
  if (side.user_identity) {
    text += ", user identity type " + NumberText(side.user_identity->type);
  }
  return text;
}

std::string AssociationText(const Dialogue& dialogue, std::uint32_t index,
                            const Acceptances& all) {
  const Association& association = dialogue.associations[index];
  std::string text = "Association " + std::to_string(index + 1) + "  " +
                     TitlesOf(association) + ": " +
                     AssociationOutcome(dialogue, index) + "\n";
  if (association.request) {
    text += std::string(kMargin) + "requestor  " +
            AssociationSideText(*association.request) + "\n";
  }
  if (association.accept) {
    text += std::string(kMargin) + "acceptor   " +
            AssociationSideText(*association.accept) + "\n";
  }
  text += TableText(NegotiationTable(association));
  for (const std::string& note : NegotiationNotes(dialogue, index, all)) {
    text += std::string(kMargin) + "note: " + note + "\n";
  }
  return text;
}

}  // namespace host
