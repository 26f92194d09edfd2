#ifndef UPPER_LAYER_UPPER_LAYER_DECODER_H_
#define UPPER_LAYER_UPPER_LAYER_DECODER_H_

#include <cstdint>
#include <string>

#include "dimse/dicom_dictionary.h"
#include "dimse/line_cursor.h"

namespace dicom {

struct UidItem;  // what items.cpp knows of an item that holds one UID

// Decodes one Upper Layer PDU into lines, field by field in wire order. Made
// for one display. All numbers are big-endian.
// Deliberate: captions and error texts keep their wording, spelling and copied
// headings ("Protokoll", "Reserved : ", "Transfer syntax Item: "): users search
// for them.
class UpperLayerDecoder : private LineCursor {
 public:
  // `pdu` begins with the PDU-type byte and holds the PDU as far as it was
  // captured. What is passed in stays the caller's and outlives the decoder.
  UpperLayerDecoder(const ByteArrayView& pdu, const DicomDictionary& dictionary,
                    DecodeTreeWriter& writer)
      : LineCursor(pdu, 0, kBigEndian, writer), dictionary_(dictionary) {}

  // Writes all lines. Whatever fails becomes one last line with the position;
  // throws nothing but what that line's own writing throws.
  void DecodePdu();

 private:
  // Everything in which an A-ASSOCIATE-AC differs from an A-ASSOCIATE-RQ.
  struct AssociateForm;
  static const AssociateForm kRequestForm;
  static const AssociateForm kAcceptForm;

  // The PDUs, by their type byte. Each starts with the cursor at that byte.
  // What a PDU's length field says bounds nothing: the buffer does. Throw
  // OutOfRange where that cuts a field.
  void DecodeByType();
  void DecodeAssociate(const AssociateForm& form);  // 01h, 02h
  void DecodeReject();                              // 03h
  void DecodeData();                                // 04h
  void DecodeRelease();                             // 05h, 06h
  void DecodeAbort();                               // 07h

  // The items of an A-ASSOCIATE PDU and, indented, their sub-items. Each starts
  // with the cursor at the type byte and leaves it behind the item. An item's
  // own length bounds its loop only; the reads are bounded by the buffer. A
  // length that is too large is believed: the line marks what is claimed.
  void DecodeItem(const AssociateForm& form);
  void DecodeUidItem(const UidItem& item);  // 10h and   30h, 40h, 52h
  void DecodeProposedContext();             // 20h
  void DecodeProposedSyntax();
  void DecodeAcceptedContext();                           // 21h
  void DecodeUserInformation(const AssociateForm& form);  // 50h
  void DecodeUserSubItem(const AssociateForm& form);
  void DecodeMaximumLength();                           //   51h
  void DecodeOperationsWindow();                        //   53h
  void DecodeRoleSelection(const AssociateForm& form);  //   54h
  void DecodeImplementationVersion();                   //   55h
  void DecodeExtendedNegotiation();                     //   56h
  void DecodeUnknownItem(const AssociateForm& form);
  void DecodeUnknownSubItem();

  // The four lines that every PDU begins with. The titles are those of the type
  // byte.
  void ShowCommonHeader();
  // False when the rest of the PDU cannot be read by this version's rules.
  bool ShowProtocolVersion();
  // A heading over the whole item at the cursor, with the step that opens it,
  // then its type, reserved byte and size, the latter with `size_error`.
  void ShowItemHeader(const std::string& heading, LevelStep step,
                      const char* size_error = "");
  // The UID of `length` bytes at the cursor and, below it, its description.
  // OutOfRange without a byte.
  void ShowUid(const char* caption, std::uint32_t length,
               LevelStep description_step);

  // The length field of the item at the cursor. It counts what follows it, so
  // an item covers 4 bytes more.
  std::uint32_t ItemLength() const { return Word(2); }

  const DicomDictionary& dictionary_;
};

}  // namespace dicom

#endif  // UPPER_LAYER_UPPER_LAYER_DECODER_H_
