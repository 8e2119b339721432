// The error stream: lines of messages, and on a terminal a line of status below them. May be used by several
// threads.
#pragma once

#include <string>
#include <string_view>

namespace tool {

// The text without the control characters that a name in a file may hold, for which there are question marks: they
// would break a line in two or take over the terminal.
std::string PlainText(std::string_view text);

// Prints a line, as plain text. What can't be printed is passed over: an error stream that takes nothing must not
// cost the export.
void PrintErrorLine(std::string_view text);

// Shows a line that stands below the messages until the next call. For terminals alone.
void ShowStatus(std::string text);
void ClearStatus();
// Clears it for good, unless the terminal takes nothing: no status is shown from now on.
void EndStatus();

bool ErrorsGoToTerminal();
// Of the terminal.
std::size_t ColumnCount();

}  // namespace tool
