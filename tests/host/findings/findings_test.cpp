#include "host/findings/findings.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "host/capdump/findings_report.h"
#include "host/capdump/overview.h"
#include "host/dialogue/dialogue_reader.h"
#include "host/dialogue/irregularity_text.h"
#include "host/findings/rules.h"
#include "tests/wire_builder.h"

namespace host {
namespace {

using dicom::testing::Abort;
using dicom::testing::AnsweredContext;
using dicom::testing::CommandSet;
using dicom::testing::ImplicitElement;
using dicom::testing::Little16;
using dicom::testing::ProposedContext;
using dicom::testing::Text;
using dicom::testing::Uid;

constexpr std::string_view kCt = "1.2.840.10008.5.1.4.1.1.2";
constexpr std::string_view kEcho = "1.2.840.10008.1.1";
constexpr std::string_view kImplicit = "1.2.840.10008.1.2";
constexpr std::string_view kJpeg = "1.2.840.10008.1.2.4.50";

// What two peers may do, in the words of a test.
class Talk : public Wire {
 public:
  Talk& Associate() {
    Handshake();
    Send(0, AssociateRequest(ProposedContext(1, kCt, {kImplicit}) +
                             ProposedContext(3, kEcho, {kImplicit})));
    Send(1, AssociateAccept(AnsweredContext(1, 0, kImplicit) +
                            AnsweredContext(3, 0, kImplicit)));
    return *this;
  }
  Talk& Ask(std::uint16_t id, std::uint8_t context = 1, Bytes data = {}) {
    Send(0, PData(Message(context, context == 1 ? 0x0001 : 0x0030, id, {})));
    if (context == 1) {
      if (data.empty()) data = ImplicitElement(8, 0x18, Uid("1.2.3"));
      Send(0, PData(dicom::testing::Pdv(context, kLastData, data)));
    }
    return *this;
  }
  Talk& Answer(std::uint16_t id, std::uint16_t status,
               std::uint8_t context = 1) {
    Send(1, PData(Message(context, context == 1 ? 0x8001 : 0x8030, id,
                          ImplicitElement(0, 0x0900, Little16(status)))));
    return *this;
  }
  // A name as it is sent under a declared character set.
  Talk& AskWithName(const std::string& declared, const std::string& name) {
    return Ask(1, 1,
               ImplicitElement(8, 5, Text(declared)) +
                   ImplicitElement(0x10, 0x10, Text(name)));
  }
  Talk& Release() {
    Send(0, ReleaseRequest());
    Send(1, ReleaseReply());
    Close();
    return *this;
  }
  Talk& End(std::uint32_t direction, std::uint8_t flags) {
    Acknowledge(direction);
    segments.back().flags |= flags;
    return *this;
  }

 private:
  static Bytes Message(std::uint8_t context, std::uint16_t field,
                       std::uint16_t id, const Bytes& more) {
    const auto number = [](std::uint16_t element, std::uint16_t value) {
      return ImplicitElement(0, element, Little16(value));
    };
    const bool answers = field >= 0x8000;
    return dicom::testing::Pdv(
        context, kLastCommand,
        CommandSet(
            ImplicitElement(0, 0x0002, Uid(context == 1 ? kCt : kEcho)) +
            number(0x0100, field) + number(answers ? 0x0120 : 0x0110, id) +
            number(0x0800, answers || context != 1 ? 0x0101 : 1) + more));
  }
};

std::vector<Connection> Read(const Wire& wire) {
  return Connect(wire.segments, HandOver::kCleanStreams, ReadDialogues());
}

std::vector<Finding> Found(const std::vector<Connection>& connections) {
  std::vector<const Connection*> pointers;
  for (const Connection& one : connections) pointers.push_back(&one);
  return FindAll(Scene(pointers, {}));
}

Bytes Rejection(std::uint8_t source, std::uint8_t reason) {
  return Pdu(3, {0, 1, source, reason});
}

struct Case {
  const char* slug;      // of the worst, or of a note that is last
  const char* sentence;  // a part of it
  std::function<void(Talk&)> talk;
};

const Case kCases[] = {
    {nullptr, "", [](Talk& t) { t.Associate().Ask(1).Answer(1, 0).Release(); }},
    {"character-set-likely-another", "declared ISO_IR 100, looks like GBK",
     [](Talk& t) {
       t.Associate().AskWithName("ISO_IR 100", "\xCD\xF5^\xD0\xA1\xB6\xAB ");
       t.Answer(1, 0).Release();
     }},
    {"character-set-mismatch",
     "0010,0010 Patient's Name holds bytes above 7Fh, but no character set for "
     "them is declared; they look like UTF-8.",
     [](Talk& t) {
       t.Associate().AskWithName("", "M\xC3\xBCller ").Answer(1, 0).Release();
     }},
    {"character-set-undeclared-escape", "switches to ISO 2022 IR 87",
     [](Talk& t) {
       t.Associate().AskWithName("ISO 2022 IR 100 ", "\x1B$B;3ED\x1B(B");
       t.Answer(1, 0).Release();
     }},
    {"character-set-unknown", "ISO_IR 999 is no character set of DICOM",
     [](Talk& t) {
       t.Associate().AskWithName("ISO_IR 999", "Adam").Answer(1, 0).Release();
     }},
    // Both directions were captured in two places.
    {nullptr, "", [](Talk& t) { t.Associate().Answer(1, 0).Ask(1).Release(); }},
    {"connection-refused", "192.0.2.2:104 refused",
     [](Talk& t) {
       t.segments.push_back({0, 1000, 0, kSyn});
       t.segments.push_back({1, 0, 1001, kRst | kAck});
     }},
    {"connection-no-answer", "(2 attempts)",
     [](Talk& t) {
       t.segments.assign(2, {0, 1000, 0, kSyn});
     }},
    {"connected-without-pdu", "the server closed it (FIN)",
     [](Talk& t) {
       t.Handshake();
       t.End(1, kFin);
     }},
    {"tls-to-plain", "likely it expects plain DICOM",
     [](Talk& t) {
       t.Handshake();
       t.SendRaw(0, Bytes{22, 3, 1, 0, 40, 1, 0, 0, 36, 3, 3} + Bytes(34));
       t.End(1, kFin);
     }},
    {"plain-to-tls", "alert \"handshake failure, alert 40\"",
     [](Talk& t) {
       t.Begin();
       t.SendRaw(1, {21, 3, 3, 0, 2, 2, 40});
       t.End(1, kFin);
     }},
    {"http-on-port", "The client 192.0.2.1:41000 speaks HTTP",
     [](Talk& t) {
       t.Handshake();
       t.SendRaw(0, Text("GET / HTTP/1.1\r\nHost: pacs\r\n\r\n"));
       t.End(1, kFin);
     }},
    {"http-on-port", "The client 192.0.2.1:41000 speaks HTTP",
     [](Talk& t) {
       t.Handshake();
       t.SendRaw(0, Text("CONNECT pacs:104 HTTP/1.1\r\n\r\n"));
       t.End(1, kFin);
     }},
    {"reject-called-ae-unknown", "the called AE title \"CALLED\"",
     [](Talk& t) {
       t.Begin();
       t.Send(1, Rejection(1, 7));
     }},
    {"reject-local-limit", "acceptor CALLED (192.0.2.2:104) rejected",
     [](Talk& t) {
       t.Begin();
       t.Send(1, Rejection(3, 2));
     }},
    {"associate-unanswered", "the acceptor closed the connection (FIN)",
     [](Talk& t) {
       t.Begin();
       t.End(1, kFin);
     }},
    {"no-context-accepted", "none of the transfer syntaxes",
     [](Talk& t) {
       t.Handshake();
       t.Send(0, AssociateRequest(ProposedContext(1, kCt, {kJpeg})));
       t.Send(1, AssociateAccept(AnsweredContext(1, 4, kImplicit)));
       t.Release();
     }},
    {"compressed-only-implicit-accepted", "does not convert",
     [](Talk& t) {
       t.Handshake();
       t.Send(0, AssociateRequest(ProposedContext(1, kCt, {kJpeg}) +
                                  ProposedContext(3, kCt, {kImplicit})));
       t.Send(1, AssociateAccept(AnsweredContext(1, 4, kImplicit) +
                                 AnsweredContext(3, 0, kImplicit)));
       t.Release();
     }},
    {"abort-by-acceptor", "instead of answering the C-STORE",
     [](Talk& t) {
       t.Associate().Ask(7);
       t.Send(1, Abort(2, 0));
     }},
    {"abort-by-requestor", "all requests were answered",
     [](Talk& t) {
       t.Associate().Ask(1).Answer(1, 0);
       t.Send(0, Abort(0, 0));
     }},
    {"request-unanswered", "message ID 7",
     [](Talk& t) {
       t.Associate().Ask(7);
       t.End(1, kRst);
     }},
    {"never-released", "closed the connection (FIN)",
     [](Talk& t) {
       t.Associate().Ask(1).Answer(1, 0);
       t.End(0, kFin);
     }},
    {"connection-dropped", "The acceptor CALLED",
     [](Talk& t) {
       t.Associate().Ask(1).Answer(1, 0);
       t.End(1, kRst);
     }},
    {"status-failure", "refused 2 C-STORE requests of 3",
     [](Talk& t) {
       t.Associate();
       for (std::uint16_t id = 1; id <= 3; ++id) {
         t.Ask(id).Answer(id, id == 2 ? 0 : 0xA700);
       }
       t.Release();
     }},
    {"pdu-unknown-type", "type 33h",
     [](Talk& t) {
       t.Associate();
       t.Send(0, Pdu(0x33, {1, 2}));
       t.Send(1, Abort(2, 1));
     }},
    {"ended-inside-pdu", "10 of 1,006 bytes",
     [](Talk& t) {
       t.Associate();
       t.SendRaw(0, Pdu(4, Bytes(1000)).First(10));
       t.End(0, kFin);
     }},
    {"capture-starts-in-the-middle", "begins in the middle",
     [](Talk& t) { t.Ask(1, 3).Answer(1, 0, 3).Release(); }},
};

TEST(FindingsTest, EachFaultIsNamedFirstAndNothingElseIsOne) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.slug == nullptr ? "healthy" : c.slug);
    Talk talk;
    c.talk(talk);
    const auto connections = Read(talk);
    const auto findings = Found(connections);
    std::size_t wrong = 0;
    for (const Finding& one : findings) {
      wrong += one.severity != Severity::kNote ? 1 : 0;
    }
    const bool is_fine =
        c.slug == nullptr || KindOf(c.slug).severity == Severity::kNote;
    EXPECT_EQ(wrong, is_fine ? 0u : 1u);
    if (c.slug == nullptr || findings.empty()) continue;
    const Finding& found = is_fine ? findings.back() : findings.front();
    EXPECT_EQ(found.kind->slug, c.slug);
    EXPECT_NE(found.sentence.find(c.sentence), std::string::npos)
        << found.sentence;
  }
}

// Three are told by what they lead to.
TEST(FindingsTest, EveryIrregularityIsAFindingOfAKnownKind) {
  for (std::size_t kind = 0; kind < kIrregularityKinds; ++kind) {
    SCOPED_TRACE(kind);
    Dialogue dialogue;
    dialogue.irregularities.push_back(
        {static_cast<IrregularityKind>(kind), {}, 1, 2, "1.2.3", {}, {}});
    EXPECT_NE(IrregularityText(dialogue.irregularities[0]), "");
    const Connection connection;
    SceneConnection at;
    at.connection = &connection;
    at.dialogue = &dialogue;
    FindingList list;
    list.BeginConnection(0);
    FindIrregularities(Scene({}, {}), at, list);
    list.EndConnection();
    const auto findings = list.TakeSorted();
    const auto is_any = [kind](IrregularityKind one) {
      return kind == static_cast<std::size_t>(one);
    };
    ASSERT_EQ(findings.empty(),
              is_any(IrregularityKind::kTooManyItems) ||
                  is_any(IrregularityKind::kMissingElement) ||
                  is_any(IrregularityKind::kAnswerOnOtherContext));
    for (const Finding& found : findings) {
      EXPECT_TRUE(std::ranges::any_of(FindingKinds(), [&](const auto& known) {
        return &known == found.kind;
      }));
    }
  }
}

TEST(FindingsTest, AServerThatDiedStandsBeforeTheConnectionsItThenRefuses) {
  Talk t;
  t.Associate().Ask(1).End(1, kRst);
  t.segments.push_back({0, 900000, 0, kSyn});
  t.segments.push_back({1, 0, 900001, kRst | kAck});
  const auto connections = Read(t);
  const std::vector<Finding> findings = Found(connections);
  ASSERT_GE(findings.size(), 2u);
  EXPECT_EQ(findings[0].kind->slug, "request-unanswered");
  EXPECT_EQ(findings[1].kind->slug, "connection-refused");
  EXPECT_NE(findings[1].sentence.find("of connection 1 ended"),
            std::string::npos)
      << findings[1].sentence;
}

TEST(FindingsTest, WhatIsLostInTheCaptureIsNobodysFault) {
  Talk talk;
  talk.Associate().Ask(1).Answer(1, 0).Release();
  const std::size_t count = talk.segments.size();
  for (std::size_t lost = 3; lost < count; ++lost) {
    SCOPED_TRACE(lost);
    Talk holed = talk;
    if (holed.segments[lost].payload.empty()) continue;
    holed.segments.erase(holed.segments.begin() +
                         static_cast<std::ptrdiff_t>(lost));
    for (const Finding& one : Found(Read(holed))) {
      EXPECT_TRUE(one.kind->origin == Origin::kCapture ||
                  one.severity == Severity::kNote)
          << one.sentence;
    }
  }
}

TEST(OverviewTest, TellsTheCauseAndTheStoryWithinAScreen) {
  Talk talk;
  talk.Associate();
  for (std::uint16_t id = 1; id <= 100; ++id) {
    talk.Ask(id).Answer(id, id <= 60 ? 0 : 0xA700);
  }
  talk.Release();
  const auto connections = Read(talk);
  std::string text;
  const Overview overview(connections, {});
  overview.Show({}, "a.pcap", [&text](std::string_view more) { text += more; });
  EXPECT_TRUE(overview.HasFault({}));
  std::istringstream lines(text);
  std::size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_LE(line.size(), 100u) << line;
  }
  EXPECT_LE(count, 25u) << text;
  for (const char* part :
       {"a.pcap: 1 TCP connection, 1 with DICOM\n\n1 fault",
        "\nFAULT    The acceptor CALLED (192.0.2.2:104) refused 40 C-STORE",
        "of 100 (CT Image Storage)\n         with A700h", "CALLING asks CALLED for an association, 2",
        ", all contexts", "60 x C-STORE CT Image Storage: all 0000h",
        "40 x C-STORE CT Image Storage: all A700h", "released"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
  }
  EXPECT_EQ(text.find(", about the "), std::string::npos);  // only if asked for
}

TEST(OverviewTest, ManyFindingsAreCutBehindTheTenth) {
  FindingList list;
  list.BeginConnection(0);
  for (int i = 0; i < 12; ++i) {
    list.Add("pdu-bad-length", "Number " + std::to_string(i) + ".");
  }
  list.EndConnection();
  std::vector<Finding> findings = list.TakeSorted();
  std::string text;
  const Sink sink = [&text](std::string_view more) { text += more; };
  WriteFindings(Scene({}, {}), findings, {}, sink);
  EXPECT_NE(text.find("Number 9."), text.npos) << text;
  EXPECT_EQ(text.find("Number 10."), text.npos) << text;
  EXPECT_TRUE(text.ends_with("and 2 more, --findings shows all\n")) << text;
  text.clear();
  findings.resize(10);
  WriteFindings(Scene({}, {}), findings, {}, sink);
  EXPECT_EQ(text.find(" more, "), text.npos) << text;
}

TEST(FindingKindsTest, TheDocumentNamesEachWithItsAdvice) {
  std::ifstream file(SOURCE_DIR "/docs/findings.md");
  std::stringstream text;
  text << file.rdbuf();
  for (const FindingKind& kind : FindingKinds()) {
    const std::string row = "| `" + std::string(kind.slug) + "` | " +
                            std::string(SeverityText(kind.severity)) + " | " +
                            std::string(OriginText(kind.origin)) + " | ";
    EXPECT_NE(text.str().find(row), std::string::npos) << row;
    EXPECT_NE(text.str().find(std::string(kind.advice) + " |"),
              std::string::npos)
        << kind.slug;
  }
}

}  // namespace
}  // namespace host
