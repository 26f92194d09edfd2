#ifndef ERRORS_ERRORS_H_
#define ERRORS_ERRORS_H_

#include <exception>

namespace dicom {

// The module's failures. Each derives directly from std::exception and carries
// one fixed text, which reaches the user in a message box or through the host.
// The texts keep their spelling.

// Reserved for memory that runs out. The language's own std::bad_alloc takes
// that way, so this is never raised.
class OutOfMemory final : public std::exception {
 public:
  const char* what() const noexcept override { return "Out of Memory"; }
};

// A read whose last byte lies at or beyond the end of the bytes. In a decode it
// becomes a line with the position; in the reassembly it means a header that a
// segment's end cuts.
class OutOfRange final : public std::exception {
 public:
  const char* what() const noexcept override { return "Out of Range"; }
};

// What cannot go on: a PDU length field of FFFFFFFAh or more, or no memory for
// a segment that came early.
class Unexpected final : public std::exception {
 public:
  const char* what() const noexcept override { return "Unexpected"; }
};

// A dictionary file that cannot be read. The module then cannot be loaded.
class ErrorWhileOpenFile final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "An Error occured after trying to open a file!";
  }
};

// A packet of fewer than the 14 bytes that a TCP header's flags end at.
class ArrayTooShort final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "Packet too short for Tcp Header!";
  }
};

// A line whose LevelStep the depth of the tree does not admit: no line behind
// it would be right.
class WrongTreeDepth final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "The tree depth has reached the maximum or is too low!";
  }
};

// A presentation context ID that is accepted twice. Ends the reading of that
// accept and goes no further.
class DoublePresentationContextId final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "The Presentation context already exist.";
  }
};

// A data set on a presentation context that was not accepted.
class PresentationContextDoesNotExist final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "The Presentation context does not exist.";
  }
};

// A packet asked for before there is a host window to ask.
class HandleNotSet final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "Handle needs to be set!!!";
  }
};

// Reserved for a transfer syntax that cannot be classified.
// Deliberate: an unknown one counts as explicit VR little endian, so this is
// never raised.
class TransferSyntaxNotExist final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "The Transfer Syntax does not exist!";
  }
};

// The host no longer delivers a packet that it delivered before.
class UnableToGetPacketFromTapvane final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "Unable to get Packet From Tapvane";
  }
};

}  // namespace dicom

#endif  // ERRORS_ERRORS_H_
