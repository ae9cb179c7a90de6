// A buffer that holds the bytes of one value at a time. It keeps the memory of the largest value so far.
#ifndef PLATKIT_SNAPSHOT_VALUE_BUFFER_H
#define PLATKIT_SNAPSHOT_VALUE_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <span>

namespace platkit::snapshot {

class ValueBuffer {
 public:
  // Makes room for `size` bytes, without keeping the previous contents. Returns false if there is not enough memory.
  [[nodiscard]] bool Resize(size_t size) {
    if (size > capacity_ && !Grow(std::max(size, 2 * capacity_))) return false;
    size_ = size;
    return true;
  }

  std::span<std::byte> bytes() { return {memory_.get(), size_}; }

 private:
  static constexpr size_t kMinCapacity = 1024;

  bool Grow(size_t capacity) {
    capacity = std::max(capacity, kMinCapacity);
    memory_.reset();  // frees the old memory first, because its contents are not kept
    memory_.reset(new (std::nothrow) std::byte[capacity]);
    capacity_ = memory_ == nullptr ? 0 : capacity;
    if (memory_ == nullptr) size_ = 0;
    return memory_ != nullptr;
  }

  std::unique_ptr<std::byte[]> memory_;
  size_t capacity_ = 0;
  size_t size_ = 0;
};

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_VALUE_BUFFER_H
