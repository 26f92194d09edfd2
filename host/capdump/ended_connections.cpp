#include "host/capdump/ended_connections.h"

#include <algorithm>

#include "host/capdump/console.h"
#include "host/capdump/data_output.h"
#include "host/capdump/live_reading.h"

namespace host {

bool EndedConnections::AreShown(const Options& options) {
  const bool is_whole =
      options.findings || options.contexts || options.timing || options.csv ||
      !options.export_folder.empty() || DataOutput::IsWanted(options);
  return IsPiped(options) && !options.follow && !is_whole;
}

void EndedConnections::Run(CaptureLoader& loader) {
  ReadLive(loader, true, [&] {
    for (const Connection* connection : loader.connections().TakeEnded()) {
      if (IsWanted(*connection)) Show(*connection);
    }
  });
}

bool EndedConnections::IsWanted(const Connection& connection) const {
  if (options_.connection) return connection.index == *options_.connection;
  return options_.all_connections || connection.carries_dicom;
}

void EndedConnections::Show(const Connection& connection) {
  shown_.resize(std::max<std::size_t>(shown_.size(), connection.index + 1));
  shown_[connection.index] = true;
  if (options_.ShowsLists()) {
    Lists().ShowEnded(connection);
  } else {
    const Scene scene({&connection}, {});
    stories_.Tell(scene.connections().front(), WriteOutput);
  }
  FlushOutput();
}

Dump& EndedConnections::Lists() {
  return lists_ ? *lists_ : lists_.emplace(options_);
}

void EndedConnections::ShowRest(const std::string& name,
                                const std::vector<Connection>& connections,
                                const Overview& overview) {
  if (shown_.empty()) {
    if (options_.json) overview.ShowJson(options_, WriteOutput);
    if (options_.ShowsLists()) return Lists().Show(name, connections);
    return overview.Show(options_, name, WriteOutput);
  }
  if (options_.ShowsLists()) {
    Lists().ShowRest(name, connections, shown_);
    if (options_.json) overview.ShowJson(options_, WriteOutput);
  } else {
    overview.ShowRest(options_, name, shown_, stories_, WriteOutput);
  }
}

}  // namespace host
