#include "tools/nodal/support/progress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace nodal {
namespace {

constexpr std::chrono::milliseconds kInterval{100};
constexpr size_t kBarWidth = 30;

void Draw(const std::string &text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

}  // namespace

Progress::Progress() : isShown_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (width_ > 0) Draw("\r" + std::string(width_, ' ') + "\r");
}

void Progress::Begin(const std::string &what, size_t total) {
  what_ = what;
  done_ = 0;
  total_ = total;
}

void Progress::Advance() {
  if (done_ < total_) ++done_;
  if (!isShown_ || total_ == 0 || Clock::now() < next_) return;
  next_ = Clock::now() + kInterval;
  Show();
}

void Progress::Show() {
  const size_t filled = done_ * kBarWidth / total_;
  const std::string line = "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] " + what_ + ": " +
                           std::to_string(done_) + " of " + std::to_string(total_);
  const size_t shorter = width_ > line.size() ? width_ - line.size() : 0;
  Draw("\r" + line + std::string(shorter, ' '));
  width_ = line.size() + shorter;
}

}  // namespace nodal
