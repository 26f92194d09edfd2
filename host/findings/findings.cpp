#include "host/findings/findings.h"

#include "host/findings/rules.h"

namespace host {
namespace {

// Causes come before what they bring about: a later rule asks whether there is
// a cause already.
constexpr Rule kRules[] = {
    FindUnansweredConnection,
    FindTls,
    FindOtherProtocol,
    FindSilentConnection,
    FindMissingParts,
    FindBadTitles,
    FindIrregularities,
    FindUnnegotiated,
    FindUnfinishedPdu,
    FindRejection,
    FindRefusedContexts,
    FindOddAnswers,
    FindBrokenDataSets,
    FindStatuses,
    FindFailedCommitments,
    FindVanishedPeer,
    FindEndings,
    FindLostTime,
    FindOddPackets,
    FindNegotiationNotes,
};

}  // namespace

std::vector<Finding> FindAll(const Scene& scene) {
  FindingList list;
  FindDamage(scene, list);
  for (const SceneConnection& at : scene.connections()) {
    if (!at.concerns_dicom) continue;
    list.BeginConnection(at.index);
    for (const Rule rule : kRules) rule(scene, at, list);
    list.EndConnection();
  }
  FindTimes(scene, list);
  return list.TakeSorted();
}

}  // namespace host
