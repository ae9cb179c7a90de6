#include "tools/nodal/entries.h"

#include "tools/nodal/output.h"
#include "tools/nodal/text.h"

namespace nodal {

namespace snapshot = platkit::snapshot;

void OpenSnapshot(const std::string &path, snapshot::SnapshotFile &file) {
  const HVC_ReturnStatus status = file.Open(path.c_str());
  if (status != HVC_OK) throw Failure(path, status);
}

bool Entries::Next() {
  while (NextOfFile()) {
    if (!snapshot::IsHeaderKey(key_)) return true;
  }
  return false;
}

bool Entries::NextOfFile() {
  const HVC_ReturnStatus status = cursor_.Next();
  if (status == HVC_NOT_FOUND) return false;
  if (status != HVC_OK) throw Failure(path_, status);
  const std::string previous = std::move(key_);
  key_ = cursor_.key();
  // A value has a check of its own. A key that was overwritten is one that nobody finds.
  if (cursor_.Read(value_) != HVC_OK || !file_.IndexLeadsTo(key_, cursor_.position()))
    throw Failure(path_, key_ + ": " + StatusText(HVC_SNAPSHOT_DAMAGED));
  const bool ascending = isFirst_ || previous < key_;
  if (!ascending || snapshot::IsReservedKey(key_)) throw Failure(path_, key_ + ": not in the order of the keys");
  isFirst_ = false;
  return true;
}

}  // namespace nodal
