#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "host/dialogue/outcome.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// Which service an answer belongs to; the first row that fits.
struct ServiceRow {
  std::string_view service;
  std::string_view command;    // what its name begins with
  std::string_view sop_class;  // the UID, or all below it when a dot ends it
};

struct StatusRow {
  std::string_view service;
  std::uint16_t first;
  std::uint16_t last;
  StatusClass status_class;
  std::string_view text;
};

#include "host/dialogue/status_table.inc"

constexpr std::string_view kAllServices = "general";

bool Fits(const ServiceRow& row, std::string_view command,
          std::string_view sop_class) {
  if (!command.starts_with(row.command)) return false;
  if (row.sop_class.empty()) return true;
  return row.sop_class.ends_with('.') ? sop_class.starts_with(row.sop_class)
                                      : sop_class == row.sop_class;
}

std::string_view ServiceOf(std::uint16_t command_field,
                           std::string_view sop_class) {
  const std::string command = CommandFieldText(command_field);
  const auto* const row = std::ranges::find_if(
      kServices,
      [&](const ServiceRow& one) { return Fits(one, command, sop_class); });
  return row == std::end(kServices) ? kAllServices : row->service;
}

const StatusRow* FindStatusRow(std::string_view service, std::uint16_t status) {
  const auto* const row =
      std::ranges::find_if(kStatuses, [&](const StatusRow& one) {
        return one.service == service && one.first <= status &&
               status <= one.last;
      });
  return row == std::end(kStatuses) ? nullptr : row;
}

// Of a status that no table has. What is in no class of the standard at all is
// a failure to whoever gets it.
StatusText Unlisted(std::uint16_t status) {
  if (status >> 12 == 0xB) {
    return {StatusClass::kWarning, "a warning (not in the standard)", false};
  }
  return {StatusClass::kFailure, "a failure (not in the standard)", false};
}

}  // namespace

StatusText ExplainStatus(std::uint16_t status, std::uint16_t command_field,
                         std::string_view sop_class) {
  const StatusRow* row =
      FindStatusRow(ServiceOf(command_field, sop_class), status);
  if (row == nullptr) row = FindStatusRow(kAllServices, status);
  if (row == nullptr) return Unlisted(status);
  return {row->status_class, std::string(row->text), true};
}

std::string StatusWithText(std::uint16_t status, std::uint16_t command_field,
                           std::string_view sop_class) {
  const StatusText explained = ExplainStatus(status, command_field, sop_class);
  return HexText(status) + (explained.is_listed ? " " : ", ") + explained.text;
}

}  // namespace host
