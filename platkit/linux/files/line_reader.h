// Reads a text file line by line.
#ifndef PLATKIT_LINUX_FILES_LINE_READER_H
#define PLATKIT_LINUX_FILES_LINE_READER_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platkit/linux/files/host_files.h"

namespace platkit {

// A line longer than 4096 bytes is truncated. Reading fails with HVC_IO_ERROR after 64 MB, because no file of the
// kernel is that large.
class LineReader {
 public:
  LineReader(HostFiles &files, const HostPath &path);

  // Reads the next line, without its newline. `line` is valid until the next call. Returns false at the end of the file
  // and on failure; status() tells them apart.
  bool Next(std::string_view &line);

  // HVC_OK, or why the file could not be opened or read.
  HVC_ReturnStatus status() const { return status_; }

  // The file's inode number; 0 if it could not be opened.
  uint64_t inode() const;

 private:
  bool Fill();
  bool FindLineEnd(size_t &length) const;
  bool SkipRestOfLine();

  static constexpr size_t kBufferSize = 4096;
  static constexpr size_t kMaxBytes = size_t{64} << 20;

  size_t start_ = 0;  // bounds of the unread part of the buffer
  size_t end_ = 0;
  char buffer_[kBufferSize];
  OpenedFile file_;  // initialized before status_
  HVC_ReturnStatus status_;
  bool insideLine_ = false;  // the start of an overlong line has been returned, but its end has not been found
  size_t bytesRead_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_LINE_READER_H
