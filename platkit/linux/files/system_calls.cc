#include "platkit/linux/files/system_calls.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platkit {

ssize_t ReadOnce(const FileDescriptor &file, std::span<char> buffer) {
  ssize_t got = 0;
  do {
    got = read(file.get(), buffer.data(), buffer.size());
  } while (got < 0 && errno == EINTR);
  return got;
}

uint64_t InodeOf(const FileDescriptor &file) {
  struct stat about;
  return file.isOpen() && fstat(file.get(), &about) == 0 ? about.st_ino : 0;
}

}  // namespace platkit
