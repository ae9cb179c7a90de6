// Child processes that ask monitors. A child whose monitor does not answer in time is killed.
//
// A call to libvirt cannot be cancelled, and a monitor may send anything at any speed. Therefore libvirt has a process
// of its own, and so does each QMP socket.
#ifndef GUESTS_CHILD_H
#define GUESTS_CHILD_H

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/file_descriptor.h"

namespace guests {

using Deadline = std::chrono::steady_clock::time_point;

// Sends lines to the parent. Several threads may send lines at the same time.
class Report {
 public:
  explicit Report(int pipe) : pipe_(pipe) {}
  void Line(std::string_view line) const;

 private:
  int pipe_;
};

class Children {
 public:
  // Called with each line of a child.
  using Receive = std::function<void(const std::string &name, std::string_view line)>;

  explicit Children(Receive receive) : receive_(std::move(receive)) {}
  // Kills the children that still run.
  ~Children();
  Children(const Children &) = delete;
  Children &operator=(const Children &) = delete;

  // Runs `ask` in a child process of this name. Throws a nodal::Failure if no child can be created.
  void Start(const std::string &name, const std::function<void(const Report &)> &ask);

  // Receives the lines of all children until all have ended, or until the deadline.
  void ReceiveUntil(Deadline deadline);

  // The children that have not ended yet, by name.
  std::vector<std::string> Running() const;

 private:
  struct Child {
    std::string name;
    pid_t pid;
    platkit::FileDescriptor pipe;
    std::string received = {};  // the start of a line that is not complete yet
    size_t size = 0;            // bytes received so far
  };

  void Read(Child &child);
  void TakeLines(Child &child);
  void End(Child &child);

  Receive receive_;
  std::vector<Child> children_;
};

}  // namespace guests

#endif  // GUESTS_CHILD_H
