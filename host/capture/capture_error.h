#ifndef HOST_CAPTURE_CAPTURE_ERROR_H_
#define HOST_CAPTURE_CAPTURE_ERROR_H_

#include "host/text/failure.h"

namespace host {

// Why a capture cannot be read.
class CaptureError : public Failure {
 public:
  using Failure::Failure;
};

// The filter expression is wrong: the user's command, not the file.
class FilterError : public CaptureError {
 public:
  using CaptureError::CaptureError;
};

}  // namespace host

#endif  // HOST_CAPTURE_CAPTURE_ERROR_H_
