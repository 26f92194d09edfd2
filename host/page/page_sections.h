#ifndef HOST_PAGE_PAGE_SECTIONS_H_
#define HOST_PAGE_PAGE_SECTIONS_H_

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/dialogue/negotiation.h"
#include "host/findings/finding.h"
#include "host/findings/scene.h"

namespace host {

// The pieces of a capture's page, each as HTML of a bounded length.

// Up to where the page's own text begins.
std::string PageBegin(std::string_view title);

// The connections that have a section of their own, to be linked to.
using ShownConnections = std::set<std::size_t>;

// `number` counts the page's findings from 1.
std::string FindingSection(const Scene& scene, const Finding& finding,
                           std::size_t number, const ShownConnections& shown);

// A row of the table of connections. `like` is the number of one that is told
// in its place; 0 where there is none.
std::string ConnectionRow(const SceneConnection& at,
                          const ShownConnections& shown, std::size_t like);

// What happened in a connection and what was negotiated. `others`: the indices
// of those of the same shape. `all`: of the capture.
std::string ConnectionSection(const SceneConnection& at,
                              const std::vector<std::size_t>& others,
                              const Acceptances& all);

}  // namespace host

#endif  // HOST_PAGE_PAGE_SECTIONS_H_
