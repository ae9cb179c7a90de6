// What is different between two snapshots, node by node.
#ifndef NODAL_CHANGES_H
#define NODAL_CHANGES_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/nodal/entries.h"
#include "tools/nodal/record_json.h"

namespace nodal {

struct FieldChange {
  std::string name;
  const platkit::Field *field;
  OrderedJson from;
  OrderedJson to;

  // By how much it grew. Nothing for what is no amount, or was or is not available.
  std::optional<int64_t> difference() const;
};

struct Change {
  enum class Kind { kVanished, kAppeared, kRecord, kList, kValue };

  Kind kind;
  std::string path;
  // Of a record.
  std::vector<FieldChange> fields = {};
  // Of a list: the entries that only one of them has. If there are none, they stand in another order.
  OrderedJson removed = {};
  OrderedJson added = {};
  // As in a dump: what could not be read, on whichever side; both, where one is that or not as the catalogue says.
  OrderedJson from = {};
  OrderedJson to = {};
};

// The entries of a snapshot in the order of their paths; the file has those of failures behind all others.
class EntriesByPath {
 public:
  using Filter = std::function<bool(std::string_view path)>;

  EntriesByPath(const std::string &snapshot, platkit::snapshot::SnapshotFile &file, const Filter &filter);

  // Null: there are no more.
  const Entries *current() const { return current_ == nullptr ? nullptr : &current_->entries; }
  std::string_view path() const { return current_->path(); }

  void Advance();

 private:
  struct Stream {
    Entries entries;
    bool isOfFailures;
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

// Goes through both at once, and keeps nothing of what it has passed.
void FindChanges(EntriesByPath &from, EntriesByPath &to, const std::function<void(const Change &)> &report);

}  // namespace nodal

#endif  // NODAL_CHANGES_H
