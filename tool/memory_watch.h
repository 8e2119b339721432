// What becomes of the command when it finds no memory.
#pragma once

namespace tool {

// From now on a lack of memory that nobody handles ends the command with a message and kOutput, also in a thread
// or a destructor; and MemoryRanOut() knows of every one. Throws nothing.
void WatchMemory() noexcept;

// Whether operator new found none at any time, also for somebody who went on without a word.
bool MemoryRanOut();

// On the error stream, without memory of its own.
void TellOutOfMemory();

}  // namespace tool
