#include "tools/nodal/top/feed.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platkit/history/moment.h"
#include "platkit/snapshot/snapshot_source.h"
#include "tools/nodal/capture/source_header.h"
#include "tools/nodal/history/moment_file.h"
#include "tools/nodal/snapshot/open_failure.h"
#include "tools/nodal/support/clock.h"
#include "tools/nodal/support/open_files.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/sampled_tree.h"

namespace nodal::top {
namespace {

// Limits and members of groups change seldom, and reading them takes most of the time of a sample. With many groups,
// they are read only in some samples.
constexpr std::chrono::microseconds kSettingsAgeOfGroup{4500};
constexpr std::chrono::microseconds kMaxSettingsAge{4'500'000};

class HostFeed final : public Feed {
 public:
  explicit HostFeed(const std::string &root) : isSaved_(!root.empty()), host_(HostBelow(root, OpenFilesToKeep())) {
    OpenHost(host_, root);
    name_ = Printable(host_.Name());
  }

  bool Step(bool isBack) override {
    if (isBack) return false;
    host_.BeginSample();
    const int64_t before = monotonic_;
    monotonic_ = NanosecondsOf(CLOCK_MONOTONIC);
    wall_ = NanosecondsOf(CLOCK_REALTIME);
    seconds_ = before == 0 ? 0 : static_cast<double>(monotonic_ - before) / platkit::history::kNanosInSecond;
    return true;
  }

  void AdaptTo(size_t groups) override {
    const auto enough = static_cast<size_t>(kMaxSettingsAge / kSettingsAgeOfGroup);
    host_.ReuseSettings(kSettingsAgeOfGroup * static_cast<int64_t>(std::min(groups, enough)));
  }

  platkit::Source &Now() override { return host_.source(); }
  double Seconds() const override { return seconds_; }
  std::string Host() const override { return name_; }
  std::string Time() const override { return platkit::history::TimeText(platkit::history::SecondsOf(wall_)); }
  std::string Kind() const override { return isSaved_ ? "saved /proc and /sys" : "live"; }
  bool isLive() const override { return true; }

 private:
  bool isSaved_;
  platkit::SampledHost host_;
  std::string name_;
  int64_t monotonic_ = 0;
  int64_t wall_ = 0;
  double seconds_ = 0;
};

class SnapshotFeed final : public Feed {
 public:
  explicit SnapshotFeed(const std::string &path) {
    const platkit::snapshot::Header header = SourceHeader(path, "");
    if (const HVC_ReturnStatus status = platkit::OpenSnapshot(path.c_str(), source_); status != HVC_OK)
      throw OpenFailure(path, status);
    host_ = Printable(header.host);
    time_ = Printable(header.time);
  }

  bool Step(bool) override { return !std::exchange(isTaken_, true); }
  platkit::Source &Now() override { return *source_; }
  double Seconds() const override { return 0; }
  std::string Host() const override { return host_; }
  std::string Time() const override { return time_; }
  std::string Kind() const override { return "snapshot"; }

 private:
  std::unique_ptr<platkit::Source> source_;
  std::string host_;
  std::string time_;
  bool isTaken_ = false;
};

}  // namespace

std::unique_ptr<Feed> OpenSnapshotFeed(const std::string &path) { return std::make_unique<SnapshotFeed>(path); }

std::unique_ptr<Feed> OpenFeed(const std::string &cache, const std::string &root) {
  if (cache.empty()) return std::make_unique<HostFeed>(root);
  return IsFolder(cache) || IsMoment(cache) ? OpenHistoryFeed(cache) : OpenSnapshotFeed(cache);
}

}  // namespace nodal::top
