// Texts of files as they can be shown.
#pragma once

#include <string>

namespace readers {

// The text as it is when it is UTF-8, else read as Latin-1, so that whatever is written from it is UTF-8.
std::string ToUtf8(std::string text);

// The text with a question mark for each control character: one line, which can't play with a terminal.
std::string WithoutControls(std::string text);

}  // namespace readers
