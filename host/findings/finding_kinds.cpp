#include <algorithm>
#include <iterator>

#include "host/findings/finding.h"

namespace host {
namespace {

using enum Severity;
using enum Origin;

// What a script may go by, so no slug changes or goes. The first ones are
// nearest to the cause.
constexpr FindingKind kKinds[] = {
    // The connection.
    {"connection-refused", kFault, kPeer,
     "Is the program running there, and is it this port? A firewall that "
     "refuses looks the same."},
    {"connection-no-answer", kFault, kNetwork,
     "Is the host up and the address right? Look for a firewall or a route "
     "that drops the packets."},
    {"handshake-incomplete", kFault, kNetwork,
     "One way works, the way back does not: look at firewalls, routes and NAT "
     "between the two."},
    {"tls-to-plain", kFault, kPeer,
     "Turn TLS off on the client for this peer, or call the acceptor's TLS "
     "port."},
    {"plain-to-tls", kFault, kPeer,
     "Turn TLS on at the requestor for this peer, or call the acceptor's port "
     "without TLS."},
    {"tls-handshake-failed", kFault, kPeer,
     "Compare certificates, authorities and TLS versions of both sides."},
    {"http-on-port", kFault, kPeer,
     "Compare the port numbers that are configured on both sides: one of them "
     "is a web address."},
    {"hl7-on-port", kFault, kPeer,
     "Compare the port numbers that are configured on both sides: one of them "
     "is an HL7 interface's."},
    {"another-protocol", kFault, kPeer,
     "Compare the address and the port with what the peer's administrator "
     "says."},
    // What cannot be read.
    {"pdu-unknown-type", kFault, kPeer,
     "The sender is defective, or is no DICOM program: look at the first bytes "
     "of the PDU with --hex."},
    {"pdu-bad-length", kFault, kPeer,
     "The sender writes a wrong length: report it to its maker with this "
     "capture."},
    {"pdu-malformed", kFault, kPeer,
     "The sender writes a wrong item: report it to its maker with this "
     "capture."},
    {"pdu-unexpected", kFault, kPeer,
     "The sender does not keep to the order of the protocol: report it to its "
     "maker with this capture."},
    {"pdu-above-maximum", kFault, kPeer,
     "Lower the maximum PDU length that the sender uses; it has to keep to "
     "what "
     "the receiver announces."},
    {"pdv-bad-length", kFault, kPeer,
     "The sender writes a wrong length: report it to its maker with this "
     "capture."},
    {"pdv-odd-length", kFault, kPeer,
     "Fragments have an even length: change the sender's PDU size, or report "
     "it to its maker."},
    {"pdv-unknown-context", kFault, kPeer,
     "The sender uses a context that was never negotiated: report it to its "
     "maker with this capture."},
    {"message-on-refused-context", kFault, kPeer,
     "Make the receiver accept the SOP class, or the sender respect the "
     "refusal: --contexts shows what was agreed."},
    {"fragments-interleaved", kFault, kPeer,
     "The sender mixes two messages: report it to its maker with this "
     "capture."},
    {"message-incomplete", kFault, kPeer,
     "Look at the sender's log at this time: it stopped in the middle of a "
     "message."},
    {"ended-inside-pdu", kFault, kPeer,
     "Look at the sender's log at this time: it stopped in the middle of a "
     "PDU."},
    {"data-set-without-command", kFault, kPeer,
     "The sender is defective: report it to its maker with this capture."},
    {"command-set-broken", kFault, kPeer,
     "A command set is implicit VR little endian always: report it to the "
     "sender's maker."},
    {"command-set-incomplete", kFault, kPeer,
     "The sender leaves out what every command has: report it to its maker."},
    {"command-unknown", kFault, kPeer,
     "The sender uses a command that DICOM does not have: report it to its "
     "maker."},
    {"command-of-wrong-service", kFault, kPeer,
     "The sender uses a context of another service: check which service it is "
     "configured to use with this peer."},
    {"uid-bad", kWarning, kPeer,
     "A UID has at most 64 characters, digits and dots only: mend it where it "
     "is made."},
    {"ae-title-bad", kFault, kPeer,
     "An AE title has 1 to 16 characters: mend the sender's configuration."},
    {"data-set-does-not-parse", kFault, kPeer,
     "The data are not in the transfer syntax of their context: look at how "
     "the sender converts or stores them."},
    {"response-of-wrong-kind", kFault, kPeer,
     "The responder is defective: report it to its maker with this capture."},
    {"response-without-request", kFault, kPeer,
     "The responder answers with a wrong message ID: report it to its maker."},
    {"response-on-another-context", kWarning, kPeer,
     "The answer has to come on the request's context: report it to the "
     "responder's maker."},
    // The negotiation.
    {"reject-called-ae-unknown", kFault, kPeer,
     "Compare the called AE title that the requestor is configured with, to "
     "the letter, with the acceptor's own."},
    {"reject-calling-ae-unknown", kFault, kPeer,
     "Add the requestor's AE title (and its address) to the peers that the "
     "acceptor knows, or mend the title."},
    {"reject-application-context", kFault, kPeer,
     "The requestor names another application context than DICOM's: report it "
     "to its maker."},
    {"reject-protocol-version", kFault, kPeer,
     "The requestor does not offer version 1 of the protocol, or the acceptor "
     "does not see it: ask the makers."},
    {"reject-local-limit", kFault, kPeer,
     "The acceptor has as many associations as it allows: raise its limit, or "
     "let the requestors take turns."},
    {"reject-temporary-congestion", kFault, kPeer,
     "The acceptor is too busy: look at its load, and try again."},
    {"reject-provider-acse", kFault, kPeer,
     "The acceptor's log says why: its association layer rejected."},
    {"reject-reserved-reason", kFault, kPeer,
     "The acceptor's log says why: its reason is none of the standard's."},
    {"reject-no-reason", kFault, kPeer,
     "The acceptor's log says why: it gives no reason here. Often a peer, an "
     "address or a SOP class that it does not allow."},
    {"compressed-only-implicit-accepted", kFault, kPeer,
     "Let the acceptor accept the compressed transfer syntax, or the requestor "
     "decompress: --contexts shows both."},
    {"no-context-accepted", kFault, kPeer,
     "Compare what the requestor proposes with what the acceptor supports: "
     "--contexts shows both."},
    {"context-refused-abstract-syntax", kNote, kPeer,
     "Let the acceptor support the SOP class, or do not send it there."},
    {"context-refused-transfer-syntax", kNote, kPeer,
     "Let the acceptor accept one of the proposed transfer syntaxes, or the "
     "requestor propose others."},
    {"get-without-scp-role", kFault, kPeer,
     "Let the requestor propose the storage classes with the SCP role: "
     "without it no object can be sent back."},
    {"event-report-without-role", kWarning, kPeer,
     "The sender of reports has to be SCP: let it propose the role, and the "
     "other side grant it."},
    {"role-not-negotiated", kWarning, kPeer,
     "The sender has no SCU role for this class: let it propose the role, and "
     "the other side grant it."},
    {"context-answer-missing", kWarning, kPeer,
     "The acceptor has to answer each context: report it to its maker."},
    {"context-answer-doubled", kWarning, kPeer,
     "The acceptor answers a context twice: report it to its maker."},
    {"context-answer-unproposed", kWarning, kPeer,
     "The acceptor answers what nobody proposed: report it to its maker."},
    {"context-syntax-unproposed", kWarning, kPeer,
     "The acceptor chooses what nobody proposed: report it to its maker."},
    {"context-id-even", kWarning, kPeer,
     "Context IDs are odd: report it to the sender's maker."},
    {"context-id-doubled", kWarning, kPeer,
     "Each context has an ID of its own: report it to the requestor's maker."},
    {"sop-class-not-of-context", kWarning, kPeer,
     "The sender uses a context of another class: report it to its maker; "
     "some receivers refuse it."},
    {"message-id-in-use", kWarning, kPeer,
     "Answers cannot be told apart: report it to the sender's maker."},
    {"protocol-version-bad", kWarning, kPeer,
     "The version has to be 1: report it to the sender's maker."},
    {"application-context-bad", kWarning, kPeer,
     "The name has to be DICOM's own: report it to the requestor's maker."},
    {"window-exceeded", kWarning, kPeer,
     "Limit the sender's open operations, or negotiate a larger window."},
    // What became of requests.
    {"status-failure", kFault, kPeer,
     "The responder's log says more about this status."},
    {"status-unknown", kFault, kPeer,
     "The responder's log says more. The standard does not list this status "
     "for this service: the responder's conformance statement may."},
    {"commitment-failed", kWarning, kPeer,
     "The archive does not keep these objects: send them again before they "
     "are deleted."},
    {"suboperations-failed", kWarning, kPeer,
     "Look at the associations to the destination, and at the responder's "
     "log."},
    {"status-warning", kWarning, kPeer,
     "The work was done, not quite as asked: the status says in what."},
    {"peer-vanished", kFault, kNetwork,
     "Look at the cable, the host and the firewall of the silent side: its "
     "packets stop while the other goes on sending."},
    {"abort-by-acceptor", kFault, kPeer,
     "Look at the acceptor's log at this time."},
    {"abort-by-requestor", kFault, kPeer,
     "Look at the requestor's log at this time."},
    {"associate-unanswered", kFault, kPeer,
     "Something accepts connections there and does not talk DICOM: a hanging "
     "program, a wrong port, or a filter for addresses."},
    {"request-unanswered", kFault, kPeer,
     "Look at the log of the side that did not answer, at this time."},
    {"connection-dropped", kFault, kPeer,
     "Look at the log of the side that closed: it crashed, or was ended."},
    {"release-unanswered", kWarning, kPeer,
     "Look at the log of the side that did not answer the release."},
    {"never-released", kWarning, kPeer,
     "The requestor has to release its associations: some acceptors report an "
     "error otherwise."},
    {"connected-without-pdu", kWarning, kPeer,
     "A monitor that only knocks, or a program that hangs before it speaks."},
    // Texts that nobody reads as they were meant.
    {"character-set-unknown", kWarning, kPeer,
     "Receivers guess how to read the texts: let the sender declare one of "
     "DICOM's terms in Specific Character Set (0008,0005)."},
    {"character-set-mismatch", kWarning, kPeer,
     "Receivers show other letters or none: let the sender declare in Specific "
     "Character Set (0008,0005) what it writes its texts in."},
    {"character-set-undeclared-escape", kWarning, kPeer,
     "Let the sender declare in Specific Character Set (0008,0005) every set "
     "that it switches to."},
    // The network, where it costs time.
    {"zero-window", kWarning, kPeer,
     "The receiver does not take its data in time: look at its disks and its "
     "load."},
    {"retransmissions", kWarning, kNetwork,
     "Packets are lost on the way: look at cables, duplex settings and "
     "overloaded links."},
    // Whose time it was.
    {"packets-held-back", kNote, kPeer,
     "Set TCP_NODELAY at the side that holds back, or let it write a message "
     "at once; the other side can only acknowledge sooner."},
    {"association-per-object", kNote, kPeer,
     "Let the requestor send all objects of a study in one association."},
    {"window-too-small", kNote, kPeer,
     "Raise the receive buffer of the side whose window it is, and let it "
     "scale its window: it has to hold what is sent in a round trip."},
    {"answers-slow-down", kNote, kPeer,
     "Look at what the answering side does with each request: a search without "
     "an index, a file or a table that grows."},
    {"answers-slow", kNote, kPeer,
     "Look at the load, the disks and the data base of the side that answers."},
    {"requests-slow", kNote, kPeer,
     "Look at what the requestor does between its requests: reading, "
     "converting, a queue."},
    {"transfer-slow", kNote, kNetwork,
     "Compare the rate with what the link carries; --timing shows losses, "
     "round trips and windows."},
    {"association-slow", kNote, kPeer,
     "Look at name servers, the load and the limits of that side: it is slow "
     "before or behind the work."},
    // The capture itself.
    {"capture-file-damaged", kWarning, kCapture,
     "Make room where room was missing; else copy the capture again, or "
     "capture "
     "again."},
    {"capture-one-direction", kWarning, kCapture,
     "Capture where both directions pass: mirror both of them."},
    {"capture-snap-length", kWarning, kCapture,
     "Capture whole packets: tcpdump -s 0."},
    {"capture-lost-packets", kWarning, kCapture,
     "Capture with a larger buffer (tcpdump -B), with a filter, or nearer to "
     "one of the hosts."},
    {"capture-starts-in-the-middle", kWarning, kCapture,
     "Start the capture before the association to see what was negotiated."},
    {"capture-ends-early", kNote, kCapture,
     "Let the capture go on until the association has ended."},
    {"capture-duplicated-frames", kNote, kCapture,
     "Mirror one port, or one direction, only; the copies are left out."},
    {"capture-offload", kNote, kCapture,
     "Sizes and times of packets are not those of the wire: switch offload off "
     "for measuring."},
    // Worth knowing.
    {"tls-encrypted", kNote, kPeer,
     "What is said in it cannot be read without the keys."},
    {"implicit-not-proposed", kNote, kPeer,
     "Every side has to know implicit VR little endian: propose it too."},
    {"maximum-length-tiny", kNote, kPeer,
     "Raise the maximum PDU length: small ones cost time."},
    {"maximum-length-unlimited", kNote, kPeer,
     "It says that it takes PDUs of any length; some peers misread the 0."},
    {"class-accepted-in-another-context", kNote, kPeer,
     "Nothing to do: the class was accepted with other transfer syntaxes."},
    {"character-set-likely-another", kNote, kPeer,
     "Compare the name at the sender with what the receiver shows: if they "
     "differ, the sender declares another character set than it writes."},
};

constexpr bool HasNoDoubles() {
  for (const FindingKind& kind : kKinds) {
    if (std::ranges::count(kKinds, kind.slug, &FindingKind::slug) != 1) {
      return false;
    }
  }
  return true;
}
static_assert(HasNoDoubles(), "each slug once");

}  // namespace

std::string_view SeverityText(Severity severity) {
  constexpr std::string_view kTexts[] = {"fault", "warning", "note"};
  return kTexts[static_cast<std::size_t>(severity)];
}

std::string_view OriginText(Origin origin) {
  constexpr std::string_view kTexts[] = {"peer", "network", "capture"};
  return kTexts[static_cast<std::size_t>(origin)];
}

std::span<const FindingKind> FindingKinds() { return kKinds; }

const FindingKind& KindOf(std::string_view slug) {
  return *std::ranges::find(kKinds, slug, &FindingKind::slug);
}

}  // namespace host
