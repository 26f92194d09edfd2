#include "host/capdump/contexts_report.h"

#include <algorithm>
#include <array>
#include <string>

#include "host/dialogue/negotiation.h"
#include "host/dialogue/outcome.h"
#include "host/text/json_object.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

// The columns in the order in which they are written: the one that may be very
// long comes last.
constexpr std::array<std::size_t, kNegotiationColumns> kOrder = {0, 1, 3, 4,
                                                                 5, 6, 2};
constexpr std::string_view kMargin = "    ";

// An association of the capture.
struct Negotiated {
  std::size_t connection = 0;
  const Connection* its_connection = nullptr;
  const Dialogue* dialogue = nullptr;
  std::uint32_t index = 0;  // in the dialogue
  bool is_first = false;    // of its connection

  const Association& association() const {
    return dialogue->associations[index];
  }
};

// Calls `take` with each association that is wanted, and with what was accepted
// in the whole capture.
template <class Take>
void ForEach(const std::vector<Connection>& connections,
             std::optional<std::uint32_t> only, Take take) {
  Acceptances all;
  for (std::size_t i = 0; i < connections.size(); ++i) {
    const Dialogue* const dialogue = DialogueOf(connections[i]);
    if (dialogue != nullptr) all.Add(i, *dialogue);
  }
  for (std::size_t i = 0; i < connections.size(); ++i) {
    const Dialogue* const dialogue = DialogueOf(connections[i]);
    if (dialogue == nullptr || (only && *only != i)) continue;
    for (std::uint32_t k = 0; k < dialogue->associations.size(); ++k) {
      take(Negotiated{i, &connections[i], dialogue, k, k == 0}, all);
    }
  }
}

std::string TitlesOf(const Association& association) {
  if (!association.request) return "(the request was not captured)";
  return PrintableFromCodePage1252(association.request->calling_ae_title) +
         " --> " +
         PrintableFromCodePage1252(association.request->called_ae_title);
}

std::string OutcomeOf(const Negotiated& one) {
  const Association& association = one.association();
  if (association.accept) {
    return PduOutcome(*one.dialogue, association.accept->place.pdu);
  }
  if (association.reject) {
    return "rejected, " +
           PduOutcome(*one.dialogue, association.reject->place.pdu);
  }
  return "no answer";
}

std::string SideText(const AssociationSide& side) {
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

std::string AssociationText(const Negotiated& one, const Acceptances& all) {
  const Association& association = one.association();
  std::string text;
  if (one.is_first) {
    text += "\nConnection " + std::to_string(one.connection + 1) + "  " +
            one.its_connection->first_endpoint + " --> " +
            one.its_connection->second_endpoint + "\n";
  }
  text += "  Association " + std::to_string(one.index + 1) + "  " +
          TitlesOf(association) + ": " + OutcomeOf(one) + "\n";
  if (association.request) {
    text += std::string(kMargin) + "requestor  " +
            SideText(*association.request) + "\n";
  }
  if (association.accept) {
    text += std::string(kMargin) + "acceptor   " +
            SideText(*association.accept) + "\n";
  }
  text += TableText(NegotiationTable(association));
  for (const std::string& note :
       NegotiationNotes(*one.dialogue, one.index, all)) {
    text += std::string(kMargin) + "note: " + note + "\n";
  }
  return text;
}

void AddSide(const std::string& name,
             const std::optional<AssociationSide>& side, JsonObject& object) {
  if (!side) return;
  if (side->max_pdu_bytes) {
    object.Number(name + "_max_pdu", *side->max_pdu_bytes);
  }
  object.Text(name + "_implementation_class_uid",
              Utf8FromCodePage1252(side->implementation_class_uid));
  object.Text(name + "_implementation_version",
              Utf8FromCodePage1252(side->implementation_version));
  const std::string toolkit =
      ToolkitText(side->implementation_class_uid, side->implementation_version);
  if (!toolkit.empty()) object.Text(name + "_toolkit", toolkit);
}

std::string AssociationJson(const Negotiated& one, const Acceptances& all) {
  const Association& association = one.association();
  JsonObject object;
  object.Text("kind", "association");
  object.Number("connection", one.connection + 1);
  object.Number("association", one.index + 1);
  if (association.request) {
    object.Text("calling_ae_title",
                Utf8FromCodePage1252(association.request->calling_ae_title));
    object.Text("called_ae_title",
                Utf8FromCodePage1252(association.request->called_ae_title));
  }
  object.Text("outcome", OutcomeOf(one));
  AddSide("requestor", association.request, object);
  AddSide("acceptor", association.accept, object);
  object.Texts("notes", NegotiationNotes(*one.dialogue, one.index, all));
  return std::move(object).Close() + "\n";
}

std::string ContextJson(const Negotiated& one,
                        const PresentationContext& context) {
  JsonObject object;
  object.Text("kind", "context");
  object.Number("connection", one.connection + 1);
  object.Number("association", one.index + 1);
  object.Number("id", context.id);
  if (context.proposed) {
    object.Text("abstract_syntax",
                Utf8FromCodePage1252(context.abstract_syntax));
    object.Text("abstract_syntax_name", UidText(context.abstract_syntax));
    std::vector<std::string> proposed;
    for (const std::string& uid : context.transfer_syntaxes) {
      proposed.push_back(Utf8FromCodePage1252(uid));
    }
    object.Texts("proposed", proposed);
  }
  if (context.result) {
    object.Number("result", *context.result);
    object.Text("result_text", ContextResultText(*context.result));
  }
  if (context.IsAccepted()) {
    object.Text("chosen", Utf8FromCodePage1252(context.chosen_syntax));
    object.Text("chosen_name", UidText(context.chosen_syntax));
  }
  const std::string roles =
      RolesText(one.association(), context.abstract_syntax);
  if (!roles.empty()) object.Text("roles", roles);
  object.Number("messages", context.messages);
  return std::move(object).Close() + "\n";
}

}  // namespace

void WriteContexts(const std::vector<Connection>& connections,
                   std::optional<std::uint32_t> only, const Sink& sink) {
  bool is_any = false;
  ForEach(connections, only,
          [&](const Negotiated& one, const Acceptances& all) {
            is_any = true;
            sink(AssociationText(one, all));
          });
  if (!is_any) sink("There is no association.\n");
}

void WriteContextsJson(const std::vector<Connection>& connections,
                       std::optional<std::uint32_t> only, const Sink& sink) {
  ForEach(
      connections, only, [&](const Negotiated& one, const Acceptances& all) {
        sink(AssociationJson(one, all));
        for (const PresentationContext& context : one.association().contexts) {
          sink(ContextJson(one, context));
        }
      });
}

}  // namespace host
