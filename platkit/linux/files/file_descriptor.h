// An open file descriptor, closed by its destructor.
#ifndef PLATKIT_LINUX_FILES_FILE_DESCRIPTOR_H
#define PLATKIT_LINUX_FILES_FILE_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace platkit {

class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor &&other) noexcept : descriptor_(other.Release()) {}
  FileDescriptor &operator=(FileDescriptor &&other) noexcept {
    FileDescriptor(std::move(other)).Swap(*this);
    return *this;
  }
  ~FileDescriptor() {
    if (isOpen()) close(descriptor_);
  }

  int get() const { return descriptor_; }
  bool isOpen() const { return descriptor_ >= 0; }

  // Releases the descriptor, which the caller must close.
  int Release() { return std::exchange(descriptor_, -1); }

 private:
  void Swap(FileDescriptor &other) { std::swap(descriptor_, other.descriptor_); }

  int descriptor_ = -1;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_FILE_DESCRIPTOR_H
