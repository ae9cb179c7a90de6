// A buffer that holds the bytes of one value at a time. It keeps the memory of the largest value so far.
#ifndef PLATKIT_SNAPSHOT_VALUE_BUFFER_H
#define PLATKIT_SNAPSHOT_VALUE_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>

namespace platkit::snapshot {

class ValueBuffer {
 public:
  // Makes room for `size` bytes, without their previous contents. If memory runs out, throws std::bad_alloc and leaves
  // the buffer empty.
  void Resize(size_t size) {
    if (size > capacity_) Grow(std::max({size, 2 * capacity_, kMinCapacity}));
    size_ = size;
  }

  std::span<std::byte> bytes() { return {memory_.get(), size_}; }

 private:
  static constexpr size_t kMinCapacity = 1024;

  void Grow(size_t capacity) {
    memory_.reset();  // first, because the old contents are not kept
    capacity_ = size_ = 0;
    memory_ = std::make_unique_for_overwrite<std::byte[]>(capacity);
    capacity_ = capacity;
  }

  std::unique_ptr<std::byte[]> memory_;
  size_t capacity_ = 0;
  size_t size_ = 0;
};

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_VALUE_BUFFER_H
