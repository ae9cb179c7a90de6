#include "platkit/linux/files/kept_files.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platkit/errno_status.h"
#include "platkit/linux/files/system_calls.h"

namespace platkit {

// Most calls ask for the folder of the previous call.
KeptFiles::Folder *KeptFiles::Find(std::string_view path) {
  if (last_ != nullptr && path == lastPath_) return last_;
  const auto found = folders_.find(path);
  if (found == folders_.end()) return nullptr;
  found->second.usedAt = sample_;
  lastPath_ = found->first;
  return last_ = &found->second;
}

KeptFiles::Folder *KeptFiles::Add(std::string_view path, FileDescriptor &&folder) {
  if (isFull()) return nullptr;
  auto descriptor = std::make_shared<FileDescriptor>(std::move(folder));
  Folder kept = {.descriptor = std::move(descriptor)};
  kept.usedAt = sample_;
  const auto added = folders_.emplace(path, std::move(kept)).first;
  ++descriptors_;
  lastPath_ = added->first;
  return last_ = &added->second;
}

// Reading a kept file fails if its process or group has ended. It also fails if the file's device was removed; the
// folder may then have a new file of the same name.
HVC_ReturnStatus KeptFiles::ReadStart(Folder &folder, const char *name, const Request &request, OpenedFile &file,
                                      size_t &size) {
  if (const File *kept = FindFile(folder, name); kept != nullptr) {
    file = OpenedFile(kept->descriptor.get(), kept->inode);
    if (const ssize_t got = file.Read(request.buffer); got >= 0) {
      folder.answeredAt = sample_;
      size = static_cast<size_t>(got);
      return HVC_OK;
    }
    CloseFile(folder, *kept);
  }
  FileDescriptor opened(openat(folder.descriptor->get(), name, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  const ssize_t got = opened.isOpen() ? ReadOnce(opened, request.buffer) : -1;
  if (got < 0) {
    const HVC_ReturnStatus status = StatusOfErrno(errno);
    if (status == HVC_NOT_FOUND) folder.missedAt = sample_;
    file = OpenedFile(std::move(opened));
    return status;
  }
  folder.answeredAt = sample_;
  size = static_cast<size_t>(got);
  if (!request.keep || isFull()) {
    file = OpenedFile(std::move(opened));
    return HVC_OK;
  }
  Keep(folder, name, std::move(opened));
  file = OpenedFile(folder.files.back().descriptor.get(), folder.files.back().inode, got);
  return HVC_OK;
}

bool KeptFiles::IsWhole(const Folder &folder, std::string_view name, uint64_t inode) const {
  if (folder.answeredAt != sample_ || folder.missedAt == sample_) return false;
  return std::ranges::any_of(folder.files, [&](const File &file) { return file.inode == inode && file.name == name; });
}

void KeptFiles::Close(std::string_view path) noexcept {
  if (const auto found = folders_.find(path); found != folders_.end()) Close(found);
}

KeptFiles::File *KeptFiles::FindFile(Folder &folder, std::string_view name) {
  const auto found = std::ranges::find(folder.files, name, &File::name);
  return found == folder.files.end() ? nullptr : &*found;
}

void KeptFiles::Keep(Folder &folder, std::string_view name, FileDescriptor &&descriptor) {
  const uint64_t inode = InodeOf(descriptor);
  folder.files.push_back({.name = Interned(name), .descriptor = std::move(descriptor), .inode = inode});
  ++descriptors_;
}

void KeptFiles::CloseFile(Folder &folder, const File &file) noexcept {
  folder.files.erase(folder.files.begin() + (&file - folder.files.data()));
  --descriptors_;
}

KeptFiles::Folders::iterator KeptFiles::Close(Folders::iterator folder) noexcept {
  last_ = nullptr;
  descriptors_ -= 1 + folder->second.files.size();
  return folders_.erase(folder);
}

void KeptFiles::CloseUnused(Clock::Time time) {
  last_ = nullptr;  // the next call of Find sets usedAt
  for (auto folder = folders_.begin(); folder != folders_.end();)
    folder = folder->second.usedAt == sample_ ? std::next(folder) : Close(folder);
  sample_ = time;
}

std::string_view KeptFiles::Interned(std::string_view name) {
  const auto known = std::ranges::find(names_, name);
  return known == names_.end() ? names_.emplace_back(name) : std::string_view(*known);
}

}  // namespace platkit
