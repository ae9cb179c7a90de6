#include "tools/nodal/tree/caching_tree.h"

#include <algorithm>
#include <cstring>

namespace nodal {

Answer *CachingTree::Find(const Node &node, bool asRecord, const Arguments &arguments) {
  std::string path = PathOf(node, arguments);
  const auto known = answers_.find(path);
  if (known != answers_.end()) return &known->second;
  if (isFrozen_) return nullptr;

  beforeReading_();
  Answer answer = {.node = &node, .asRecord = asRecord, .arguments = arguments};
  if (asRecord) {
    answer.record.resize(node.record->size);
    answer.status = host_.Get(node, arguments, std::as_writable_bytes(std::span(answer.record)));
    if (answer.status != HVC_OK) answer.record = {};
  } else {
    answer.status = host_.List(node, arguments, answer.entries);
  }
  return &answers_.emplace(std::move(path), std::move(answer)).first->second;
}

HVC_ReturnStatus CachingTree::Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) {
  const Answer *answer = Find(node, true, arguments);
  if (answer == nullptr) return HVC_NOT_FOUND;
  if (answer->status == HVC_OK) std::memcpy(record.data(), answer->record.data(), record.size());
  return answer->status;
}

HVC_ReturnStatus CachingTree::List(const Node &node, const Arguments &arguments, Arguments &entries) {
  const Answer *answer = Find(node, false, arguments);
  if (answer == nullptr || answer->status != HVC_OK) return HVC_NOT_FOUND;
  entries = answer->entries;
  return HVC_OK;
}

}  // namespace nodal
