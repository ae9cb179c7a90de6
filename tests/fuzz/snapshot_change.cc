// Changes a mapped snapshot before certain accesses. All reads must return a status, and a report over the changing
// file must exit with 0 or 1. An input consists of the changes and the snapshot.
//
// The first byte is the number of changes, at most 7. A change has six bytes: the number of the access (16 bits), the
// kind, a position (16 bits), and the new byte at this position.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "platkit/path.h"
#include "platkit/snapshot/snapshot_file.h"
#include "platkit/snapshot/snapshot_source.h"
#include "tests/fuzz/byte_reader.h"
#include "tests/fuzz/kestrel.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/target.h"
#include "tests/support/access_trap.h"
#include "tools/nodal/tree/arguments.h"

namespace {

using platkit::snapshot::SnapshotFile;
using platkit::snapshot::Value;
using testing_support::AccessTrap;

enum class Kind : uint8_t { kTruncate, kRestore, kOverwrite, kCount };

struct Change {
  uint16_t access;
  Kind kind;
  uint16_t position;
  char byte;
};

std::vector<Change> TakeChanges(fuzz::ByteReader &reader) {
  std::vector<Change> changes(reader.TakeIndex(8));
  for (Change &change : changes) {
    change.access = reader.Take<uint16_t>();
    change.kind = static_cast<Kind>(reader.TakeIndex(static_cast<size_t>(Kind::kCount)));
    change.position = reader.Take<uint16_t>();
    change.byte = reader.Take<char>();
  }
  return changes;
}

class ChangingFile {
 public:
  ChangingFile(std::string_view content, std::vector<Change> changes)
      : content_(content), file_(content), changes_(std::move(changes)), fd_(open(path().c_str(), O_RDWR | O_CLOEXEC)) {
    REQUIRE(fd_ >= 0);
  }
  ~ChangingFile() { close(fd_); }
  ChangingFile(const ChangingFile &) = delete;
  ChangingFile &operator=(const ChangingFile &) = delete;

  const std::string &path() const { return file_.path(); }

  // Runs in a signal handler.
  void ChangeBefore(size_t access) const {
    for (const Change &change : changes_) {
      if (change.access == access) Apply(change);
    }
  }
  bool HasChangesAfter(size_t access) const {
    return std::ranges::any_of(changes_, [&](const Change &change) { return change.access > access; });
  }
  void Restore() const {
    const ssize_t written = pwrite(fd_, content_.data(), content_.size(), 0);
    REQUIRE(written == static_cast<ssize_t>(content_.size()));
    REQUIRE(ftruncate(fd_, static_cast<off_t>(content_.size())) == 0);
  }

 private:
  void Apply(const Change &change) const {
    const auto position = static_cast<off_t>(change.position % (content_.size() + 1));
    switch (change.kind) {
      case Kind::kTruncate: REQUIRE(ftruncate(fd_, position) == 0); break;
      case Kind::kRestore: Restore(); break;
      default: REQUIRE(pwrite(fd_, &change.byte, 1, position) == 1); break;
    }
  }

  std::string_view content_;
  fuzz::MemoryFile file_;
  std::vector<Change> changes_;
  int fd_;
};

void ReadEntries(const std::string &path) {
  SnapshotFile file;
  if (file.Open(path.c_str()) != HVC_OK) return;
  SnapshotFile::Cursor cursor(file);
  Value value;
  while (cursor.Next() == HVC_OK) {
    static_cast<void>(cursor.Read(value));
    static_cast<void>(file.IndexLeadsTo(cursor.key(), cursor.position()));
  }
  static_cast<void>(file.TablesAreWhole());
  static_cast<void>(file.CountUsedSlots());
  static_cast<void>(file.HasLongRun());
}

void ReadNode(platkit::Source &source, const platkit::PathTarget &target) {
  const std::vector<NODAL_Param> arguments = nodal::ParamsOf(target.arguments);
  if (target.asRecord) {
    std::vector<std::byte> record(target.node->record->size);
    static_cast<void>(source.Get(*target.node, arguments, record));
  } else {
    platkit::ParamList *list = platkit::ParamList::Make();
    static_cast<void>(source.List(*target.node, arguments, *list));
    list->Destroy();
  }
}

// `keys` are the keys of the unchanged file.
void ReadNodes(const std::string &path, const std::vector<std::string> &keys) {
  std::unique_ptr<platkit::Source> source;
  if (platkit::OpenSnapshot(path.c_str(), source) != HVC_OK) return;
  for (const std::string &key : keys) {
    const platkit::PathTarget target = platkit::ParsePath(key);
    if (target.node != nullptr) ReadNode(*source, target);
  }
}

std::vector<std::string> KeysOf(const std::string &path) {
  std::vector<std::string> keys;
  SnapshotFile file;
  if (file.Open(path.c_str()) != HVC_OK) return keys;
  for (SnapshotFile::Cursor cursor(file); cursor.Next() == HVC_OK;)
    keys.emplace_back(cursor.key());
  return keys;
}

template <typename Act>
void WithChanges(const ChangingFile &file, Act act) {
  file.Restore();
  AccessTrap trap([&](size_t access) {
    file.ChangeBefore(access);
    if (!file.HasChangesAfter(access)) trap.Stop();
  });
  act();
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (!AccessTrap::kIsSupported) return 0;
  fuzz::ByteReader reader(fuzz::Text(data, size));
  std::vector<Change> changes = TakeChanges(reader);
  const ChangingFile file(reader.rest(), std::move(changes));
  const std::vector<std::string> keys = KeysOf(file.path());
  WithChanges(file, [&] { ReadEntries(file.path()); });
  WithChanges(file, [&] { ReadNodes(file.path(), keys); });
  WithChanges(file, [&] { fuzz::ReportOnSnapshot(file.path()); });
  platkit::UseSource(nullptr);
  return 0;
}
