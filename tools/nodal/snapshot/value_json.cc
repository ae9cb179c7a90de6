#include "tools/nodal/snapshot/value_json.h"

#include <cstring>
#include <string>

#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::ParamKind;
using platkit::PathTarget;
using platkit::snapshot::Value;
using platkit::snapshot::ValueType;
namespace snapshot = platkit::snapshot;

OrderedJson IntegersToJson(std::span<const std::byte> payload) {
  OrderedJson list = OrderedJson::array();
  for (size_t i = 0; i < payload.size(); i += sizeof(int64_t)) {
    int64_t integer;
    std::memcpy(&integer, payload.data() + i, sizeof integer);
    list.push_back(integer);
  }
  return list;
}

OrderedJson TextsToJson(std::string_view texts) {
  OrderedJson list = OrderedJson::array();
  while (!texts.empty()) {
    const size_t length = texts.find('\0');
    list.push_back(TextToJson(texts.substr(0, length)));
    texts.remove_prefix(length + 1);
  }
  return list;
}

}  // namespace

bool IsAsKnown(const PathTarget &target, const Value &value) {
  if (target.asRecord) return value.type == ValueType::kRecord && value.payload.size() == target.node->record->size;
  if (target.node->entry.kind == ParamKind::kInt) {
    return value.type == ValueType::kIntegers && value.payload.size() % sizeof(int64_t) == 0;
  }
  return value.type == ValueType::kTexts && (value.payload.empty() || value.text().back() == '\0');
}

OrderedJson ListToJson(const Value &value) {
  return value.type == ValueType::kIntegers ? IntegersToJson(value.payload) : TextsToJson(value.text());
}

OrderedJson RawToJson(const Value &value) {
  return {{"type", std::string(1, static_cast<char>(value.type))}, {"hex", ToHex(value.payload)}};
}

OrderedJson StoredFailureToJson(const Value &value) {
  HVC_ReturnStatus failure = HVC_OK;
  if (value.type == ValueType::kRecord && value.payload.size() == sizeof failure) {
    std::memcpy(&failure, value.payload.data(), sizeof failure);
  }
  return failure == HVC_OK ? RawToJson(value) : FailureToJson(failure);
}

OrderedJson ValueToJson(std::string_view key, const Value &value) {
  if (snapshot::IsFailureKey(key)) return StoredFailureToJson(value);
  const PathTarget target = platkit::ParsePath(key);
  if (target.node == nullptr || !IsAsKnown(target, value)) return RawToJson(value);
  return target.asRecord ? RecordToJson(*target.node->record, value.payload) : ListToJson(value);
}

}  // namespace nodal
