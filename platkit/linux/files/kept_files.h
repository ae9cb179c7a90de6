// Files of the running host that stay open between samples: reading a kept file again costs a seventh of opening it.
#ifndef PLATKIT_LINUX_FILES_KEPT_FILES_H
#define PLATKIT_LINUX_FILES_KEPT_FILES_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platkit/linux/files/clock.h"
#include "platkit/linux/files/file_descriptor.h"
#include "platkit/linux/files/opened_file.h"
#include "platkit/status.h"

namespace platkit {

// Files are kept by folder, and opened relative to it. The folder of a control group or a process stays the folder of
// that one: after it has ended, reading a file there fails (ENODEV, ESRCH), even if another one has its name or PID.
class KeptFiles {
 public:
  struct File {
    std::string_view name;
    FileDescriptor descriptor;
    uint64_t inode;
  };

  struct Folder {
    std::shared_ptr<FileDescriptor> descriptor;
    std::vector<File> files = {};
    // The last sample that used the folder, that read a file in it, and that missed a file in it.
    Clock::Time usedAt = Clock::Time::min();
    Clock::Time answeredAt = Clock::Time::min();
    Clock::Time missedAt = Clock::Time::min();
  };

  // Keeps at most this number of files and folders open.
  explicit KeptFiles(size_t maxDescriptors) : maxDescriptors_(maxDescriptors) {}

  // All reads at one time are one sample. A new sample closes what the last one did not use. Returns whether it is new.
  bool BeginSample(Clock::Time time) {
    if (time == sample_) return false;
    CloseUnused(time);
    return true;
  }

  // The folder, if it is kept, else null. The path has no slash at the end.
  Folder *Find(std::string_view path);

  // Keeps an open folder, unless too many files are open: then it returns null.
  Folder *Add(std::string_view path, FileDescriptor &&folder);

  struct Request {
    bool keep;  // the file, if there is room
    std::span<char> buffer;
  };

  // Reads the start of a file in the folder into the buffer. HVC_NOT_FOUND: the folder does not have the file, or its
  // group or process has ended; see MayHaveEnded.
  [[nodiscard]] HVC_ReturnStatus ReadStart(Folder &folder, const char *name, const Request &request, OpenedFile &file,
                                           size_t &size);

  // True unless a read in this sample has shown that the folder's group or process exists.
  bool MayHaveEnded(const Folder &folder) const { return folder.answeredAt != sample_; }

  // Whether all files of the folder that this sample asked for were read, and `name`, which has this inode number, is
  // one of those that are kept. Then they all belong to one group or process.
  bool IsWhole(const Folder &folder, std::string_view name, uint64_t inode) const;

  // Closes a folder and its files.
  void Close(std::string_view path) noexcept;

  bool isFull() const { return descriptors_ >= maxDescriptors_; }
  size_t descriptors() const { return descriptors_; }

 private:
  struct Hash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
  };
  using Folders = std::unordered_map<std::string, Folder, Hash, std::equal_to<>>;

  static File *FindFile(Folder &folder, std::string_view name);
  void Keep(Folder &folder, std::string_view name, FileDescriptor &&descriptor);
  void CloseFile(Folder &folder, const File &file) noexcept;
  void CloseUnused(Clock::Time time);
  Folders::iterator Close(Folders::iterator folder) noexcept;
  std::string_view Interned(std::string_view name);

  Folder *last_ = nullptr;  // the folder that Find or Add returned last, if it is still kept
  std::string_view lastPath_;
  size_t maxDescriptors_;
  size_t descriptors_ = 0;
  Clock::Time sample_ = {};
  Folders folders_;
  std::deque<std::string> names_;  // each name of a file once: most folders have files of the same names
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_KEPT_FILES_H
