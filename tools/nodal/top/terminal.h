// The terminal, through ncurses.
#ifndef NODAL_TOP_TERMINAL_H
#define NODAL_TOP_TERMINAL_H

#include <cstddef>
#include <cstdint>

#include "tools/nodal/top/frame.h"

namespace nodal::top {

// Takes the terminal of the process, and gives it back at the end.
class Terminal {
 public:
  // Throws a Failure if standard input or output is no terminal, or its type is unknown.
  Terminal();
  ~Terminal();
  Terminal(const Terminal &) = delete;
  Terminal &operator=(const Terminal &) = delete;

  size_t width() const;
  size_t height() const;

  void Draw(const Frame &frame);

  // The next key that was pressed, as in session.h; 0 if there is none. kKeyOther after a change of the size.
  uint32_t ReadKey();

 private:
  void DrawLine(int y, const Line &line);

  void *screen_;
};

// Makes the widths of texts those of the user's locale. Without UTF-8, only ASCII is shown.
void UseLocale();

}  // namespace nodal::top

#endif  // NODAL_TOP_TERMINAL_H
