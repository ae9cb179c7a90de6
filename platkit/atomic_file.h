// Writes a file that appears complete or not at all.
//
// The data goes to a new file beside the target, is synced, and then renamed over the target. If the file system
// supports unnamed files, the new file has no name until Commit, so it disappears however the program ends. An
// uncommitted file is removed.
#ifndef PLATKIT_ATOMIC_FILE_H
#define PLATKIT_ATOMIC_FILE_H

#include <string>

#include "platkit/status.h"

namespace platkit {

class AtomicFile {
 public:
  AtomicFile() = default;
  ~AtomicFile();
  AtomicFile(const AtomicFile &) = delete;
  AtomicFile &operator=(const AtomicFile &) = delete;

  // Creates the new file for `path`, or for the target of a symbolic link at `path`.
  //
  // HVC_ALREADY_EXISTS: `path` exists and is not a regular file. Other statuses as for StatusOfErrno, with
  // HVC_WRITE_ERROR for other errors.
  [[nodiscard]] HVC_ReturnStatus Create(const std::string &path);

  // The descriptor of the new file; -1 before Create and after Commit.
  int fd() const { return fd_; }

  // Syncs the new file and renames it to the target, which replaces an existing file.
  //
  // Statuses as for StatusOfErrno, with HVC_WRITE_ERROR for other errors, such as a full or failed disk.
  [[nodiscard]] HVC_ReturnStatus Commit();

 private:
  bool CreateBesideTarget();
  bool SyncAndRename();
  bool GiveName();
  template <typename Try>
  bool TryNames(Try tryName);
  std::string Folder() const;
  void SyncFolder() const;

  std::string target_;
  std::string temporary_;  // the new file's path; empty while it has no name
  int fd_ = -1;
};

}  // namespace platkit

#endif  // PLATKIT_ATOMIC_FILE_H
