#include "platkit/snapshot/list_value.h"

#include <algorithm>
#include <cstring>

namespace platkit::snapshot {
namespace {

HVC_ReturnStatus AddIntegers(std::span<const std::byte> payload, ParamList &list) {
  if (payload.size() % sizeof(int64_t) != 0) return HVC_SNAPSHOT_DAMAGED;
  list.Expect(payload.size() / sizeof(int64_t));
  for (size_t i = 0; i < payload.size(); i += sizeof(int64_t)) {
    int64_t integer;
    std::memcpy(&integer, payload.data() + i, sizeof integer);
    const HVC_ReturnStatus status = list.Add(integer);
    if (status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus AddTexts(std::string_view texts, ParamList &list) {
  if (!texts.empty() && texts.back() != '\0') return HVC_SNAPSHOT_DAMAGED;
  list.Expect(static_cast<uint64_t>(std::count(texts.begin(), texts.end(), '\0')));
  while (!texts.empty()) {
    const size_t length = texts.find('\0');
    const HVC_ReturnStatus status = list.Add(texts.substr(0, length));
    if (status != HVC_OK) return status;
    texts.remove_prefix(length + 1);
  }
  return HVC_OK;
}

}  // namespace

HVC_ReturnStatus AddEntries(const Node &node, const Value &value, ParamList &list) {
  const bool integers = node.entry.kind == ParamKind::kInt;
  if (value.type != (integers ? ValueType::kIntegers : ValueType::kTexts)) return HVC_SNAPSHOT_DAMAGED;
  return integers ? AddIntegers(value.payload, list) : AddTexts(value.text(), list);
}

}  // namespace platkit::snapshot
