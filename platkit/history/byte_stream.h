// Writes and reads the integers and bytes of a chunk, before compression and after decompression.
//
// A varint is an unsigned integer of 64 bits. Each byte holds seven bits of it, the lowest ones first. The highest bit
// of a byte is set if another byte follows. A signed integer is first mapped to an unsigned one: 0, -1, 1, -2 become 0,
// 1, 2, 3.
#ifndef PLATKIT_HISTORY_BYTE_STREAM_H
#define PLATKIT_HISTORY_BYTE_STREAM_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace platkit::history {

using ByteVector = std::vector<std::byte>;

inline constexpr uint64_t ToUnsigned(int64_t value) {
  return (static_cast<uint64_t>(value) << 1) ^ static_cast<uint64_t>(value >> 63);
}
inline constexpr int64_t ToSigned(uint64_t value) { return static_cast<int64_t>((value >> 1) ^ (~(value & 1) + 1)); }

// `Bytes` is a ByteVector or a string.
template <typename Bytes>
void AppendVarint(Bytes &bytes, uint64_t value) {
  using Byte = typename Bytes::value_type;
  for (; value >= 0x80; value >>= 7)
    bytes.push_back(static_cast<Byte>(value | 0x80));
  bytes.push_back(static_cast<Byte>(value));
}

inline void AppendBytes(ByteVector &bytes, std::span<const std::byte> more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

// Reads bytes that anyone may have written. Every operation that reads returns false if the bytes end too early or the
// value is too large.
class ByteReader {
 public:
  explicit ByteReader(std::span<const std::byte> bytes) : bytes_(bytes) {}

  bool isAtEnd() const { return bytes_.empty(); }
  bool HasBytes(size_t size) const { return size <= bytes_.size(); }

  [[nodiscard]] bool Varint(uint64_t &value) {
    value = 0;
    for (unsigned shift = 0; shift < 64 && !bytes_.empty(); shift += 7) {
      const auto byte = std::to_integer<uint64_t>(bytes_.front());
      bytes_ = bytes_.subspan(1);
      value |= (byte & 0x7f) << shift;
      if (byte < 0x80) return true;
    }
    return false;
  }

  // Reads a varint of at most `limit`.
  [[nodiscard]] bool Varint(uint64_t limit, uint32_t &value) {
    uint64_t wide;
    if (!Varint(wide) || wide > limit) return false;
    value = static_cast<uint32_t>(wide);
    return true;
  }

  [[nodiscard]] bool Byte(uint8_t &value) {
    if (bytes_.empty()) return false;
    value = std::to_integer<uint8_t>(bytes_.front());
    bytes_ = bytes_.subspan(1);
    return true;
  }

  [[nodiscard]] bool Bytes(size_t size, std::span<const std::byte> &bytes) {
    if (size > bytes_.size()) return false;
    bytes = bytes_.first(size);
    bytes_ = bytes_.subspan(size);
    return true;
  }

  // Reads a little-endian integer of fixed size.
  template <typename Integer>
  [[nodiscard]] bool Fixed(Integer &value) {
    std::span<const std::byte> bytes;
    if (!Bytes(sizeof value, bytes)) return false;
    std::memcpy(&value, bytes.data(), sizeof value);
    return true;
  }

 private:
  std::span<const std::byte> bytes_;
};

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_BYTE_STREAM_H
