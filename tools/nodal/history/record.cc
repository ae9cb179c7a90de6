#include "tools/nodal/history/record.h"

#include <algorithm>
#include <optional>

#include "tools/nodal/history/host_sampler.h"
#include "tools/nodal/history/metrics_endpoint.h"
#include "tools/nodal/support/clock.h"
#include "tools/nodal/support/open_files.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/signals.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/sampled_tree.h"

namespace nodal {
namespace {

using platkit::history::HostHeader;
using platkit::history::Sample;
using platkit::history::SampleInfo;
using platkit::history::SampleTime;

// Reading a PCI device can wake up the device, and no report that accepts a history needs PCI devices.
constexpr std::string_view kPciDevices = "/hardware/pci";

class HostOfRecord : public Sampled {
 public:
  explicit HostOfRecord(const RecordOptions &options)
      : host_(HostBelow(options.root, OpenFilesToKeep())),
        filter_(options.only, kPciDevices),
        sampler_(host_.source(), filter_) {
    OpenHost(host_, options.root);
  }

  void Take(Sample &sample, HostHeader &host, uint64_t &availableBytes) override {
    host_.BeginSample();
    sampler_.AddTo(sample);
    if (!hasHeader_) Begin(sample, host);
    host.host = host_.Name();
    availableBytes = host_.AvailableBytes().Cell(SampleInfo::kUnknown);
  }

 private:
  // Checks that every named path was found, and sets the parts of the header that cannot change while this process
  // runs.
  void Begin(const Sample &sample, HostHeader &host) {
    for (size_t i = 0; i < sample.size(); ++i) {
      std::string_view path = sample[i].key;
      if (platkit::snapshot::IsFailureKey(path)) path.remove_prefix(platkit::snapshot::kFailurePrefix.size());
      filter_.MarkFound(path);
    }
    filter_.RequireAllFound();
    host.definitions = platkit::OwnDefinitions();
    host.kernel = host_.KernelRelease();
    host.bootId = host_.BootID();
    hasHeader_ = true;
  }

  platkit::SampledHost host_;
  PathFilter filter_;
  HostSampler sampler_;
  bool hasHeader_ = false;
};

class HostPace : public Pace {
 public:
  // Makes WaitUntil serve requests.
  void ServeWith(HttpServer &server) { server_ = &server; }

  SampleTime Now() override {
    return {.wall = NanosecondsOf(CLOCK_REALTIME),
            .boot = NanosecondsOf(CLOCK_BOOTTIME),
            .monotonic = NanosecondsOf(CLOCK_MONOTONIC)};
  }

  bool WaitUntil(int64_t time) override {
    for (;;) {
      const int64_t now = NanosecondsOf(CLOCK_MONOTONIC);
      const int64_t until = server_ == nullptr ? time : std::min(time, server_->NextTimeout());
      if (!PollForSignals(server_ == nullptr ? std::span<pollfd>() : server_->Polled(),
                          std::max<int64_t>(until - now, 0)))
        return false;
      if (server_ != nullptr) server_->Serve(NanosecondsOf(CLOCK_MONOTONIC));
      if (now >= time) return true;
    }
  }

 private:
  HttpServer *server_ = nullptr;
};

}  // namespace

void Record(const RecordOptions &options) {
  HoldSignals();
  HostOfRecord host(options);
  HostPace pace;
  Recorder recorder(options.recorder, host, pace);
  std::optional<MetricsEndpoint> endpoint;
  if (!options.listen.empty()) {
    endpoint.emplace(options.listen, recorder, pace, options.recorder.interval);
    pace.ServeWith(endpoint->server());
    Complain("serving http://" + endpoint->server().address() + "/metrics");
  }
  recorder.Run();
  Complain(options.recorder.folder + ": " + Plural(recorder.samples(), "sample") + ", " +
           std::to_string(recorder.bytes()) + " bytes");
}

}  // namespace nodal
