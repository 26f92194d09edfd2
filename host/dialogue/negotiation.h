#ifndef HOST_DIALOGUE_NEGOTIATION_H_
#define HOST_DIALOGUE_NEGOTIATION_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/dialogue/dialogue.h"

namespace host {

// What was negotiated in an association, as people want to read it.

// What every side has to offer and to accept.
inline constexpr std::string_view kImplicitVrLittleEndian = "1.2.840.10008.1.2";
// Whether data in this transfer syntax are sent without any compression of
// their pixels; deflated ones are.
bool IsUncompressed(std::string_view transfer_syntax);

inline constexpr std::size_t kNegotiationColumns = 7;
// The ID, the abstract syntax, the proposed transfer syntaxes, the result, the
// chosen syntax, the roles asked and granted, the number of messages. UTF-8.
using NegotiationRow = std::array<std::string, kNegotiationColumns>;
inline constexpr std::array<std::string_view, kNegotiationColumns>
    kNegotiationTitles = {"id",     "abstract syntax", "proposed", "result",
                          "chosen", "roles",           "messages"};

// A row for each context, in the order of the association.
std::vector<NegotiationRow> NegotiationTable(const Association& association);
// "asked SCU+SCP, granted SCU" of a SOP class; empty without a selection.
std::string RolesText(const Association& association,
                      std::string_view sop_class);
// "Implicit VR Little Endian, JPEG Baseline".
std::string SyntaxNames(const std::vector<std::string>& uids);

// What the peers of a whole capture have accepted, by the AE title that was
// called and the abstract syntax.
class Acceptances {
 public:
  // `connection` is its index in the capture. Each connection once.
  void Add(std::size_t connection, const Dialogue& dialogue);

  struct Acceptance {
    std::size_t connection = 0;  // the first one
    std::string transfer_syntax;
  };
  // The transfer syntaxes that this AE title accepted for the abstract syntax,
  // each with the first connection that shows it, in the order of the capture.
  const std::vector<Acceptance>& Of(std::string_view called_ae_title,
                                    std::string_view abstract_syntax) const;

 private:
  using Key = std::pair<std::string, std::string>;
  std::map<Key, std::vector<Acceptance>> all_;
};

// What is odd about the negotiation of an association of `dialogue`, one
// sentence each. `all`: of the capture, what would have matched.
std::vector<std::string> NegotiationNotes(const Dialogue& dialogue,
                                          std::uint32_t association,
                                          const Acceptances& all);

}  // namespace host

#endif  // HOST_DIALOGUE_NEGOTIATION_H_
