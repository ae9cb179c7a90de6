#include "platkit/linux/files/host_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <utility>

#include "platkit/errno_status.h"

namespace platkit {
namespace {

// Reads once into `room`; -1 with errno set on failure.
ssize_t ReadOnce(const FileDescriptor &file, std::span<char> room) {
  ssize_t got = 0;
  do {
    got = read(file.get(), room.data(), room.size());
  } while (got < 0 && errno == EINTR);
  return got;
}

uint64_t InodeOfFile(const FileDescriptor &file) {
  struct stat about;
  return file.isOpen() && fstat(file.get(), &about) == 0 ? about.st_ino : 0;
}

// HVC_OK if the file reaches from `offset` over `size` bytes.
HVC_ReturnStatus CheckReach(const struct stat &about, uint32_t offset, size_t size) {
  return about.st_size < 0 || static_cast<uint64_t>(about.st_size) < offset + size ? HVC_OFFSET_PAST_END : HVC_OK;
}

}  // namespace

void HostPath::Append(std::string_view text) {
  if (text.size() >= sizeof bytes_ - size_) {
    fits_ = false;
    return;
  }
  std::memcpy(bytes_ + size_, text.data(), text.size());
  size_ += text.size();
}

void HostPath::Append(int64_t number) {
  char digits[24];
  const auto result = std::to_chars(digits, digits + sizeof digits, number);
  Append(std::string_view(digits, result.ptr));
}

FileDescriptor &FileDescriptor::operator=(FileDescriptor &&other) noexcept {
  if (this != &other) {
    if (isOpen()) close(descriptor_);
    descriptor_ = other.Release();
  }
  return *this;
}

FileDescriptor::~FileDescriptor() {
  if (isOpen()) close(descriptor_);
}

int FileDescriptor::Release() { return std::exchange(descriptor_, -1); }

HVC_ReturnStatus HostFiles::OpenRoot() {
  if (rootFolder_.isOpen()) return HVC_OK;
  rootFolder_ = FileDescriptor(open(root_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  return rootFolder_.isOpen() ? HVC_OK : StatusOfErrno(errno);
}

HostFiles::Place HostFiles::PlaceOf(const HostPath &path) {
  constexpr std::string_view kProcesses = "proc/";
  if (lastFolder_ != nullptr && path.view().starts_with(lastFolderPath_)) {
    return {lastFolder_->get(), path.c_str() + lastFolderPath_.size()};
  }
  if (path.view().starts_with(kProcesses)) {
    if (!processes_.isOpen()) {
      processes_ = FileDescriptor(openat(rootFolder_.get(), "proc", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    if (processes_.isOpen()) return {processes_.get(), path.c_str() + kProcesses.size()};
  }
  return {rootFolder_.get(), path.c_str()};
}

HVC_ReturnStatus HostFiles::OpenBelowRoot(const HostPath &path, int flags, FileDescriptor &file) {
  if (path.c_str() == nullptr) return HVC_IO_ERROR;
  const HVC_ReturnStatus status = OpenRoot();
  if (status != HVC_OK) return status;
  if (reach_ == Reach::kHost) {
    const Place place = PlaceOf(path);
    file = FileDescriptor(openat(place.folder, place.path, flags | O_CLOEXEC));
  } else {
    open_how how = {};
    how.flags = static_cast<uint64_t>(flags | O_CLOEXEC);
    how.resolve = RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS;
    // The kernel does not vouch for a ".." in a link while anything is renamed anywhere, and says to try again.
    int tries = 100;
    do {
      file = FileDescriptor(static_cast<int>(syscall(SYS_openat2, rootFolder_.get(), path.c_str(), &how, sizeof how)));
    } while (!file.isOpen() && errno == EAGAIN && --tries > 0);
  }
  return file.isOpen() ? HVC_OK : StatusOfErrno(errno);
}

HVC_ReturnStatus HostFiles::OpenFor(Access access, const HostPath &path, int flags, FileDescriptor &file) {
  if (observer_ && path.c_str() != nullptr) observer_(path.c_str(), access);
  // A saved root may hold a FIFO, which must stop nobody.
  return OpenBelowRoot(path, flags | O_NONBLOCK, file);
}

HVC_ReturnStatus HostFiles::Open(const HostPath &path, int flags, FileDescriptor &file) {
  return OpenFor(Access::kRead, path, flags | O_RDONLY, file);
}

HVC_ReturnStatus HostFiles::OpenFolder(const HostPath &path, std::shared_ptr<const FileDescriptor> &folder) {
  FileDescriptor opened;
  const HVC_ReturnStatus status = Open(path, O_DIRECTORY, opened);
  if (status != HVC_OK) return status;
  folder = lastFolder_ = std::make_shared<const FileDescriptor>(std::move(opened));
  lastFolderPath_.assign(path.view()) += '/';
  return HVC_OK;
}

HVC_ReturnStatus HostFiles::Read(const HostPath &path, std::span<char> buffer, std::string_view &text) {
  FileDescriptor file;
  const HVC_ReturnStatus status = Open(path, 0, file);
  if (status != HVC_OK) return status;
  size_t size = 0;
  while (size < buffer.size()) {
    const ssize_t got = ReadOnce(file, buffer.subspan(size));
    if (got < 0) return StatusOfErrno(errno);
    if (got == 0) break;
    size += static_cast<size_t>(got);
  }
  text = {buffer.data(), size};
  return HVC_OK;
}

HVC_ReturnStatus HostFiles::ReadShort(const HostPath &path, std::span<char> buffer, std::string_view &text) {
  FileDescriptor file;
  const HVC_ReturnStatus status = Open(path, 0, file);
  if (status != HVC_OK) return status;
  const ssize_t got = ReadOnce(file, buffer);
  if (got < 0) return StatusOfErrno(errno);
  if (static_cast<size_t>(got) == buffer.size()) return HVC_IO_ERROR;
  text = {buffer.data(), static_cast<size_t>(got)};
  return HVC_OK;
}

HVC_ReturnStatus HostFiles::ReadAt(const HostPath &path, uint32_t offset, std::span<std::byte> bytes) {
  FileDescriptor file;
  const HVC_ReturnStatus status = Open(path, 0, file);
  if (status != HVC_OK) return status;
  ssize_t got = 0;
  do {
    got = pread(file.get(), bytes.data(), bytes.size(), offset);
  } while (got < 0 && errno == EINTR);
  if (got < 0) return StatusOfErrno(errno);
  if (static_cast<size_t>(got) == bytes.size()) return HVC_OK;
  struct stat about;
  if (fstat(file.get(), &about) != 0) return StatusOfErrno(errno);
  const HVC_ReturnStatus reach = CheckReach(about, offset, bytes.size());
  return reach == HVC_OK ? HVC_TRANSFER_TRUNCATED : reach;
}

HVC_ReturnStatus HostFiles::WriteAt(const HostPath &path, uint32_t offset, std::span<const std::byte> bytes) {
  if (writes_ == Writes::kRefused) return HVC_READ_ONLY;
  FileDescriptor file;
  HVC_ReturnStatus status = OpenFor(Access::kWrite, path, O_WRONLY | O_NOFOLLOW, file);
  if (status != HVC_OK) return status;
  struct stat about;
  if (fstat(file.get(), &about) != 0) return StatusOfErrno(errno);
  if (!S_ISREG(about.st_mode)) return HVC_IO_ERROR;
  status = CheckReach(about, offset, bytes.size());
  if (status != HVC_OK) return status;
  ssize_t taken = 0;
  do {
    taken = pwrite(file.get(), bytes.data(), bytes.size(), offset);
  } while (taken < 0 && errno == EINTR);
  if (taken < 0) return StatusOfErrno(errno);
  return static_cast<size_t>(taken) == bytes.size() ? HVC_OK : HVC_TRANSFER_TRUNCATED;
}

HVC_ReturnStatus HostFiles::ReadLink(const HostPath &path, std::span<char> buffer, std::string_view &text) {
  FileDescriptor link;
  const HVC_ReturnStatus status = OpenBelowRoot(path, O_PATH | O_NOFOLLOW, link);
  if (status != HVC_OK) return status;
  const ssize_t got = readlinkat(link.get(), "", buffer.data(), buffer.size());
  if (got < 0) return StatusOfErrno(errno);
  text = {buffer.data(), static_cast<size_t>(got)};
  return HVC_OK;
}

bool HostFiles::Exists(const HostPath &path) {
  FileDescriptor file;
  return path.c_str() != nullptr && OpenBelowRoot(path, O_PATH, file) != HVC_NOT_FOUND;
}

HVC_ReturnStatus HostFiles::Identify(const HostPath &path, uint64_t &inode) {
  inode = 0;
  if (reach_ == Reach::kRootFolder) {
    FileDescriptor file;
    const HVC_ReturnStatus status = OpenBelowRoot(path, O_PATH, file);
    inode = InodeOfFile(file);
    return status;
  }
  // The running host's need not be opened.
  if (path.c_str() == nullptr) return HVC_IO_ERROR;
  const HVC_ReturnStatus status = OpenRoot();
  if (status != HVC_OK) return status;
  struct stat about;
  const Place place = PlaceOf(path);
  if (fstatat(place.folder, place.path, &about, 0) != 0) return StatusOfErrno(errno);
  inode = about.st_ino;
  return HVC_OK;
}

LineReader::LineReader(HostFiles &files, const HostPath &path) : status_(files.Open(path, 0, file_)) {}

bool LineReader::Next(std::string_view &line) {
  if (status_ != HVC_OK || (insideLine_ && !PassLineEnd())) return false;
  size_t length = 0;
  while (!FindLineEnd(length)) {
    if (end_ - start_ == kBufferSize) {
      line = {buffer_, kBufferSize};
      start_ = end_;
      insideLine_ = true;
      return true;
    }
    if (!Fill()) {
      line = {buffer_ + start_, end_ - start_};
      start_ = end_;
      return status_ == HVC_OK && !line.empty();
    }
  }
  line = {buffer_ + start_, length};
  start_ += length + 1;
  return true;
}

uint64_t LineReader::inode() const { return InodeOfFile(file_); }

bool LineReader::PassLineEnd() {
  size_t length = 0;
  while (!FindLineEnd(length)) {
    start_ = end_;
    if (!Fill()) return false;
  }
  start_ += length + 1;
  insideLine_ = false;
  return true;
}

bool LineReader::FindLineEnd(size_t &length) const {
  const void *newline = std::memchr(buffer_ + start_, '\n', end_ - start_);
  if (newline == nullptr) return false;
  length = static_cast<size_t>(static_cast<const char *>(newline) - (buffer_ + start_));
  return true;
}

// Reads on behind what has not been given yet; false at the end of the file and on failure.
bool LineReader::Fill() {
  std::memmove(buffer_, buffer_ + start_, end_ - start_);
  end_ -= start_;
  start_ = 0;
  const ssize_t got = ReadOnce(file_, {buffer_ + end_, kBufferSize - end_});
  if (got < 0) status_ = StatusOfErrno(errno);
  if (got <= 0) return false;
  end_ += static_cast<size_t>(got);
  bytesRead_ += static_cast<size_t>(got);
  if (bytesRead_ > kMostBytes) status_ = HVC_IO_ERROR;
  return status_ == HVC_OK;
}

FolderReader::FolderReader(HostFiles &files, const HostPath &path)
    : reach_(files.reach()), status_(files.OpenFolder(path, folder_)) {}

bool FolderReader::HasNoFolders() const {
  // A folder's own links are the one above it and its ".".
  struct stat about;
  return status_ == HVC_OK && reach_ == Reach::kHost && fstat(folder_->get(), &about) == 0 && about.st_nlink == 2;
}

bool FolderReader::Next(Entry &entry) {
  while (next_ < end_ || Fill()) {
    const auto *found = reinterpret_cast<const dirent64 *>(buffer_ + next_);
    next_ += found->d_reclen;
    const std::string_view name = found->d_name;
    if (name == "." || name == "..") continue;
    entry = {.name = name, .inode = found->d_ino, .isFolder = found->d_type == DT_DIR};
    // Some file systems that may hold a saved root do not tell the type.
    if (found->d_type == DT_UNKNOWN) {
      struct stat about;
      entry.isFolder =
          fstatat(folder_->get(), found->d_name, &about, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(about.st_mode);
    }
    return true;
  }
  return false;
}

// False behind the last entry and on failure.
bool FolderReader::Fill() {
  if (status_ != HVC_OK) return false;
  const ssize_t got = getdents64(folder_->get(), buffer_, sizeof buffer_);
  if (got < 0) status_ = StatusOfErrno(errno);
  next_ = 0;
  end_ = got > 0 ? static_cast<size_t>(got) : 0;
  return end_ > 0;
}

}  // namespace platkit
