#include "dimse/value_format.h"
#include "upper_layer/associate_form.h"

namespace dicom {

using enum LevelStep;

namespace {

constexpr CodeRow kProposedScuRoles[] = {
    {0, 0, " - non support of the SCU role"},
    {1, 1, " - support of SCU role"},
};
constexpr CodeRow kProposedScpRoles[] = {
    {0, 0, " - non support of the SCP role"},
    {1, 1, " - support of SCP role"},
};
constexpr CodeRow kAcceptedScuRoles[] = {
    {0, 0, " - rejected SCU role"},
    {1, 1, " - accepted SCU role"},
};
constexpr CodeRow kAcceptedScpRoles[] = {
    {0, 0, " - rejected SCP role"},
    {1, 1, " - accepted SCP role"},
};
static_assert(RowsAscend(kProposedScuRoles) && RowsAscend(kProposedScpRoles) &&
              RowsAscend(kAcceptedScuRoles) && RowsAscend(kAcceptedScpRoles));

}  // namespace

constinit const UpperLayerDecoder::AssociateForm
    UpperLayerDecoder::kRequestForm = {
        .first_title = "Called AE title: ",
        .second_title = "Calling AE title: ",
        .context_item = 0x20,
        .decode_context_item = &UpperLayerDecoder::DecodeProposedContext,
        .unknown_item = kOpenAtLevel1,
        .scu_roles = kProposedScuRoles,
        .scp_roles = kProposedScpRoles,
};

constinit const UpperLayerDecoder::AssociateForm
    UpperLayerDecoder::kAcceptForm = {
        // Deliberate: the accept's reserved bytes are shown as text.
        .first_title = "Reserved: ",
        .second_title = "Reserved: ",
        .context_item = 0x21,
        .decode_context_item = &UpperLayerDecoder::DecodeAcceptedContext,
        // Deliberate: only the request returns to level 1; in an accept an
        // unknown item opens under whatever is open.
        .unknown_item = kOpen,
        .scu_roles = kAcceptedScuRoles,
        .scp_roles = kAcceptedScpRoles,
};

void UpperLayerDecoder::DecodeAssociate(const AssociateForm& form) {
  ShowCommonHeader();
  if (!ShowProtocolVersion()) return;
  Show("Reserved: " + WordHex(Word()), kLine, 2);
  Show(form.first_title + Characters(16), kLine, 16);
  Show(form.second_title + Characters(16), kLine, 16);
  // Deliberate: the 32 bytes are not read, so a PDU that is cut inside them
  // ends without an error line.
  Show("Reserved : (32 Bytes)", kLine, 32);
  // Deliberate: the items reach to the buffer's end whatever the PDU length
  // says, in any order and number.
  while (!AtEnd()) DecodeItem(form);
}

bool UpperLayerDecoder::ShowProtocolVersion() {
  // Deliberate: each bit stands for a version that the peer supports, and only
  // bit 0 is looked at.
  if (Word() & 1) {
    Show("Protokoll Version: Version 1", kLine, 2);
    return true;
  }
  Show("Protokoll Version: Version 1 not supported!", kLine, 2);
  // Deliberate: an error line without a byte.
  ShowHere("ERROR - UL Protokoll Version not supported!", kSection, 0);
  return false;
}

}  // namespace dicom
