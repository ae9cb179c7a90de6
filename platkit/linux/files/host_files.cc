#include "platkit/linux/files/host_files.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platkit/errno_status.h"
#include "platkit/linux/files/system_calls.h"

namespace platkit {
namespace {

// Returns HVC_OK if the file has `size` bytes at `offset`.
HVC_ReturnStatus CheckRange(const struct stat &about, uint32_t offset, size_t size) {
  return about.st_size < 0 || static_cast<uint64_t>(about.st_size) < offset + size ? HVC_OFFSET_PAST_END : HVC_OK;
}

}  // namespace

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
  if (path.c_str() == nullptr) return HVC_NAME_TOO_LONG;
  const HVC_ReturnStatus status = OpenRoot();
  if (status != HVC_OK) return status;
  if (reach_ == Reach::kHost) {
    const Place place = PlaceOf(path);
    file = FileDescriptor(openat(place.folder, place.path, flags | O_CLOEXEC));
  } else {
    file = OpenInRoot(path, flags);
  }
  return file.isOpen() ? HVC_OK : StatusOfErrno(errno);
}

FileDescriptor HostFiles::OpenInRoot(const HostPath &path, int flags) {
  open_how how = {};
  how.flags = static_cast<uint64_t>(flags | O_CLOEXEC);
  how.resolve = RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS;
  // The kernel fails with EAGAIN on ".." in links while any file on the system is renamed.
  int tries = 100;
  FileDescriptor file;
  do {
    file = FileDescriptor(static_cast<int>(syscall(SYS_openat2, rootFolder_.get(), path.c_str(), &how, sizeof how)));
  } while (!file.isOpen() && errno == EAGAIN && --tries > 0);
  return file;
}

HVC_ReturnStatus HostFiles::OpenFor(Access access, const HostPath &path, int flags, FileDescriptor &file) {
  if (observer_ && path.c_str() != nullptr) observer_(path.c_str(), access);
  ++reads_;
  // Opening a FIFO in a saved root must not block.
  return OpenBelowRoot(path, flags | O_NONBLOCK, file);
}

HVC_ReturnStatus HostFiles::Open(const HostPath &path, int flags, FileDescriptor &file) {
  return OpenFor(Access::kRead, path, flags | O_RDONLY, file);
}

HVC_ReturnStatus HostFiles::ReadStart(const HostPath &path, std::span<char> buffer, OpenedFile &file, size_t &size) {
  size = 0;
  if (isSampled()) {
    ++reads_;
    const char *name = path.name();
    const std::string_view folderPath = path.folder();
    if (KeptFiles::Folder *folder = KeptFolderOf(path, folderPath, name); folder != nullptr) {
      const HVC_ReturnStatus status =
          kept_->ReadStart(*folder, name, {.keep = keepsMore_, .buffer = buffer}, file, size);
      if (status != HVC_NOT_FOUND || !kept_->MayHaveEnded(*folder)) return status;
      // Another process or control group may have the path now.
      kept_->Close(folderPath);
      folder = KeptFolderOf(path, folderPath, name);
      if (folder != nullptr) return kept_->ReadStart(*folder, name, {.keep = keepsMore_, .buffer = buffer}, file, size);
    }
  }
  FileDescriptor opened;
  const HVC_ReturnStatus status = Open(path, 0, opened);
  if (status != HVC_OK) return status;
  file = OpenedFile(std::move(opened));
  const ssize_t got = file.Read(buffer);
  if (got < 0) return StatusOfErrno(errno);
  size = static_cast<size_t>(got);
  return HVC_OK;
}

HVC_ReturnStatus HostFiles::OpenFolder(const HostPath &path, std::shared_ptr<const FileDescriptor> &folder,
                                       bool &isKept) {
  KeptFiles *const kept = Kept();
  const KeptFiles::Folder *found = kept == nullptr ? nullptr : kept->Find(path.view());
  isKept = found != nullptr;
  if (isKept) {
    folder = found->descriptor;
    return HVC_OK;
  }
  FileDescriptor opened;
  const HVC_ReturnStatus status = Open(path, O_DIRECTORY, opened);
  if (status != HVC_OK) return status;
  // Folder and path change together or, if memory runs out, not at all.
  lastFolderPath_.reserve(path.view().size() + 1);
  folder = lastFolder_ = std::make_shared<const FileDescriptor>(std::move(opened));
  lastFolderPath_.assign(path.view()) += '/';
  return HVC_OK;
}

HVC_ReturnStatus HostFiles::Read(const HostPath &path, std::span<char> buffer, std::string_view &text) {
  OpenedFile file;
  size_t size = 0;
  const HVC_ReturnStatus status = ReadStart(path, buffer, file, size);
  if (status != HVC_OK) return status;
  while (size > 0 && size < buffer.size()) {
    const ssize_t got = file.Read(buffer.subspan(size));
    if (got < 0) return StatusOfErrno(errno);
    if (got == 0) break;
    size += static_cast<size_t>(got);
  }
  text = {buffer.data(), size};
  return HVC_OK;
}

HVC_ReturnStatus HostFiles::ReadShort(const HostPath &path, std::span<char> buffer, std::string_view &text) {
  OpenedFile file;
  size_t size = 0;
  const HVC_ReturnStatus status = ReadStart(path, buffer, file, size);
  if (status != HVC_OK) return status;
  if (size == buffer.size()) return HVC_IO_ERROR;
  text = {buffer.data(), size};
  return HVC_OK;
}

HVC_ReturnStatus HostFiles::ReadTrusted(const HostPath &path, size_t maxSize, std::string &text) {
  FileDescriptor file;
  size_t size = 0;
  HVC_ReturnStatus status = Open(path, O_NOFOLLOW, file);
  if (status == HVC_OK) status = CheckTrust(file, size);
  if (status != HVC_OK) return status;
  if (size > maxSize) return HVC_IO_ERROR;
  text.resize(size);
  for (size_t done = 0; done < size;) {
    const ssize_t got = ReadOnce(file, std::span(text).subspan(done));
    if (got <= 0) return got == 0 ? HVC_IO_ERROR : StatusOfErrno(errno);
    done += static_cast<size_t>(got);
  }
  return HVC_OK;
}

HVC_ReturnStatus HostFiles::CheckTrust(const FileDescriptor &file, size_t &size) const {
  struct stat about;
  struct stat root = {};
  if (fstat(file.get(), &about) != 0) return StatusOfErrno(errno);
  if (!S_ISREG(about.st_mode)) return HVC_IO_ERROR;
  if (reach_ == Reach::kRootFolder && fstat(rootFolder_.get(), &root) != 0) return StatusOfErrno(errno);
  size = static_cast<size_t>(about.st_size);
  const bool isTrusted = about.st_uid == root.st_uid && (about.st_mode & (S_IWGRP | S_IWOTH)) == 0;
  return isTrusted ? HVC_OK : HVC_NO_PERMISSION;
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
  const HVC_ReturnStatus range = CheckRange(about, offset, bytes.size());
  return range == HVC_OK ? HVC_TRANSFER_TRUNCATED : range;
}

HVC_ReturnStatus HostFiles::WriteAt(const HostPath &path, uint32_t offset, std::span<const std::byte> bytes) {
  if (writes_ == Writes::kRefused) return HVC_READ_ONLY;
  FileDescriptor file;
  HVC_ReturnStatus status = OpenFor(Access::kWrite, path, O_WRONLY | O_NOFOLLOW, file);
  if (status != HVC_OK) return status;
  struct stat about;
  if (fstat(file.get(), &about) != 0) return StatusOfErrno(errno);
  if (!S_ISREG(about.st_mode)) return HVC_IO_ERROR;
  status = CheckRange(about, offset, bytes.size());
  if (status != HVC_OK) return status;
  ssize_t taken = 0;
  do {
    taken = pwrite(file.get(), bytes.data(), bytes.size(), offset);
  } while (taken < 0 && errno == EINTR);
  if (taken < 0) return StatusOfErrno(errno);
  return static_cast<size_t>(taken) == bytes.size() ? HVC_OK : HVC_TRANSFER_TRUNCATED;
}

HVC_ReturnStatus HostFiles::ReadLink(const HostPath &path, std::span<char> buffer, std::string_view &text) {
  if (path.c_str() == nullptr) return HVC_NAME_TOO_LONG;
  if (const HVC_ReturnStatus status = OpenRoot(); status != HVC_OK) return status;
  ++reads_;
  FileDescriptor link;
  Place place = {};
  if (reach_ == Reach::kHost) {
    place = PlaceOf(path);  // readlink needs no open
  } else {
    link = OpenInRoot(path, O_PATH | O_NOFOLLOW);
    if (!link.isOpen()) return StatusOfErrno(errno);
    place = {link.get(), ""};
  }
  const ssize_t got = readlinkat(place.folder, place.path, buffer.data(), buffer.size());
  if (got < 0) return errno == EINVAL ? HVC_NOT_FOUND : StatusOfErrno(errno);
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
    inode = InodeOf(file);
    return status;
  }
  // On the running host, stat needs no open.
  if (path.c_str() == nullptr) return HVC_NAME_TOO_LONG;
  const HVC_ReturnStatus status = OpenRoot();
  if (status != HVC_OK) return status;
  struct stat about;
  const Place place = PlaceOf(path);
  if (fstatat(place.folder, place.path, &about, 0) != 0) return StatusOfErrno(errno);
  inode = about.st_ino;
  return HVC_OK;
}

void HostFiles::KeepOpen(size_t maxDescriptors) {
  if (reach_ == Reach::kHost) kept_.emplace(maxDescriptors);
}

// Returns the files that are kept open, and starts a new sample if the clock has moved. Returns null if no files are
// kept open.
KeptFiles *HostFiles::Kept() {
  if (!kept_) return nullptr;
  // A folder from an earlier sample may be gone.
  if (kept_->BeginSample(clock_.Now())) lastFolder_ = nullptr;
  return &*kept_;
}

// Returns the folder in which the file is kept or could be kept. Returns null if the file must be opened by its path.
KeptFiles::Folder *HostFiles::KeptFolderOf(const HostPath &file, std::string_view folder, std::string_view name) {
  // An open /proc/PID/maps belongs to the program that the process ran when the file was opened, so it is not kept.
  if (Kept() == nullptr || file.c_str() == nullptr || name == "maps") return nullptr;
  if (KeptFiles::Folder *kept = kept_->Find(folder); kept != nullptr) return kept;
  FileDescriptor opened;
  if (kept_->isFull() || !keepsMore_ || folder.empty()) return nullptr;
  const HVC_ReturnStatus status = OpenBelowRoot(HostPath(folder), O_RDONLY | O_DIRECTORY, opened);
  return status == HVC_OK ? kept_->Add(folder, std::move(opened)) : nullptr;
}

bool HostFiles::IsKeptWhole(const HostPath &path, uint64_t inode) {
  const KeptFiles::Folder *folder = Kept() == nullptr ? nullptr : kept_->Find(path.folder());
  return folder != nullptr && kept_->IsWhole(*folder, path.name(), inode);
}

void HostFiles::Forget(std::string_view folder) noexcept {
  if (kept_) kept_->Close(folder);
}

}  // namespace platkit
