// Standard output. One thread writes, so the unlocked calls of stdio are safe.
#ifndef KESTREL_TABLE_OUTPUT_H
#define KESTREL_TABLE_OUTPUT_H

#include <string_view>

namespace kestrel {

// From now on, a failed write to standard output is noted with its cause, whoever flushes, and PrintLine ends the
// process. Call it before the first output. It does nothing if stdout is not file descriptor 1.
void OpenOutput();

bool OutputIsTerminal();

// Prints a line and its newline. After OpenOutput, if a write has failed, it ends the process with exit status 1:
// without a warning if the reader of a pipe went away.
void PrintLine(std::string_view line);

// Prints a part of a line.
void PrintBytes(std::string_view bytes);

// Writes what is still buffered. False if any write failed, which gets the same warning.
[[nodiscard]] bool FinishOutput();

}  // namespace kestrel

#endif  // KESTREL_TABLE_OUTPUT_H
