// Opens, reads and writes the host's files below a root folder.
#ifndef PLATKIT_LINUX_FILES_HOST_FILES_H
#define PLATKIT_LINUX_FILES_HOST_FILES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "platkit/linux/files/clock.h"
#include "platkit/linux/files/file_descriptor.h"
#include "platkit/linux/files/host_path.h"
#include "platkit/linux/files/kept_files.h"
#include "platkit/linux/files/opened_file.h"
#include "platkit/status.h"

namespace platkit {

// Which symbolic links are followed.
enum class Reach {
  kHost,        // the running host: all links
  kRootFolder,  // a saved root, which may be hostile: links are resolved within the root folder
};

enum class Writes { kRefused, kTaken };

// The access for which a file is opened.
enum class Access { kRead, kWrite };

// Unless an operation says otherwise, its statuses are:
// - HVC_NOT_FOUND: the file, its folder or its process does not exist,
// - HVC_NO_PERMISSION: this user may not open the file,
// - HVC_NAME_TOO_LONG: the path is longer than the kernel accepts,
// - HVC_IO_ERROR: most other failures; see errno_status.h.
class HostFiles {
 public:
  using Observer = std::function<void(std::string_view path, Access access)>;

  // Does not open any file yet.
  HostFiles(std::string root, Reach reach, Writes writes = Writes::kRefused)
      : root_(std::move(root)), reach_(reach), writes_(writes) {}

  // Opens the root folder unless it is already open.
  [[nodiscard]] HVC_ReturnStatus OpenRoot();

  // Opens a file or folder for reading. `flags` are additional flags of open(2).
  [[nodiscard]] HVC_ReturnStatus Open(const HostPath &path, int flags, FileDescriptor &file);

  // Opens a file and reads its first bytes, up to the buffer's size. Sets `size` to their number. If only the read
  // fails, the file is still opened.
  [[nodiscard]] HVC_ReturnStatus ReadStart(const HostPath &path, std::span<char> buffer, OpenedFile &file,
                                           size_t &size);

  // Opens a folder to list it. The folder stays open until the next call. On the running host, files in the folder are
  // opened relative to it in the meantime. Sets `isKept` if the folder was kept open: it may then have been listed
  // before.
  [[nodiscard]] HVC_ReturnStatus OpenFolder(const HostPath &path, std::shared_ptr<const FileDescriptor> &folder,
                                            bool &isKept);

  // Reads the start of a file, up to the buffer's size. `text` points into the buffer.
  [[nodiscard]] HVC_ReturnStatus Read(const HostPath &path, std::span<char> buffer, std::string_view &text);

  // Reads a file that has one short line, with a single read. HVC_IO_ERROR if it fills the buffer.
  [[nodiscard]] HVC_ReturnStatus ReadShort(const HostPath &path, std::span<char> buffer, std::string_view &text);

  // Reads a whole file that only root can have written: it is a regular file, belongs to root, and others may not write
  // to it. In a saved root, the file must belong to the owner of the root folder instead. HVC_NO_PERMISSION: others can
  // have written the file. HVC_IO_ERROR: it is a symbolic link or not a regular file, has more than `maxSize` bytes, or
  // was truncated during the read.
  [[nodiscard]] HVC_ReturnStatus ReadTrusted(const HostPath &path, size_t maxSize, std::string &text);

  // Fills `bytes` from an offset within a file, with a single read. HVC_OFFSET_PAST_END: the file is too short.
  // HVC_TRANSFER_TRUNCATED: the file is long enough, but the read returned less.
  [[nodiscard]] HVC_ReturnStatus ReadAt(const HostPath &path, uint32_t offset, std::span<std::byte> bytes);

  // Overwrites bytes at an offset within a file, with a single write. Neither creates nor extends files:
  // HVC_OFFSET_PAST_END if the file is too short. HVC_TRANSFER_TRUNCATED: only a part was written. HVC_READ_ONLY: the
  // file system is read-only, or writes are refused.
  [[nodiscard]] HVC_ReturnStatus WriteAt(const HostPath &path, uint32_t offset, std::span<const std::byte> bytes);

  // Reads the target of a symbolic link, up to the buffer's size. `text` points into the buffer. HVC_NOT_FOUND if the
  // file is not a symbolic link.
  [[nodiscard]] HVC_ReturnStatus ReadLink(const HostPath &path, std::span<char> buffer, std::string_view &text);

  // Whether the file or folder exists, even if this user may not open it.
  bool Exists(const HostPath &path);

  // Returns the inode number of a file or folder, even if this user may not open it.
  [[nodiscard]] HVC_ReturnStatus Identify(const HostPath &path, uint64_t &inode);

  // From now on, keeps up to `maxDescriptors` files and folders open after reading them, and reads them again without
  // opening them. Only files of the running host are kept: an open file of a saved root can be read even after it was
  // removed. All reads at one time of the clock are one sample. Within a sample, all files that are kept for a PID or
  // for the path of a control group belong to the same process or group.
  void KeepOpen(size_t maxDescriptors);

  // While an object of this class exists, no more files are kept. Use it for files that are rarely read.
  class KeepNoMore {
   public:
    explicit KeepNoMore(HostFiles &files) : files_(files), before_(std::exchange(files.keepsMore_, false)) {}
    ~KeepNoMore() { files_.keepsMore_ = before_; }
    KeepNoMore(const KeepNoMore &) = delete;
    KeepNoMore &operator=(const KeepNoMore &) = delete;

   private:
    HostFiles &files_;
    bool before_;
  };

  // Returns true if this sample has read all files that it requested of a process, and they belong to the process whose
  // file `path` has this inode number. Returns false if files are not kept open.
  bool IsKeptWhole(const HostPath &path, uint64_t inode);

  // How many files have been requested so far. While this number does not change, no value was read.
  uint64_t reads() const { return reads_; }

  // Closes a kept folder that has vanished, and its files: a new folder may have the same path.
  void Forget(std::string_view folder) noexcept;

  // Whether the host is sampled: it is read repeatedly, so files are kept open.
  bool isSampled() const { return kept_.has_value(); }

  // From now on, the settings of control groups and the lists of their members are read again only if the last values
  // are at least this old, because they rarely change. The caller may change the age later. Use this only for a sampled
  // host.
  void ReuseSettings(std::shared_ptr<const Clock::Time::duration> maxAge) { settingsAge_ = std::move(maxAge); }
  Clock::Time::duration settingsAge() const { return settingsAge_ ? *settingsAge_ : Clock::Time::duration::zero(); }

  Reach reach() const { return reach_; }

  // The clock that determines when cached values expire.
  const Clock &clock() const { return clock_; }
  void UseClock(Clock clock) { clock_ = std::move(clock); }

  // Calls `observer` before each open from now on.
  void ObserveOpens(Observer observer) { observer_ = std::move(observer); }

 private:
  HVC_ReturnStatus CheckTrust(const FileDescriptor &file, size_t &size) const;
  HVC_ReturnStatus OpenFor(Access access, const HostPath &path, int flags, FileDescriptor &file);
  KeptFiles *Kept();
  KeptFiles::Folder *KeptFolderOf(const HostPath &file, std::string_view folder, std::string_view name);
  HVC_ReturnStatus OpenBelowRoot(const HostPath &path, int flags, FileDescriptor &file);
  FileDescriptor OpenInRoot(const HostPath &path, int flags);

  // An open folder, and a file's path relative to it.
  struct Place {
    int folder;
    const char *path;
  };
  Place PlaceOf(const HostPath &path);

  std::string root_;
  Reach reach_;
  Writes writes_;
  Clock clock_;
  FileDescriptor rootFolder_;
  FileDescriptor processes_;  // /proc of the running host
  std::shared_ptr<const FileDescriptor> lastFolder_;
  std::string lastFolderPath_;  // ends with a slash
  std::optional<KeptFiles> kept_;
  bool keepsMore_ = true;
  uint64_t reads_ = 0;
  std::shared_ptr<const Clock::Time::duration> settingsAge_;
  Observer observer_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_HOST_FILES_H
