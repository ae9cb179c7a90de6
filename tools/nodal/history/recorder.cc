#include "tools/nodal/history/recorder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platkit/errno_status.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::history::SampleInfo;
using platkit::history::SampleTime;

// Thinning may take one part in kThinningShare of the interval.
constexpr int64_t kThinningShare = 10;

// Creates the folder, readable by its owner only, and the folders above it, unless they exist.
void CreateFolder(std::string path) {
  path.erase(path.find_last_not_of('/') + 1);
  for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
    static_cast<void>(mkdir(path.substr(0, slash).c_str(), S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH));
  if (mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) throw Failure(path, std::strerror(errno));
}

// A user who may write to the folder could replace its files.
void RequireOwnFolder(const std::string &path, int folder) {
  struct stat about;
  if (fstat(folder, &about) != 0) throw Failure(path, std::strerror(errno));
  if (about.st_uid != 0 && about.st_uid != geteuid()) throw Failure(path, "the folder belongs to another user");
  if ((about.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    throw Failure(path, "other users may write to the folder (use chmod 700)");
  }
}

}  // namespace

Recorder::Recorder(const RecorderOptions &options, Sampled &sampled, Pace &pace)
    : options_(options), sampled_(sampled), pace_(pace) {
  OpenFolder();
  lock_ = std::make_unique<RecorderLock>(folder_.fd(), options_.folder);
  retention_.emplace(folder_, options_.limits, pace_.Now());
}

void Recorder::OpenFolder() {
  if (options_.folder.empty()) throw Failure("--directory", "the name of the folder is empty");
  CreateFolder(options_.folder);
  const HVC_ReturnStatus status = folder_.Open(options_.folder.c_str());
  if (status != HVC_OK) throw Failure(options_.folder, status);
  RequireOwnFolder(options_.folder, folder_.fd());
}

void Recorder::Run() {
  int64_t due = pace_.Now().monotonic;
  while (pace_.WaitUntil(due)) {
    TakeSample();
    if (options_.count > 0 && taken_ >= options_.count) break;
    due = NextDue(due);
  }
  End();
}

// Returns the time of the next sample. Skips overdue samples, for example after a sample that took longer than the
// interval.
int64_t Recorder::NextDue(int64_t due) {
  const int64_t late = std::max<int64_t>(pace_.Now().monotonic - due, 0);
  return due + (late / options_.interval + 1) * options_.interval;
}

void Recorder::TakeSample() {
  SampleInfo info = {.time = pace_.Now()};
  if (samples_ == 0) info.marks = platkit::history::kRecorderStarted;
  sample_.Clear();
  sampled_.Take(sample_, host_, info.availableBytes);
  ++taken_;
  host_.intervalMillis = static_cast<uint32_t>(options_.interval / 1'000'000);
  const Name name = Name::At(info.time.wall);
  const HVC_ReturnStatus status = Write(info);
  Report(name, status);
  if (status == HVC_OK) lastTime_ = info.time;
  Keep(info.time, name);
}

HVC_ReturnStatus Recorder::Write(const SampleInfo &info) {
  const Name name = Name::At(info.time.wall);
  if (const HVC_ReturnStatus status = OpenSegment(name); status != HVC_OK) return status;
  // Makes room for this frame.
  if (!retention_->Apply(info.time, name, writer_.segmentBytes() + largestFrame_)) {
    RemoveOpenSegment(name);
    if (const HVC_ReturnStatus status = OpenSegment(name); status != HVC_OK) return status;
  }
  const HVC_ReturnStatus status = writer_.Append(host_, info, sample_);
  if (status == HVC_OK) largestFrame_ = std::max(largestFrame_, writer_.frameBytes());
  return status;
}

HVC_ReturnStatus Recorder::OpenSegment(const Name &name) {
  if (writer_.isOpen() && open_ == name) return HVC_OK;
  writer_.Close();
  const std::string text = name.text();
  HVC_ReturnStatus status = writer_.Open(folder_.fd(), text.c_str());
  if (status == HVC_NOT_A_SNAPSHOT || status == HVC_SNAPSHOT_TOO_NEW) {
    // Someone may still need the file, but this hour's segment needs its name.
    if (const HVC_ReturnStatus renamed = SetAside(name); renamed != HVC_OK) return renamed;
    status = writer_.Open(folder_.fd(), text.c_str());
  }
  if (status == HVC_OK) open_ = name;
  return status;
}

HVC_ReturnStatus Recorder::SetAside(const Name &name) {
  std::vector<Name> segments;
  std::vector<platkit::history::SetAsideName> others;
  if (const HVC_ReturnStatus status = folder_.List(segments, others); status != HVC_OK) return status;
  platkit::history::SetAsideName aside = {.segment = name};
  for (const platkit::history::SetAsideName &other : others) {
    if (other.segment == name) aside.number = other.number + 1;
  }
  if (renameat(folder_.fd(), name.text().c_str(), folder_.fd(), aside.text().c_str()) != 0)
    return platkit::StatusOfErrno(errno, HVC_WRITE_ERROR);
  Complain(options_.folder + "/" + name.text() + ": not a segment of a history; renamed to " + aside.text());
  return HVC_OK;
}

// Removes this hour's segment, because it alone exceeds the limit. The recording of this hour starts again.
void Recorder::RemoveOpenSegment(const Name &name) {
  writer_.Close();
  unlinkat(folder_.fd(), name.text().c_str(), 0);
}

// Reports when a problem starts and when it ends.
void Recorder::Report(const Name &name, HVC_ReturnStatus status) {
  const std::string file = options_.folder + "/" + name.text();
  if (status != HVC_OK) {
    ++lost_;
    if (status != status_)
      Complain(file + ": " + StatusText(status) + "; samples are lost until writing succeeds again");
  } else {
    if (lost_ > 0) Complain(file + ": recording again; " + Plural(lost_, "sample") + " lost");
    lost_ = 0;
    ++samples_;
    bytes_ += writer_.frameBytes();
  }
  status_ = status;
}

void Recorder::Keep(const SampleTime &time, const Name &name) {
  if (!retention_->Apply(time, name, writer_.segmentBytes())) RemoveOpenSegment(name);
  const int64_t end = pace_.Now().monotonic + options_.interval / kThinningShare;
  const HVC_ReturnStatus status = retention_->Thin([&] { return pace_.Now().monotonic < end; });
  if (status != HVC_OK) Complain(options_.folder + ": an old segment cannot be thinned: " + StatusText(status));
}

void Recorder::End() {
  if (!writer_.isOpen()) return;
  HVC_ReturnStatus status = writer_.AppendEnd(pace_.Now());
  if (status == HVC_OK) status = writer_.Sync();
  writer_.Close();
  if (status != HVC_OK) Complain(options_.folder + ": cannot finish the recording: " + StatusText(status));
}

}  // namespace nodal
