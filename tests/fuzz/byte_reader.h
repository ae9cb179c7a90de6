// Reads values from the bytes of an input, in order. After the end of the input, every value is 0.
#ifndef TESTS_FUZZ_BYTE_READER_H
#define TESTS_FUZZ_BYTE_READER_H

#include <algorithm>
#include <cstring>
#include <string_view>

namespace fuzz {

class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : bytes_(bytes) {}

  bool isEmpty() const { return bytes_.empty(); }

  template <typename T>
  T Take() {
    T value = {};
    const std::string_view bytes = TakeBytes(sizeof value);
    std::memcpy(&value, bytes.data(), bytes.size());
    return value;
  }

  // A number below `count`.
  size_t TakeIndex(size_t count) { return Take<unsigned char>() % count; }

  // Takes `size` bytes, or all that are left if there are fewer.
  std::string_view TakeBytes(size_t size) {
    const std::string_view taken = bytes_.substr(0, size);
    bytes_.remove_prefix(taken.size());
    return taken;
  }

  // Takes the bytes before the separator, and skips the separator. Takes all bytes if there is no separator.
  std::string_view TakeUntil(char separator) {
    const std::string_view taken = bytes_.substr(0, bytes_.find(separator));
    bytes_.remove_prefix(std::min(taken.size() + 1, bytes_.size()));
    return taken;
  }

  std::string_view rest() const { return bytes_; }

 private:
  std::string_view bytes_;
};

}  // namespace fuzz

#endif  // TESTS_FUZZ_BYTE_READER_H
