#include "tools/nodal/history/moment_file.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "platkit/history/history_source.h"
#include "platkit/history/moment.h"
#include "platkit/snapshot/snapshot_writer.h"

namespace nodal {
namespace {

using platkit::history::History;
using platkit::history::MomentPath;
using platkit::history::SplitMoment;
using platkit::history::TimeText;

constexpr const char *kTimeForms =
    "expected a form such as 2026-11-21T03:12:00Z, '2026-11-21 03:12' (local), 03:12, @1763694720 or -10m";

std::string InvalidTime(const std::string &time) { return "invalid time '" + time + "' (" + kTimeForms + ")"; }

std::string SpanText(const History::Span &span) { return TimeText(span.first) + " to " + TimeText(span.last); }

platkit::snapshot::Header HeaderOf(const platkit::Moment &moment) {
  return {.definitions = moment.host.definitions,
          .host = moment.host.host,
          .time = TimeText(platkit::history::SecondsOf(moment.info.time.wall))};
}

HVC_ReturnStatus WriteSnapshot(const platkit::Moment &moment, int fd) {
  platkit::snapshot::SnapshotWriter writer;
  HVC_ReturnStatus status = writer.AddHeader(HeaderOf(moment));
  for (size_t i = 0; i < moment.sample.size() && status == HVC_OK; ++i) {
    const platkit::history::Entry entry = moment.sample[i];
    status = writer.Add(entry.key, entry.type, entry.payload);
  }
  return status == HVC_OK ? writer.WriteTo(fd) : status;
}

}  // namespace

bool IsFolder(const std::string &path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool IsMoment(const std::string &path) {
  const std::optional<MomentPath> parts = SplitMoment(path);
  struct stat info;
  if (!parts || stat(path.c_str(), &info) == 0) return false;
  return IsFolder(parts->folder);
}

std::string WithFixedTime(const std::string &path) {
  if (!IsMoment(path)) return path;
  const MomentPath parts = *SplitMoment(path);
  History history;
  OpenHistory(parts.folder, history);
  const std::optional<int64_t> second = platkit::history::ParseTime(parts.time, SpanOf(parts.folder, history).last);
  return second ? parts.folder + "@@" + std::to_string(*second) : path;
}

std::string ProblemOfTime(const std::string &path) {
  if (!IsMoment(path)) return "";
  const std::string time = SplitMoment(path)->time;
  return platkit::history::ParseTime(time, std::time(nullptr)) ? "" : InvalidTime(time);
}

Failure MomentFailure(const std::string &path, HVC_ReturnStatus status) {
  const MomentPath parts = *SplitMoment(path);
  History history;
  History::Span span;
  switch (status) {
    case HVC_NOT_FOUND: return {parts.folder, "no history in this folder"};
    case HVC_BAD_PARAM: return {path, InvalidTime(parts.time)};
    case HVC_SNAPSHOT_DAMAGED: return {path, "the sample is damaged (nodal verify " + parts.folder + " shows details)"};
    case HVC_OUT_OF_RANGE:
      if (history.Open(parts.folder.c_str()) == HVC_OK && history.FindSpan(span) == HVC_OK)
        return {path, "outside the history, which runs from " + SpanText(span)};
      [[fallthrough]];
    default: return {path, status};
  }
}

MomentFile::MomentFile(const std::string &path) : fd_(memfd_create("moment", MFD_CLOEXEC)) {
  if (fd_ < 0) throw Failure(path, std::strerror(errno));
  platkit::Moment moment;
  HVC_ReturnStatus status = platkit::ReadMoment(path.c_str(), moment);
  if (status == HVC_OK) status = WriteSnapshot(moment, fd_);
  if (status == HVC_OK) return;
  close(fd_);
  throw MomentFailure(path, status);
}

MomentFile::~MomentFile() { close(fd_); }

void OpenHistory(const std::string &folder, History &history) {
  const HVC_ReturnStatus status = history.Open(folder.c_str());
  if (status == HVC_NOT_A_SNAPSHOT) throw Failure(folder, "no history in this folder");
  if (status == HVC_NOT_FOUND) throw Failure(folder, "no such folder");
  if (status != HVC_OK) throw Failure(folder, status);
}

History::Span SpanOf(const std::string &folder, History &history) {
  History::Span span;
  const HVC_ReturnStatus status = history.FindSpan(span);
  if (status == HVC_SNAPSHOT_DAMAGED) throw Failure(folder, "the history has no readable sample");
  if (status != HVC_OK) throw Failure(folder, status);
  return span;
}

int64_t TimeOption(const std::string &name, const std::string &text, const History::Span &span) {
  const std::optional<int64_t> second = platkit::history::ParseTime(text, span.last);
  if (!second) throw UsageError(name + " " + text, std::string("invalid time (") + kTimeForms + ")");
  return *second;
}

}  // namespace nodal
