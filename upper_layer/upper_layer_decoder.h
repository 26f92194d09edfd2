#ifndef UPPER_LAYER_UPPER_LAYER_DECODER_H_
#define UPPER_LAYER_UPPER_LAYER_DECODER_H_

#include <cstdint>
#include <string>

#include "dimse/dicom_dictionary.h"
#include "tracking/byte_array_view.h"
#include "tree/decode_tree_writer.h"
#include "upper_layer/code_text.h"

namespace dicom {

// Decodes one Upper Layer PDU into lines, field by field in wire order. Made
// for one display: the bytes, the writer and the dictionary stay the caller's
// and outlive it. All fields are big-endian.
// Deliberate: captions and error texts keep their wording, spelling and copied
// headings ("Protokoll", "Reserved : ", "Transfer syntax Item: "): users search
// for them.
class UpperLayerDecoder : private ByteArrayView {
 public:
  // `bytes` begins with the PDU-type byte and holds the PDU as far as it was
  // captured.
  UpperLayerDecoder(const std::uint8_t* bytes, std::uint32_t length,
                    DecodeTreeWriter& tree_writer,
                    const DicomDictionary& dictionary);

  // Writes all lines. Whatever fails becomes one last line with the position;
  // throws nothing but what that line's own writing throws.
  void DecodePdu();

  // Offset of the next field to show.
  std::uint32_t Position() const { return position_; }

 private:
  // Everything in which an A-ASSOCIATE-AC differs from an A-ASSOCIATE-RQ.
  struct AssociateForm;
  static const AssociateForm kRequestForm;
  static const AssociateForm kAcceptForm;

  enum class PduSize { kAny, kTenBytes };

  // The PDUs, by their type byte.
  void DecodeByType();
  void DecodeAssociate(const AssociateForm& form);             // 01h, 02h
  void DecodeReject();                                         // 03h
  void DecodeData();                                           // 04h
  void DecodeRelease(const char* title, const char* caption);  // 05h, 06h
  void DecodeAbort();                                          // 07h

  // The items of an A-ASSOCIATE PDU and, indented, their sub-items. Each starts
  // with the cursor at the type byte and leaves it behind the item. An item's
  // own length bounds its loop only; the reads are bounded by the buffer.
  void DecodeItem(const AssociateForm& form);
  void DecodeApplicationContext();  // 10h
  void DecodeProposedContext();     // 20h
  void DecodeProposedSyntax();
  void DecodeAbstractSyntax();   //   30h
  void DecodeTransferSyntax();   //   40h
  void DecodeAcceptedContext();  // 21h
  void DecodeAcceptedSyntax();
  void DecodeUserInformation(const AssociateForm& form);  // 50h
  void DecodeUserSubItem(const AssociateForm& form);
  void DecodeMaximumLength();                           //   51h
  void DecodeImplementationClass();                     //   52h
  void DecodeOperationsWindow();                        //   53h
  void DecodeRoleSelection(const AssociateForm& form);  //   54h
  void DecodeImplementationVersion();                   //   55h
  void DecodeExtendedNegotiation();                     //   56h
  void DecodeUnknownItem(const AssociateForm& form);
  void DecodeUnknownSubItem();

  // Lines that several decoders share.
  void ShowCommonHeader(const char* title, const char* caption, PduSize size);
  bool ShowProtocolVersion();
  void ShowItemHeader(const char* size_error = "");
  void ShowMessageData();
  void ShowUid(const char* caption, std::uint32_t length,
               LevelStep description_step);

  // Writes a line for `bytes` bytes at the cursor and moves past them.
  void Show(const std::string& text, LevelStep step, std::uint32_t bytes);
  // The same with the cursor staying, so that the next line describes the same
  // bytes or some of them.
  void ShowHere(const std::string& text, LevelStep step, std::uint32_t bytes);

  // Moves the cursor. Nothing is checked: the next read does that. A position
  // past 32 bits stays at the largest, which is past every end.
  void Advance(std::uint32_t bytes);
  // Throws OutOfRange, without moving, for a position past the end.
  void SetPosition(std::uint32_t position);
  // The position `bytes` bytes behind the cursor, saturated.
  std::uint32_t PositionAfter(std::uint32_t bytes) const;

  // The field at the cursor as text; OutOfRange past the end.
  std::string ByteHex(std::uint32_t distance = 0) const;
  std::string ByteDecimal() const;
  std::string WordHex() const;
  std::string WordHexAndDecimal() const;
  std::string LongHex() const;
  std::string LongHexAndDecimal() const;
  std::string Characters(std::uint32_t count) const;
  // Drops one trailing zero byte. Throws std::out_of_range on length 0.
  std::string UidText(std::uint32_t length, std::uint32_t distance = 0) const;
  // The byte's row, or `other`, behind the caption.
  std::string CodeText(const char* caption, CodeRows rows,
                       const std::string& other) const;
  std::string RejectReasonText(std::uint8_t source) const;

  // The length field of the item at the cursor.
  std::uint32_t ItemLength() const;

  std::uint32_t position_ = 0;
  std::uint32_t previous_position_ = 0;  // before the last advance
  DecodeTreeWriter& tree_writer_;
  const DicomDictionary& dictionary_;
};

}  // namespace dicom

#endif  // UPPER_LAYER_UPPER_LAYER_DECODER_H_
