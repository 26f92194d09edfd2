#include "host/dialogue/context_answers.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace host {
namespace {

using Problems = std::vector<Irregularity>;

void Add(IrregularityKind kind, std::uint8_t id, std::string text,
         Problems& problems) {
  problems.push_back({kind, {}, 0, id, std::move(text), {}, {}});
}

bool IsWhole(const std::optional<AssociationSide>& side) {
  return side && !side->is_damaged;
}

void MergeAnswer(PresentationContext& answer, Association& association,
                 Problems& problems) {
  const auto context = std::ranges::find(association.contexts, answer.id,
                                         &PresentationContext::id);
  if (context == association.contexts.end()) {
    Add(IrregularityKind::kUnproposedContextId, answer.id, {}, problems);
    association.contexts.push_back(std::move(answer));
    return;
  }
  // Of two answers the last one counts, as it does to the toolkits.
  if (context->result) {
    Add(IrregularityKind::kDuplicateAnswer, answer.id, {}, problems);
  }
  context->result = answer.result;
  context->chosen_syntax = std::move(answer.chosen_syntax);
  if (context->IsAccepted() &&
      std::ranges::count(context->transfer_syntaxes, context->chosen_syntax) ==
          0) {
    Add(IrregularityKind::kUnofferedSyntax, answer.id, context->chosen_syntax,
        problems);
  }
}

}  // namespace

std::vector<Irregularity> CheckProposals(const Association& association) {
  Problems problems;
  std::array<bool, 256> seen{};
  for (const PresentationContext& context : association.contexts) {
    const std::uint8_t id = context.id;
    if (id % 2 == 0) Add(IrregularityKind::kEvenContextId, id, {}, problems);
    if (seen[id]) Add(IrregularityKind::kDuplicateContextId, id, {}, problems);
    seen[id] = true;
  }
  return problems;
}

std::vector<Irregularity> MergeAnswers(std::vector<PresentationContext> answers,
                                       Association& association) {
  Problems problems;
  for (PresentationContext& answer : answers) {
    MergeAnswer(answer, association, problems);
  }
  if (!IsWhole(association.request)) return {};
  if (!IsWhole(association.accept)) return problems;
  for (const PresentationContext& context : association.contexts) {
    if (context.result) continue;
    Add(IrregularityKind::kMissingAnswer, context.id, {}, problems);
  }
  return problems;
}

}  // namespace host
