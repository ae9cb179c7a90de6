#include "tools/nodal/snapshot/snapshot_entries.h"

#include "tools/nodal/history/moment_file.h"
#include "tools/nodal/snapshot/open_failure.h"
#include "tools/nodal/support/text.h"

namespace nodal {

namespace snapshot = platkit::snapshot;

OpenedSnapshot::OpenedSnapshot(const std::string &snapshotPath) : path(snapshotPath) {
  HVC_ReturnStatus status = file.Open(path.c_str());
  if (status == HVC_NOT_FOUND && IsMoment(path)) status = file.Open(MomentFile(path).path().c_str());
  if (status != HVC_OK) throw OpenFailure(path, status);
  if (file.HasLongRun()) {
    throw Failure(path, StatusText(HVC_SNAPSHOT_DAMAGED) + ": too many keys collide in the index (hash collisions)");
  }
}

bool SnapshotEntries::Next() {
  while (NextOfFile()) {
    if (!snapshot::IsHeaderKey(key_)) return true;
  }
  return false;
}

bool SnapshotEntries::NextOfFile() {
  HVC_ReturnStatus status = cursor_.Next();
  if (status == HVC_NOT_FOUND) return false;
  if (status != HVC_OK) throw Failure(snapshot_.path, status);
  const std::string previous = std::move(key_);
  key_ = cursor_.key();
  status = cursor_.Read(value_);
  // The checksum of a value does not cover its key, but the index no longer leads to an entry whose key was
  // overwritten.
  if (status == HVC_OK && !snapshot_.file.IndexLeadsTo(key_, cursor_.position())) status = HVC_SNAPSHOT_DAMAGED;
  if (status != HVC_OK) throw Failure(snapshot_.path, key_ + ": " + StatusText(status));
  const bool ascending = isFirst_ || previous < key_;
  if (!ascending || snapshot::IsReservedKey(key_)) throw Failure(snapshot_.path, key_ + ": key out of order");
  isFirst_ = false;
  return true;
}

}  // namespace nodal
