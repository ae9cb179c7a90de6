#include "tools/nodal/readings.h"

#include <algorithm>
#include <cstring>

namespace nodal {

Reading *Readings::Ask(const Node &node, bool asRecord, const Arguments &arguments) {
  std::string path = PathOf(node, arguments);
  const auto known = byPath_.find(path);
  if (known != byPath_.end()) return &known->second;
  if (isClosed_) return nullptr;

  beforeReading_();
  Reading reading = {.node = &node, .asRecord = asRecord, .arguments = arguments};
  if (asRecord) {
    reading.record.resize(node.record->size);
    reading.status = host_.Get(node, arguments, std::as_writable_bytes(std::span(reading.record)));
    if (reading.status != HVC_OK) reading.record = {};
  } else {
    reading.status = host_.List(node, arguments, reading.entries);
  }
  return &byPath_.emplace(std::move(path), std::move(reading)).first->second;
}

HVC_ReturnStatus Readings::Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) {
  const Reading *reading = Ask(node, true, arguments);
  if (reading == nullptr) return HVC_NOT_FOUND;
  if (reading->status == HVC_OK) std::memcpy(record.data(), reading->record.data(), record.size());
  return reading->status;
}

HVC_ReturnStatus Readings::List(const Node &node, const Arguments &arguments, Arguments &entries) {
  const Reading *reading = Ask(node, false, arguments);
  if (reading == nullptr || reading->status != HVC_OK) return HVC_NOT_FOUND;
  entries = reading->entries;
  return HVC_OK;
}

}  // namespace nodal
