#include <algorithm>

#include "tools/nodal/snapshot/diff_printer.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::FieldType;
using platkit::snapshot::Header;

class DiffTextPrinter : public DiffPrinter {
 public:
  void Begin(const OpenedSnapshot &from, const OpenedSnapshot &to) override {
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

  static std::string Heading(const std::string &mark, const OpenedSnapshot &snapshot) {
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

  // Shows the unnamed bytes from the first to the last byte that changed.
  static Row RowOfGap(const FieldChange &change) {
    const auto &from = change.from.get_ref<const std::string &>(), &to = change.to.get_ref<const std::string &>();
    const auto digits = [](auto first, auto different) { return static_cast<size_t>(different - first); };
    const size_t first = digits(from.begin(), std::ranges::mismatch(from, to).in1) / 2;
    const size_t end =
        from.size() / 2 - digits(from.rbegin(), std::mismatch(from.rbegin(), from.rend(), to.rbegin()).first) / 2;
    const auto bytes = [&](const std::string &hex) { return "hex " + hex.substr(2 * first, 2 * (end - first)); };
    return {change.name + "[" + std::to_string(first) + ":" + std::to_string(end) + "]", bytes(from), bytes(to), "",
            ""};
  }

  static std::string ShownOrQuoted(const FieldChange &change, const OrderedJson &value) {
    const std::string shown = ShownValue(*change.field, value);
    return value.is_string() ? "'" + shown + "'" : shown;
  }

  static void ShowEntries(const Change &change) {
    if (change.removed.empty() && change.added.empty()) Print("    order changed\n");
    for (const OrderedJson &entry : change.removed)
      Print("    - " + Shown(entry) + "\n");
    for (const OrderedJson &entry : change.added)
      Print("    + " + Shown(entry) + "\n");
  }

  // Formats an entry of a list, or a value in the form of a dump.
  static std::string Shown(const OrderedJson &value) {
    if (value.is_string()) return Printable("'" + value.get_ref<const std::string &>() + "'");
    if (value.is_number_integer()) return value.dump();
    if (value.contains("status")) {
      const OrderedJson &status = value["status"];
      return "unreadable: " + (status.is_string() ? status.get<std::string>() : "Status " + status.dump());
    }
    if (value.contains("type")) return value["type"].get<std::string>() + " " + value["hex"].get<std::string>();
    if (value.contains("hex")) return "hex " + value["hex"].get<std::string>();
    return "readable";
  }

  std::string heading_;
};

}  // namespace

std::unique_ptr<DiffPrinter> MakeDiffTextPrinter() { return std::make_unique<DiffTextPrinter>(); }

}  // namespace nodal
