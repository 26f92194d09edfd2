#include "host/page/markup.h"
#include "host/page/page_sections.h"
#include "host/page/time_section.h"

namespace host {
namespace {

// What is told by colour is told by a word or a pattern as well: pages are
// printed in grey. The policy keeps any browser from fetching or running
// anything, whatever a text of the capture may look like.
constexpr std::string_view kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8"/>
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'"/>
<meta name="viewport" content="width=device-width"/>
<style>
@page { size: A4; margin: 14mm 12mm; }
body { font: 14px/1.4 "Segoe UI", "Liberation Sans", Arial, sans-serif; color: #111;
  background: #fff; max-width: 960px; margin: 16px auto; padding: 0 16px; overflow-wrap: anywhere; }
h1 { font-size: 22px; margin: 0 0 4px; }
h2 { font-size: 18px; margin: 28px 0 6px; border-bottom: 2px solid #333; }
h3 { font-size: 15px; margin: 14px 0 4px; }
h1, h2, h3 { break-after: avoid; }
p { margin: 4px 0; }
a { color: inherit; }
.quiet { color: #555; }
.warned { border: 2px solid #b00020; padding: 3px 8px; font-weight: bold; }
h4 { font-size: 13px; margin: 10px 0 2px; break-after: avoid; }
pre { font: 11px/1.3 "Consolas", "Liberation Mono", monospace; margin: 2px 0; white-space: pre-wrap; }
.verdict { font-size: 16px; font-weight: bold; }
.finding { break-inside: avoid; border: 1px solid #999; border-left: 8px solid #999;
  margin: 10px 0; padding: 6px 10px; }
.finding.fault { border-left-color: #b00020; }
.finding.warning { border-left: 8px double #b36b00; }
.finding.note { border-left: 8px dotted #777; }
.sentence { font-weight: bold; }
.badge { border: 1px solid #111; padding: 0 5px; margin-right: 4px; font-size: 12px; }
.fault .badge { background: #b00020; border-color: #b00020; color: #fff; }
.advice::before { content: "\2192  "; }
ul { margin: 4px 0; padding-left: 22px; }
table { border-collapse: collapse; width: 100%; font-size: 12px; margin: 6px 0; }
th, td { border: 1px solid #aaa; padding: 2px 5px; text-align: left; vertical-align: top; }
th { background: #eee; white-space: nowrap; overflow-wrap: normal; }
td.number { text-align: right; white-space: nowrap; }
td.short { overflow-wrap: normal; }
section > p { break-after: avoid; }
tr, svg { break-inside: avoid; }
svg { display: block; width: 100%; max-width: 760px; }
svg text { font: 12px "Segoe UI", "Liberation Sans", Arial, sans-serif; fill: #111; }
svg text.quiet { font-size: 11px; fill: #555; }
svg text.name, svg text.fault, svg text.warning { font-weight: bold; }
svg text.fault { fill: #b00020; }
svg text.middle { text-anchor: middle; }
svg text.end { text-anchor: end; }
line, path { stroke: #333; stroke-width: 1.2; fill: #333; }
line.side { stroke-width: 2; }
line.fault { stroke: #b00020; stroke-width: 2.4; stroke-dasharray: 7 3; }
path.fault { stroke: #b00020; fill: #b00020; }
line.warning { stroke-dasharray: 3 3; }
rect.gap { fill: #fff; stroke: #777; stroke-dasharray: 2 3; }
table.narrow { width: auto; }
td.swatch svg { width: 34px; }
svg.patterns { position: absolute; width: 0; height: 0; }
rect.part-connecting { fill: url(#part-connecting); }
rect.part-negotiating { fill: url(#part-negotiating); }
rect.part-preparing { fill: url(#part-preparing); }
rect.part-transferring { fill: url(#part-transferring); }
rect.part-held_back { fill: url(#part-held_back); }
rect.part-zero_window { fill: url(#part-zero_window); }
rect.part-loss_recovery { fill: url(#part-loss_recovery); }
rect.part-thinking { fill: url(#part-thinking); }
rect.part-idle { fill: url(#part-idle); }
rect.part-releasing { fill: url(#part-releasing); }
rect.frame { fill: none; stroke: #333; }
svg text.letter { font-weight: bold; paint-order: stroke; stroke: #fff; stroke-width: 3px; }
footer { margin-top: 28px; border-top: 1px solid #999; }
@media print {
  body { max-width: none; margin: 0; padding: 0; font-size: 10pt; }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
}
</style>
)";

}  // namespace

std::string PageBegin(std::string_view title) {
  return std::string(kHead) + Element("title", "", title) +
         "</head>\n<body>\n" + TimePatterns() + Element("h1", "", title);
}

}  // namespace host
