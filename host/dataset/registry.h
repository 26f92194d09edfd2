#ifndef HOST_DATASET_REGISTRY_H_
#define HOST_DATASET_REGISTRY_H_

#include <optional>
#include <string_view>

#include "host/dataset/tag.h"

namespace host {

// What the public registries say, as tools/make_dictionaries.py has put it into
// the program. Indexes are made at the first question; every answer takes
// logarithmic time, and its texts live as long as the program.

struct ElementEntry {
  std::string_view vr;  // "PN"; where it is left open "US or SS", "OB or OW"
  std::string_view vm;  // "1", "1-n", "2-2n"
  std::string_view name;
  bool retired = false;
};

// Of a standard element, also of one of a repeating group. Every group length
// and private creator has an entry.
std::optional<ElementEntry> FindElement(Tag tag);

// Of an element in a block that `creator` has reserved.
std::optional<ElementEntry> FindPrivateElement(std::string_view creator,
                                               Tag tag);

struct UidEntry {
  std::string_view name;
  bool retired = false;
};

// `uid` without padding.
std::optional<UidEntry> FindUid(std::string_view uid);

}  // namespace host

#endif  // HOST_DATASET_REGISTRY_H_
