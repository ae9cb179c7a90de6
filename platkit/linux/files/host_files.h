// The host's files, below a root folder: the one place where the Linux source meets the operating system.
#ifndef PLATKIT_LINUX_FILES_HOST_FILES_H
#define PLATKIT_LINUX_FILES_HOST_FILES_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platkit/status.h"

namespace platkit {

// A path below the root folder, without a leading slash, put together from texts and numbers in fixed room.
class HostPath {
 public:
  template <typename... Pieces>
  explicit HostPath(const Pieces &...pieces) {
    (Append(pieces), ...);
    bytes_[size_] = '\0';
  }

  // Null if the path is longer than any that the kernel takes.
  const char *c_str() const { return fits_ ? bytes_ : nullptr; }
  std::string_view view() const { return {bytes_, size_}; }

 private:
  void Append(std::string_view text);
  void Append(int64_t number);

  bool fits_ = true;
  size_t size_ = 0;
  char bytes_[PATH_MAX];
};

// A descriptor, closed with its owner.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor &&other) noexcept : descriptor_(other.Release()) {}
  FileDescriptor &operator=(FileDescriptor &&other) noexcept;
  ~FileDescriptor();

  int get() const { return descriptor_; }
  bool isOpen() const { return descriptor_ >= 0; }
  int Release();

 private:
  int descriptor_ = -1;
};

// What paths below the root folder may lead to.
enum class Reach {
  kHost,        // links of the running host lead where they lead
  kRootFolder,  // a saved root may come from anyone: its links and mount points stay below it
};

// Whether files may be written.
enum class Writes { kRefused, kTaken };

// What a file is opened for.
enum class Access { kRead, kWrite };

// Statuses throughout: HVC_NOT_FOUND if the file, its folder or its process is not there, HVC_NO_PERMISSION if it is
// not for this user, HVC_READ_ONLY if it may be read but never written, else HVC_IO_ERROR.
class HostFiles {
 public:
  using Observer = std::function<void(std::string_view path, Access access)>;

  // Opens nothing yet.
  HostFiles(std::string root, Reach reach, Writes writes = Writes::kRefused)
      : root_(std::move(root)), reach_(reach), writes_(writes) {}

  // Opens the root folder, unless it is open.
  [[nodiscard]] HVC_ReturnStatus OpenRoot();

  // Opens a file or folder for reading.
  [[nodiscard]] HVC_ReturnStatus Open(const HostPath &path, int flags, FileDescriptor &file);

  // Opens a folder to be listed. It stays open until the next one: on the running host, what is in it is found from
  // there, and not by way of all the folders above it.
  [[nodiscard]] HVC_ReturnStatus OpenFolder(const HostPath &path, std::shared_ptr<const FileDescriptor> &folder);

  // Reads the start of a file, as much of it as `buffer` takes; `text` lies within the buffer.
  [[nodiscard]] HVC_ReturnStatus Read(const HostPath &path, std::span<char> buffer, std::string_view &text);

  // Reads a file of one short line, with a single read. More than `buffer` takes is HVC_IO_ERROR.
  [[nodiscard]] HVC_ReturnStatus ReadShort(const HostPath &path, std::span<char> buffer, std::string_view &text);

  // Fills `bytes` from a place within a file, with a single read. HVC_OFFSET_PAST_END: the file ends before that.
  // HVC_TRANSFER_TRUNCATED: it is long enough, and yet gave less.
  [[nodiscard]] HVC_ReturnStatus ReadAt(const HostPath &path, uint32_t offset, std::span<std::byte> bytes);

  // Writes `bytes` over those at a place within a file, with a single write. No file is made, or made longer:
  // HVC_OFFSET_PAST_END. HVC_TRANSFER_TRUNCATED: the file took less. HVC_READ_ONLY: these files take no writes.
  [[nodiscard]] HVC_ReturnStatus WriteAt(const HostPath &path, uint32_t offset, std::span<const std::byte> bytes);

  // Reads where a symbolic link leads; `text` lies within the buffer.
  [[nodiscard]] HVC_ReturnStatus ReadLink(const HostPath &path, std::span<char> buffer, std::string_view &text);

  // Whether there is such a file or folder, be it for this user or not.
  bool Exists(const HostPath &path);

  // Tells the inode number of a file or folder, be it for this user or not.
  [[nodiscard]] HVC_ReturnStatus Identify(const HostPath &path, uint64_t &inode);

  Reach reach() const { return reach_; }

  // Told of every open from now on.
  void ObserveOpens(Observer observer) { observer_ = std::move(observer); }

 private:
  HVC_ReturnStatus OpenFor(Access access, const HostPath &path, int flags, FileDescriptor &file);
  HVC_ReturnStatus OpenBelowRoot(const HostPath &path, int flags, FileDescriptor &file);

  // The folder from which the running host's kernel finds a file soonest, and the file's path from there.
  struct Place {
    int folder;
    const char *path;
  };
  Place PlaceOf(const HostPath &path);

  std::string root_;
  Reach reach_;
  Writes writes_;
  FileDescriptor rootFolder_;
  FileDescriptor processes_;  // the running host's folder of them
  std::shared_ptr<const FileDescriptor> lastFolder_;
  std::string lastFolderPath_;  // ends with a slash
  Observer observer_;
};

// Reads a text file line by line. Of a line longer than the buffer, the start is given. A file of more than 64 MB is
// none of the kernel's: HVC_IO_ERROR.
class LineReader {
 public:
  LineReader(HostFiles &files, const HostPath &path);

  // False at the end of the file and at the first failure, which status() tells apart.
  bool Next(std::string_view &line);

  HVC_ReturnStatus status() const { return status_; }

  // The file's; 0 if it could not be opened.
  uint64_t inode() const;

 private:
  bool Fill();
  bool FindLineEnd(size_t &length) const;
  bool PassLineEnd();

  static constexpr size_t kBufferSize = 4096;
  static constexpr size_t kMostBytes = size_t{64} << 20;

  FileDescriptor file_;  // stands before the status of opening it
  HVC_ReturnStatus status_;
  bool insideLine_ = false;  // the start of an overlong line has been given, its end not found yet
  size_t bytesRead_ = 0;
  size_t start_ = 0;  // of what has not been given yet
  size_t end_ = 0;
  char buffer_[kBufferSize];
};

// Reads the entries of a folder, without "." and "..", in no order.
class FolderReader {
 public:
  struct Entry {
    std::string_view name;  // good until the next one is read
    uint64_t inode;
    bool isFolder;
  };

  FolderReader(HostFiles &files, const HostPath &path);

  bool Next(Entry &entry);

  // Whether a control group of the running host has none below it, which the folder's number of links tells without a
  // look at its entries. False of a saved folder: not all file systems that it may be on count them.
  bool HasNoFolders() const;

  HVC_ReturnStatus status() const { return status_; }

 private:
  bool Fill();

  static constexpr size_t kBufferSize = 32 * 1024;

  Reach reach_;
  std::shared_ptr<const FileDescriptor> folder_;  // stands before the status of opening it
  HVC_ReturnStatus status_;
  size_t next_ = 0;  // of the entries in the buffer
  size_t end_ = 0;
  alignas(uint64_t) char buffer_[kBufferSize];
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_HOST_FILES_H
