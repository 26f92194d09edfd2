#include "host/page/page_sections.h"

#include <algorithm>
#include <array>
#include <span>

#include "host/page/ladder.h"
#include "host/page/ladder_drawing.h"
#include "host/page/markup.h"
#include "host/page/time_section.h"
#include "host/rows/negotiation_text.h"
#include "host/text/number_text.h"
#include "host/text/time_text.h"
#include "host/timing/connection_timing.h"

namespace host {
namespace {

constexpr std::size_t kMostRungs = 60;
constexpr std::size_t kMostAssociations = 10;  // of a connection
// Of so many contexts those that were accepted and not used are left out.
constexpr std::size_t kFewContexts = 16;
constexpr std::size_t kMostContexts = 130;     // more than there are IDs for
constexpr std::size_t kMostTexts = 20;         // of evidence, of notes
constexpr std::size_t kMostCharacters = 1200;  // of a text
constexpr std::size_t kMostNumbers = 30;       // of connections
constexpr std::string_view kArrow = " \xE2\x86\x92 ";

std::string Texts(std::string_view style_class,
                  const std::vector<std::string>& texts) {
  if (texts.empty()) return {};
  std::string list = "<ul class=\"" + std::string(style_class) + "\">\n";
  const std::size_t count = std::min(texts.size(), kMostTexts);
  for (std::size_t i = 0; i < count; ++i) {
    list += Element("li", "", Shortened(texts[i], kMostCharacters));
  }
  if (count < texts.size()) {
    list +=
        Element("li", "", "and " + NumberText(texts.size() - count) + " more");
  }
  return list + "</ul>\n";
}

// "3", as a link where there is something to link to.
std::string ConnectionLink(std::size_t index, const ShownConnections& shown) {
  const std::string number = std::to_string(index + 1);
  if (!shown.contains(index)) return number;
  return "<a href=\"#connection-" + number + "\">" + number + "</a>";
}

std::string ConnectionLinks(std::span<const std::size_t> indices,
                            const ShownConnections& shown) {
  std::string text;
  const std::size_t count = std::min(indices.size(), kMostNumbers);
  for (std::size_t i = 0; i < count; ++i) {
    text += (i == 0 ? "" : ", ") + ConnectionLink(indices[i], shown);
  }
  return text + (count < indices.size() ? ", ..." : "");
}

// When it showed, else when its connection began.
Nanoseconds TimeOf(const Connection& connection, const Finding& finding) {
  if (finding.time) return *finding.time;
  if (finding.message && *finding.message < connection.messages.size()) {
    return connection.messages[*finding.message].time;
  }
  if (finding.pdu && *finding.pdu < connection.pdus.size()) {
    return connection.pdus[*finding.pdu].time;
  }
  return connection.first_time;
}

std::string PlaceMarkup(const Scene& scene, const Finding& finding,
                        const ShownConnections& shown) {
  std::string text(OriginText(finding.kind->origin));
  text = "About the " + text;
  if (const SceneConnection* const at = scene.Find(finding.connection)) {
    const Connection& connection = *at->connection;
    if (finding.count > 1) {
      text += "; " + NumberText(finding.count) + " times";
      if (finding.connections.size() > 1) {
        text +=
            " in connections " + ConnectionLinks(finding.connections, shown);
      }
      text += ", the first:";
    } else {
      text += ";";
    }
    text += " connection " + ConnectionLink(finding.connection, shown);
    if (finding.first_frame != 0) {
      text += Markup(", frame " + connection.names().Text(finding.first_frame,
                                                          finding.last_frame));
    }
    text += ", " + UtcText(TimeOf(connection, finding), 6);
  }
  return text + "; " + std::string(finding.kind->slug);
}

std::string ContextTable(const Association& association) {
  const std::vector<NegotiationRow> rows = NegotiationTable(association);
  if (rows.empty()) return {};
  std::array<bool, kNegotiationColumns> is_used{};
  for (const NegotiationRow& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) is_used[i] |= !row[i].empty();
  }
  std::string text = "<table>\n<thead><tr>\n";
  for (std::size_t i = 0; i < kNegotiationColumns; ++i) {
    if (is_used[i]) text += Element("th", "", kNegotiationTitles[i]);
  }
  text += "</tr></thead>\n<tbody>\n";
  std::size_t told = 0;
  for (std::size_t k = 0; k < rows.size(); ++k) {
    const PresentationContext& context = association.contexts[k];
    const bool is_dull = context.IsAccepted() && context.messages == 0;
    if (told == kMostContexts || (is_dull && rows.size() > kFewContexts)) {
      continue;
    }
    ++told;
    text += "<tr>\n";
    for (std::size_t i = 0; i < kNegotiationColumns; ++i) {
      if (!is_used[i]) continue;
      const bool is_short = i == 0 || i == 3 || i == 6;
      text += Element("td", is_short ? "short" : "",
                      Shortened(rows[k][i], kMostCharacters));
    }
    text += "</tr>\n";
  }
  text += "</tbody>\n</table>\n";
  if (told < rows.size()) {
    text += Element(
        "p", "quiet",
        "and " +
            CountText(rows.size() - told, "more context", "more contexts") +
            (told < kMostContexts ? ", accepted and not used" : ", left out"));
  }
  return text;
}

std::string SideMarkup(std::string_view role,
                       const std::optional<AssociationSide>& side) {
  if (!side) return {};
  return Element("p", "",
                 std::string(role) + ": " + AssociationSideText(*side));
}

std::string NegotiationMarkup(const Dialogue& dialogue, std::uint32_t index,
                              const Acceptances& all) {
  const Association& association = dialogue.associations[index];
  std::string title = "Negotiation";
  if (dialogue.associations.size() > 1) {
    title += " of association " + std::to_string(index + 1);
  }
  return Element("h3", "", title + ": " + AssociationOutcome(dialogue, index)) +
         SideMarkup("Requestor", association.request) +
         SideMarkup("Acceptor", association.accept) +
         ContextTable(association) +
         Texts("notes", NegotiationNotes(dialogue, index, all));
}

std::string TimeMarkup(const Dialogue& dialogue, std::uint32_t index,
                       const AssociationTiming& times) {
  const std::string section = TimeSection(times);
  if (section.empty()) return {};
  std::string title = "Where the time went";
  if (dialogue.associations.size() > 1) {
    title += " in association " + std::to_string(index + 1);
  }
  return Element("h3", "",
                 title + ": " + DurationText(times.Duration() * 1000)) +
         section;
}

std::string AssociationsMarkup(const SceneConnection& at,
                               const Acceptances& all) {
  const Dialogue& dialogue = *at.dialogue;
  const ConnectionTiming timing = TimeConnection(*at.connection);
  const std::size_t associations = dialogue.associations.size();
  const std::size_t count = std::min(associations, kMostAssociations);
  std::string text;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (i < timing.associations.size()) {
      text += TimeMarkup(dialogue, i, timing.associations[i]);
    }
    if (i == 0) text += Texts("notes", timing.limits);
    text += NegotiationMarkup(dialogue, i, all);
  }
  if (count < associations) {
    text += Element("p", "quiet",
                    NumberText(associations - count) +
                        " more associations of this connection are left out.");
  }
  return text;
}

std::string TitleOf(const SceneConnection& at) {
  const SideName client = NameOf(at, at.client);
  const SideName server = NameOf(at, 1 - at.client);
  return (client.title.empty() ? client.address : client.title) +
         std::string(kArrow) +
         (server.title.empty() ? server.address : server.title);
}

std::string DurationOf(const Connection& connection) {
  return Seconds(connection.last_time - connection.first_time, 6) + " s";
}

}  // namespace

std::string FindingSection(const Scene& scene, const Finding& finding,
                           std::size_t number, const ShownConnections& shown) {
  const std::string severity(SeverityText(finding.severity));
  return "<article class=\"finding " + severity + "\" id=\"finding-" +
         std::to_string(number) + "\">\n<p class=\"sentence\">" +
         Element("span", "badge", severity) +
         Markup(Shortened(finding.sentence, kMostCharacters)) +
         "</p>\n<p class=\"quiet\">" + PlaceMarkup(scene, finding, shown) +
         "</p>\n" + Element("p", "advice", AdviceOf(finding)) +
         Texts("evidence", finding.evidence) + "</article>\n";
}

std::string ConnectionRow(const SceneConnection& at,
                          const ShownConnections& shown, std::size_t like) {
  const Connection& connection = *at.connection;
  std::string told = like == 0 ? "" : "like " + std::to_string(like);
  if (shown.contains(at.index)) told = "below";
  return "<tr>\n<td class=\"number\">" + ConnectionLink(at.index, shown) +
         "</td>\n" +
         Element("td", "",
                 at.Address(at.client) + std::string(kArrow) +
                     at.Address(1 - at.client)) +
         Element("td", "", TitleOf(at)) +
         Element("td", "", UtcText(connection.first_time, 3)) +
         Element("td", "number", DurationOf(connection)) +
         Element("td", "number", NumberText(connection.payload_bytes)) +
         Element("td", "", told) + "</tr>\n";
}

std::string ConnectionSection(const SceneConnection& at,
                              const std::vector<std::size_t>& others,
                              const Acceptances& all) {
  const Connection& connection = *at.connection;
  const std::string number = std::to_string(at.index + 1);
  std::string text =
      "<section id=\"connection-" + number + "\">\n" +
      Element("h2", "", "Connection " + number + ": " + TitleOf(at));
  text += Element(
      "p", "quiet",
      at.Address(at.client) + std::string(kArrow) + at.Address(1 - at.client) +
          ", " + UtcText(connection.first_time, 6) + ", " +
          DurationOf(connection) + ", " + BytesText(connection.payload_bytes));
  if (!others.empty()) {
    text += "<p>" +
            CountText(others.size(), "more connection", "more connections") +
            " went like this one: " + ConnectionLinks(others, {}) + "</p>\n";
  }
  text += Texts("notes", connection.notes);
  text += DrawLadder(at, LadderOf(at, kMostRungs));
  if (at.dialogue != nullptr) text += AssociationsMarkup(at, all);
  return text + "</section>\n";
}

}  // namespace host
