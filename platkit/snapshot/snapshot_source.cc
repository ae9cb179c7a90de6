#include "platkit/snapshot/snapshot_source.h"

#include <bitset>
#include <cstring>
#include <new>

#include "platkit/path.h"
#include "platkit/snapshot/list_value.h"
#include "platkit/snapshot/snapshot_file.h"

namespace platkit {
namespace {

using snapshot::RecordPlace;
using snapshot::Value;
using snapshot::ValueType;

class SnapshotSource : public Source {
 public:
  HVC_ReturnStatus Open(const char *path) { return file_.Open(path); }

  HVC_ReturnStatus Get(const Node &node, Arguments arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) override;
  const Definitions &definitions() const override { return file_.header().definitions; }

 private:
  HVC_ReturnStatus Locate(const Node &node, Arguments arguments, RecordPlace &place);
  HVC_ReturnStatus StatusOfAbsent(std::string_view path);
  HVC_ReturnStatus StatusOfWrongSize(const RecordPlace &place) const;
  bool PrefetchSiblings(const Node &node, Arguments arguments);

  snapshot::SnapshotFile file_;
  // The last instance that was read: the start of its path, and its number.
  std::string_view lastStart_;
  int64_t lastInstance_ = 0;
  // The nodes that were read for any instance, as indexes in Nodes().
  std::bitset<kMaxNodes> asked_;
};

HVC_ReturnStatus SnapshotSource::Locate(const Node &node, Arguments arguments, RecordPlace &place) {
  PathWriter path;
  WritePath(node, arguments, path);
  if (!path.ok()) return HVC_NOT_FOUND;  // longer than any key
  const bool siblingsFollow = PrefetchSiblings(node, arguments);
  const HVC_ReturnStatus status = file_.Locate(path.view(), place);
  if (status == HVC_NOT_FOUND) return StatusOfAbsent(path.view());
  if (status == HVC_OK && siblingsFollow) file_.PrefetchAround(place);
  return status;
}

// Callers read several nodes of one instance, such as a group, and then the same nodes of the next instance. Their
// records are neighbours, but their index entries are scattered. The index does not fit the processor's cache, so each
// look-up would wait for memory. The first read of an instance therefore prefetches the index entries of all nodes that
// were read for earlier instances. (Without this, group-stats over 100,000 groups takes 20 to 30 % more processor
// time.)
//
// Returns whether this was the first read of the instance.
bool SnapshotSource::PrefetchSiblings(const Node &node, Arguments arguments) {
  if (arguments.size() != 1 || arguments[0].kind != ParamKind::kInt) return false;
  const std::span<const Node> nodes = Nodes();
  asked_.set(static_cast<size_t>(&node - nodes.data()));
  const std::string_view start = node.pieces[0];
  const int64_t instance = arguments[0].integer;
  if (instance == lastInstance_ && start == lastStart_) return false;
  lastStart_ = start;
  lastInstance_ = instance;
  PathWriter path;
  const uint32_t hash = snapshot::Hash(path.Literal(start).Integer(instance).view());
  for (size_t i = 0; i < nodes.size(); ++i) {
    if (asked_[i] && nodes[i].pieces[0] == start) file_.PrefetchKey(snapshot::Hash(nodes[i].pieces[1], hash));
  }
  return true;
}

// The file has no entry for a missing node. For an unreadable node, it has an entry with the status of the failed read.
HVC_ReturnStatus SnapshotSource::StatusOfAbsent(std::string_view path) {
  PathWriter key;
  key.Literal(snapshot::kFailurePrefix).Literal(path);
  if (!key.ok()) return HVC_NOT_FOUND;
  RecordPlace place;
  Value value;
  HVC_ReturnStatus status = file_.Locate(key.view(), place);
  if (status != HVC_OK) return status;
  if (place.valueLength != snapshot::kFailureBytes + snapshot::kValueOverhead) return HVC_SNAPSHOT_DAMAGED;
  status = file_.Read(place, value);
  return status == HVC_OK ? snapshot::FailureIn(value) : status;
}

HVC_ReturnStatus SnapshotSource::Get(const Node &node, Arguments arguments, std::span<std::byte> record) {
  RecordPlace place;
  HVC_ReturnStatus status = Locate(node, arguments, place);
  if (status != HVC_OK) return status;
  if (place.valueLength != record.size() + snapshot::kValueOverhead) return StatusOfWrongSize(place);
  Value value;
  status = file_.Read(place, value);
  if (status != HVC_OK) return status;
  if (value.type != ValueType::kRecord) return HVC_SNAPSHOT_DAMAGED;
  std::memcpy(record.data(), value.payload.data(), record.size());
  return HVC_OK;
}

// Checks the value without copying it, because it can be as large as the file.
HVC_ReturnStatus SnapshotSource::StatusOfWrongSize(const RecordPlace &place) const {
  ValueType type;
  const HVC_ReturnStatus status = file_.CheckValue(place, type);
  if (status != HVC_OK) return status;
  return type == ValueType::kRecord ? HVC_WRONG_SIZE : HVC_SNAPSHOT_DAMAGED;
}

HVC_ReturnStatus SnapshotSource::List(const Node &node, Arguments arguments, ParamList &list) {
  RecordPlace place;
  HVC_ReturnStatus status = Locate(node, arguments, place);
  if (status != HVC_OK) return status;
  Value value;
  status = file_.Read(place, value);
  return status == HVC_OK ? snapshot::AddEntries(node, value, list) : status;
}

}  // namespace

HVC_ReturnStatus OpenSnapshot(const char *path, std::unique_ptr<Source> &source) {
  std::unique_ptr<SnapshotSource> opened(new (std::nothrow) SnapshotSource);
  if (opened == nullptr) return HVC_NO_MEMORY;
  const HVC_ReturnStatus status = opened->Open(path);
  if (status == HVC_OK) source = std::move(opened);
  return status;
}

}  // namespace platkit
