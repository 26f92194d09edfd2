#include "host/capdump/manual.h"

#include <string_view>

#include "host/capdump/help_text.h"
#include "host/capdump/option_table.h"

namespace host {
namespace {

// A text as roff shows it as it is. A line must not begin with a full stop or
// an apostrophe, which begin a request.
std::string Roff(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    const bool begins = escaped.empty() || escaped.back() == '\n';
    if (begins && (c == '.' || c == '\'')) escaped += "\\&";
    if (c == '-') escaped += '\\';
    escaped += c == '\\' ? "\\e" : std::string(1, c);
  }
  return escaped;
}

// Paragraphs of the help: an empty line begins one.
std::string Paragraphs(std::string_view text) {
  std::string paragraphs = ".PP\n" + Roff(text);
  for (std::size_t at = 0;
       (at = paragraphs.find("\n\n", at)) != std::string::npos;) {
    paragraphs.replace(at, 2, "\n.PP\n");
  }
  return paragraphs;
}

std::string Option(const OptionRow& option) {
  std::string usage = "\\fB" + Roff(option.name) + "\\fR";
  if (option.TakesValue()) usage += " \\fI" + Roff(option.value) + "\\fR";
  if (!option.letter.empty()) usage += ", \\fB" + Roff(option.letter) + "\\fR";
  return ".TP\n" + usage + "\n" + Roff(option.help) + "\n";
}

bool IsFile(const OptionRow& option) {
  return option.value == "FILE" || option.value == "PATH";
}

void Add(std::string& list, std::string_view between, std::string_view word) {
  if (!list.empty()) list += between;
  list += word;
}

}  // namespace

std::string ManualPage() {
  std::string page =
      ".TH CAPDUMP 1 \"\" \"capdump 1.1\" \"User commands\"\n"
      ".SH NAME\n"
      "capdump \\- list and decode the DICOM traffic of a capture file\n"
      ".SH SYNOPSIS\n"
      "\\fBcapdump\\fR [\\fIoptions\\fR] \\fICAPTURE\\fR...\n"
      ".SH DESCRIPTION\n";
  page += Paragraphs(HelpIntroduction());
  page += ".SH OPTIONS\n";
  std::string_view group;
  for (const OptionRow& option : OptionTable()) {
    if (option.group != group) page += ".SS " + Roff(option.group) + "\n";
    group = option.group;
    page += Option(option);
  }
  page += ".SH OUTPUT AND EXIT CODE\n" + Paragraphs(HelpClosing());
  page +=
      ".SH FILES\n"
      "The dictionaries \\fIData.dic\\fR and \\fIUid.dic\\fR, plain text, are "
      "read from the program's folder or else from "
      "\\fI../share/dicom\\-decode\\fR.\n";
  return page;
}

std::string BashCompletion() {
  std::string names, with_file, with_text;
  for (const OptionRow& option : OptionTable()) {
    Add(names, " ", option.name);
    if (!option.TakesValue()) continue;
    Add(IsFile(option) ? with_file : with_text, " | ", option.name);
  }
  return R"(# Completes the command line of capdump.
_capdump() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $before in
    )" + with_text +
         R"() return ;;
    )" + with_file +
         R"()
      compopt -o default
      return
      ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W ')" +
         names + R"(' -- "$word")
  else
    compopt -o default
  fi
}
complete -F _capdump capdump
)";
}

}  // namespace host
