// The terminal, through ncurses.
#ifndef NODAL_TOP_TERMINAL_H
#define NODAL_TOP_TERMINAL_H

#include <cstddef>
#include <cstdint>

#include "tools/nodal/top/frame.h"

namespace nodal::top {

// Takes over the terminal of the process. The destructor restores it.
class Terminal {
 public:
  // Throws a Failure if standard input or output is not a terminal, or if the type of the terminal is unknown.
  Terminal();
  ~Terminal();
  Terminal(const Terminal &) = delete;
  Terminal &operator=(const Terminal &) = delete;

  size_t width() const;
  size_t height() const;

  void Draw(const Frame &frame);

  // Returns the next key that was pressed, as in session.h, or 0 if there is none. Returns kKeyOther for any
  // other key and for a change of the terminal's size.
  uint32_t ReadKey();

 private:
  void DrawLine(int y, const Line &line);

  void *screen_;
};

// Sets the user's locale, which determines the widths of characters. If its character set is not UTF-8, only ASCII is
// shown.
void UseLocale();

}  // namespace nodal::top

#endif  // NODAL_TOP_TERMINAL_H
