#include "platkit/history/sample.h"

#include <algorithm>
#include <cstring>

namespace platkit::history {

void Sample::Clear() {
  items_.clear();
  bytes_.clear();
}

std::span<std::byte> Sample::Add(std::string_view key, ValueType type, size_t payloadBytes) {
  const size_t start = bytes_.size();
  if (items_.size() == items_.capacity()) items_.reserve(std::max<size_t>(64, 2 * items_.size()));
  bytes_.resize(start + key.size() + payloadBytes);
  std::memcpy(bytes_.data() + start, key.data(), key.size());
  items_.push_back({.start = start,
                    .keyBytes = static_cast<uint32_t>(key.size()),
                    .payloadBytes = static_cast<uint32_t>(payloadBytes),
                    .type = type});
  return MutablePayload(items_.size() - 1);
}

void Sample::Add(std::string_view key, ValueType type, std::span<const std::byte> payload) {
  const std::span<std::byte> bytes = Add(key, type, payload.size());
  std::ranges::copy(payload, bytes.begin());
}

void Sample::Sort() {
  const auto key = [this](const Item &item) { return KeyOf(item); };
  if (!std::ranges::is_sorted(items_, {}, key)) std::ranges::sort(items_, {}, key);
}

Entry Sample::operator[](size_t index) const {
  const Item &item = items_[index];
  return {.key = KeyOf(item),
          .type = item.type,
          .payload = std::span(bytes_).subspan(item.start + item.keyBytes, item.payloadBytes)};
}

bool Sample::Find(std::string_view key, Entry &entry) const {
  const auto found = std::ranges::lower_bound(items_, key, {}, [this](const Item &item) { return KeyOf(item); });
  if (found == items_.end() || KeyOf(*found) != key) return false;
  entry = (*this)[static_cast<size_t>(found - items_.begin())];
  return true;
}

std::span<std::byte> Sample::MutablePayload(size_t index) {
  const Item &item = items_[index];
  return std::span(bytes_).subspan(item.start + item.keyBytes, item.payloadBytes);
}

std::string_view Sample::KeyOf(const Item &item) const {
  return {reinterpret_cast<const char *>(bytes_.data()) + item.start, item.keyBytes};
}

}  // namespace platkit::history
