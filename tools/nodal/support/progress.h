// How far a command has come, on a terminal.
#ifndef NODAL_SUPPORT_PROGRESS_H
#define NODAL_SUPPORT_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string>

namespace nodal {

// A line on standard error that is overwritten as the work goes on, and wiped out at its end. Where standard error is
// no terminal, nothing is shown.
class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  // So many things of some kind are to be done now.
  void Begin(const std::string &what, size_t total);
  void Advance();

 private:
  using Clock = std::chrono::steady_clock;

  void Show();

  bool isShown_;
  size_t done_ = 0;
  size_t total_ = 0;
  std::string what_;
  Clock::time_point next_ = Clock::now();
  size_t width_ = 0;  // of the line that stands there
};

}  // namespace nodal

#endif  // NODAL_SUPPORT_PROGRESS_H
