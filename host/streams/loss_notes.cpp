#include "host/streams/loss_notes.h"

#include <span>

#include "host/streams/pdu_header.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// What a stream that is no DICOM looks like; empty if like nothing known.
std::string GuessText(const std::vector<std::uint8_t>& bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()),
                              bytes.size());
  if (text.starts_with("\x16\x03")) return " (it looks like TLS)";
  for (const std::string_view word : {"GET ", "POST ", "PUT ", "HTTP/"}) {
    if (text.starts_with(word)) return " (it looks like HTTP)";
  }
  return "";
}

// The stream is no DICOM from `at` on.
std::string NoDicomSentence(const StreamAssembler& stream, StreamPosition at,
                            const std::string& from) {
  constexpr std::size_t kBytesLookedAt = 8;
  const auto before = static_cast<std::uint64_t>(at - stream.begin());
  return "The stream" + from + " is no DICOM" +
         (before == 0 ? "" : " behind its first " + BytesText(before)) +
         GuessText(stream.Peek(at, kBytesLookedAt)) + ".";
}

// No PDU is known to begin at `rest`, where the last one ended.
std::string NoPduSentence(const StreamAssembler& stream, StreamPosition rest,
                          const std::string& from) {
  const std::uint64_t present = stream.PresentBytes(rest, stream.end());
  const auto lost = static_cast<std::uint64_t>(stream.end() - rest) - present;
  if (present == 0) {
    return BytesText(lost) + " behind the last PDU" + from + " are missing.";
  }
  return "No whole PDU was found in the last " + BytesText(present) + from +
         (lost != 0 ? ", where " + BytesText(lost) + " are missing." : ".");
}

// The PDU at `rest` has no end in the stream.
std::string CutOffSentence(const StreamAssembler& stream, StreamPosition rest,
                           const std::string& from) {
  const std::uint64_t present = stream.PresentBytes(rest, stream.end());
  const auto bytes = stream.Peek(rest, kPduHeaderBytes);
  if (bytes.size() < kPduHeaderBytes) {
    return "The capture ends inside a PDU header" + from + ": " +
           NumberText(present) + " of " + BytesText(kPduHeaderBytes) + ".";
  }
  const auto header =
      PduHeader::Parse(std::span(bytes).first<kPduHeaderBytes>());
  return "The capture ends inside " + PduTypeText(header.type) + from + ": " +
         NumberText(present) + " of " +
         BytesText(std::uint64_t{kPduHeaderBytes} + header.length) + ".";
}

}  // namespace

std::string FilledText(std::uint64_t lost) {
  return CountText(lost, "lost byte was", "lost bytes were") +
         " filled with zero";
}

void AppendNote(std::string_view part, std::string& note) {
  if (!note.empty()) note += "; ";
  note += part;
}

std::string LossNotes::AddPdu(const CutPdu& pdu, PduFate fate) {
  lost_ += pdu.lost_before;
  skipped_ += pdu.skipped;
  filled_ += pdu.lost;
  filled_pdus_ += pdu.lost != 0 ? 1 : 0;
  left_out_ += fate == PduFate::kLeftOut ? 1 : 0;
  std::string note;
  if (pdu.lost_before != 0) {
    AppendNote(BytesText(pdu.lost_before) + " lost before it", note);
  }
  if (pdu.skipped != 0) {
    AppendNote(BytesText(pdu.skipped) + " before it in no whole PDU", note);
  }
  if (pdu.lost != 0) AppendNote(FilledText(pdu.lost), note);
  if (fate == PduFate::kItemsAreInexact) {
    AppendNote("its PDV items do not fill it exactly", note);
  }
  if (fate == PduFate::kLeftOut) {
    AppendNote(PduTypeText(pdu.header.type) + " with " +
                   BytesText(pdu.header.length) +
                   " behind its header is left out",
               note);
  }
  return note;
}

void LossNotes::AppendSentences(const StreamAssembler& stream,
                                const std::string& endpoint,
                                std::vector<std::string>& sentences) const {
  const std::string from = " from " + endpoint;
  if (filled_ != 0) {
    sentences.push_back(FilledText(filled_) + " in " +
                        CountText(filled_pdus_, "PDU", "PDUs") + from + ".");
  }
  if (lost_ != 0) {
    sentences.push_back(BytesText(lost_) + from +
                        " between the listed PDUs were not captured.");
  }
  if (skipped_ != 0) {
    sentences.push_back(BytesText(skipped_) + from +
                        " were skipped: they are in no whole PDU.");
  }
  if (left_out_ != 0) {
    sentences.push_back(
        CountText(left_out_, "P-DATA-TF PDU", "P-DATA-TF PDUs") + from +
        ", too short for a PDV item, " + (left_out_ == 1 ? "is" : "are") +
        " left out.");
  }
  if (stream.differing_copies() != 0) {
    sentences.push_back(
        CountText(stream.differing_copies(), "repeated segment",
                  "repeated segments") +
        from + (stream.differing_copies() == 1 ? " differs" : " differ") +
        " from what came first, which was kept.");
  }
}

std::string EndSentence(const StreamAssembler& stream, const PduCutter& cutter,
                        const std::string& endpoint, bool finished) {
  const std::string from = " from " + endpoint;
  if (const auto at = cutter.not_dicom_from()) {
    return NoDicomSentence(stream, *at, from);
  }
  const StreamPosition rest = cutter.delivered_until();
  if (!finished || !stream.has_payload() || rest >= stream.end()) return {};
  const bool cut_off = cutter.unfinished() == rest ||
                       (stream.began_with_syn() &&
                        BeginsLikePdu(stream.Peek(rest, kPduHeaderBytes)));
  return cut_off ? CutOffSentence(stream, rest, from)
                 : NoPduSentence(stream, rest, from);
}

}  // namespace host
