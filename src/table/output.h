// Standard output. One thread writes, so the unlocked calls of stdio are safe.
#ifndef KESTREL_TABLE_OUTPUT_H
#define KESTREL_TABLE_OUTPUT_H

#include <string_view>

namespace kestrel {

bool OutputIsTerminal();

// Prints a line and its newline.
void PrintLine(std::string_view line);

// Prints a part of a line.
void PrintBytes(std::string_view bytes);

// Writes what is still buffered. False, with a warning, if any write failed.
[[nodiscard]] bool FinishOutput();

}  // namespace kestrel

#endif  // KESTREL_TABLE_OUTPUT_H
