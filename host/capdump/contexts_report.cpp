#include <string>

#include "host/capdump/dialogue_reports.h"
#include "host/dialogue/negotiation.h"
#include "host/dialogue/outcome.h"
#include "host/rows/negotiation_text.h"
#include "host/text/json_object.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

// An association of the capture.
struct Negotiated {
  const Connection* connection = nullptr;
  const Dialogue* dialogue = nullptr;
  std::uint32_t index = 0;  // in the dialogue
  bool is_first = false;    // of its connection

  const Association& association() const {
    return dialogue->associations[index];
  }
  std::size_t number() const { return connection->index + 1; }
};

// Calls `take` with each association that is wanted, and with what was accepted
// in the whole capture.
template <class Take>
void ForEach(const std::vector<Connection>& connections,
             std::optional<std::uint32_t> only, Take take) {
  Acceptances all;
  ForEachDialogue(connections, {},
                  [&](const Connection& connection, const Dialogue& dialogue) {
                    all.Add(connection.index, dialogue);
                  });
  ForEachDialogue(connections, only,
                  [&](const Connection& connection, const Dialogue& dialogue) {
                    for (std::uint32_t k = 0; k < dialogue.associations.size();
                         ++k) {
                      take(Negotiated{&connection, &dialogue, k, k == 0}, all);
                    }
                  });
}

std::string TextOf(const Negotiated& one, const Acceptances& all) {
  std::string text;
  if (one.is_first) {
    text += "\nConnection " + std::to_string(one.number()) + "  " +
            one.connection->first_endpoint + " --> " +
            one.connection->second_endpoint + "\n";
  }
  return text + "  " + AssociationText(*one.dialogue, one.index, all);
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
  object.Number("connection", one.number());
  object.Number("association", one.index + 1);
  if (association.request) {
    object.Text("calling_ae_title",
                Utf8FromCodePage1252(association.request->calling_ae_title));
    object.Text("called_ae_title",
                Utf8FromCodePage1252(association.request->called_ae_title));
  }
  object.Text("outcome", AssociationOutcome(*one.dialogue, one.index));
  AddSide("requestor", association.request, object);
  AddSide("acceptor", association.accept, object);
  object.Texts("notes", NegotiationNotes(*one.dialogue, one.index, all));
  return std::move(object).Close() + "\n";
}

std::string ContextJson(const Negotiated& one,
                        const PresentationContext& context) {
  JsonObject object;
  object.Text("kind", "context");
  object.Number("connection", one.number());
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
            sink(TextOf(one, all));
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
