#ifndef HOST_ROWS_TREE_SEARCH_H_
#define HOST_ROWS_TREE_SEARCH_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/rows/decoded_row.h"

namespace host {

// Questions about the lines of a decode tree, which stand in the order in which
// they are shown fully expanded. Texts are bytes of code page 1252.

// The line with the shortest range that covers the byte; among equals the last,
// which is the innermost.
std::optional<std::size_t> NarrowestLine(const std::vector<TreeLine>& lines,
                                         std::uint32_t byte);

// The next line behind (or before) `from` that contains the text, in capitals
// or not, going round at the end. `from` itself comes last; none: from outside.
std::optional<std::size_t> FindLine(const std::vector<TreeLine>& lines,
                                    std::optional<std::size_t> from,
                                    std::string_view text, bool backwards);

// What stands behind a line's name: "(0008,0020) - Study Date" has "Study
// Date", "Value Field: 7" has "7". The whole line when there is no name.
std::string_view LineValue(std::string_view text);

// The line and all below it, two blanks a level, with CR LF.
std::string SubtreeText(const std::vector<TreeLine>& lines, std::size_t line);

// Whether `text` contains `part`, whatever the case of its ASCII letters.
bool ContainsText(std::string_view text, std::string_view part);

}  // namespace host

#endif  // HOST_ROWS_TREE_SEARCH_H_
