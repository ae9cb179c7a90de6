#include "platkit/history/history_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <memory>

#include "platkit/errno_status.h"
#include "platkit/history/format.h"

namespace platkit::history {
namespace {

using std::chrono::sys_days;

constexpr std::string_view kForm = "0000-00-00T00Z.history";
constexpr std::string_view kSetAside = ".damaged";
constexpr int64_t kHoursInDay = 24;
constexpr int64_t kNanosInHour = 3600 * kNanosInSecond;

bool HasForm(std::string_view text) {
  return std::ranges::equal(text, kForm,
                            [](char c, char form) { return form == '0' ? c >= '0' && c <= '9' : c == form; });
}

unsigned NumberOf(std::string_view digits) {
  unsigned number = 0;
  for (const char digit : digits)
    number = number * 10 + static_cast<unsigned>(digit - '0');
  return number;
}

struct CloseFolder {
  void operator()(DIR *folder) const { closedir(folder); }
};

// Adds a name to a list if it has the form of the list's names.
template <typename Name>
HVC_ReturnStatus AddIf(std::string_view text, std::vector<Name> &names) {
  const std::optional<Name> name = Name::Parse(text);
  if (!name) return HVC_OK;
  if (names.size() == kMaxSegments) return HVC_LIMIT_EXCEEDED;
  names.push_back(*name);
  return HVC_OK;
}

}  // namespace

SegmentName SegmentName::At(int64_t wall) { return SegmentName(std::max<int64_t>(wall, 0) / kNanosInHour); }

SegmentName SegmentName::AtSecond(int64_t second) {
  return At(std::clamp<int64_t>(second, 0, INT64_MAX / kNanosInSecond) * kNanosInSecond);
}

std::optional<SegmentName> SegmentName::Parse(std::string_view text) {
  if (!HasForm(text)) return std::nullopt;
  const std::chrono::year_month_day day(std::chrono::year(static_cast<int>(NumberOf(text.substr(0, 4)))),
                                        std::chrono::month(NumberOf(text.substr(5, 2))),
                                        std::chrono::day(NumberOf(text.substr(8, 2))));
  const unsigned hour = NumberOf(text.substr(11, 2));
  if (!day.ok() || hour >= kHoursInDay || sys_days(day) < sys_days{}) return std::nullopt;
  // Wall times are 64-bit numbers of nanoseconds, which end in the year 2262.
  constexpr int64_t kMaxHour = INT64_MAX / kNanosInSecond / 3600;
  const int64_t hours = sys_days(day).time_since_epoch().count() * int64_t{kHoursInDay} + hour;
  if (hours > kMaxHour) return std::nullopt;
  return SegmentName(hours);
}

std::string SegmentName::text() const {
  const std::chrono::year_month_day day(sys_days(std::chrono::days(hour_ / kHoursInDay)));
  char text[48];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02dZ.history", static_cast<int>(day.year()),
                static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                static_cast<int>(hour_ % kHoursInDay));
  return text;
}

std::optional<SetAsideName> SetAsideName::Parse(std::string_view text) {
  if (text.size() < kForm.size() || !text.substr(kForm.size()).starts_with(kSetAside)) return std::nullopt;
  const std::optional<SegmentName> segment = SegmentName::Parse(text.substr(0, kForm.size()));
  if (!segment) return std::nullopt;
  SetAsideName name = {.segment = *segment};
  const std::string_view rest = text.substr(kForm.size() + kSetAside.size());
  if (rest.empty()) return name;
  std::from_chars(rest.data() + 1, rest.data() + rest.size(), name.number);
  return name.number > 1 && name.text() == text ? std::optional(name) : std::nullopt;
}

std::string SetAsideName::text() const {
  return segment.text().append(kSetAside).append(number == 1 ? "" : "." + std::to_string(number));
}

HistoryFolder::~HistoryFolder() {
  if (fd_ >= 0) close(fd_);
}

HVC_ReturnStatus HistoryFolder::Open(const char *path) {
  fd_ = open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  return fd_ >= 0 ? HVC_OK : StatusOfErrno(errno);
}

HVC_ReturnStatus HistoryFolder::List(std::vector<SegmentName> &names) const {
  std::vector<SetAsideName> setAside;
  return List(names, setAside);
}

HVC_ReturnStatus HistoryFolder::List(std::vector<SegmentName> &names, std::vector<SetAsideName> &setAside) const {
  names.clear();
  setAside.clear();
  const int copy = openat(fd_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (copy < 0) return StatusOfErrno(errno);
  const std::unique_ptr<DIR, CloseFolder> folder(fdopendir(copy));
  if (folder == nullptr) {
    close(copy);
    return HVC_IO_ERROR;
  }
  for (;;) {
    errno = 0;
    const dirent *entry = readdir(folder.get());
    if (entry == nullptr) break;
    HVC_ReturnStatus status = AddIf(entry->d_name, names);
    if (status == HVC_OK) status = AddIf(entry->d_name, setAside);
    if (status != HVC_OK) return status;
  }
  if (errno != 0) return HVC_IO_ERROR;
  std::ranges::sort(names);
  std::ranges::sort(setAside);
  return HVC_OK;
}

HVC_ReturnStatus OpenSegmentFile(int folder, const char *name, int flags, int &fd) {
  // Without O_NONBLOCK, open would wait for a writer of a named pipe.
  fd = openat(folder, name, flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (fd < 0) {
    const HVC_ReturnStatus otherwise = (flags & O_CREAT) == 0 ? HVC_IO_ERROR : HVC_WRITE_ERROR;
    return errno == ELOOP || errno == ENXIO ? HVC_NOT_A_SNAPSHOT : StatusOfErrno(errno, otherwise);
  }
  struct stat info;
  if (fstat(fd, &info) == 0 && S_ISREG(info.st_mode)) return HVC_OK;
  close(fd);
  fd = -1;
  return HVC_NOT_A_SNAPSHOT;
}

}  // namespace platkit::history
