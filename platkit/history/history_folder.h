// The folder of a history: one file, called a segment, for each hour of the wall clock.
//
// A segment's name is its hour in UTC, such as 2026-11-21T03Z.history. Other files in the folder do not belong to the
// history. Everything is opened relative to the open folder, and symbolic links are not followed.
#ifndef PLATKIT_HISTORY_HISTORY_FOLDER_H
#define PLATKIT_HISTORY_HISTORY_FOLDER_H

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/status.h"

namespace platkit::history {

// The name of a segment, which is an hour in UTC. Names are ordered by time.
class SegmentName {
 public:
  // The segment for samples at this wall time, in nanoseconds since 1970. Times before 1970 belong to the first hour of
  // 1970.
  static SegmentName At(int64_t wall);

  // The same for a time in seconds. A time that does not fit in nanoseconds belongs to the last hour that does.
  static SegmentName AtSecond(int64_t second);

  // Returns std::nullopt if `text` is not the name of a segment.
  static std::optional<SegmentName> Parse(std::string_view text);

  std::string text() const;
  int64_t hour() const { return hour_; }  // hours since 1970

  bool operator==(const SegmentName &) const = default;
  std::strong_ordering operator<=>(const SegmentName &other) const { return hour_ <=> other.hour_; }

 private:
  explicit SegmentName(int64_t hour) : hour_(hour) {}

  int64_t hour_;
};

// A file that had the name of a segment, but could not be continued, and was renamed: the name of the segment with
// ".damaged" after it, and for the second such file of the hour ".damaged.2", and so on.
struct SetAsideName {
  SegmentName segment;
  uint32_t number = 1;

  // Nothing if `text` is not such a name.
  static std::optional<SetAsideName> Parse(std::string_view text);

  std::string text() const;

  auto operator<=>(const SetAsideName &) const = default;  // NOLINT(modernize-use-nullptr)
};

class HistoryFolder {
 public:
  HistoryFolder() = default;
  ~HistoryFolder();
  HistoryFolder(const HistoryFolder &) = delete;
  HistoryFolder &operator=(const HistoryFolder &) = delete;

  // Opens the folder. REQUIRES: none is open.
  //
  // HVC_NOT_FOUND: no such folder, or not a folder. Other statuses as for StatusOfErrno.
  [[nodiscard]] HVC_ReturnStatus Open(const char *path);

  int fd() const { return fd_; }

  // Lists the names of the segments, in the order of time, and those of the files that were set aside.
  //
  // HVC_LIMIT_EXCEEDED: more than kMaxSegments of either. HVC_IO_ERROR.
  [[nodiscard]] HVC_ReturnStatus List(std::vector<SegmentName> &names) const;
  [[nodiscard]] HVC_ReturnStatus List(std::vector<SegmentName> &names, std::vector<SetAsideName> &setAside) const;

 private:
  int fd_ = -1;
};

// Opens a file in the folder. The file must be a regular file and not a symbolic link. `flags` are those of open(2).
//
// HVC_NOT_A_SNAPSHOT: the file is not regular. Other statuses as for StatusOfErrno.
[[nodiscard]] HVC_ReturnStatus OpenSegmentFile(int folder, const char *name, int flags, int &fd);

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_HISTORY_FOLDER_H
