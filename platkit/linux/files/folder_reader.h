// Lists the entries of a folder.
#ifndef PLATKIT_LINUX_FILES_FOLDER_READER_H
#define PLATKIT_LINUX_FILES_FOLDER_READER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "platkit/linux/files/host_files.h"

namespace platkit {

// Returns the entries in no particular order, without "." and "..".
class FolderReader {
 public:
  struct Entry {
    std::string_view name;  // valid until the next call of Next()
    uint64_t inode;
    bool isFolder;
  };

  FolderReader(HostFiles &files, const HostPath &path);

  // Returns false at the end of the folder and on failure; status() tells them apart.
  bool Next(Entry &entry);

  // Whether the folder's link count shows that it has no subfolders, so that it need not be listed. Always false below
  // a saved root, because some file systems do not count subfolders as links.
  bool HasNoFolders() const;

  HVC_ReturnStatus status() const { return status_; }

 private:
  bool Fill();

  static constexpr size_t kBufferSize = 32 * 1024;

  Reach reach_;
  bool mustRewind_ = false;                       // the folder may have been listed before
  std::shared_ptr<const FileDescriptor> folder_;  // initialized before status_
  HVC_ReturnStatus status_;
  size_t next_ = 0;  // position of the next entry in the buffer
  size_t end_ = 0;
  alignas(uint64_t) char buffer_[kBufferSize];
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_FOLDER_READER_H
