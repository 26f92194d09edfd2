#ifndef HOST_FINDINGS_RULES_H_
#define HOST_FINDINGS_RULES_H_

#include "host/findings/finding_list.h"
#include "host/findings/scene.h"

namespace host {

// A rule looks at one connection for one kind of thing and adds what it finds.
// It may look at what rules before it have found of this connection, and at the
// scene for what others said. Its cost is linear in the connection.
using Rule = void (*)(const Scene& scene, const SceneConnection& at,
                      FindingList& list);

// Whether the connection came about. rules_connection.cpp
void FindUnansweredConnection(const Scene&, const SceneConnection&,
                              FindingList&);
void FindSilentConnection(const Scene&, const SceneConnection&, FindingList&);
void FindVanishedPeer(const Scene&, const SceneConnection&, FindingList&);
void FindLostTime(const Scene&, const SceneConnection&, FindingList&);
// Whether it is DICOM that both sides talk. rules_protocol.cpp
void FindTls(const Scene&, const SceneConnection&, FindingList&);
void FindOtherProtocol(const Scene&, const SceneConnection&, FindingList&);
// Where a side does not keep to the protocol. rules_irregular.cpp
void FindIrregularities(const Scene&, const SceneConnection&, FindingList&);
// Whether PDUs stand where they may, and are whole. rules_framing.cpp
void FindUnnegotiated(const Scene&, const SceneConnection&, FindingList&);
void FindUnfinishedPdu(const Scene&, const SceneConnection&, FindingList&);
void FindBadTitles(const Scene&, const SceneConnection&, FindingList&);
// Why an association was rejected. rules_rejection.cpp
void FindRejection(const Scene&, const SceneConnection&, FindingList&);
// What was negotiated. rules_negotiation.cpp
void FindRefusedContexts(const Scene&, const SceneConnection&, FindingList&);
void FindNegotiationNotes(const Scene&, const SceneConnection&, FindingList&);
// What became of requests. rules_messages.cpp
void FindStatuses(const Scene&, const SceneConnection&, FindingList&);
void FindFailedCommitments(const Scene&, const SceneConnection&, FindingList&);
void FindOddAnswers(const Scene&, const SceneConnection&, FindingList&);
// Whether data sets are what was agreed. rules_data_sets.cpp
void FindBrokenDataSets(const Scene&, const SceneConnection&, FindingList&);
// How associations ended. rules_endings.cpp
void FindEndings(const Scene&, const SceneConnection&, FindingList&);
// What the capture lacks. rules_capture.cpp
void FindMissingParts(const Scene&, const SceneConnection&, FindingList&);
void FindOddPackets(const Scene&, const SceneConnection&, FindingList&);
// Of the whole capture.
void FindDamage(const Scene& scene, FindingList& list);
// What cost time, and whose it was. rules_timing.cpp
void FindTimes(const Scene& scene, FindingList& list);

}  // namespace host

#endif  // HOST_FINDINGS_RULES_H_
