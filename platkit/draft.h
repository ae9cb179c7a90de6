// A file that appears whole or not at all.
//
// It is written beside its target, synced, and renamed. It has a name only when it is whole, where the file system
// allows that: then nothing is left of it, however the program ends, but for the moment in which it takes the target's
// place. Unless it does that, it is removed.
#ifndef PLATKIT_DRAFT_H
#define PLATKIT_DRAFT_H

#include <string>

#include "platkit/status.h"

namespace platkit {

// What a failed write, or what goes before and after it, comes to.
HVC_ReturnStatus WriteStatus(int error);

class Draft {
 public:
  Draft() = default;
  ~Draft();
  Draft(const Draft &) = delete;
  Draft &operator=(const Draft &) = delete;

  // Begins the file for `path`, or for what a link there leads to.
  //
  // HVC_ALREADY_EXISTS: there is something that is no regular file. HVC_NOT_FOUND: there is no such folder.
  // HVC_NO_PERMISSION. HVC_WRITE_ERROR.
  [[nodiscard]] HVC_ReturnStatus Create(const std::string &path);

  int fd() const { return fd_; }

  // Puts the file where it belongs, in the place of one that stands there. HVC_WRITE_ERROR: the disk is full, or
  // failed.
  [[nodiscard]] HVC_ReturnStatus TakePlace();

 private:
  bool CreateBesideTarget();
  bool SyncAndRename();
  bool GiveName();
  template <typename Try>
  bool TryNames(Try take);
  std::string Folder() const;
  void SyncFolder() const;

  std::string target_;
  std::string path_;  // empty: it has no name
  int fd_ = -1;
};

}  // namespace platkit

#endif  // PLATKIT_DRAFT_H
