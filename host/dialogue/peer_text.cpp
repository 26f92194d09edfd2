#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>

#include "host/dataset/registry.h"
#include "host/dialogue/outcome.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

struct CodeRow {
  std::uint8_t source;
  std::uint8_t code;
  std::string_view text;
};

// DICOM PS3.8 section 9.3.4.
constexpr CodeRow kRejectReasons[] = {
    {1, 1, "no reason given"},
    {1, 2, "application context name not supported"},
    {1, 3, "calling AE title not recognized"},
    {1, 7, "called AE title not recognized"},
    {2, 1, "no reason given"},
    {2, 2, "protocol version not supported"},
    {3, 1, "temporary congestion"},
    {3, 2, "local limit exceeded"},
};

// Section 9.3.8.
constexpr CodeRow kAbortReasons[] = {
    {2, 0, "reason not specified"},     {2, 1, "unrecognized PDU"},
    {2, 2, "unexpected PDU"},           {2, 4, "unrecognized PDU parameter"},
    {2, 5, "unexpected PDU parameter"}, {2, 6, "invalid PDU parameter value"},
};

template <std::size_t kRows>
std::string CodeText(const CodeRow (&rows)[kRows], std::uint8_t source,
                     std::uint8_t code) {
  const auto* const row = std::ranges::find_if(rows, [&](const CodeRow& one) {
    return one.source == source && one.code == code;
  });
  if (row != std::end(rows)) return std::string(row->text);
  return "reason " + std::to_string(code) + " (not in the standard)";
}

struct ToolkitRow {
  std::string_view uid_root;
  std::string_view name;
  // What the version name begins with before the number; the digits of
  // "OFFIS_DCMTK_367" are a number each.
  std::string_view version_prefix;
  bool digits_are_numbers = false;
};

// General toolkits, by the root of their implementation class UIDs. What is
// built with one of them mostly keeps its UID.
constexpr ToolkitRow kToolkits[] = {
    {"1.2.276.0.7230010.3.", "DCMTK", "OFFIS_DCMTK_", true},
    {"1.2.826.0.1.3680043.9.3811.", "pynetdicom", "PYNETDICOM_", true},
    {"1.2.826.0.1.3680043.8.498.", "pydicom", "PYDICOM ", false},
    {"1.2.40.0.13.1.", "dcm4che", "dcm4che-", false},
    {"1.2.826.0.1.3680043.2.1143.", "GDCM", "GDCM ", false},
    {"1.2.826.0.1.3680043.9.55600.", "odil", "Odil ", false},
    {"1.3.6.1.4.1.30071.8", "fo-dicom", "fo-dicom ", false},
    {"1.2.840.113654.2.3.", "CTN", "", false},
    {"1.2.826.0.1.3680043.10.854", "dcmjs-dimse", "DCMJS-DIMSE-V", false},
    {"1.3.6.1.4.1.5962.99.", "PixelMed", "PIXELMEDJAVA", false},
    {"1.2.826.0.1.3680043.9.7133.", "go-netdicom", "GONETDICOM_", false},
    {"1.2.826.0.1.3680043.10.786.", "go-netdicom", "GONETDICOM_", false},
};

std::string VersionText(const ToolkitRow& toolkit, std::string_view version) {
  if (!version.starts_with(toolkit.version_prefix) ||
      version.size() == toolkit.version_prefix.size()) {
    return {};
  }
  version.remove_prefix(toolkit.version_prefix.size());
  if (!toolkit.digits_are_numbers) return PrintableFromCodePage1252(version);
  std::string text;
  for (const char digit : version) {
    if (digit < '0' || digit > '9') return PrintableFromCodePage1252(version);
    text += text.empty() ? "" : ".";
    text += digit;
  }
  return text;
}

}  // namespace

std::string RejectResultText(std::uint8_t result) {
  if (result == 1) return "permanent";
  if (result == 2) return "transient";
  return "result " + std::to_string(result) + " (not in the standard)";
}

std::string RejectSourceText(std::uint8_t source) {
  if (source == 1) return "the service user";
  if (source == 2) return "the service provider (ACSE)";
  if (source == 3) return "the service provider (presentation)";
  return "source " + std::to_string(source) + " (not in the standard)";
}

std::string RejectReasonText(std::uint8_t source, std::uint8_t reason) {
  return CodeText(kRejectReasons, source, reason);
}

std::string AbortSourceText(std::uint8_t source) {
  if (source == 0) return "the service user";
  if (source == 2) return "the service provider";
  return "source " + std::to_string(source) + " (not in the standard)";
}

std::string AbortReasonText(std::uint8_t source, std::uint8_t reason) {
  if (source != 2) return {};
  return CodeText(kAbortReasons, source, reason);
}

std::string ContextResultText(std::uint8_t result) {
  constexpr std::array<std::string_view, 5> kTexts = {
      "accepted", "user rejection", "no reason (provider rejection)",
      "abstract syntax not supported", "transfer syntaxes not supported"};
  if (result < kTexts.size()) return std::string(kTexts[result]);
  return "result " + std::to_string(result) + " (not in the standard)";
}

std::string UidText(std::string_view uid) {
  const auto entry = FindUid(uid);
  return entry ? std::string(entry->name) : PrintableFromCodePage1252(uid);
}

std::string ToolkitText(std::string_view implementation_class_uid,
                        std::string_view implementation_version) {
  const auto* const row =
      std::ranges::find_if(kToolkits, [&](const ToolkitRow& one) {
        return implementation_class_uid.starts_with(one.uid_root);
      });
  if (row == std::end(kToolkits)) return {};
  const std::string version = VersionText(*row, implementation_version);
  return std::string(row->name) + (version.empty() ? "" : " " + version);
}

}  // namespace host
