#include "host/dialogue/negotiation.h"

#include <algorithm>
#include <set>

#include "host/dialogue/irregularity_text.h"
#include "host/dialogue/outcome.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::size_t kMostKept = 64;  // acceptances of a title and a class
constexpr std::size_t kMostNamed = 8;  // sentences of one kind

std::string RoleText(const RoleSelection* role) {
  if (role == nullptr) return "none";
  if (role->scu && role->scp) return "SCU+SCP";
  return role->scu ? "SCU" : role->scp ? "SCP" : "neither";
}

class Notes {
 public:
  Notes(const Dialogue& dialogue, std::uint32_t index, const Acceptances& all)
      : dialogue_(dialogue),
        index_(index),
        association_(dialogue.associations[index]),
        all_(all) {}

  std::vector<std::string> Take() && {
    if (association_.request && association_.accept) {
      NoteNothingAccepted();
      NoteRefused();
      NoteUncompressedOnly();
      NoteGetWithoutRole();
    }
    if (association_.request) NoteImplicitNotOffered();
    for (const Irregularity& one : dialogue_.irregularities) {
      if (one.association == index_ && IsAboutNegotiation(one.kind)) {
        Add(IrregularityText(one) + ".");
      }
    }
    return std::move(notes_);
  }

 private:
  void Add(std::string sentence) { notes_.push_back(std::move(sentence)); }

  void NoteNothingAccepted() {
    const auto& contexts = association_.contexts;
    if (contexts.empty() ||
        std::ranges::any_of(contexts, &PresentationContext::IsAccepted)) {
      return;
    }
    Add("The association was accepted, but none of its " +
        CountText(contexts.size(), "context", "contexts") +
        ": nothing can be sent on it.");
  }

  void NoteRefused() {
    std::size_t left = kMostNamed;
    for (const PresentationContext& context : association_.contexts) {
      if (context.IsAccepted() || !context.proposed || !context.result) {
        continue;
      }
      if (left-- == 0) return;
      Add("Context " + std::to_string(context.id) + ", " +
          UidText(context.abstract_syntax) +
          ", was refused: " + ContextResultText(*context.result) + "." +
          AcceptedElsewhere(context));
    }
  }

  // What else there is for the class of a refused context, in sentences.
  std::string AcceptedElsewhere(const PresentationContext& refused) const {
    for (const PresentationContext& other : association_.contexts) {
      if (other.IsAccepted() &&
          other.abstract_syntax == refused.abstract_syntax) {
        return " The same class was accepted in context " +
               std::to_string(other.id) + ", with " +
               UidText(other.chosen_syntax) + ".";
      }
    }
    const std::string& title = association_.request->called_ae_title;
    const auto& accepted = all_.Of(title, refused.abstract_syntax);
    if (accepted.empty()) return {};
    std::string syntaxes;
    for (const Acceptances::Acceptance& one : accepted) {
      syntaxes += (syntaxes.empty() ? "" : ", ") + UidText(one.transfer_syntax);
    }
    return " What would have matched: " + title + " accepted it with " +
           syntaxes + " (connection " +
           std::to_string(accepted.front().connection + 1) + ").";
  }

  // A class of which compressed syntaxes were proposed and an uncompressed one
  // was chosen, while nothing of it was sent.
  void NoteUncompressedOnly() {
    std::map<std::string_view, const PresentationContext*> chosen;
    std::set<std::string_view> compressed, served;
    for (const PresentationContext& context : association_.contexts) {
      const std::string_view name = context.abstract_syntax;
      if (!std::ranges::all_of(context.transfer_syntaxes, IsUncompressed)) {
        compressed.insert(name);
      }
      if (!context.IsAccepted()) continue;
      if (context.messages != 0 || !IsUncompressed(context.chosen_syntax)) {
        served.insert(name);
      }
      chosen.emplace(name, &context);
    }
    std::size_t left = kMostNamed;
    for (const auto& [name, context] : chosen) {
      if (!compressed.contains(name) || served.contains(name)) continue;
      if (left-- == 0) return;
      Add(UidText(name) +
          " was proposed with compressed syntaxes as well, but "
          "accepted only with " +
          UidText(context->chosen_syntax) +
          ", and nothing of it was sent: data that is stored compressed needs "
          "a syntax that both sides have, or decompression by the sender.");
    }
  }

  void NoteGetWithoutRole() {
    for (std::uint32_t i = association_.first_message;
         i < association_.end_message; ++i) {
      if (dialogue_.messages[i].command_field != kCGetRq) continue;
      const auto takes_storage = [this](const PresentationContext& context) {
        const RoleSelection* const role =
            association_.GrantedRole(context.abstract_syntax);
        return context.IsAccepted() && role != nullptr && role->scp;
      };
      if (std::ranges::none_of(association_.contexts, takes_storage)) {
        Add("A C-GET was asked, but the requestor has the SCP role of no "
            "accepted context: no instance can be sent back.");
      }
      return;
    }
  }

  void NoteImplicitNotOffered() {
    std::set<std::string_view> offered, all;
    for (const PresentationContext& context : association_.contexts) {
      if (!context.proposed) continue;
      all.insert(context.abstract_syntax);
      if (std::ranges::count(context.transfer_syntaxes,
                             kImplicitVrLittleEndian) != 0) {
        offered.insert(context.abstract_syntax);
      }
    }
    std::size_t left = kMostNamed;
    for (const std::string_view name : all) {
      if (offered.contains(name)) continue;
      if (left-- == 0) return;
      Add("Implicit VR Little Endian was not offered for " + UidText(name) +
          ", which every side has to offer and to accept.");
    }
  }

  const Dialogue& dialogue_;
  const std::uint32_t index_;
  const Association& association_;
  const Acceptances& all_;
  std::vector<std::string> notes_;
};

}  // namespace

bool IsUncompressed(std::string_view transfer_syntax) {
  return transfer_syntax == kImplicitVrLittleEndian ||
         transfer_syntax == "1.2.840.10008.1.2.1" ||
         transfer_syntax == "1.2.840.10008.1.2.1.99" ||
         transfer_syntax == "1.2.840.10008.1.2.2";
}

std::string SyntaxNames(const std::vector<std::string>& uids) {
  std::string text;
  for (const std::string& uid : uids) {
    text += (text.empty() ? "" : ", ") + UidText(uid);
  }
  return text;
}

std::string RolesText(const Association& association,
                      std::string_view sop_class) {
  const RoleSelection* const asked = association.AskedRole(sop_class);
  const RoleSelection* const granted = association.GrantedRole(sop_class);
  if (asked == nullptr && granted == nullptr) return {};
  return "asked " + RoleText(asked) + ", granted " + RoleText(granted);
}

std::vector<NegotiationRow> NegotiationTable(const Association& association) {
  std::vector<NegotiationRow> rows;
  for (const PresentationContext& context : association.contexts) {
    rows.push_back(
        {std::to_string(context.id),
         context.abstract_syntax.empty() ? "not proposed"
                                         : UidText(context.abstract_syntax),
         SyntaxNames(context.transfer_syntaxes),
         context.result ? ContextResultText(*context.result) : "no answer",
         context.IsAccepted() ? UidText(context.chosen_syntax) : std::string(),
         RolesText(association, context.abstract_syntax),
         NumberText(context.messages)});
  }
  return rows;
}

void Acceptances::Add(std::size_t connection, const Dialogue& dialogue) {
  for (const Association& association : dialogue.associations) {
    if (!association.request) continue;
    for (const PresentationContext& context : association.contexts) {
      if (!context.proposed || !context.IsAccepted()) continue;
      auto& known =
          all_[{association.request->called_ae_title, context.abstract_syntax}];
      const auto is_known = [&](const Acceptance& one) {
        return one.transfer_syntax == context.chosen_syntax;
      };
      if (known.size() < kMostKept && std::ranges::none_of(known, is_known)) {
        known.push_back({connection, context.chosen_syntax});
      }
    }
  }
}

const std::vector<Acceptances::Acceptance>& Acceptances::Of(
    std::string_view called_ae_title, std::string_view abstract_syntax) const {
  static const std::vector<Acceptance> kNone;
  const auto found =
      all_.find({std::string(called_ae_title), std::string(abstract_syntax)});
  return found == all_.end() ? kNone : found->second;
}

std::vector<std::string> NegotiationNotes(const Dialogue& dialogue,
                                          std::uint32_t association,
                                          const Acceptances& all) {
  return Notes(dialogue, association, all).Take();
}

}  // namespace host
