// Standard output. One thread writes, so the unlocked calls of stdio are safe.
#ifndef KESTREL_TABLE_OUTPUT_H
#define KESTREL_TABLE_OUTPUT_H

#include <cstddef>
#include <string_view>

namespace kestrel {

// Makes standard output record the cause of its first failed write, after which PrintLine ends the process. Call it
// before the first output. It does nothing if stdout is not file descriptor 1.
void OpenOutput();

bool OutputIsTerminal();

// Prints a line and its newline. If a write has failed since OpenOutput, prints a warning and ends the process with
// exit status 1. There is no warning if the reader of a pipe went away.
void PrintLine(std::string_view line);

// Print a part of a line.
void PrintBytes(std::string_view bytes);
void PrintDashes(size_t count);

// Flushes the buffer. If any write failed, prints the same warning and returns false.
[[nodiscard]] bool FinishOutput();

}  // namespace kestrel

#endif  // KESTREL_TABLE_OUTPUT_H
