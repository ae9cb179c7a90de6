// Prints records of any bytes, converts them to JSON and back, and anonymizes them.
#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "platkit/source.h"
#include "tests/fuzz/byte_reader.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/target.h"
#include "tools/nodal/capture/pseudonyms.h"
#include "tools/nodal/commands/get.h"
#include "tools/nodal/snapshot/record_json.h"

namespace {

using platkit::Node;
using platkit::RecordLayout;
using Bytes = std::vector<std::byte>;

// Returns the same record for every node.
class OneRecord : public platkit::Source {
 public:
  explicit OneRecord(Bytes bytes) : bytes_(std::move(bytes)) {}

  HVC_ReturnStatus Get(const Node &, platkit::Arguments, std::span<std::byte> record) override {
    if (record.size() != bytes_.size()) return HVC_WRONG_SIZE;
    std::memcpy(record.data(), bytes_.data(), bytes_.size());
    return HVC_OK;
  }
  HVC_ReturnStatus List(const Node &, platkit::Arguments, platkit::ParamList &) override { return HVC_NOT_FOUND; }

 private:
  Bytes bytes_;
};

void CheckRoundTrip(const RecordLayout &layout, const Bytes &record) {
  const std::string json = nodal::RecordToJson(layout, record).dump();
  Bytes again(record.size());
  nodal::RecordFromJson(layout, nodal::Json::parse(json), again);
  REQUIRE(again == record);
}

void Show(const Node &node, const Bytes &record) {
  platkit::UseSource(std::make_unique<OneRecord>(record));
  nodal::Arguments arguments;
  for (size_t i = 0; i < node.recordArguments(); ++i) {
    const bool isInteger = node.arguments[i].kind == platkit::ParamKind::kInt;
    arguments.push_back(isInteger ? nodal::IntArgument(4) : nodal::TextArgument("x"));
  }
  const std::string path = nodal::PathOf(node, arguments);
  REQUIRE(fuzz::Succeeds([&] { nodal::Get({.path = path, .descriptions = true}); }));
  REQUIRE(fuzz::Succeeds([&] { nodal::Get({.path = path, .json = true}); }));
}

// Uses the text itself as the key. Deriving a key from the text, as nodal does, would take half a second.
nodal::PseudonymKey KeyOf(std::string_view text) {
  nodal::PseudonymKey::Bytes bytes = {};
  std::ranges::copy(text.substr(0, bytes.size()), bytes.begin());
  return nodal::PseudonymKey(bytes);
}

void CheckPseudonyms(const nodal::PseudonymKey &key, std::string_view name, const RecordLayout &layout, Bytes record) {
  nodal::Pseudonyms pseudonyms(key), again(key);
  for (const size_t room : {size_t{1}, size_t{7}, size_t{20}, size_t{36}, SIZE_MAX}) {
    const std::string pseudonym = pseudonyms.Of(name, room);
    REQUIRE(pseudonym.size() <= room);
    REQUIRE(pseudonym == again.Of(name, room));
  }
  Bytes same = record;
  pseudonyms.Replace(layout, record);
  again.Replace(layout, same);
  REQUIRE(record == same);
  CheckRoundTrip(layout, record);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::ByteReader input(fuzz::Text(data, size));
  const Node &node = platkit::Nodes()[input.TakeIndex(platkit::Nodes().size())];
  if (!node.isRecord()) return 0;
  const nodal::PseudonymKey key = KeyOf(input.TakeUntil('\n'));
  Bytes record(node.record->size);
  const std::string_view bytes = input.rest().substr(0, record.size());
  std::memcpy(record.data(), bytes.data(), bytes.size());
  CheckRoundTrip(*node.record, record);
  Show(node, record);
  CheckPseudonyms(key, input.rest(), *node.record, record);
  return 0;
}
