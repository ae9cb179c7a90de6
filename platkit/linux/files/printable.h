// Makes texts of the host safe to print.
#ifndef PLATKIT_LINUX_FILES_PRINTABLE_H
#define PLATKIT_LINUX_FILES_PRINTABLE_H

namespace platkit {

// Replaces a control character by a question mark.
constexpr char Printable(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f' ? '?' : c; }

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_PRINTABLE_H
