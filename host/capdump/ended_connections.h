#ifndef HOST_CAPDUMP_ENDED_CONNECTIONS_H_
#define HOST_CAPDUMP_ENDED_CONNECTIONS_H_

#include <optional>
#include <string>
#include <vector>

#include "host/capdump/dump.h"
#include "host/capdump/findings_report.h"
#include "host/capdump/options.h"
#include "host/capdump/overview.h"
#include "host/streams/capture_loader.h"
#include "host/streams/connection.h"

namespace host {

// Shows each connection of a pipe soon after its end, since the pipe may go on
// for days; what is judged over all connections comes when it has ended. A pipe
// that ends at once is shown as a file is.
class EndedConnections {
 public:
  // Whether the options ask for what can be shown of one connection.
  static bool AreShown(const Options& options);

  // The options must outlive it.
  explicit EndedConnections(const Options& options) : options_(options) {}

  // Reads the pipe to its end. The loader was made to follow. Throws as Dump
  // and CaptureLoader::Read() do.
  void Run(CaptureLoader& loader);
  // Shows the connections that were not shown, and what is wrong in all. `name`
  // is that of the capture.
  void ShowRest(const std::string& name,
                const std::vector<Connection>& connections,
                const Overview& overview);

 private:
  void Show(const Connection& connection);
  bool IsWanted(const Connection& connection) const;
  Dump& Lists();

  const Options& options_;
  std::optional<Dump> lists_;  // the module is loaded when it is needed
  StoryTeller stories_;
  std::vector<bool> shown_;  // by index in the capture
};

}  // namespace host

#endif  // HOST_CAPDUMP_ENDED_CONNECTIONS_H_
