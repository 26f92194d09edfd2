#ifndef ERRORS_ERRORS_H_
#define ERRORS_ERRORS_H_

#include <exception>

namespace dicom {

// The module's failures. Each derives directly from std::exception and carries
// one fixed text, which reaches the user in a message box or through the host.
// The texts keep their spelling.

class OutOfMemory final : public std::exception {
 public:
  const char* what() const noexcept override { return "Out of Memory"; }
};

// A read whose last byte lies at or beyond the end of the bytes.
class OutOfRange final : public std::exception {
 public:
  const char* what() const noexcept override { return "Out of Range"; }
};

class Unexpected final : public std::exception {
 public:
  const char* what() const noexcept override { return "Unexpected"; }
};

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

class WrongTreeDepth final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "The tree depth has reached the maximum or is too low!";
  }
};

class DoublePresentationContextId final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "The Presentation context already exist.";
  }
};

class PresentationContextDoesNotExist final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "The Presentation context does not exist.";
  }
};

class HandleNotSet final : public std::exception {
 public:
  const char* what() const noexcept override {
    return "Handle needs to be set!!!";
  }
};

// Reserved for a transfer syntax that cannot be classified.
// Deliberate: an
// unknown one counts as explicit VR little endian, so this is never raised.
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
