#include <set>
#include <string_view>

#include "host/dialogue/outcome.h"
#include "host/findings/rules.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

std::string_view SlugOf(const Rejection& reject) {
  constexpr std::uint8_t kUser = 1, kAcse = 2, kPresentation = 3;
  switch (reject.source) {
    case kUser:
      switch (reject.reason) {
        case 1:
          return "reject-no-reason";
        case 2:
          return "reject-application-context";
        case 3:
          return "reject-calling-ae-unknown";
        case 7:
          return "reject-called-ae-unknown";
        default:
          return "reject-reserved-reason";
      }
    case kAcse:
      if (reject.reason == 1) return "reject-provider-acse";
      return reject.reason == 2 ? "reject-protocol-version"
                                : "reject-reserved-reason";
    case kPresentation:
      if (reject.reason == 1) return "reject-temporary-congestion";
      return reject.reason == 2 ? "reject-local-limit"
                                : "reject-reserved-reason";
    default:
      return "reject-reserved-reason";
  }
}

// "192.0.2.2" of "192.0.2.2:41522".
std::string_view HostOf(std::string_view address) {
  return address.substr(0, address.rfind(':'));
}

// What the same acceptor took instead, from its other associations.
std::string WhatMatched(const Scene& scene, const SceneConnection& at,
                        const Association& association, bool called) {
  const AssociationSide& asked = *association.request;
  const std::uint32_t acceptor = 1 - asked.place.direction;
  std::set<std::string> titles;
  for (const Scene::Accepted& other : scene.AcceptedAt(at.Address(acceptor))) {
    const AssociationSide& took = *other.association->request;
    const SceneConnection& there = *scene.Find(other.connection);
    if (called && took.called_ae_title != asked.called_ae_title) {
      titles.insert(PrintableFromCodePage1252(took.called_ae_title));
    }
    const bool same_host = HostOf(there.Address(took.place.direction)) ==
                           HostOf(at.Address(asked.place.direction));
    if (!called && same_host &&
        took.calling_ae_title != asked.calling_ae_title) {
      titles.insert(PrintableFromCodePage1252(took.calling_ae_title));
    }
    if (titles.size() == 3) break;
  }
  std::string text;
  for (const std::string& title : titles) {
    text += (text.empty() ? "" : ", ") + title;
  }
  if (text.empty()) return text;
  return called ? " The same acceptor accepted the called AE title " + text +
                      " in this capture."
                : " It accepted the calling AE title " + text +
                      " from the same host in this capture.";
}

std::string RejectSentence(const SceneConnection& at,
                           const Association& association) {
  const Rejection& reject = *association.reject;
  const std::string_view slug = SlugOf(reject);
  std::string why;
  if (association.request && slug == "reject-called-ae-unknown") {
    why = ": it does not know the called AE title \"" +
          PrintableFromCodePage1252(association.request->called_ae_title) +
          "\"";
  } else if (association.request && slug == "reject-calling-ae-unknown") {
    why = ": it does not know the calling AE title \"" +
          PrintableFromCodePage1252(association.request->calling_ae_title) +
          "\"";
  } else if (slug == "reject-no-reason") {
    why = " without giving a reason";
  } else {
    why = ": " + RejectReasonText(reject.source, reject.reason);
  }
  const std::uint32_t acceptor = reject.place.direction;
  // Who does not know a title does not have it.
  const std::string rejecter = slug == "reject-called-ae-unknown"
                                   ? "acceptor " + at.Address(acceptor)
                                   : PeerText(at, acceptor, &association);
  return "The " + rejecter + " rejected the association of the " +
         PeerText(at, 1 - acceptor, &association) + why + " (" +
         RejectResultText(reject.result) + ", by " +
         RejectSourceText(reject.source) + ", reason " +
         std::to_string(reject.reason) + ").";
}

}  // namespace

void FindRejection(const Scene& scene, const SceneConnection& at,
                   FindingList& list) {
  if (at.dialogue == nullptr) return;
  for (const Association& association : at.dialogue->associations) {
    if (!association.reject) continue;
    const std::string_view slug = SlugOf(*association.reject);
    std::string sentence = RejectSentence(at, association);
    const bool called = slug == "reject-called-ae-unknown";
    if (association.request &&
        (called || slug == "reject-calling-ae-unknown")) {
      sentence += WhatMatched(scene, at, association, called);
    }
    Finding& found = list.Add(slug, std::move(sentence));
    SetPlace(association.reject->place, found);
    found.likeness = at.Address(association.reject->place.direction);
    if (association.request) {
      found.likeness += '\n' + association.request->calling_ae_title + '\n' +
                        association.request->called_ae_title;
    }
  }
}

}  // namespace host
