// A progress bar on the terminal.
#ifndef NODAL_SUPPORT_PROGRESS_H
#define NODAL_SUPPORT_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string>

namespace nodal {

// Draws on standard error if that is a terminal. The destructor erases the bar.
class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  // Starts a phase of `total` steps.
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
  size_t width_ = 0;  // the width of the drawn line
};

}  // namespace nodal

#endif  // NODAL_SUPPORT_PROGRESS_H
