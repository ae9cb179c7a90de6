// The entries of a snapshot file, in the order in which they stand there, which is that of their keys.
#ifndef NODAL_ENTRIES_H
#define NODAL_ENTRIES_H

#include <string>

#include "platkit/snapshot/snapshot_file.h"

namespace nodal {

// Throws a Failure if the file cannot be read, or is no snapshot.
void OpenSnapshot(const std::string &path, platkit::snapshot::SnapshotFile &file);

class Entries {
 public:
  Entries(const std::string &path, platkit::snapshot::SnapshotFile &file) : path_(path), file_(file), cursor_(file) {}

  // Goes to the next entry that is not of the header; false: there is none. Throws a Failure where the file is damaged,
  // or its keys are not in order.
  bool Next();

  const std::string &key() const { return key_; }
  const platkit::snapshot::Value &value() const { return value_; }

 private:
  bool NextOfFile();

  std::string path_;
  platkit::snapshot::SnapshotFile &file_;
  platkit::snapshot::SnapshotFile::Cursor cursor_;
  bool isFirst_ = true;
  std::string key_;
  platkit::snapshot::Value value_;
};

}  // namespace nodal

#endif  // NODAL_ENTRIES_H
