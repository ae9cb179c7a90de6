// Standard output as the reports write it: padded fields, straight into stdio's buffer.
//
// One thread writes, so the unlocked calls are safe.
#ifndef KESTREL_TABLE_OUTPUT_H
#define KESTREL_TABLE_OUTPUT_H

#include <string_view>

namespace kestrel {

// Puts `text` into a field as printf's "%*s" does: right-aligned in `width`, left-aligned in -`width` if that is
// negative, whole if it does not fit. Returns the number of bytes written.
int PutField(std::string_view text, int width);

// The same for text from outside. On a terminal its control characters show as '?', so that no name can move the cursor
// or change the terminal's state.
int PutForeignField(std::string_view text, int width);

void PutChar(char c);

// Ends a line of a table.
void EndLine();

// Shows the control characters of a text from outside as '?' if it is to go to a terminal.
void MakeFitForTerminal(int descriptor, char *text);

// Writes out what is still buffered. False, with a warning, if standard output did not take all that was written: its
// reader went away, or the disk is full.
[[nodiscard]] bool FinishOutput();

}  // namespace kestrel

#endif  // KESTREL_TABLE_OUTPUT_H
