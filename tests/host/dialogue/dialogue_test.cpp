#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "host/capdump/data_output.h"
#include "host/capdump/dialogue_reports.h"
#include "host/capdump/report.h"
#include "host/dialogue/dialogue_reader.h"
#include "host/dialogue/negotiation.h"
#include "host/dialogue/outcome.h"
#include "host/rows/reported_row.h"
#include "tests/wire_builder.h"

namespace host {
namespace {

using dicom::testing::AnsweredContext;
using dicom::testing::CommandSet;
using dicom::testing::ImplicitElement;
using dicom::testing::Item;
using dicom::testing::Little16;
using dicom::testing::ProposedContext;
using dicom::testing::Repeat;
using dicom::testing::Text;
using dicom::testing::Uid;

constexpr std::string_view kEcho = "1.2.840.10008.1.1";
constexpr std::string_view kCt = "1.2.840.10008.5.1.4.1.1.2";
constexpr std::string_view kFind = "1.2.840.10008.5.1.4.1.2.2.1";
constexpr std::string_view kImplicit = "1.2.840.10008.1.2";
constexpr std::string_view kExplicit = "1.2.840.10008.1.2.1";

Bytes ApplicationContext() { return Item(0x10, Text("1.2.840.10008.3.1.1.1")); }

Bytes UserInformation(const Bytes& more = {}) {
  return Item(0x50, Item(0x51, Big32(16384)) +
                        Item(0x52, Text("1.2.276.0.7230010.3.0.3.6.7")) +
                        Item(0x55, Text("OFFIS_DCMTK_367")) + more);
}

Bytes Role(std::string_view uid, std::uint8_t scu, std::uint8_t scp) {
  const Bytes text = Text(uid);
  return Item(0x54, Big16(text.Length()) + text + Bytes{scu, scp});
}

Bytes RequestOf(const Bytes& contexts, const Bytes& more = {}) {
  return AssociateRequest(ApplicationContext() + contexts +
                          UserInformation(more));
}
Bytes AcceptOf(const Bytes& contexts, const Bytes& more = {}) {
  return AssociateAccept(ApplicationContext() + contexts +
                         UserInformation(more));
}

Bytes Number(std::uint16_t element, std::uint16_t value) {
  return ImplicitElement(0, element, Little16(value));
}

// A command set with the elements that every one has; `more` follows.
Bytes Command(std::uint16_t field, std::uint16_t id, bool has_data,
              const Bytes& more = {}, std::string_view sop_class = kCt) {
  const std::uint16_t id_element = field >= 0x0FFF ? 0x0120 : 0x0110;
  return CommandSet(ImplicitElement(0, 0x0002, Uid(sop_class)) +
                    Number(0x0100, field) + Number(id_element, id) +
                    Number(0x0800, has_data ? 1 : 0x0101) + more);
}
Bytes Status(std::uint16_t status) { return Number(0x0900, status); }

Bytes CommandPdv(std::uint8_t context, const Bytes& command) {
  return dicom::testing::Pdv(context, kLastCommand, command);
}
Bytes DataPdv(std::uint8_t context, std::uint8_t control, std::size_t bytes) {
  return dicom::testing::Pdv(context, control, Repeat(0x41, bytes));
}

std::vector<Connection> Read(const std::vector<Segment>& segments) {
  return Connect(segments, HandOver::kCleanStreams, ReadDialogues());
}

std::string Shown(const Dialogue& dialogue, const DialogueMessage& m) {
  std::string text = std::to_string(m.direction) + " " +
                     CommandFieldText(m.command_field) + " id " +
                     std::to_string(m.message_id.value_or(0)) + " context " +
                     std::to_string(m.context) + " " +
                     std::string(dialogue.TransferSyntaxOf(m));
  if (m.status) text += " status " + std::to_string(*m.status);
  text += " " + std::to_string(m.data_bytes) + " bytes";
  if (!m.IsComplete()) text += " incomplete";
  if (m.request) text += " answers " + std::to_string(*m.request);
  if (m.answers != 0) text += " has " + std::to_string(m.answers);
  if (m.parent) text += " for " + std::to_string(*m.parent);
  if (m.record) text += " row " + std::to_string(*m.record);
  return text + "\n";
}

std::string Messages(const Dialogue& dialogue) {
  std::string text;
  for (const DialogueMessage& message : dialogue.messages) {
    text += Shown(dialogue, message);
  }
  return text;
}

std::string Irregularities(const Dialogue& dialogue) {
  std::string text;
  for (const Irregularity& i : dialogue.irregularities) {
    text += std::to_string(static_cast<int>(i.kind)) + " by " +
            std::to_string(i.place.direction) + ": " +
            std::to_string(i.expected) + " " + std::to_string(i.found) + " " +
            i.text + "\n";
  }
  return text;
}

// Both sides of one association: a C-STORE in pieces, a C-FIND with two
// answers, a C-GET with a sub-operation the other way.
Wire WholeAssociation(std::size_t segment_bytes) {
  Wire wire;
  wire.segment_bytes = segment_bytes;
  wire.Handshake();
  const Bytes role = Role(kCt, 1, 1);
  wire.Send(0, RequestOf(ProposedContext(1, kCt, {kImplicit, kExplicit}) +
                             ProposedContext(3, kFind, {kImplicit}) +
                             ProposedContext(5, kEcho, {kImplicit}),
                         role + Item(0x53, Big16(3) + Big16(1)) +
                             Item(0x58, Bytes{2, 1} + Big16(4) + Text("user") +
                                            Big16(6) + Text("secret"))));
  wire.Send(1, AcceptOf(AnsweredContext(1, 0, kExplicit) +
                            AnsweredContext(3, 0, kImplicit) +
                            AnsweredContext(5, 3, ""),
                        role));
  wire.SendAll(0, {PData(CommandPdv(1, Command(1, 7, true))),
                   PData(DataPdv(1, kData, 300) + DataPdv(1, kData, 20)),
                   PData(DataPdv(1, kLastData, 80))});
  wire.Send(1, PData(CommandPdv(1, Command(0x8001, 7, false, Status(0)))));
  wire.Send(0, PData(CommandPdv(3, Command(0x20, 8, true, {}, kFind)) +
                     DataPdv(3, kLastData, 10)));
  wire.SendAll(
      1, {PData(CommandPdv(3, Command(0x8020, 8, true, Status(0xFF00), kFind)) +
                DataPdv(3, kLastData, 40)),
          PData(CommandPdv(
              3, Command(0x8020, 8, false,
                         Status(0xA700) +
                             ImplicitElement(0, 0x0901,
                                             Little16(0x10) + Little16(0x20)) +
                             ImplicitElement(0, 0x0902, Text("No disk ")),
                         kFind)))});
  wire.Send(0, PData(CommandPdv(3, Command(0x10, 9, true, {}, kFind)) +
                     DataPdv(3, kLastData, 10)));
  wire.Send(
      1, PData(CommandPdv(1, Command(1, 7, true)) + DataPdv(1, kLastData, 50)));
  wire.Send(0, PData(CommandPdv(1, Command(0x8001, 7, false, Status(0)))));
  wire.Send(1, PData(CommandPdv(3, Command(0x8010, 9, false,
                                           Status(0xB000) + Number(0x1021, 0) +
                                               Number(0x1022, 1),
                                           kFind))));
  wire.Send(0, ReleaseRequest());
  wire.Send(1, ReleaseReply());
  wire.Close();
  return wire;
}

TEST(DialogueTest, AnAssociationIsReadWithAllThatBelongsTogether) {
  for (const std::size_t segment_bytes : {1u, 7u, 100u, 1448u}) {
    SCOPED_TRACE(segment_bytes);
    const auto connections = Read(WholeAssociation(segment_bytes).segments);
    const Dialogue& dialogue = *DialogueOf(connections.at(0));
    ASSERT_EQ(dialogue.associations.size(), 1u);
    const Association& association = dialogue.associations[0];
    ASSERT_TRUE(association.request && association.accept);
    EXPECT_EQ(association.request->calling_ae_title, "CALLING");
    EXPECT_EQ(association.request->called_ae_title, "CALLED");
    EXPECT_EQ(association.request->implementation_version, "OFFIS_DCMTK_367");
    EXPECT_EQ(association.request->max_pdu_bytes, 16384u);
    EXPECT_EQ(association.request->window->invoked, 3);
    EXPECT_EQ(association.request->user_identity->type,
              kIdentityNameAndPasscode);
    EXPECT_TRUE(association.GrantedRole(kCt)->scp);
    EXPECT_EQ(association.release_answer->pdu + 1, dialogue.pdus.size());
    ASSERT_EQ(association.contexts.size(), 3u);
    EXPECT_EQ(association.contexts[0].chosen_syntax, kExplicit);
    EXPECT_EQ(association.contexts[0].messages, 4u);
    EXPECT_EQ(association.contexts[2].result, kAbstractSyntaxNotSupported);
    EXPECT_EQ(Messages(dialogue),
              "0 C-STORE-RQ id 7 context 1 1.2.840.10008.1.2.1 400 bytes has 1 "
              "row 0\n"
              "1 C-STORE-RSP id 7 context 1 1.2.840.10008.1.2.1 status 0 0 "
              "bytes answers 0 row 1\n"
              "0 C-FIND-RQ id 8 context 3 1.2.840.10008.1.2 10 bytes has 2 row "
              "2\n"
              "1 C-FIND-RSP id 8 context 3 1.2.840.10008.1.2 status 65280 40 "
              "bytes answers 2 row 3\n"
              "1 C-FIND-RSP id 8 context 3 1.2.840.10008.1.2 status 42752 0 "
              "bytes answers 2 row 4\n"
              "0 C-GET-RQ id 9 context 3 1.2.840.10008.1.2 10 bytes has 1 row "
              "5\n"
              "1 C-STORE-RQ id 7 context 1 1.2.840.10008.1.2.1 50 bytes has 1 "
              "for 5 row 6\n"
              "0 C-STORE-RSP id 7 context 1 1.2.840.10008.1.2.1 status 0 0 "
              "bytes answers 6 row 7\n"
              "1 C-GET-RSP id 9 context 3 1.2.840.10008.1.2 status 45056 0 "
              "bytes answers 5 row 8\n");
    EXPECT_EQ(Irregularities(dialogue), "");
    const host::CommandSet failed = dialogue.ReadCommand(dialogue.messages[4]);
    EXPECT_EQ(failed.error_comment, "No disk");
    ASSERT_EQ(failed.offending_elements.size(), 1u);
    EXPECT_EQ(failed.offending_elements[0], (Tag{0x0010, 0x0020}));
    Bytes data(500);
    const auto source = dialogue.DataSetOf(dialogue.messages[0]);
    EXPECT_EQ(source->Read(290, data), 110u);  // over three pieces
    EXPECT_EQ(data.First(110), Repeat(0x41, 110));
  }
}

// What the capture lost is not held against the peers.
TEST(DialogueTest, ALostSegmentMakesNoIrregularity) {
  for (const std::size_t segment_bytes : {20u, 150u}) {
    const Wire wire = WholeAssociation(segment_bytes);
    for (std::size_t lost = 3; lost < wire.segments.size(); ++lost) {
      SCOPED_TRACE(lost);
      std::vector<Segment> segments = wire.segments;
      segments.erase(segments.begin() + static_cast<std::ptrdiff_t>(lost));
      const auto connections = Read(segments);
      EXPECT_EQ(Irregularities(*DialogueOf(connections.at(0))), "");
    }
    for (const std::size_t kept : {0u, 1u}) {  // only one direction is there
      std::vector<Segment> segments = wire.segments;
      std::erase_if(segments,
                    [kept](const Segment& s) { return s.direction != kept; });
      const auto connections = Read(segments);
      EXPECT_EQ(Irregularities(*DialogueOf(connections.at(0))), "");
    }
  }
}

TEST(DialogueTest, EachIrregularityIsNamedOnceWithItsSide) {
  const Bytes ct = ProposedContext(1, kCt, {kImplicit});
  const Bytes yes = AnsweredContext(1, 0, kImplicit);
  const Bytes echo = PData(CommandPdv(1, Command(0x30, 1, false)));
  const Bytes store = CommandPdv(1, Command(1, 2, true));
  const Bytes any_number = Item(0x53, Big32(0));
  const auto kind = [](IrregularityKind one) {
    return std::to_string(static_cast<int>(one));
  };
  using K = IrregularityKind;
  struct Case {
    Bytes request;
    Bytes accept;
    std::vector<Bytes> pdus;  // of the requestor
    std::string expected;
    std::vector<Bytes> answers = {};
  };
  const Case cases[] = {
      {RequestOf(ct + ProposedContext(2, kEcho, {kImplicit})),
       AcceptOf(yes + AnsweredContext(2, 0, kImplicit)),
       {},
       kind(K::kEvenContextId) + " by 0: 0 2 \n"},
      {RequestOf(ct + ct),
       AcceptOf(yes),
       {},
       kind(K::kDuplicateContextId) + " by 0: 0 1 \n" +
           kind(K::kMissingAnswer) + " by 1: 0 1 \n"},
      {RequestOf(ct),
       AcceptOf(yes + yes + AnsweredContext(9, 0, kImplicit)),
       {},
       kind(K::kDuplicateAnswer) + " by 1: 0 1 \n" +
           kind(K::kUnproposedContextId) + " by 1: 0 9 \n"},
      {RequestOf(ct),
       AcceptOf(AnsweredContext(1, 0, kExplicit)),
       {},
       kind(K::kUnofferedSyntax) + " by 1: 0 1 1.2.840.10008.1.2.1\n"},
      {RequestOf(ct),
       AcceptOf(AnsweredContext(1, 4, "")),
       {echo},
       kind(K::kRefusedContext) + " by 0: 0 1 \n"},
      {RequestOf(ct),
       AcceptOf(yes),
       {PData(CommandPdv(7, Command(0x30, 1, 0)))},
       kind(K::kUnknownContext) + " by 0: 0 7 \n"},
      {RequestOf(ProposedContext(1, "1.2.x", {kImplicit})),
       AcceptOf(yes),
       {},
       kind(K::kBadUid) + " by 0: 0 5 1.2.x\n"},
      {RequestOf(ct),
       AcceptOf(yes, any_number),
       {PData(store + DataPdv(1, kData, 10)), echo},
       kind(K::kMissingLastFragment) + " by 0: 1 10 \n"},
      {RequestOf(ct),
       AcceptOf(yes),
       {PData(DataPdv(1, kLastData, 10))},
       kind(K::kDataWithoutCommand) + " by 0: 0 1 \n"},
      {RequestOf(ct),
       AcceptOf(yes),
       {PData(store + DataPdv(1, kLastData, 11))},
       kind(K::kOddPdvLength) + " by 0: 0 13 \n"},
      {RequestOf(ct),
       AcceptOf(yes),
       {PData(store + DataPdv(1, kLastData, 20000))},
       kind(K::kPduAboveMaximum) + " by 0: 16384 " +
           std::to_string(store.size() + 20006) + " \n"},
      {RequestOf(ct),
       AcceptOf(yes),
       {Pdu(9, Bytes{1, 2}), Pdu(5, {})},
       kind(K::kUnknownPduType) + " by 0: 0 9 \n" + kind(K::kWrongPduLength) +
           " by 0: 4 0 \n"},
      {RequestOf(ct),
       AcceptOf(yes, any_number),
       {echo, ReleaseRequest(), PData(store)},
       kind(K::kUnexpectedPdu) + " by 0: 0 4 \n"},
      {RequestOf(ct),
       AcceptOf(yes),
       {},
       kind(K::kUnaskedAnswer) + " by 1: 0 5 \n",
       {PData(CommandPdv(1, Command(0x8001, 5, false, Status(0))))}},
      {RequestOf(ct),
       AcceptOf(yes),
       {},
       kind(K::kRoleNotNegotiated) + " by 1: 0 0 1.2.840.10008.5.1.4.1.1.2\n",
       {PData(CommandPdv(1, Command(0x30, 5, false)))}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.expected);
    Wire wire;
    wire.Handshake();
    wire.Send(0, one.request);
    wire.Send(1, one.accept);
    wire.SendAll(0, one.pdus);
    wire.SendAll(1, one.answers);
    wire.Close();
    const auto connections = Read(wire.segments);
    EXPECT_EQ(Irregularities(*DialogueOf(connections.at(0))), one.expected);
  }
}

TEST(OutcomeTest, AStatusMeansWhatItsServiceSays) {
  struct Case {
    std::uint16_t status;
    std::uint16_t command;
    std::string_view sop_class;
    std::string expected;
  };
  const Case cases[] = {
      {0xA7FF, 0x8001, kCt, "A7FFh Refused: Out of resources"},
      {0xA900, 0x8001, kCt, "A900h Error: Data Set does not match SOP Class"},
      {0xB007, 0x8001, kCt, "B007h Warning: Data Set does not match SOP Class"},
      {0xC310, 0x8020, kFind, "C310h Failed: Unable to process"},
      {0xC310, 0x8130, "1.2.840.10008.5.1.4.34.6.3",
       "C310h The UPS is not yet IN PROGRESS"},
      {0xA801, 0x8021, kFind, "A801h Refused: Move Destination unknown"},
      {0x0110, 0x8120, "1.2.840.10008.3.1.2.3.3",
       "0110h Processing failure: Performed Procedure Step object may no "
       "longer be updated"},
      {0x0110, 0x8030, kEcho, "0110h Processing failure"},
      {0xB604, 0x8120, "1.2.840.10008.5.1.1.4.1",
       "B604h Warning: Image larger than image box, it has been demagnified"},
      {0xC123, 0x8030, kEcho, "C123h, a failure (not in the standard)"},
      {0xB123, 0x8030, kEcho, "B123h, a warning (not in the standard)"},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(StatusWithText(one.status, one.command, one.sop_class),
              one.expected);
  }
}

TEST(OutcomeTest, RowsSayWhatBecameOfThem) {
  const auto connections = Read(WholeAssociation(1448).segments);
  const Dialogue& dialogue = *DialogueOf(connections.at(0));
  EXPECT_EQ(PduOutcome(dialogue, 1),
            "2 of 3 contexts accepted, not Verification SOP Class (abstract "
            "syntax not supported)");
  EXPECT_EQ(MessageOutcome(dialogue, 0), "C-STORE CT Image Storage");
  EXPECT_EQ(MessageOutcome(dialogue, 1), "0000h Success");
  EXPECT_EQ(MessageOutcome(dialogue, 4),
            "A700h Refused: Out of resources; \"No disk\"; offending element "
            "(0010,0020) Patient ID");
  EXPECT_EQ(MessageOutcome(dialogue, 6),
            "C-STORE CT Image Storage; part of a C-GET");
  EXPECT_EQ(MessageOutcome(dialogue, 8),
            "B000h Warning: Sub-operations complete, one or more failures or "
            "warnings; 0 done, 1 failed");
  const AssociationSide& side = *dialogue.associations[0].request;
  EXPECT_EQ(
      ToolkitText(side.implementation_class_uid, side.implementation_version),
      "DCMTK 3.6.7");

  Wire refused;
  refused.Handshake();
  refused.Send(0, RequestOf(ProposedContext(1, kCt, {kImplicit})));
  refused.Send(1, Pdu(3, {0, 1, 1, 7}));
  refused.Send(0, RequestOf(ProposedContext(1, kCt, {kImplicit})));
  refused.Send(1, AcceptOf(AnsweredContext(1, 0, kImplicit)));
  refused.Send(0, PData(CommandPdv(1, Command(1, 7, true))));
  refused.Send(1, dicom::testing::Abort(2, 2));
  const auto others = Read(refused.segments);
  const Dialogue& other = *DialogueOf(others.at(0));
  ASSERT_EQ(other.associations.size(), 2u);
  EXPECT_EQ(PduOutcome(other, 1),
            "permanent, by the service user: called AE title not recognized");
  EXPECT_EQ(PduOutcome(other, 5),
            "by the service provider: unexpected PDU, after C-STORE-RQ, not "
            "complete");
  EXPECT_EQ(MessageOutcome(other, 0),
            "C-STORE CT Image Storage; not complete; no answer");
}

TEST(NegotiationTest, WhatIsOddIsSaidWithWhatWouldHaveMatched) {
  const auto associate = [](const Bytes& proposed, const Bytes& answered) {
    Wire wire;
    wire.Handshake();
    wire.Send(0, RequestOf(proposed));
    wire.Send(1, AcceptOf(answered));
    wire.Close();
    return Read(wire.segments);
  };
  const auto other = associate(ProposedContext(1, kCt, {kImplicit}),
                               AnsweredContext(1, 0, kImplicit));
  Acceptances all;
  all.Add(6, *DialogueOf(other.at(0)));
  const auto odd =
      associate(ProposedContext(1, kCt, {kExplicit}),
                AnsweredContext(1, 4, "") + AnsweredContext(9, 0, kImplicit));
  std::string notes;
  const Dialogue& dialogue = *DialogueOf(odd.at(0));
  for (const std::string& note : NegotiationNotes(dialogue, 0, all)) {
    notes += note + "\n";
  }
  EXPECT_EQ(notes,
            "Context 1, CT Image Storage, was refused: transfer syntaxes not "
            "supported. What would have matched: CALLED accepted it with "
            "Implicit VR Little Endian (connection 7).\n"
            "Implicit VR Little Endian was not offered for CT Image Storage, "
            "which every side has to offer and to accept.\n"
            "Context 9 was answered, but never proposed.\n");
  const auto table = NegotiationTable(dialogue.associations[0]);
  ASSERT_EQ(table.size(), 2u);
  EXPECT_EQ(table[0][3], "transfer syntaxes not supported");
  EXPECT_EQ(table[1][1], "not proposed");
}

TEST(ContextsReportTest, ATableAndAnAnswersFieldsAreWritten) {
  const auto connections = Read(WholeAssociation(1448).segments);
  std::string text;
  const Sink sink = [&text](std::string_view more) { text += more; };
  WriteContexts(connections, {}, sink);
  EXPECT_EQ(text, R"(
Connection 1  192.0.2.1:41000 --> 192.0.2.2:104
  Association 1  CALLING --> CALLED: 2 of 3 contexts accepted, not Verification SOP Class (abstract syntax not supported)
    requestor  DCMTK 3.6.7, takes PDUs of 16,384 bytes, window 3/1, user identity type 2
    acceptor   DCMTK 3.6.7, takes PDUs of 16,384 bytes
    id  abstract syntax                                     result                         chosen                     roles                           messages  proposed
    1   CT Image Storage                                    accepted                       Explicit VR Little Endian  asked SCU+SCP, granted SCU+SCP  4         Implicit VR Little Endian, Explicit VR Little Endian
    3   Study Root Query/Retrieve Information Model - FIND  accepted                       Implicit VR Little Endian                                  5         Implicit VR Little Endian
    5   Verification SOP Class                              abstract syntax not supported                                                             0         Implicit VR Little Endian
    note: Context 5, Verification SOP Class, was refused: abstract syntax not supported.
)");
  text.clear();
  WriteContextsJson(connections, {}, sink);
  EXPECT_NE(text.find(R"({"kind":"context","connection":1,"association":1,)"
                      R"("id":3,"abstract_syntax":)"),
            text.npos)
      << text;
  text.clear();
  Options options;
  options.dicom_json = true;
  DataOutput(options, sink).Show(connections);
  EXPECT_TRUE(text.starts_with(
      R"({"kind":"dicom_message","connection":1,"row":1,)"
      R"("command_field":"C-STORE-RQ","time":"1970-01-01T00:00:00.)"))
      << text;
  text.clear();
  ReportedConnection reported;
  reported.connection = &connections[0];
  std::vector<ReportedRow> rows(1);
  rows[0].wire = &connections[0].messages[4];
  AddOutcomes(connections[0], ListKind::kMessages, rows);
  const auto report = MakeJsonReport(sink);
  report->BeginConnection(reported);
  report->BeginList(ListKind::kMessages, rows);
  report->Row(rows[0], {});
  const std::string fields =
      R"("command":"C-FIND-RSP","context":3,"message_id":8,)"
      R"("sop_class":"1.2.840.10008.5.1.4.1.2.2.1",)"
      R"("first_time":"1970-01-01T00:00:00.014000000Z",)"
      R"("duration":0.000000000,"answered_after":0.000000000,)"
      R"("status":"A700h",)"
      R"("status_text":"Refused: Out of resources","error_comment":"No disk",)"
      R"("offending_elements":["(0010,0020) Patient ID"]})";
  EXPECT_NE(text.find(fields), text.npos) << text;
}

}  // namespace
}  // namespace host
