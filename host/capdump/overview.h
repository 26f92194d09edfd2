#ifndef HOST_CAPDUMP_OVERVIEW_H_
#define HOST_CAPDUMP_OVERVIEW_H_

#include <optional>
#include <string>
#include <vector>

#include "host/capdump/findings_report.h"
#include "host/capdump/options.h"
#include "host/capdump/report.h"
#include "host/findings/finding.h"
#include "host/findings/scene.h"
#include "host/streams/connection.h"

namespace host {

// What is wrong in a capture, and what happened in it: capdump's first screen.
class Overview {
 public:
  // The connections are the caller's and outlive it.
  Overview(const std::vector<Connection>& connections,
           CaptureCondition condition);

  // Among what Show() shows.
  bool HasFault(const Options& options) const;
  // The findings, and unless only they are asked for, the stories. `name` is
  // that of the capture.
  void Show(const Options& options, const std::string& name,
            const Sink& sink) const;
  // The same behind stories that were told before: first those of the other
  // connections. `told` is by index in the capture.
  void ShowRest(const Options& options, const std::string& name,
                const std::vector<bool>& told, StoryTeller& stories,
                const Sink& sink) const;
  // The same, and what was negotiated, as a page.
  void ShowPage(const Options& options, const std::string& name,
                const Sink& sink) const;
  // The findings alone.
  void ShowFindings(const Options& options, const Sink& sink) const;
  // The findings as JSON.
  void ShowJson(const Options& options, const Sink& sink) const;

 private:
  // How many connections there are, and the findings.
  void ShowHead(const Options& options, const std::string& name,
                const Sink& sink) const;
  // Whether what happened in it is told.
  static bool IsTold(const Options& options, const SceneConnection& at);
  // All findings, which are sought when they are asked for first.
  const std::vector<Finding>& All() const;
  // Those of the connection that was asked for, else all.
  std::vector<Finding> Wanted(const Options& options) const;

  Scene scene_;
  mutable std::optional<std::vector<Finding>> findings_;
};

}  // namespace host

#endif  // HOST_CAPDUMP_OVERVIEW_H_
