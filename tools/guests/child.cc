#include "tools/guests/child.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <mutex>
#include <span>

#include "platkit/linux/files/system_calls.h"
#include "tools/nodal/support/output.h"

namespace guests {
namespace {

// The maximum number of bytes from a child. It is enough for 10,000 guests.
constexpr size_t kMaxRead = size_t{16} << 20;

// The body of the child process. It is killed when the parent ends, and prints nothing.
[[noreturn]] void RunChild(pid_t parent, int pipe, const std::function<void(const Report &)> &ask) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  signal(SIGPIPE, SIG_DFL);
  if (getppid() != parent) _exit(1);
  try {
    ask(Report(pipe));
  } catch (const std::exception &) {
    _exit(1);
  }
  _exit(0);
}

int MillisecondsUntil(Deadline deadline) {
  using std::chrono::milliseconds;
  const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now()).count();
  return static_cast<int>(std::clamp<int64_t>(left, 0, 60'000));
}

}  // namespace

void Report::Line(std::string_view line) const {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  std::string text(line);
  text += '\n';
  for (std::string_view left = text; !left.empty();) {
    const ssize_t count = write(pipe_, left.data(), left.size());
    if (count < 0 && errno != EINTR) _exit(1);
    if (count > 0) left.remove_prefix(static_cast<size_t>(count));
  }
}

Children::~Children() {
  for (Child &child : children_)
    End(child);
}

void Children::Start(const std::string &name, const std::function<void(const Report &)> &ask) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw nodal::Failure(name, std::strerror(errno));
  platkit::FileDescriptor readEnd(ends[0]);
  const platkit::FileDescriptor writeEnd(ends[1]);
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid < 0) throw nodal::Failure(name, std::strerror(errno));
  if (pid == 0) RunChild(parent, writeEnd.get(), ask);
  children_.push_back({.name = name, .pid = pid, .pipe = std::move(readEnd)});
}

void Children::ReceiveUntil(Deadline deadline) {
  while (!children_.empty() && std::chrono::steady_clock::now() < deadline) {
    std::vector<pollfd> polled;
    for (const Child &child : children_)
      polled.push_back({.fd = child.pipe.get(), .events = POLLIN, .revents = 0});
    if (poll(polled.data(), polled.size(), MillisecondsUntil(deadline)) < 0 && errno != EINTR) return;
    for (size_t i = 0; i < polled.size(); ++i) {
      if (polled[i].revents != 0) Read(children_[i]);
    }
    std::erase_if(children_, [](const Child &child) { return !child.pipe.isOpen(); });
  }
}

std::vector<std::string> Children::Running() const {
  std::vector<std::string> names;
  for (const Child &child : children_)
    names.push_back(child.name);
  return names;
}

void Children::Read(Child &child) {
  char buffer[65536];
  const ssize_t got = platkit::ReadOnce(child.pipe, buffer);
  if (got > 0) {
    child.received.append(buffer, static_cast<size_t>(got));
    child.size += static_cast<size_t>(got);
    TakeLines(child);
  }
  if (got <= 0 || child.size > kMaxRead) End(child);
}

void Children::TakeLines(Child &child) {
  size_t start = 0;
  for (size_t end = 0; (end = child.received.find('\n', start)) != std::string::npos; start = end + 1)
    receive_(child.name, std::string_view(child.received).substr(start, end - start));
  child.received.erase(0, start);
}

// Waits at most 20 ms. A child in an uninterruptible system call ends later; init reaps it after this program
// has ended.
void Children::End(Child &child) {
  if (!child.pipe.isOpen()) return;
  child.pipe = {};
  kill(child.pid, SIGKILL);
  for (int tries = 0; tries < 20 && waitpid(child.pid, nullptr, WNOHANG) == 0; ++tries)
    usleep(1000);
}

}  // namespace guests
