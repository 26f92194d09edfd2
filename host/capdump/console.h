#ifndef HOST_CAPDUMP_CONSOLE_H_
#define HOST_CAPDUMP_CONSOLE_H_

#include <exception>
#include <string_view>

namespace host {

// Standard output and standard error. Both take UTF-8 with LF line ends, on
// every system, also when they are a terminal.

// Before anything is written.
void PrepareConsole();

// From now on the first Ctrl-C is not for this program: it ends the one that
// writes to our standard input, as tcpdump, and by that the capture. The second
// one ends us.
void PassFirstInterrupt();

// Whoever read our output has gone away; nothing is wrong.
class ReaderGone : public std::exception {};

// Output is collected and written in large pieces. Both throw ReaderGone, and
// Failure when the output cannot be written.
void WriteOutput(std::string_view text);
void FlushOutput();

// A sentence on standard error, behind all output so far and the program's
// name.
void Complain(std::string_view sentence);

// A terminal on standard error, for what is rewritten in place.
bool HasErrorTerminal();
void WriteToErrorTerminal(std::string_view text);  // at once

}  // namespace host

#endif  // HOST_CAPDUMP_CONSOLE_H_
