// Texts of the host on their way into a record.
#ifndef PLATKIT_LINUX_RECORDS_PRINTABLE_H
#define PLATKIT_LINUX_RECORDS_PRINTABLE_H

namespace platkit {

// Control characters are shown as '?'.
constexpr char Printable(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f' ? '?' : c; }

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_PRINTABLE_H
