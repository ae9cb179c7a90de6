#include "tools/nodal/history/retention.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <span>
#include <utility>

#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

using platkit::history::kNanosInSecond;

constexpr int64_t kSecondsInHour = 3600;
constexpr int64_t kHour = kSecondsInHour * kNanosInSecond;

// The folder is listed again after this time, because other programs may add files to it.
constexpr int64_t kListInterval = 60 * kNanosInSecond;

// Returns the end of the newest segment whose name can be believed. Segments after a gap of more than a week may have
// been written while the clock was wrong, so they are believed only if they cover a day or more.
std::optional<int64_t> EndOfNewest(std::span<const platkit::history::SegmentName> names) {
  constexpr int64_t kHoursInDay = 24, kHoursInWeek = 7 * kHoursInDay;
  while (!names.empty()) {
    size_t start = names.size() - 1;
    while (start > 0 && names[start].hour() - names[start - 1].hour() <= kHoursInWeek)
      --start;
    if (start == 0 || names.back().hour() - names[start].hour() >= kHoursInDay)
      return std::min(names.back().hour() + 1, INT64_MAX / kHour) * kHour;
    names = names.first(start);
  }
  return std::nullopt;
}

uint64_t SizeOf(int folder, const std::string &name) {
  struct stat about;
  const bool isKnown = fstatat(folder, name.c_str(), &about, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(about.st_mode);
  return isKnown ? static_cast<uint64_t>(about.st_size) : 0;
}

}  // namespace

Retention::Retention(const platkit::history::HistoryFolder &folder, const RetentionLimits &limits, const Time &now)
    : folder_(folder), limits_(limits) {
  unlinkat(folder_.fd(), SegmentThinner::kTemporary, 0);
  std::vector<Name> names;
  if (const HVC_ReturnStatus status = folder_.List(names); status != HVC_OK) throw Failure("history", status);
  clock_.emplace(now, EndOfNewest(names));
}

bool Retention::Apply(const Time &now, const Name &open, uint64_t openBytes) {
  wall_ = clock_->Wall(now);
  latest_ = std::max(wall_, now.wall);
  if (thinned_ == open) StopThinning();  // the clock was set back to the hour of that segment
  if (listedOpen_ != open || now.monotonic < listedAt_ || now.monotonic - listedAt_ >= kListInterval) {
    List(open);
    listedAt_ = now.monotonic;
  }
  for (auto segment = segments_.begin(); segment != segments_.end();)
    segment = IsTooOld(segment->first) ? Remove(segment) : std::next(segment);
  for (auto file = setAside_.begin(); file != setAside_.end();)
    file = IsTooOld(file->first.segment) ? Remove(file) : std::next(file);
  const auto isTooLarge = [&] { return closedBytes_ + thinner_.bytes() + openBytes > limits_.bytes; };
  if (isTooLarge()) StopThinning();
  while (isTooLarge() && !(segments_.empty() && setAside_.empty()))
    RemoveOldest();
  return !isTooLarge();
}

void Retention::List(const Name &open) {
  std::vector<Name> names;
  std::vector<SetAsideName> setAside;
  if (const HVC_ReturnStatus status = folder_.List(names, setAside); status != HVC_OK) throw Failure("history", status);
  if (listedOpen_ != open) failed_.clear();
  listedOpen_ = open;
  done_.erase(open);
  // The size of a segment that is not open does not change.
  Segments listed;
  closedBytes_ = 0;
  for (const Name &name : names) {
    if (name == open) continue;
    const auto known = segments_.find(name);
    closedBytes_ += listed[name] = known == segments_.end() ? SizeOf(folder_.fd(), name.text()) : known->second;
  }
  segments_ = std::move(listed);
  setAside_.clear();
  for (const SetAsideName &name : setAside)
    closedBytes_ += setAside_[name] = SizeOf(folder_.fd(), name.text());
}

bool Retention::IsTooOld(const Name &name) const { return SecondsOld(name) > limits_.age / kNanosInSecond; }

void Retention::RemoveOldest() {
  const bool isSegment =
      setAside_.empty() || (!segments_.empty() && segments_.begin()->first <= setAside_.begin()->first.segment);
  if (isSegment) {
    Remove(segments_.begin());
  } else {
    Remove(setAside_.begin());
  }
}

Retention::SetAsideFiles::iterator Retention::Remove(SetAsideFiles::iterator file) {
  unlinkat(folder_.fd(), file->first.text().c_str(), 0);
  closedBytes_ -= file->second;
  return setAside_.erase(file);
}

Retention::Segments::iterator Retention::Remove(Segments::iterator segment) {
  if (thinned_ == segment->first) StopThinning();
  unlinkat(folder_.fd(), segment->first.text().c_str(), 0);
  closedBytes_ -= segment->second;
  done_.erase(segment->first);
  return segments_.erase(segment);
}

// Returns how many seconds ago the segment's hour ended. While the clock was wrong, segments of the future may have
// been written. If the clock is settled, the age of such a segment is its distance in the future.
int64_t Retention::SecondsOld(const Name &name) const {
  const int64_t age = wall_ / kNanosInSecond - (name.hour() + 1) * kSecondsInHour;
  return clock_->isSettled() ? std::max(age, name.hour() * kSecondsInHour - latest_ / kNanosInSecond) : age;
}

HVC_ReturnStatus Retention::Thin(const std::function<bool()> &hasTime) {
  do {
    if (!thinner_.isBusy()) {
      if (!StartThinning()) return HVC_OK;
      continue;
    }
    const HVC_ReturnStatus status = thinner_.Step();
    if (!thinner_.isBusy()) FinishThinning(status);
    if (status != HVC_OK) return status;
  } while (hasTime());
  return HVC_OK;
}

void Retention::FinishThinning(HVC_ReturnStatus status) {
  if (const auto segment = segments_.find(*thinned_); segment != segments_.end()) {
    closedBytes_ -= segment->second;
    closedBytes_ += segment->second = SizeOf(folder_.fd(), thinned_->text());
  }
  (status == HVC_OK ? done_ : failed_).insert(*thinned_);
  thinned_.reset();
}

void Retention::StopThinning() {
  thinner_.Stop();
  thinned_.reset();
}

// Opens the oldest segment that may need thinning, and starts to thin it if needed. Returns false if there is no such
// segment.
bool Retention::StartThinning() {
  const auto isCandidate = [this](const auto &segment) {
    return SecondsOld(segment.first) > limits_.unthinned / kNanosInSecond && !done_.contains(segment.first) &&
           !failed_.contains(segment.first);
  };
  const auto found = std::ranges::find_if(segments_, isCandidate);
  if (found == segments_.end()) return false;
  const HVC_ReturnStatus status = thinner_.Start(folder_.fd(), found->first.text());
  if (status == HVC_OK) {
    thinned_ = found->first;
  } else {
    (status == HVC_ALREADY_EXISTS ? done_ : failed_).insert(found->first);
  }
  return true;
}

}  // namespace nodal
