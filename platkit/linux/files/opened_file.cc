#include "platkit/linux/files/opened_file.h"

#include <unistd.h>

#include <cerrno>

#include "platkit/linux/files/system_calls.h"

namespace platkit {

ssize_t OpenedFile::Read(std::span<char> buffer) {
  if (kept_ < 0) return ReadOnce(own_, buffer);
  ssize_t got = 0;
  do {
    got = pread(kept_, buffer.data(), buffer.size(), position_);
  } while (got < 0 && errno == EINTR);
  if (got > 0) position_ += got;
  return got;
}

uint64_t OpenedFile::inode() const { return kept_ < 0 ? InodeOf(own_) : inode_; }

}  // namespace platkit
