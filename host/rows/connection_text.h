#ifndef HOST_ROWS_CONNECTION_TEXT_H_
#define HOST_ROWS_CONNECTION_TEXT_H_

#include <array>
#include <optional>
#include <string>

#include "host/streams/ae_titles.h"
#include "host/streams/connection.h"

namespace host {

// What a person chooses a connection by, in columns. UTF-8.
using ConnectionColumns = std::array<std::string, 5>;

// Number, endpoints, AE titles, what it holds, duration: "2",
// "192.0.2.2:41104 --> 192.0.2.1:11112", "STORESCU --> ANY-SCP", "6 PDUs, 2
// messages, 5,543 bytes", "0.046 s". Parts that are not known are left out.
// `index` counts from 0, the number from 1.
ConnectionColumns ConnectionTexts(std::size_t index,
                                  const Connection& connection,
                                  const std::optional<AeTitles>& titles);

// "STORESCU --> ANY-SCP", in the direction of the endpoints: "<--" when the
// second one called.
std::string TitlesText(const AeTitles& titles);

}  // namespace host

#endif  // HOST_ROWS_CONNECTION_TEXT_H_
