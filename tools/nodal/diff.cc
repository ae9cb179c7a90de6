// nodal diff: what is different between two snapshots.
#include <algorithm>
#include <memory>
#include <set>

#include "tools/nodal/changes.h"
#include "tools/nodal/commands.h"
#include "tools/nodal/output.h"
#include "tools/nodal/part.h"
#include "tools/nodal/text.h"

namespace nodal {
namespace {

using platkit::FieldType;
using platkit::snapshot::Header;
using platkit::snapshot::SnapshotFile;

struct Snapshot {
  explicit Snapshot(const std::string &snapshot) : path(snapshot) { OpenSnapshot(path, file); }

  std::string path;
  SnapshotFile file;
};

// Shows changes as they are found.
class Presentation {
 public:
  virtual ~Presentation() = default;
  virtual void Begin(const Snapshot &from, const Snapshot &to) = 0;
  virtual void Show(const Change &change) = 0;
  virtual void End() = 0;
};

// Nothing at all where there is no change.
class Text : public Presentation {
 public:
  void Begin(const Snapshot &from, const Snapshot &to) override {
    heading_ = Heading("---", from) + Heading("+++", to);
  }

  void Show(const Change &change) override {
    Print(heading_);
    heading_.clear();
    const std::string path = Printable(change.path);
    switch (change.kind) {
      case Change::Kind::kVanished: return Print("- " + path + FailureAtEnd(change.from) + "\n");
      case Change::Kind::kAppeared: return Print("+ " + path + FailureAtEnd(change.to) + "\n");
      default: Print("~ " + path + "\n");
    }
    switch (change.kind) {
      case Change::Kind::kRecord: return ShowFields(change.fields);
      case Change::Kind::kList: return ShowEntries(change);
      default: Print("    " + Shown(change.from) + " -> " + Shown(change.to) + "\n");
    }
  }

  void End() override {}

 private:
  struct Row {
    std::string name;
    std::string from;
    std::string to;
    std::string unit;
    std::string difference;
  };

  static std::string Heading(const std::string &mark, const Snapshot &snapshot) {
    const Header &header = snapshot.file.header();
    std::string line = mark + " " + snapshot.path;
    if (!header.host.empty()) line += "  " + header.host;
    if (!header.time.empty()) line += "  " + header.time;
    return Printable(line) + "\n";
  }

  static std::string FailureAtEnd(const OrderedJson &failure) { return failure.is_null() ? "" : "  " + Shown(failure); }

  static void ShowFields(const std::vector<FieldChange> &fields) {
    std::vector<Row> rows;
    std::ranges::transform(fields, std::back_inserter(rows), RowOf);
    const auto padding = [&rows](const Row &row, auto member) {
      const auto size = [member](const Row &other) { return (other.*member).size(); };
      return std::string(size(*std::ranges::max_element(rows, {}, size)) - size(row), ' ');
    };
    for (const Row &row : rows) {
      std::string line = "    " + row.name + padding(row, &Row::name) + "  ";
      line += padding(row, &Row::from) + row.from + " -> " + padding(row, &Row::to) + row.to;
      if (!row.unit.empty() || !row.difference.empty()) line += row.unit + padding(row, &Row::unit);
      if (!row.difference.empty()) line += "  " + row.difference;
      Print(line + "\n");
    }
  }

  static Row RowOf(const FieldChange &change) {
    if (change.field->type == FieldType::kGap) return RowOfGap(change);
    Row row = {change.name, ShownOrQuoted(change, change.from), ShownOrQuoted(change, change.to),
               std::string(platkit::UnitName(change.field->unit)), ""};
    if (!row.unit.empty()) row.unit.insert(0, "  ");
    if (const std::optional<int64_t> difference = change.difference()) {
      row.difference = (*difference > 0 ? "+" : "") + std::to_string(*difference);
    }
    return row;
  }

  // Of the bytes without a name, those from the first to the last that changed.
  static Row RowOfGap(const FieldChange &change) {
    const auto &from = change.from.get_ref<const std::string &>(), &to = change.to.get_ref<const std::string &>();
    const auto digits = [](auto first, auto different) { return static_cast<size_t>(different - first); };
    const size_t first = digits(from.begin(), std::ranges::mismatch(from, to).in1) / 2;
    const size_t behind =
        from.size() / 2 - digits(from.rbegin(), std::mismatch(from.rbegin(), from.rend(), to.rbegin()).first) / 2;
    const auto bytes = [&](const std::string &hex) { return "hex " + hex.substr(2 * first, 2 * (behind - first)); };
    return {change.name + "[" + std::to_string(first) + ":" + std::to_string(behind) + "]", bytes(from), bytes(to), "",
            ""};
  }

  static std::string ShownOrQuoted(const FieldChange &change, const OrderedJson &value) {
    const std::string shown = ShownValue(*change.field, value);
    return value.is_string() ? "'" + shown + "'" : shown;
  }

  static void ShowEntries(const Change &change) {
    if (change.removed.empty() && change.added.empty()) Print("    in another order\n");
    for (const OrderedJson &entry : change.removed)
      Print("    - " + Shown(entry) + "\n");
    for (const OrderedJson &entry : change.added)
      Print("    + " + Shown(entry) + "\n");
  }

  // An entry of a list, or a value as in a dump.
  static std::string Shown(const OrderedJson &value) {
    if (value.is_string()) return Printable("'" + value.get_ref<const std::string &>() + "'");
    if (value.is_number_integer()) return value.dump();
    if (value.contains("status")) {
      const OrderedJson &status = value["status"];
      return "not read: " + (status.is_string() ? status.get<std::string>() : "Status " + status.dump());
    }
    if (value.contains("type")) return value["type"].get<std::string>() + " " + value["hex"].get<std::string>();
    if (value.contains("hex")) return "hex " + value["hex"].get<std::string>();
    return "read";
  }

  std::string heading_;
};

// A change on each line.
class JsonLines : public Presentation {
 public:
  void Begin(const Snapshot &from, const Snapshot &to) override {
    Print("{\n  \"from\": " + TextOf(HeadOf(from)) + ",\n  \"to\": " + TextOf(HeadOf(to)) + ",\n  \"changes\": [");
  }

  void Show(const Change &change) override {
    Print((isFirst_ ? "\n    " : ",\n    ") + TextOf(ToJson(change)));
    isFirst_ = false;
  }

  void End() override { Print(isFirst_ ? "]\n}\n" : "\n  ]\n}\n"); }

 private:
  static std::string TextOf(const OrderedJson &json) { return json.dump(-1, ' ', true); }

  static OrderedJson HeadOf(const Snapshot &snapshot) {
    const Header &header = snapshot.file.header();
    return {{"file", TextToJson(snapshot.path)},
            {"build", TextToJson(header.definitions.build)},
            {"host", TextToJson(header.host)},
            {"time", TextToJson(header.time)}};
  }

  static OrderedJson ToJson(const Change &change) {
    OrderedJson json = {{"path", TextToJson(change.path)}};
    switch (change.kind) {
      case Change::Kind::kVanished:
        json["change"] = "vanished";
        if (!change.from.is_null()) json["from"] = change.from;
        break;
      case Change::Kind::kAppeared:
        json["change"] = "appeared";
        if (!change.to.is_null()) json["to"] = change.to;
        break;
      case Change::Kind::kRecord:
        json["change"] = "record";
        std::ranges::transform(change.fields, std::back_inserter(json["fields"]), FieldToJson);
        break;
      case Change::Kind::kList:
        json["change"] = "list";
        json["removed"] = change.removed;
        json["added"] = change.added;
        break;
      case Change::Kind::kValue:
        json["change"] = "value";
        json["from"] = change.from;
        json["to"] = change.to;
        break;
    }
    return json;
  }

  static OrderedJson FieldToJson(const FieldChange &change) {
    OrderedJson json = {{"field", change.name}, {"from", change.from}, {"to", change.to}};
    if (const std::string_view unit = platkit::UnitName(change.field->unit); !unit.empty()) json["unit"] = unit;
    if (const std::optional<int64_t> difference = change.difference()) json["difference"] = *difference;
    return json;
  }

  bool isFirst_ = true;
};

// Remembers which of the paths that were asked for lead to something.
class Selection {
 public:
  explicit Selection(const std::vector<std::string> &paths) : paths_(PathsOf(paths)) {}

  bool Contains(std::string_view path) {
    bool isIn = paths_.empty();
    for (const std::string &top : paths_) {
      if (!IsAtOrBelow(path, top)) continue;
      met_.insert(top);
      isIn = true;
    }
    return isIn;
  }

  void CheckThatAllWereMet() const {
    for (const std::string &top : paths_) {
      if (!met_.contains(top)) throw Failure(top.empty() ? "/" : top, HVC_NOT_FOUND);
    }
  }

 private:
  std::vector<std::string> paths_;
  std::set<std::string> met_;
};

}  // namespace

bool Diff(const DiffOptions &options) {
  Snapshot from(options.from), to(options.to);
  Selection selection(options.only);
  const EntriesByPath::Filter filter = [&](std::string_view path) { return selection.Contains(path); };
  EntriesByPath fromEntries(from.path, from.file, filter), toEntries(to.path, to.file, filter);
  std::unique_ptr<Presentation> presentation;
  if (options.json) {
    presentation = std::make_unique<JsonLines>();
  } else {
    presentation = std::make_unique<Text>();
  }
  bool areEqual = true;
  presentation->Begin(from, to);
  FindChanges(fromEntries, toEntries, [&](const Change &change) {
    areEqual = false;
    presentation->Show(change);
  });
  presentation->End();
  selection.CheckThatAllWereMet();
  return areEqual;
}

}  // namespace nodal
