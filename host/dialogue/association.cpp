#include "host/dialogue/association.h"

#include <algorithm>

namespace host {
namespace {

const RoleSelection* RoleOf(const std::optional<AssociationSide>& side,
                            std::string_view sop_class) {
  if (!side) return nullptr;
  const auto found =
      std::ranges::find(side->roles, sop_class, &RoleSelection::sop_class);
  return found == side->roles.end() ? nullptr : &*found;
}

}  // namespace

std::optional<std::uint32_t> Association::RequestorDirection() const {
  if (request) return request->place.direction;
  if (accept) return 1 - accept->place.direction;
  if (reject) return 1 - reject->place.direction;
  return {};
}

const PresentationContext* Association::FindContext(std::uint8_t id) const {
  const auto found = std::ranges::find(contexts, id, &PresentationContext::id);
  return found == contexts.end() ? nullptr : &*found;
}

const RoleSelection* Association::GrantedRole(
    std::string_view sop_class) const {
  return RoleOf(accept, sop_class);
}

const RoleSelection* Association::AskedRole(std::string_view sop_class) const {
  return RoleOf(request, sop_class);
}

}  // namespace host
