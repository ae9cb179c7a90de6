#include <algorithm>

#include "tools/nodal/snapshot/diff_printer.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

using platkit::snapshot::Header;

class DiffJsonPrinter : public DiffPrinter {
 public:
  void Begin(const OpenedSnapshot &from, const OpenedSnapshot &to) override {
    Print("{\n  \"from\": " + TextOf(HeadOf(from)) + ",\n  \"to\": " + TextOf(HeadOf(to)) + ",\n  \"changes\": [");
  }

  void Show(const Change &change) override {
    Print((isFirst_ ? "\n    " : ",\n    ") + TextOf(ToJson(change)));
    isFirst_ = false;
  }

  void End() override { Print(isFirst_ ? "]\n}\n" : "\n  ]\n}\n"); }

 private:
  static std::string TextOf(const OrderedJson &json) { return json.dump(-1, ' ', true); }

  static OrderedJson HeadOf(const OpenedSnapshot &snapshot) {
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

}  // namespace

std::unique_ptr<DiffPrinter> MakeDiffJsonPrinter() { return std::make_unique<DiffJsonPrinter>(); }

}  // namespace nodal
