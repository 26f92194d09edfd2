#include "dimse/value_format.h"
#include "upper_layer/code_text.h"
#include "upper_layer/upper_layer_decoder.h"

// The four PDUs of 10 bytes: A-ASSOCIATE-RJ, A-RELEASE-RQ and -RP, A-ABORT.

namespace dicom {

using enum LevelStep;

namespace {

constexpr CodeRow kRejectResults[] = {
    {1, 1, "-rejected permanent"},
    {2, 2, "-rejected transient"},
};
constexpr CodeRow kRejectSources[] = {
    {1, 1, "-DICOM UL service user"},
    {2, 2, "-DICOM UL service provider (ACSE related function)"},
    {3, 3, "-DICOM UL service provider (Presentation related function)"},
};

// Deliberate: reason 0 is an error for sources 1 and 2 but reserved for 3.
// A-ASSOCIATE-RJ reason/diagnostic, one table for each source.
constexpr CodeRow kUserReasons[] = {
    {1, 1, "-no reason given"},
    {2, 2, "-application context name not supported"},
    {3, 3, "-calling AE title not recognized"},
    {4, 6, "-reserved"},
    {7, 7, "-called AE title not recognized"},
    {8, 10, "-reserved"},
};
constexpr CodeRow kAcseReasons[] = {
    {1, 1, "-no reason given"},
    {2, 2, "-protocol version not supported"},
};
// Deliberate: both spellings.
constexpr CodeRow kPresentationReasons[] = {
    {0, 0, "-reserved"},
    {1, 1, "-temporary congrestion"},
    {2, 2, "-local-limit exeeded"},
    {3, 7, "-reserved"},
};
constexpr CodeRows kReasonsBySource[] = {kUserReasons, kAcseReasons,
                                         kPresentationReasons};

constexpr CodeRow kAbortSources[] = {
    {0, 0, "-DICOM UL service user (initiated abort)"},
    {1, 1, "-reserved"},
    {2, 2, "-DICOM UL service provider (initiated abort)"},
};
constexpr CodeRow kAbortReasons[] = {
    {0, 0, "-reason not specified"},
    {1, 1, "-unrecognized PDU"},
    {2, 2, "-unexpected PDU"},
    {3, 3, "-reserved"},
    {4, 4, "-unrecognized PDU parameter"},
    {5, 5, "-unexpected PDU parameter"},
    {6, 6, "-invalid PDU parameter value"},
};

static_assert(RowsAscend(kRejectResults) && RowsAscend(kRejectSources) &&
              RowsAscend(kUserReasons) && RowsAscend(kAcseReasons) &&
              RowsAscend(kPresentationReasons) && RowsAscend(kAbortSources) &&
              RowsAscend(kAbortReasons));

}  // namespace

void UpperLayerDecoder::DecodeReject() {
  ShowCommonHeader();
  Show("Reserved: " + ByteHex(Byte()), kLine, 1);
  Show("Result: " +
           CodeText(Byte(), kRejectResults, ByteHex(Byte()) + kWrongValue),
       kLine, 1);
  const std::uint8_t source = Byte();
  // Deliberate: the only "wrong value" without a blank before it.
  Show("Source: " + CodeText(source, kRejectSources,
                             ByteHex(source) + "ERROR - wrong value!"),
       kLine, 1);
  if (source < 1 || source > 3) {
    // Deliberate: without a known source the reason has no meaning and is not
    // even read.
    return Show("Reason/Diag.: ERROR - because of Source!", kLine, 1);
  }
  Show("Reason/Diag.: " + CodeText(Byte(), kReasonsBySource[source - 1],
                                   ByteDecimal(Byte()) + kWrongValue),
       kLine, 1);
}

void UpperLayerDecoder::DecodeRelease() {
  ShowCommonHeader();
  Show("Reserved: " + LongHex(Long()), kLine, 4);
}

void UpperLayerDecoder::DecodeAbort() {
  ShowCommonHeader();
  Show("Reserved: " + ByteHex(Byte()), kLine, 1);
  Show("Reserved: " + ByteHex(Byte()), kLine, 1);
  const std::uint8_t source = Byte();
  if (source > 2) {
    // Deliberate: "Result: ", and the reason byte stays without a line.
    return Show("Result: " + ByteHex(source) + kWrongValue, kLine, 1);
  }
  Show("Source: " + CodeText(source, kAbortSources, ""), kLine, 1);
  Show(source == 2
           ? "Reason/Diag.: " + CodeText(Byte(), kAbortReasons,
                                         ByteDecimal(Byte()) + kWrongValue)
           : "Reserved: " + ByteHex(Byte()),
       kLine, 1);
}

}  // namespace dicom
