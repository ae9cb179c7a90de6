// The entries of a snapshot file.
#ifndef NODAL_SNAPSHOT_SNAPSHOT_ENTRIES_H
#define NODAL_SNAPSHOT_SNAPSHOT_ENTRIES_H

#include <string>

#include "platkit/snapshot/snapshot_file.h"

namespace nodal {

struct OpenedSnapshot {
  // Throws a Failure if the file cannot be read, is not a snapshot, or has too many keys that collide.
  explicit OpenedSnapshot(const std::string &snapshotPath);

  const std::string path;
  platkit::snapshot::SnapshotFile file;
};

// Reads the entries in the order of their keys, without the entries of the header.
class SnapshotEntries {
 public:
  explicit SnapshotEntries(OpenedSnapshot &snapshot) : snapshot_(snapshot), cursor_(snapshot.file) {}

  // Moves to the next entry. Returns false at the end. Throws a Failure if the file is damaged or its keys are not in
  // order.
  bool Next();

  const std::string &key() const { return key_; }
  const platkit::snapshot::Value &value() const { return value_; }

 private:
  bool NextOfFile();

  OpenedSnapshot &snapshot_;
  platkit::snapshot::SnapshotFile::Cursor cursor_;
  bool isFirst_ = true;
  std::string key_;
  platkit::snapshot::Value value_;
};

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_SNAPSHOT_ENTRIES_H
