// Names of files from before UTF-8.
#pragma once

#include <string>

namespace readers {

// The text as it is when it is UTF-8, else read as Latin-1, so that whatever is written from it is UTF-8.
std::string ToUtf8(std::string text);

}  // namespace readers
