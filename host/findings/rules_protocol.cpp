#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "host/findings/rules.h"
#include "host/streams/pdu_header.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

std::string_view TextOf(const SideFacts& facts) {
  return {reinterpret_cast<const char*>(facts.first_bytes.data()),
          facts.first_bytes.size()};
}

std::string VersionText(std::uint16_t version) {
  switch (version) {
    case 0x0300:
      return "SSL 3.0";
    case 0x0301:
      return "TLS 1.0";
    case 0x0302:
      return "TLS 1.1";
    case 0x0303:
      return "TLS 1.2";
    case 0x0304:
      return "TLS 1.3";
    default:
      return "TLS";
  }
}

// RFC 8446 section 6, and those of TLS 1.2.
std::string AlertText(std::uint8_t description) {
  struct Row {
    std::uint8_t code;
    std::string_view text;
  };
  constexpr Row kRows[] = {
      {0, "close notify"},
      {10, "unexpected message"},
      {20, "bad record MAC"},
      {22, "record overflow"},
      {40, "handshake failure"},
      {42, "bad certificate"},
      {43, "unsupported certificate"},
      {44, "certificate revoked"},
      {45, "certificate expired"},
      {46, "certificate unknown"},
      {47, "illegal parameter"},
      {48, "unknown CA"},
      {49, "access denied"},
      {50, "decode error"},
      {51, "decrypt error"},
      {70, "protocol version"},
      {71, "insufficient security"},
      {80, "internal error"},
      {86, "inappropriate fallback"},
      {90, "user canceled"},
      {109, "missing extension"},
      {110, "unsupported extension"},
      {112, "unrecognized name"},
      {113, "bad certificate status response"},
      {115, "unknown PSK identity"},
      {116, "certificate required"},
      {120, "no application protocol"},
  };
  const auto row = std::ranges::find(kRows, description, &Row::code);
  const std::string number = std::to_string(description);
  return row == std::end(kRows) ? "alert " + number
                                : std::string(row->text) + ", alert " + number;
}

std::string HelloText(const TlsFacts& tls) {
  std::string text = VersionText(tls.version);
  if (!tls.server_name.empty()) {
    text += ", server name " + PrintableFromUtf8(tls.server_name);
  }
  return text;
}

std::string ClosedBy(const SceneConnection& at) {
  const Ending ending = ClosingOf(at);
  if (ending.kind == Ending::Kind::kNone) return {};
  return std::string("; the ") +
         (ending.direction == at.client ? "client" : "server") +
         (ending.kind == Ending::Kind::kReset ? " reset the connection (RST)"
                                              : " closed it (FIN)");
}

// The last thing that a side says is an alert, encrypted, and it has said
// nothing since the other side's first encrypted record: the handshake's end.
bool EndsWithHiddenAlert(const TlsFacts& tls, const TlsFacts& other) {
  constexpr std::uint32_t kAlertBytes = 19;  // with its type and its tag
  if (tls.last_encrypted_bytes != kAlertBytes) return false;
  if (tls.encrypted_records == 1) return true;
  return other.first_encrypted_frame != 0 &&
         tls.last_but_one_encrypted_frame < other.first_encrypted_frame;
}

// Both sides speak TLS: whether they understood each other.
void FindFailedHandshake(const SceneConnection& at, FindingList& list) {
  const TlsFacts& client = *at.Facts(at.client).tls;
  const TlsFacts& server = *at.Facts(1 - at.client).tls;
  const std::string between =
      at.Address(at.client) + " and " + at.Address(1 - at.client);
  for (const std::uint32_t direction : {at.client, 1 - at.client}) {
    const TlsFacts& tls = *at.Facts(direction).tls;
    const TlsFacts& other = *at.Facts(1 - direction).tls;
    const std::string side = direction == at.client ? "client" : "server";
    std::string why;
    if (tls.alert && tls.alert->description != 0) {
      why = "the " + side + " ended it with \"" +
            AlertText(tls.alert->description) + "\"";
    } else if (EndsWithHiddenAlert(tls, other)) {
      why = "the " + side +
            " ended it with an alert, which is encrypted: likely it did not "
            "accept the other side's certificate";
    } else {
      continue;
    }
    Finding& found =
        list.Add("tls-handshake-failed", "The TLS handshake between " +
                                             between + " failed: " + why +
                                             " (" + HelloText(client) + ").");
    if (const auto& last = at.Facts(direction).last_payload) {
      SetFrame(*last, found);
    }
    found.likeness = at.Address(1 - at.client);
    return;
  }
  Finding& note = list.Add(
      "tls-encrypted", "The connection of " + at.Address(at.client) + " to " +
                           at.Address(1 - at.client) + " is encrypted (" +
                           HelloText(server.hello ? server : client) +
                           "): what is said in it cannot be read.");
  note.likeness = at.Address(1 - at.client);
}

struct Protocol {
  std::string_view slug;
  std::string name;
};

struct ProtocolRow {
  std::string_view begin, slug, name;
};
constexpr ProtocolRow kProtocols[] = {
    {"HTTP/", "http-on-port", "HTTP"},
    {"GET ", "http-on-port", "HTTP"},
    {"POST ", "http-on-port", "HTTP"},
    {"PUT ", "http-on-port", "HTTP"},
    {"HEAD ", "http-on-port", "HTTP"},
    {"DELETE ", "http-on-port", "HTTP"},
    {"OPTIONS ", "http-on-port", "HTTP"},
    {"CONNECT ", "http-on-port", "HTTP"},
    {"PRI * HTTP/2", "http-on-port", "HTTP/2"},
    {"<!DOCTYPE", "http-on-port", "HTML, as a web server does"},
    {"<html", "http-on-port", "HTML, as a web server does"},
    {"<HTML", "http-on-port", "HTML, as a web server does"},
    {"\vMSH", "hl7-on-port", "HL7 (MLLP)"},
    {"\v", "hl7-on-port", "HL7 (MLLP), likely"},
    {"MSH|", "hl7-on-port", "HL7"},
    {"SSH-", "another-protocol", "SSH"},
    {"220 ", "another-protocol", "FTP or SMTP"},
    {"220-", "another-protocol", "FTP or SMTP"},
    {"EHLO", "another-protocol", "SMTP"},
    {"+OK", "another-protocol", "POP3"},
    {"* OK", "another-protocol", "IMAP"},
    {"RFB ", "another-protocol", "VNC"},
    {"\xFFSMB", "another-protocol", "SMB"},
    {"\xFESMB", "another-protocol", "SMB"},
    {"\x03\x00\x00", "another-protocol", "RDP, likely"},
};

// What a stream that is no DICOM begins like; no slug when it cannot be told.
Protocol Recognize(const SideFacts& facts) {
  const std::string_view text = TextOf(facts);
  for (const ProtocolRow& row : kProtocols) {
    if (text.starts_with(row.begin)) return {row.slug, std::string(row.name)};
  }
  // A MySQL greeting: length, number 0, version 10, a text.
  if (text.size() > 6 && text[3] == 0 && text[4] == 10 && text[5] >= '0' &&
      text[5] <= '9') {
    return {"another-protocol", "MySQL"};
  }
  return {};
}

// "\x16\x03..." in printable form, shortened.
std::string BeginningText(const SideFacts& facts) {
  constexpr std::size_t kShown = 24;
  std::string text;
  for (const char c : TextOf(facts).substr(0, kShown)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F) {
      text += c;
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02X", byte);
      text += escape;
    }
  }
  return "\"" + text + "\"";
}

bool SpeaksDicom(const SideFacts& facts) {
  return BeginsLikePdu(facts.first_bytes);
}

// Neither DICOM nor any other protocol in the way of this port.
bool IsForeign(const SideFacts& facts) {
  return !facts.first_bytes.empty() && !SpeaksDicom(facts) && !facts.tls;
}

}  // namespace

void FindTls(const Scene&, const SceneConnection& at, FindingList& list) {
  const SideFacts& client = at.Facts(at.client);
  const SideFacts& server = at.Facts(1 - at.client);
  if (client.tls && server.tls && client.tls->hello) {
    FindFailedHandshake(at, list);
    return;
  }
  if (client.tls && client.tls->hello) {
    const bool plain = SpeaksDicom(server);
    if (!plain && !server.first_bytes.empty()) return;
    Finding& found = list.Add(
        "tls-to-plain",
        "The client " + at.Address(at.client) + " speaks TLS (" +
            HelloText(*client.tls) + ") and the server " +
            at.Address(1 - at.client) +
            (plain ? " plain DICOM: it answers with a PDU"
                   : " does not answer it: likely it expects plain DICOM") +
            ClosedBy(at) + ".");
    SetFrame(*client.first_payload, found);
    found.likeness = at.Address(1 - at.client);
  } else if (SpeaksDicom(client) && server.tls) {
    const auto& alert = server.tls->alert;
    Finding& found = list.Add(
        "plain-to-tls", "The client " + at.Address(at.client) +
                            " speaks plain DICOM and the server " +
                            at.Address(1 - at.client) + " expects TLS" +
                            (alert ? ": it answers with the alert \"" +
                                         AlertText(alert->description) + "\""
                                   : "") +
                            ClosedBy(at) + ".");
    SetFrame(*server.first_payload, found);
    found.likeness = at.Address(1 - at.client);
  }
}

void FindOtherProtocol(const Scene&, const SceneConnection& at,
                       FindingList& list) {
  if (list.HasCause()) return;
  for (const std::uint32_t direction : {1 - at.client, at.client}) {
    const SideFacts& facts = at.Facts(direction);
    const SideFacts& other = at.Facts(1 - direction);
    if (!IsForeign(facts) || facts.lost_bytes != 0 || !facts.syn) continue;
    Protocol protocol = Recognize(facts);
    // Two that understand each other are none of our business.
    if (IsForeign(other) && Recognize(other).slug == protocol.slug) return;
    if (protocol.slug.empty()) {
      if (at.connection->carries_dicom && !SpeaksDicom(other)) continue;
      if (SpeaksDicom(facts)) continue;
      protocol = {"another-protocol", "something unknown"};
    }
    const bool is_server = direction != at.client;
    Finding& found =
        list.Add(protocol.slug,
                 std::string(is_server ? "The server " : "The client ") +
                     at.Address(direction) + " speaks " + protocol.name +
                     (is_server ? "" : " to " + at.Address(1 - at.client)) +
                     ", not DICOM: its first bytes are " +
                     BeginningText(facts) + ClosedBy(at) + ".");
    SetFrame(*facts.first_payload, found);
    found.likeness = at.Address(1 - at.client);
    return;
  }
}

}  // namespace host
