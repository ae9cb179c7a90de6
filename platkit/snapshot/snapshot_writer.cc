#include "platkit/snapshot/snapshot_writer.h"

#include <cdb.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace platkit::snapshot {
namespace {

HVC_ReturnStatus WriteStatus(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR: return HVC_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS: return HVC_NO_PERMISSION;
    case ENAMETOOLONG: return HVC_NAME_TOO_LONG;
    case ENOMEM: return HVC_NO_MEMORY;
    default: return HVC_WRITE_ERROR;
  }
}

// Where the file really goes: behind links, so that a link stays one. A target that does not exist yet is itself, and
// so is a link that leads nowhere.
HVC_ReturnStatus Resolve(const std::string &path, std::string &target) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) {
    target = path;
    return errno == ENOENT ? HVC_OK : WriteStatus(errno);
  }
  // To rename over a device or a pipe would take it away from everybody else.
  if (!S_ISREG(info.st_mode)) return HVC_ALREADY_EXISTS;
  char *resolved = realpath(path.c_str(), nullptr);
  if (resolved == nullptr) return WriteStatus(errno);
  target = resolved;
  std::free(resolved);
  return HVC_OK;
}

// A file that is being written beside its target. It has a name only when it is whole, where the file system allows
// that: then nothing is left of it, however the program ends. Unless it takes the target's place, it is removed.
class Draft {
 public:
  explicit Draft(const std::string &target) : target_(target) {}
  ~Draft() {
    if (fd_ >= 0) close(fd_);
    if (!path_.empty()) unlink(path_.c_str());
  }
  Draft(const Draft &) = delete;
  Draft &operator=(const Draft &) = delete;

  int fd() const { return fd_; }

  bool Create() {
    // Without /proc, it could not be given a name.
    if (access(kOwnDescriptors, F_OK) == 0) fd_ = open(Folder().c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, 0666);
    if (fd_ >= 0) return true;
    return TryNames([this](const char *path) {
      fd_ = open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
      return fd_ >= 0;
    });
  }

  bool TakePlace() {
    if (fsync(fd_) != 0 || !GiveName()) return false;
    const int closed = close(fd_);
    fd_ = -1;
    if (closed != 0 || rename(path_.c_str(), target_.c_str()) != 0) return false;
    path_.clear();
    SyncFolder();
    return true;
  }

 private:
  static constexpr char kOwnDescriptors[] = "/proc/self/fd";

  // Tries names beside the target until one is free; false with errno if none is to be had.
  template <typename Try>
  bool TryNames(Try take) {
    constexpr int kMostTries = 100;

    for (int i = 0; i < kMostTries; ++i) {
      std::string path = target_ + ".new-" + std::to_string(arc4random());
      if (take(path.c_str())) {
        path_ = std::move(path);
        return true;
      }
      if (errno != EEXIST) break;
    }
    return false;
  }

  bool GiveName() {
    if (!path_.empty()) return true;
    const std::string descriptor = std::string(kOwnDescriptors) + "/" + std::to_string(fd_);
    return TryNames(
        [&](const char *path) { return linkat(AT_FDCWD, descriptor.c_str(), AT_FDCWD, path, AT_SYMLINK_FOLLOW) == 0; });
  }

  std::string Folder() const {
    const size_t slash = target_.rfind('/');
    return slash == std::string::npos ? "." : target_.substr(0, slash + 1);
  }

  // The file is in its place already; on a file system that cannot sync a folder, that is all there is to be had.
  void SyncFolder() const {
    const int fd = open(Folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    static_cast<void>(fsync(fd));
    close(fd);
  }

  const std::string &target_;
  std::string path_;
  int fd_ = -1;
};

bool ReadAt(int fd, std::span<unsigned char> bytes, uint64_t position) {
  while (!bytes.empty()) {
    const ssize_t count = pread(fd, bytes.data(), bytes.size(), static_cast<off_t>(position));
    if (count <= 0) return false;
    bytes = bytes.subspan(static_cast<size_t>(count));
    position += static_cast<uint64_t>(count);
  }
  return true;
}

// Takes the checks of the hash tables, which are known only now, and puts them where the second record has left room.
bool WriteIndexCheck(int fd) {
  unsigned char contents[kContentsBytes];
  if (!ReadAt(fd, contents, 0)) return false;
  unsigned char value[kIndexCheckBytes] = {static_cast<unsigned char>(ValueType::kChecks)};
  std::vector<unsigned char> slots;
  for (uint32_t table = 0; table < kTables; ++table) {
    slots.resize(uint64_t{cdb_unpack(contents + table * 8 + 4)} * kSlotBytes);
    if (!ReadAt(fd, slots, cdb_unpack(contents + table * 8))) return false;
    cdb_pack(Check(std::as_bytes(std::span(slots))), value + 1 + table * 4);
  }
  constexpr size_t kChecked = sizeof value - kCheckBytes;
  cdb_pack(Check(std::as_bytes(std::span(value)).first(kChecked)), value + kChecked);
  return pwrite(fd, value, sizeof value, kIndexCheckValue) == sizeof value;
}

}  // namespace

HVC_ReturnStatus SnapshotWriter::AddHeader(const Header &header) {
  HVC_ReturnStatus status = AddHeaderText(kSignatureKey, header.definitions.signature);
  if (status == HVC_OK) status = AddHeaderText(kBuildKey, header.definitions.build);
  if (status == HVC_OK) status = AddHeaderText(kHostKey, header.host);
  if (status == HVC_OK) status = AddHeaderText(kTimeKey, header.time);
  return status;
}

HVC_ReturnStatus SnapshotWriter::AddHeaderText(std::string_view key, std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return HVC_BAD_PARAM;
  if (text.size() > kMostHeaderText) return HVC_LIMIT_EXCEEDED;
  return Add(key, ValueType::kHeader, std::as_bytes(std::span(text)));
}

HVC_ReturnStatus SnapshotWriter::AddTexts(std::string_view path, std::span<const std::string> texts) {
  std::string payload;
  for (const std::string &text : texts) {
    if (text.find('\0') != std::string::npos) return HVC_BAD_PARAM;
    payload += text;
    payload += '\0';
  }
  return Add(path, ValueType::kTexts, std::as_bytes(std::span(payload)));
}

HVC_ReturnStatus SnapshotWriter::AddFailure(std::string_view path, HVC_ReturnStatus failure) {
  static_assert(sizeof failure == kFailureBytes);
  return AddRecord(std::string(kFailurePrefix) + std::string(path), std::as_bytes(std::span(&failure, 1)));
}

HVC_ReturnStatus SnapshotWriter::Add(std::string_view key, ValueType type, std::span<const std::byte> payload) {
  if (IsReservedKey(key)) return HVC_ALREADY_EXISTS;
  if (key.size() > kMostKeyBytes || payload.size() > kMostFileBytes) return HVC_LIMIT_EXCEEDED;
  const uint64_t valueLength = payload.size() + kValueOverhead;
  const uint64_t fileBytes = fileBytes_ + kRecordHead + key.size() + valueLength + 2 * kSlotBytes;
  if (fileBytes > kMostFileBytes) return HVC_LIMIT_EXCEEDED;
  fileBytes_ = fileBytes;

  entries_.push_back({.start = bytes_.size(),
                      .keyLength = static_cast<uint32_t>(key.size()),
                      .valueLength = static_cast<uint32_t>(valueLength)});
  bytes_ += key;
  const size_t valueStart = bytes_.size();
  bytes_ += static_cast<char>(type);
  bytes_.append(reinterpret_cast<const char *>(payload.data()), payload.size());
  unsigned char check[kCheckBytes];
  cdb_pack(Check(std::as_bytes(std::span(bytes_).subspan(valueStart))), check);
  bytes_.append(reinterpret_cast<const char *>(check), sizeof check);
  return HVC_OK;
}

HVC_ReturnStatus SnapshotWriter::Write(const std::string &path) {
  const auto key = [this](const Entry &entry) { return KeyOf(entry); };
  std::ranges::sort(entries_, {}, key);
  if (std::ranges::adjacent_find(entries_, {}, key) != entries_.end()) return HVC_ALREADY_EXISTS;

  std::string target;
  const HVC_ReturnStatus status = Resolve(path, target);
  if (status != HVC_OK) return status;
  Draft draft(target);
  if (!draft.Create() || !WriteDatabase(draft.fd()) || !draft.TakePlace()) return WriteStatus(errno);
  return HVC_OK;
}

bool SnapshotWriter::WriteDatabase(int fd) const {
  cdb_make database;
  if (cdb_make_start(&database, fd) != 0) return false;
  bool ok =
      cdb_make_add(&database, kVersionKey.data(), kVersionKey.size(), kVersionText.data(), kVersionText.size()) == 0;
  const char noChecks[kIndexCheckBytes] = {};
  ok = ok && cdb_make_add(&database, kIndexCheckKey.data(), kIndexCheckKey.size(), noChecks, sizeof noChecks) == 0;
  for (const Entry &entry : entries_) {
    if (!ok) break;
    const char *key = bytes_.data() + entry.start;
    ok = cdb_make_add(&database, key, entry.keyLength, key + entry.keyLength, entry.valueLength) == 0;
  }
  // The database releases its memory here, whether the file is good or not.
  const int failure = errno;
  const bool finished = cdb_make_finish(&database) == 0;
  if (!ok) errno = failure;
  return ok && finished && WriteIndexCheck(fd);
}

}  // namespace platkit::snapshot
