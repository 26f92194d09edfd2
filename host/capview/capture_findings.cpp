#include "host/capview/capture_findings.h"

#include <algorithm>
#include <utility>

#include "host/dialogue/dialogue.h"
#include "host/findings/findings.h"
#include "host/findings/verdict.h"

namespace host {
namespace {

constexpr DWORD kBetweenLooks = 50;  // milliseconds, at least
constexpr DWORD kTimesCost = 10;     // as much time at least goes into reading

bool AreSame(const std::vector<Finding>& some,
             const std::vector<Finding>& others) {
  return std::ranges::equal(some, others, {}, &Finding::sentence,
                            &Finding::sentence);
}

}  // namespace

bool CaptureFindings::IsTime() const {
  const DWORD wait = std::max(kBetweenLooks, kTimesCost * cost_);
  return !has_looked_ || GetTickCount() - looked_at_ >= wait;
}

bool CaptureFindings::Look(CaptureLoader& loader) {
  const bool is_done = loader.state() == CaptureLoader::State::kDone;
  if (is_whole_ || (!is_done && !IsTime())) return false;
  const DWORD begin = GetTickCount();
  const std::vector<Finding> before = findings_;
  has_looked_ = true;
  looked_at_ = begin;
  if (is_done) {
    LookAtAll(loader);
  } else if (!LookEarly(loader.connections())) {
    return false;
  }
  looked_at_ = GetTickCount();
  cost_ = looked_at_ - begin;
  return is_done || !AreSame(findings_, before);
}

// What is over stays as it is, so that as many as before are the same ones.
bool CaptureFindings::LookEarly(TcpConnections& connections) {
  std::vector<const Connection*> over;
  for (std::size_t i = 0; i < connections.size(); ++i) {
    const Connection& connection = connections.at(i);
    const Dialogue* const dialogue = DialogueOf(connection);
    // Others concern DICOM only if nothing else in the whole capture does.
    if (connection.carries_dicom && dialogue != nullptr && dialogue->is_over) {
      over.push_back(&connection);
    }
  }
  if (std::exchange(seen_, over.size()) == over.size()) return false;
  auto findings = FindAll(Scene(over, {}));
  std::erase_if(findings, [](const Finding& finding) {
    return finding.severity == Severity::kNote;
  });
  findings_ = std::move(findings);
  return true;
}

void CaptureFindings::LookAtAll(CaptureLoader& loader) {
  is_whole_ = true;
  TcpConnections& connections = loader.connections();
  std::vector<const Connection*> all;
  for (std::size_t i = 0; i < connections.size(); ++i) {
    all.push_back(&connections.at(i));
  }
  const Scene scene(all, {.damage = loader.Damage()});
  findings_ = FindAll(scene);
  const bool is_well = std::ranges::none_of(findings_, [](const Finding& one) {
    return one.severity != Severity::kNote;
  });
  if (is_well) verdict_ = VerdictText(scene, findings_);
}

}  // namespace host
