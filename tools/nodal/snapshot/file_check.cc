#include "tools/nodal/snapshot/file_check.h"

#include <algorithm>
#include <new>
#include <vector>

namespace nodal {
namespace {

using platkit::Node;
using platkit::ParamKind;
using platkit::PathTarget;
using platkit::snapshot::SnapshotFile;
using platkit::snapshot::Value;
using platkit::snapshot::ValueType;
namespace snapshot = platkit::snapshot;

bool IsTime(std::string_view text) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00Z";
  if (text.empty()) return true;
  return std::ranges::equal(text, kForm,
                            [](char c, char form) { return form == '0' ? c >= '0' && c <= '9' : c == form; });
}

class FileCheck {
 public:
  FileCheck(SnapshotFile &file, Problems &problems) : file_(file), problems_(problems) {}

  CheckedNodes Run() {
    SnapshotFile::Cursor cursor(file_);
    HVC_ReturnStatus status;
    while ((status = cursor.Next()) == HVC_OK) {
      ++entries_;
      CheckEntry(cursor);
    }
    if (file_.status() != HVC_OK) {
      problems_.Report("file", "the file was truncated or became unreadable during the check");
    } else if (status != HVC_NOT_FOUND) {
      problems_.Report("entry " + std::to_string(entries_ + 1), "entry runs past the end of the records");
    } else if (file_.CountUsedSlots() != entries_ + std::size(snapshot::kReservedKeys)) {
      const size_t records = entries_ + std::size(snapshot::kReservedKeys);
      problems_.Report("index",
                       Plural(file_.CountUsedSlots(), "slot") + " in use, expected " + std::to_string(records));
    }
    CheckIndexOf(snapshot::kVersionKey, snapshot::kContentsBytes);
    CheckIndexOf(snapshot::kIndexCheckKey, snapshot::kIndexCheckPosition);
    if (!file_.TablesAreWhole()) problems_.Report("index", "damaged hash table");
    if (!IsTime(file_.header().time))
      problems_.Report("time", "invalid time (expected a form such as 2026-03-14T09:26:53Z)");
    return std::move(checked_);
  }

 private:
  void CheckEntry(SnapshotFile::Cursor &cursor) {
    const std::string key(cursor.key());
    if (snapshot::IsReservedKey(key) || (entries_ > 1 && key == previous_)) {
      problems_.Report(key, "duplicate key");
    } else {
      if (entries_ > 1 && key < previous_) problems_.Report(key, "key out of order");
      CheckIndexOf(key, cursor.position());
    }
    previous_ = key;
    Value value;
    const HVC_ReturnStatus status = cursor.Read(value);
    if (status == HVC_NO_MEMORY) throw std::bad_alloc();
    if (status != HVC_OK) {
      problems_.Report(key, "damaged value");
    } else {
      CheckValue(key, value);
    }
  }

  void CheckIndexOf(std::string_view key, uint32_t position) {
    if (!file_.IndexLeadsTo(key, position)) problems_.Report(key, "not found through the index");
  }

  void CheckValue(const std::string &key, const Value &value) {
    if (snapshot::IsHeaderKey(key)) return;  // checked when the file was opened
    if (snapshot::IsFailureKey(key)) return CheckFailure(key, value);
    PathTarget target = platkit::ParsePath(key);
    if (target.node == nullptr) {
      problems_.Report(key, "unknown node");
    } else if (const std::string wrong =
                   target.asRecord ? WrongRecord(*target.node, value) : WrongList(*target.node, value);
               !wrong.empty()) {
      problems_.Report(key, wrong);
    } else {
      checked_.byPath.emplace(key, std::move(target));
    }
  }

  void CheckFailure(const std::string &key, const Value &value) {
    const std::string path = key.substr(snapshot::kFailurePrefix.size());
    PathTarget target = platkit::ParsePath(path);
    Value read;
    if (target.node == nullptr) {
      problems_.Report(key, "unknown node");
    } else if (value.type != ValueType::kRecord || value.payload.size() != sizeof(HVC_ReturnStatus) ||
               std::ranges::count(value.payload, std::byte{0}) == sizeof(HVC_ReturnStatus)) {
      problems_.Report(key, "invalid status");
    } else if (file_.Find(path, read) != HVC_NOT_FOUND) {
      problems_.Report(key, "saved both as unreadable and with a value");
    } else {
      checked_.unread.emplace(path);
      checked_.byPath.emplace(path, std::move(target));
    }
  }

  static std::string WrongRecord(const Node &node, const Value &value) {
    if (value.type != ValueType::kRecord) return "not a record";
    if (value.payload.size() == node.record->size) return "";
    return Plural(value.payload.size(), "byte") + " (expected " + std::to_string(node.record->size) + ")";
  }

  static std::string WrongList(const Node &node, const Value &value) {
    if (node.entry.kind == ParamKind::kInt) {
      if (value.type != ValueType::kIntegers) return "not a list of integers";
      return value.payload.size() % sizeof(int64_t) == 0 ? "" : "last integer is truncated";
    }
    if (value.type != ValueType::kTexts) return "not a list of texts";
    return value.payload.empty() || value.text().back() == '\0' ? "" : "last text is truncated";
  }

  SnapshotFile &file_;
  Problems &problems_;
  uint64_t entries_ = 0;
  std::string previous_;
  CheckedNodes checked_;
};

}  // namespace

CheckedNodes CheckFile(SnapshotFile &file, Problems &problems) { return FileCheck(file, problems).Run(); }

}  // namespace nodal
