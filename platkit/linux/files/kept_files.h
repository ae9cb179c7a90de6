// Files of the running host that stay open between samples: reading a kept file takes a seventh of the time of opening
// and reading it.
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

// Files are kept by folder, and opened relative to it. An open folder belongs to one control group or process forever:
// after the group or process has ended, reading a file in the folder fails (ENODEV, ESRCH), even if another one has the
// same name or PID.
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
    // The times of the last samples that used the folder, that read a file in it, and that did not find a file in it.
    Clock::Time usedAt = Clock::Time::min();
    Clock::Time answeredAt = Clock::Time::min();
    Clock::Time missedAt = Clock::Time::min();
  };

  // Keeps at most this number of files and folders open.
  explicit KeptFiles(size_t maxDescriptors) : maxDescriptors_(maxDescriptors) {}

  // All reads at one time are one sample. A new sample closes the folders that the last sample did not use. Returns
  // whether the sample is new.
  bool BeginSample(Clock::Time time) {
    if (time == sample_) return false;
    CloseUnused(time);
    return true;
  }

  // Returns the folder if it is kept, else null. The path has no slash at the end.
  Folder *Find(std::string_view path);

  // Keeps an open folder. Returns null if too many files are open.
  Folder *Add(std::string_view path, FileDescriptor &&folder);

  struct Request {
    bool keep;  // whether to keep the file, if there is room
    std::span<char> buffer;
  };

  // Reads the start of a file in the folder into the buffer. HVC_NOT_FOUND: the folder does not have the file, or its
  // group or process has ended; see MayHaveEnded.
  [[nodiscard]] HVC_ReturnStatus ReadStart(Folder &folder, const char *name, const Request &request, OpenedFile &file,
                                           size_t &size);

  // True unless a read in this sample has shown that the folder's group or process exists.
  bool MayHaveEnded(const Folder &folder) const { return folder.answeredAt != sample_; }

  // Whether this sample has read all files that it requested in the folder, and a kept file `name` has this inode
  // number. If so, all these files belong to one group or process.
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
