#ifndef HOST_CAPDUMP_FOLLOW_H_
#define HOST_CAPDUMP_FOLLOW_H_

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/capdump/options.h"
#include "host/capdump/report.h"
#include "host/module/decode_controls.h"
#include "host/module/module.h"
#include "host/module/module_session.h"
#include "host/rows/reported_row.h"
#include "host/streams/capture_loader.h"

namespace host {

// Shows the rows of a capture as they come: of a pipe until it ends, of a file
// that grows until somebody ends the program.
class Follow {
 public:
  // The options must outlive it. Throws Failure when the module cannot be
  // loaded.
  explicit Follow(const Options& options);
  ~Follow();

  // Reads to the end, if there is one, and shows what comes on the way. The
  // loader was made to follow.
  void Run(CaptureLoader& loader);

 private:
  struct Shown;

  // Shows what is new in the connections.
  void Look(CaptureLoader& loader);
  bool IsWanted(const Connection& connection) const;
  // `is_over`: nothing will follow.
  void LookAt(Shown& shown, bool is_over);
  void ShowNewRows(Shown& shown, ListKind list, bool is_over);
  void ShowRow(Shown& shown, ListKind list, const ReportedRow& row);

  const Options& options_;
  Module module_;
  DecodeControls controls_;
  std::unique_ptr<Report> report_;
  std::vector<std::unique_ptr<Shown>> shown_;  // by place in the loader
};

}  // namespace host

#endif  // HOST_CAPDUMP_FOLLOW_H_
