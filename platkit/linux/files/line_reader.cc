#include "platkit/linux/files/line_reader.h"

#include <cerrno>
#include <cstring>

#include "platkit/errno_status.h"

namespace platkit {

LineReader::LineReader(HostFiles &files, const HostPath &path)
    : status_(files.ReadStart(path, buffer_, file_, end_)), bytesRead_(end_) {}

bool LineReader::Next(std::string_view &line) {
  if (status_ != HVC_OK || (insideLine_ && !SkipRestOfLine())) return false;
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

uint64_t LineReader::inode() const { return file_.inode(); }

bool LineReader::SkipRestOfLine() {
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

// Appends to the contents of the buffer. Returns false at the end of the file and on failure.
bool LineReader::Fill() {
  if (bytesRead_ == 0) return false;  // the first read found the end
  std::memmove(buffer_, buffer_ + start_, end_ - start_);
  end_ -= start_;
  start_ = 0;
  const ssize_t got = file_.Read({buffer_ + end_, kBufferSize - end_});
  if (got < 0) status_ = StatusOfErrno(errno);
  if (got <= 0) return false;
  end_ += static_cast<size_t>(got);
  bytesRead_ += static_cast<size_t>(got);
  if (bytesRead_ > kMaxBytes) status_ = HVC_IO_ERROR;
  return status_ == HVC_OK;
}

}  // namespace platkit
