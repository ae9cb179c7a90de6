// A file that is read from its start to its end.
#ifndef PLATKIT_LINUX_FILES_OPENED_FILE_H
#define PLATKIT_LINUX_FILES_OPENED_FILE_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "platkit/linux/files/file_descriptor.h"

namespace platkit {

class OpenedFile {
 public:
  OpenedFile() = default;

  // Reads with read(2). The destructor closes the file.
  explicit OpenedFile(FileDescriptor own) : own_(std::move(own)) {}

  // Reads with pread(2), from `position` on. The caller keeps the descriptor, and must leave it open.
  OpenedFile(int kept, uint64_t inode, off_t position = 0) : kept_(kept), inode_(inode), position_(position) {}

  // Reads the next bytes. Returns -1 with errno set on failure.
  ssize_t Read(std::span<char> buffer);

  // 0 if no file is open.
  uint64_t inode() const;

 private:
  FileDescriptor own_;
  int kept_ = -1;
  uint64_t inode_ = 0;  // of a kept file
  off_t position_ = 0;  // in a kept file
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_OPENED_FILE_H
