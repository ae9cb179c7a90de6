#include "tools/nodal/history/recorder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platkit/linux/files/text_scanner.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

// Names the process that holds the lock, by the PID in the file.
std::string HolderOf(int file) {
  char buffer[32];
  const ssize_t size = pread(file, buffer, sizeof buffer, 0);
  uint64_t pid = 0;
  const bool isKnown = size > 0 && platkit::ParseNumber({buffer, static_cast<size_t>(size)}, pid);
  return isKnown ? "process " + std::to_string(pid) : "another process";
}

}  // namespace

RecorderLock::RecorderLock(int folder, const std::string &path) {
  const std::string name = path + "/" + kFile;
  file_ = platkit::FileDescriptor(
      openat(folder, kFile, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR));
  struct stat about;
  if (!file_.isOpen() || fstat(file_.get(), &about) != 0) throw Failure(name, std::strerror(errno));
  if (!S_ISREG(about.st_mode)) throw Failure(name, "not a regular file");
  if (flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) throw Failure(name, std::strerror(errno));
    throw Failure(path, HolderOf(file_.get()) + " already records to this folder");
  }
  // Ignores failures: if the disk is full, only the message of a second recorder lacks the PID.
  const std::string pid = std::to_string(getpid()) + "\n";
  if (ftruncate(file_.get(), 0) != 0 || pwrite(file_.get(), pid.data(), pid.size(), 0) < 0) errno = 0;
}

RecorderLock::~RecorderLock() {
  if (ftruncate(file_.get(), 0) != 0) errno = 0;
}

}  // namespace nodal
