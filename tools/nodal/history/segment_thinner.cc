#include "tools/nodal/history/segment_thinner.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "platkit/errno_status.h"

namespace nodal {
namespace {

using platkit::history::kNanosInSecond;
using platkit::history::SampleInfo;
using platkit::history::SegmentReader;

constexpr int64_t kMinute = 60 * kNanosInSecond;
constexpr int64_t kKeyInterval = 10 * kMinute;

int64_t MinuteOf(const SampleInfo &info) { return info.time.wall / kMinute - (info.time.wall % kMinute < 0 ? 1 : 0); }

bool AreOfOneMinute(const SampleInfo &before, const SampleInfo &after) {
  const bool isRestart = (after.marks & platkit::history::kRecorderStarted) != 0 || after.time.boot < before.time.boot;
  return !isRestart && MinuteOf(before) == MinuteOf(after);
}

}  // namespace

std::vector<MinuteOfSamples> MinutesOf(const std::vector<SegmentReader::Frame> &frames) {
  std::vector<MinuteOfSamples> minutes;
  for (size_t i = 0; i < frames.size(); ++i) {
    const SegmentReader::Frame &frame = frames[i];
    const bool isFirst =
        i == 0 || frame.isEnd || frames[i - 1].isEnd || !AreOfOneMinute(frames[i - 1].info, frame.info);
    if (isFirst) minutes.push_back({.frames = {}, .marks = frame.info.marks, .isEnd = frame.isEnd});
    minutes.back().frames.push_back(i);
  }
  bool isThinned = false;
  for (MinuteOfSamples &minute : minutes) {
    const bool isThinnedBefore = std::exchange(isThinned, minute.frames.size() > 1);
    if (isThinned || isThinnedBefore) minute.marks |= platkit::history::kThinned;
    std::ranges::stable_sort(minute.frames, {}, [&](size_t i) { return frames[i].info.availableBytes; });
  }
  return minutes;
}

SegmentThinner::Work::Work(int openFolder, std::string segment)
    : folder(openFolder), name(std::move(segment)), writer(kKeyInterval) {}

HVC_ReturnStatus SegmentThinner::Start(int folder, const std::string &name) {
  Stop();
  auto work = std::make_unique<Work>(folder, name);
  if (const HVC_ReturnStatus status = work->reader.Open(folder, name.c_str()); status != HVC_OK) return status;
  work->minutes = MinutesOf(work->reader.frames());
  const auto isThin = [](const MinuteOfSamples &minute) { return minute.frames.size() == 1; };
  if (std::ranges::all_of(work->minutes, isThin)) return HVC_ALREADY_EXISTS;
  unlinkat(folder, kTemporary, 0);
  if (const HVC_ReturnStatus status = work->writer.Open(folder, kTemporary); status != HVC_OK) return status;
  work_ = std::move(work);
  return HVC_OK;
}

HVC_ReturnStatus SegmentThinner::Step() {
  const bool isLast = work_->next == work_->minutes.size();
  const HVC_ReturnStatus status = isLast ? Replace() : CopyMinute(work_->minutes[work_->next++]);
  if (status != HVC_OK || isLast) Stop();
  return status;
}

// A minute whose samples are all damaged is lost.
HVC_ReturnStatus SegmentThinner::CopyMinute(const MinuteOfSamples &minute) {
  const std::vector<SegmentReader::Frame> &frames = work_->reader.frames();
  if (minute.isEnd) return work_->writer.AppendEnd(frames[minute.frames[0]].info.time);
  for (const size_t i : minute.frames) {
    const HVC_ReturnStatus status = work_->reader.Read(i, work_->sample);
    if (status == HVC_SNAPSHOT_DAMAGED) continue;
    if (status != HVC_OK) return status;
    SampleInfo info = frames[i].info;
    info.marks = minute.marks;
    return work_->writer.Append(work_->reader.host(), info, work_->sample);
  }
  return HVC_OK;
}

HVC_ReturnStatus SegmentThinner::Replace() {
  if (work_->writer.frameBytes() == 0) return HVC_SNAPSHOT_DAMAGED;  // no sample could be read
  if (const HVC_ReturnStatus status = work_->writer.Sync(); status != HVC_OK) return status;
  work_->writer.Close();
  if (renameat(work_->folder, kTemporary, work_->folder, work_->name.c_str()) == 0) return HVC_OK;
  return platkit::StatusOfErrno(errno, HVC_WRITE_ERROR);
}

void SegmentThinner::Stop() {
  if (work_ == nullptr) return;
  unlinkat(work_->folder, kTemporary, 0);
  work_ = nullptr;
}

}  // namespace nodal
