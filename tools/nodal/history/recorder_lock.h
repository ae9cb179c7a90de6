// Ensures that only one recorder writes to a history.
#ifndef NODAL_HISTORY_RECORDER_LOCK_H
#define NODAL_HISTORY_RECORDER_LOCK_H

#include <string>

#include "platkit/linux/files/file_descriptor.h"

namespace nodal {

// Locks a history until the object is destroyed or its process ends. The lock file contains the PID of the holder.
class RecorderLock {
 public:
  static constexpr char kFile[] = "recorder.lock";

  // `folder` is the open folder, and `path` is its name in messages. Throws a Failure if another process, which the
  // message names, holds the lock, or if the lock file cannot be used.
  RecorderLock(int folder, const std::string &path);
  ~RecorderLock();
  RecorderLock(const RecorderLock &) = delete;
  RecorderLock &operator=(const RecorderLock &) = delete;

 private:
  platkit::FileDescriptor file_;
};

}  // namespace nodal

#endif  // NODAL_HISTORY_RECORDER_LOCK_H
