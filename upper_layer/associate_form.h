#ifndef UPPER_LAYER_ASSOCIATE_FORM_H_
#define UPPER_LAYER_ASSOCIATE_FORM_H_

#include <cstdint>

#include "upper_layer/code_text.h"
#include "upper_layer/upper_layer_decoder.h"

namespace dicom {

// For associate.cpp and items.cpp, which share the decode of an association.
struct UpperLayerDecoder::AssociateForm {
  const char* first_title;   // caption of the 16 bytes at 10
  const char* second_title;  // caption of the 16 bytes at 26
  // Deliberate: 20h in a request, 21h in an accept; each is an unknown item in
  // the other.
  std::uint8_t context_item;
  void (UpperLayerDecoder::*decode_context_item)();
  LevelStep unknown_item;  // of an unknown item's first line
  // The bytes of a role selection: what is proposed, or what became of it.
  CodeRows scu_roles;
  CodeRows scp_roles;
};

}  // namespace dicom

#endif  // UPPER_LAYER_ASSOCIATE_FORM_H_
