#include "tools/nodal/snapshot/snapshot_diff.h"

#include <algorithm>
#include <map>

#include "tools/nodal/snapshot/value_json.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::FieldType;
using platkit::FieldUnit;
using platkit::PathTarget;
using platkit::snapshot::kFailurePrefix;

bool IsAmount(FieldUnit unit) {
  switch (unit) {
    case FieldUnit::KB:
    case FieldUnit::BYTES:
    case FieldUnit::PAGES:
    case FieldUnit::BLOCKS:
    case FieldUnit::PERCENT:
    case FieldUnit::USEC:
    case FieldUnit::COUNT: return true;
    default: return false;
  }
}

void AddFieldChanges(const platkit::RecordLayout &layout, std::span<const std::byte> from,
                     std::span<const std::byte> to, const std::string &prefix, std::vector<FieldChange> &changes) {
  for (const platkit::Field &field : layout.fields) {
    const auto before = BytesOfField(field, from), after = BytesOfField(field, to);
    if (std::ranges::equal(before, after)) continue;
    const std::string name = prefix + std::string(field.name);
    if (field.type != FieldType::kEntries) {
      changes.push_back({name, &field, FieldToJson(field, before), FieldToJson(field, after)});
      continue;
    }
    for (uint32_t i = 0; i < field.count; ++i) {
      const size_t start = i * size_t{field.size};
      AddFieldChanges(*field.entry, before.subspan(start, field.size), after.subspan(start, field.size),
                      name + "[" + std::to_string(i) + "].", changes);
    }
  }
}

// Returns the entries that occur more often in `list` than in `other`.
OrderedJson EntriesMissingIn(const OrderedJson &other, const OrderedJson &list) {
  std::map<OrderedJson, size_t> counts;
  for (const OrderedJson &entry : other)
    ++counts[entry];
  OrderedJson missing = OrderedJson::array();
  for (const OrderedJson &entry : list) {
    const auto found = counts.find(entry);
    if (found == counts.end() || found->second == 0) {
      missing.push_back(entry);
    } else {
      --found->second;
    }
  }
  return missing;
}

Change Compare(std::string_view path, const SnapshotEntries &from, const SnapshotEntries &to) {
  Change change = {.kind = Change::Kind::kValue, .path = std::string(path)};
  const PathTarget target = platkit::ParsePath(path);
  const bool areKnown = from.key() == to.key() && target.node != nullptr && IsAsKnown(target, from.value()) &&
                        IsAsKnown(target, to.value());
  if (!areKnown) {
    change.from = ValueToJson(from.key(), from.value());
    change.to = ValueToJson(to.key(), to.value());
  } else if (target.asRecord) {
    change.kind = Change::Kind::kRecord;
    AddFieldChanges(*target.node->record, from.value().payload, to.value().payload, "", change.fields);
  } else {
    change.kind = Change::Kind::kList;
    const OrderedJson before = ListToJson(from.value()), after = ListToJson(to.value());
    change.removed = EntriesMissingIn(after, before);
    change.added = EntriesMissingIn(before, after);
  }
  return change;
}

// Returns the failure of a node that could not be read, else null.
OrderedJson FailureIn(const SnapshotEntries &entry) {
  return platkit::snapshot::IsFailureKey(entry.key()) ? ValueToJson(entry.key(), entry.value()) : OrderedJson();
}

bool AreEqual(const SnapshotEntries &from, const SnapshotEntries &to) {
  return from.key() == to.key() && from.value().type == to.value().type &&
         std::ranges::equal(from.value().payload, to.value().payload);
}

}  // namespace

std::optional<int64_t> FieldChange::difference() const {
  if (!IsAmount(field->unit) || from == -1 || to == -1) return std::nullopt;
  int64_t result = 0;
  const bool overflows = from.is_number_unsigned() && to.is_number_unsigned()
                             ? __builtin_sub_overflow(to.get<uint64_t>(), from.get<uint64_t>(), &result)
                             : __builtin_sub_overflow(to.get<int64_t>(), from.get<int64_t>(), &result);
  return overflows ? std::nullopt : std::optional(result);
}

std::string_view EntriesInPathOrder::Stream::path() const {
  return std::string_view(entries.key()).substr(hasFailures ? kFailurePrefix.size() : 0);
}

EntriesInPathOrder::EntriesInPathOrder(OpenedSnapshot &snapshot, const Filter &filter)
    : filter_(filter),
      nodes_{.entries = SnapshotEntries(snapshot), .hasFailures = false},
      failures_{.entries = SnapshotEntries(snapshot), .hasFailures = true} {
  Advance(nodes_);
  Advance(failures_);
  Choose();
}

void EntriesInPathOrder::Advance() {
  Advance(*current_);
  Choose();
}

void EntriesInPathOrder::Advance(Stream &stream) const {
  do {
    stream.isAtEntry = stream.entries.Next();
  } while (stream.isAtEntry &&
           (platkit::snapshot::IsFailureKey(stream.entries.key()) != stream.hasFailures || !filter_(stream.path())));
}

void EntriesInPathOrder::Choose() {
  if (nodes_.isAtEntry && failures_.isAtEntry) {
    current_ = failures_.path() < nodes_.path() ? &failures_ : &nodes_;
  } else {
    current_ = nodes_.isAtEntry ? &nodes_ : failures_.isAtEntry ? &failures_ : nullptr;
  }
}

void FindChanges(EntriesInPathOrder &from, EntriesInPathOrder &to, const std::function<void(const Change &)> &report) {
  while (from.current() != nullptr || to.current() != nullptr) {
    const bool isVanished = to.current() == nullptr || (from.current() != nullptr && from.path() < to.path());
    const bool isAppeared = from.current() == nullptr || (to.current() != nullptr && to.path() < from.path());
    if (isVanished) {
      report({.kind = Change::Kind::kVanished, .path = std::string(from.path()), .from = FailureIn(*from.current())});
    } else if (isAppeared) {
      report({.kind = Change::Kind::kAppeared, .path = std::string(to.path()), .to = FailureIn(*to.current())});
    } else if (!AreEqual(*from.current(), *to.current())) {
      report(Compare(from.path(), *from.current(), *to.current()));
    }
    if (!isAppeared) from.Advance();
    if (!isVanished) to.Advance();
  }
}

}  // namespace nodal
