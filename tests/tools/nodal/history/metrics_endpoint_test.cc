#include "tools/nodal/history/metrics_endpoint.h"

#include "platkit/linux/sampled_host.h"
#include "tests/linux/saved_host.h"
#include "tests/tools/nodal/history/recorder_support.h"
#include "tools/nodal/history/host_sampler.h"
#include "tools/nodal/metrics/sampler.h"

namespace nodal {
namespace {

// Takes the samples of a saved host.
class SavedHostOfRecord : public Sampled {
 public:
  explicit SavedHostOfRecord(const std::string &root)
      : host_(root.c_str(), platkit::Reach::kRootFolder, 100), sampler_(host_.source(), filter_) {}

  void Take(Sample &sample, platkit::history::HostHeader &host, uint64_t &) override {
    host_.BeginSample();
    sampler_.AddTo(sample);
    host.definitions = platkit::OwnDefinitions();
  }

  platkit::Source &source() { return host_.source(); }

 private:
  platkit::SampledHost host_;
  PathFilter filter_{{}, "/hardware/pci"};
  HostSampler sampler_;
};

class MetricsEndpointTest : public testing::Test {
 protected:
  MetricsEndpointTest() : saved_("clients.host"), root_(saved_.Path("")), host_(root_) {
    const RecorderOptions options = {.folder = scratch_.Path("history"), .count = 2};
    recorder_ = std::make_unique<Recorder>(options, host_, pace_);
    endpoint_ = std::make_unique<MetricsEndpoint>("0", *recorder_, pace_, options.interval);
  }

  HttpResponse Get(const std::string &path) { return endpoint_->Answer(path); }

  Scratch scratch_;
  platkit::SavedHost saved_;
  std::string root_;
  SavedHostOfRecord host_;
  FakePace pace_;
  std::unique_ptr<Recorder> recorder_;
  std::unique_ptr<MetricsEndpoint> endpoint_;
};

TEST_F(MetricsEndpointTest, ServesTheLastSampleWithItsTime) {
  EXPECT_EQ(Get("/metrics").status, 503);
  EXPECT_EQ(Get("/healthz").status, 503);
  recorder_->Run();
  const HttpResponse response = Get("/metrics");
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(response.lastModified, "Thu, 01 Jan 2026 00:00:05 GMT");
  SourceTree tree(host_.source());
  EXPECT_EQ(*response.body, SampleMetrics(tree, MetricChoice({}), "kestrel_"));
  EXPECT_NE(response.body->find("kestrel_vm_"), std::string::npos);
}

TEST_F(MetricsEndpointTest, ReadsNothingForARequest) {
  recorder_->Run();
  const std::string before = *Get("/metrics").body;
  std::filesystem::remove_all(root_ + "/proc");
  EXPECT_EQ(*Get("/metrics").body, before);
  EXPECT_EQ(Get("/metrics").body, Get("/metrics").body) << "clients share the text";
}

TEST_F(MetricsEndpointTest, Health) {
  recorder_->Run();
  EXPECT_EQ(*Get("/healthz").body, "ok\n");
  pace_.Advance(16 * kSecond);
  EXPECT_EQ(Get("/healthz").status, 503);
}

TEST_F(MetricsEndpointTest, OtherPaths) {
  for (const char *path : {"/", "/metrics/", "/healthz/x", "/../metrics"})
    EXPECT_EQ(Get(path).status, 404);
}

}  // namespace
}  // namespace nodal
