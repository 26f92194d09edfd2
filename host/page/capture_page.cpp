#include "host/page/capture_page.h"

#include <algorithm>
#include <map>
#include <utility>

#include "host/dialogue/negotiation.h"
#include "host/findings/story.h"
#include "host/findings/verdict.h"
#include "host/page/data_section.h"
#include "host/page/markup.h"
#include "host/page/page_sections.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::size_t kMostFindings = 200;
constexpr std::size_t kMostInFull = 30;  // connections
constexpr std::size_t kMostListed = 500;
constexpr std::size_t kMostShapes = 1000;  // that are remembered

constexpr std::string_view kWithoutData =
    "No value of a data set and no SOP instance UID is on this page; the "
    "comments of peers on errors, and the names that systems have, are.";
constexpr std::string_view kWithData =
    "This page holds values of data sets: patients' data, which only those may "
    "see who may see the capture.";

// The text of a page in a few large pieces.
class PageWriter {
 public:
  PageWriter(const PageSubject& subject,
             const std::function<void(std::string_view)>& sink)
      : subject_(subject), sink_(sink) {
    Sort();
    ChooseShown();
  }

  void Write() {
    WriteBeginning();
    WriteFindings();
    WriteTable();
    for (const std::size_t index : shown_) {
      const auto known = shape_of_.find(index);
      sink_(ConnectionSection(*subject_.scene.Find(index),
                              known == shape_of_.end()
                                  ? std::vector<std::size_t>()
                                  : shapes_[known->second].others,
                              accepted_));
      if (subject_.with_data) sink_(DataSection(*subject_.scene.Find(index)));
    }
    sink_(
        "<footer class=\"quiet\">\n<p>Made by capdump from the capture alone. "
        "Times in the drawings are seconds since the connection's first "
        "packet; frames are those of the capture file. " +
        std::string(subject_.with_data ? kWithData : kWithoutData) +
        "</p>\n</footer>\n</body>\n</html>\n");
  }

 private:
  // Connections in which the same was done with the same outcome.
  struct Shape {
    std::size_t first = 0;
    std::vector<std::size_t> others;
  };

  // Sorts the wanted connections by their shapes.
  void Sort() {
    std::map<std::string, std::size_t> by_shape;
    for (const SceneConnection& at : subject_.scene.connections()) {
      if (at.dialogue != nullptr) accepted_.Add(at.index, *at.dialogue);
      if (!subject_.is_wanted(at)) continue;
      wanted_.push_back(at.index);
      constexpr std::size_t kFewestSteps = 3;
      std::string shape = StoryOf(at, kFewestSteps).shape;
      const auto known = by_shape.find(shape);
      if (known != by_shape.end()) {
        shapes_[known->second].others.push_back(at.index);
        shape_of_.emplace(at.index, known->second);
      } else if (shapes_.size() < kMostShapes) {
        shape_of_.emplace(at.index, shapes_.size());
        by_shape.emplace(std::move(shape), shapes_.size());
        shapes_.push_back({at.index, {}});
      }
    }
  }

  // The connections that have a section: those of the findings, worst first,
  // then one of each shape.
  void ChooseShown() {
    for (const Finding& finding : subject_.findings) {
      if (finding.severity != Severity::kNote) Show(finding.connection);
    }
    for (const Shape& shape : shapes_) Show(shape.first);
  }

  void Show(std::size_t index) {
    if (shown_.size() >= kMostInFull) return;
    if (!std::ranges::binary_search(wanted_, index)) return;
    const auto known = shape_of_.find(index);
    if (known == shape_of_.end()) {
      shown_.insert(index);
      return;
    }
    // One stands for all of its shape.
    Shape& shape = shapes_[known->second];
    if (!shown_.contains(shape.first)) shown_.insert(shape.first);
  }

  void WriteBeginning() {
    const Scene& scene = subject_.scene;
    std::string text = PageBegin("DICOM traffic in " + subject_.capture);
    const auto with_dicom = static_cast<std::size_t>(std::ranges::count_if(
        scene.connections(), [](const SceneConnection& at) {
          return at.connection->carries_dicom;
        }));
    text += Element("p", "quiet",
                    CountText(scene.connections().size(), "TCP connection",
                              "TCP connections") +
                        ", " + NumberText(with_dicom) + " with DICOM");
    if (subject_.with_data) text += Element("p", "warned", kWithData);
    text += Element("p", "verdict", VerdictText(scene, subject_.findings));
    sink_(text);
  }

  void WriteFindings() {
    const std::vector<Finding>& findings = subject_.findings;
    const std::size_t count = std::min(findings.size(), kMostFindings);
    if (count == 0) return;
    std::string text = Element("h2", "", "Findings");
    for (std::size_t i = 0; i < count; ++i) {
      text += FindingSection(subject_.scene, findings[i], i + 1, shown_);
    }
    if (count < findings.size()) {
      text += Element("p", "quiet",
                      "and " + NumberText(findings.size() - count) +
                          " more: capdump --findings shows all");
    }
    sink_(text);
  }

  void WriteTable() {
    if (wanted_.empty()) return;
    std::string text = Element("h2", "", "Connections") +
                       "<table>\n<thead><tr><th></th><th>from and to</th>"
                       "<th>AE titles</th><th>began</th><th>lasted</th>"
                       "<th>bytes</th><th>told</th></tr></thead>\n<tbody>\n";
    const std::size_t count = std::min(wanted_.size(), kMostListed);
    for (std::size_t i = 0; i < count; ++i) {
      const auto known = shape_of_.find(wanted_[i]);
      std::size_t like = 0;
      if (known != shape_of_.end()) like = shapes_[known->second].first + 1;
      text += ConnectionRow(*subject_.scene.Find(wanted_[i]), shown_,
                            like == wanted_[i] + 1 ? 0 : like);
    }
    text += "</tbody>\n</table>\n";
    if (count < wanted_.size()) {
      text += Element("p", "quiet",
                      "and " + NumberText(wanted_.size() - count) +
                          " more connections, which are not listed");
    }
    sink_(text);
  }

  const PageSubject& subject_;
  const std::function<void(std::string_view)>& sink_;
  Acceptances accepted_;
  std::vector<std::size_t> wanted_;  // in the order of the capture
  std::vector<Shape> shapes_;
  std::map<std::size_t, std::size_t> shape_of_;  // of a connection
  ShownConnections shown_;
};

}  // namespace

void WriteCapturePage(const PageSubject& subject,
                      const std::function<void(std::string_view)>& sink) {
  PageWriter(subject, sink).Write();
}

}  // namespace host
