#include "tools/nodal/capture/key_file.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platkit/linux/files/file_descriptor.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/signals.h"

namespace nodal {
namespace {

using platkit::FileDescriptor;

FileDescriptor Open(const std::string &path) {
  // Opening a named pipe waits for a writer.
  FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (!file.isOpen()) {
    const int failure = errno;
    ThrowIfSignalled();
    throw Failure(path, std::strerror(failure));
  }
  return file;
}

// A user who can read the secret can check guessed names. A user who can write the file can choose the secret.
void RequirePrivate(const std::string &path, int fd) {
  struct stat file;
  if (fstat(fd, &file) != 0) throw Failure(path, std::strerror(errno));
  if (file.st_uid != 0 && file.st_uid != geteuid()) throw Failure(path, "the key file belongs to another user");
  if ((file.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    throw Failure(path, "other users may access the key file (use chmod 600)");
  }
}

}  // namespace

// Delegates to the other constructor, so that the destructor wipes the bytes even if this one throws.
KeyFile::KeyFile(const std::string &path) : KeyFile() {
  if (path == "-") {
    if (isatty(STDIN_FILENO) == 1)
      throw Failure("standard input", "the key would be visible on the terminal; use a file or a pipe");
    Read("standard input", STDIN_FILENO);
  } else {
    const FileDescriptor file = Open(path);
    RequirePrivate(path, file.get());
    Read(path, file.get());
  }
}

KeyFile::~KeyFile() { sodium_memzero(bytes_.data(), bytes_.size()); }

void KeyFile::Read(const std::string &path, int fd) {
  while (size_ < bytes_.size()) {
    const ssize_t count = read(fd, bytes_.data() + size_, bytes_.size() - size_);
    if (count == 0) break;
    if (count < 0) {
      const int failure = errno;
      ThrowIfSignalled();
      if (failure == EINTR) continue;
      throw Failure(path, std::strerror(failure));
    }
    size_ += static_cast<size_t>(count);
  }
  OmitNewline();
  if (size_ == 0) throw Failure(path, "the key is empty");
  if (size_ > kMaxBytes) throw Failure(path, "the key exceeds " + std::to_string(kMaxBytes) + " bytes");
}

// Editors of some systems end a line with a carriage return and a newline.
void KeyFile::OmitNewline() {
  if (!secret().ends_with('\n')) return;
  --size_;
  if (secret().ends_with('\r')) --size_;
}

}  // namespace nodal
