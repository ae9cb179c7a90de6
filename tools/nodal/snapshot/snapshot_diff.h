// The differences between two snapshots, node by node.
#ifndef NODAL_SNAPSHOT_SNAPSHOT_DIFF_H
#define NODAL_SNAPSHOT_SNAPSHOT_DIFF_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/nodal/snapshot/record_json.h"
#include "tools/nodal/snapshot/snapshot_entries.h"

namespace nodal {

struct FieldChange {
  std::string name;
  const platkit::Field *field;
  OrderedJson from;
  OrderedJson to;

  // Returns `to` minus `from`, or std::nullopt if the field is not an amount, a value is unavailable or unlimited, or
  // the difference does not fit.
  std::optional<int64_t> difference() const;
};

struct Change {
  enum class Kind { kVanished, kAppeared, kRecord, kList, kValue };

  Kind kind;
  std::string path;
  // The changed fields of a record.
  std::vector<FieldChange> fields = {};
  // The entries of a list that only one snapshot has. If both are empty, only the order differs.
  OrderedJson removed = {};
  OrderedJson added = {};
  // Values in the form of a dump. For a node that vanished or appeared: its value if it could not be read. For a node
  // in both snapshots: both values if either could not be read or does not fit the catalogue.
  OrderedJson from = {};
  OrderedJson to = {};
};

// Reads the entries of a snapshot in the order of their paths. In the file, the nodes that could not be read come after
// all others.
class EntriesInPathOrder {
 public:
  using Filter = std::function<bool(std::string_view path)>;

  EntriesInPathOrder(OpenedSnapshot &snapshot, const Filter &filter);

  // Null at the end.
  const SnapshotEntries *current() const { return current_ == nullptr ? nullptr : &current_->entries; }
  std::string_view path() const { return current_->path(); }

  void Advance();

 private:
  struct Stream {
    SnapshotEntries entries;
    bool hasFailures;
    bool isAtEntry = false;

    std::string_view path() const;
  };

  void Advance(Stream &stream) const;
  void Choose();

  const Filter &filter_;
  Stream nodes_;
  Stream failures_;
  Stream *current_ = nullptr;
};

// Reports the changes in the order of paths. Takes constant memory.
void FindChanges(EntriesInPathOrder &from, EntriesInPathOrder &to, const std::function<void(const Change &)> &report);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_SNAPSHOT_DIFF_H
