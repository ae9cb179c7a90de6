#include "platkit/linux/sampled_host.h"

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

std::string Hex(const std::array<std::byte, 16> &bytes) {
  std::string text;
  char digits[3];
  for (const std::byte byte : bytes) {
    std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(byte));
    text += digits;
  }
  return text;
}

TEST(SampledHost, EachFileIsReadOnceASample) {
  SavedHost saved;
  saved.Write("proc/meminfo", "MemTotal: 100 kB\nMemFree: 60 kB\nMemAvailable: 80 kB\n");
  SampledHost host(saved.Path("").c_str(), Reach::kRootFolder, 100);
  ASSERT_EQ(host.Open(), HVC_OK);
  Asker ask(host.source());
  const auto total = [&] { return uint64_t{ask.Record(nodes::memory_comprehensive).managedByMemMap}; };
  host.BeginSample();
  EXPECT_EQ(total(), 100u);
  EXPECT_EQ(host.AvailableBytes(), Figure(80 * 1024));
  saved.Write("proc/meminfo", "MemTotal: 200 kB\nMemFree: 60 kB\nMemAvailable: 90 kB\n");
  EXPECT_EQ(total(), 100u);
  host.BeginSample();
  EXPECT_EQ(total(), 200u);
  EXPECT_EQ(host.AvailableBytes(), Figure(90 * 1024));
}

TEST(SampledHost, Identity) {
  SavedHost saved;
  SampledHost host(saved.Path("").c_str(), Reach::kRootFolder, 100);
  EXPECT_EQ(host.Name(), "");
  EXPECT_EQ(host.KernelRelease(), "");
  EXPECT_EQ(Hex(host.BootID()), std::string(32, '0'));
  saved.Write("proc/sys/kernel/hostname", "alpha\n");
  saved.Write("proc/sys/kernel/osrelease", "6.1.0-18-amd64\n");
  saved.Write("proc/sys/kernel/random/boot_id", "6c5c3d3e-8f0b-4c53-9a5e-5d9a1b8e9f10\n");
  EXPECT_EQ(host.Name(), "alpha");
  EXPECT_EQ(host.KernelRelease(), "6.1.0-18-amd64");
  saved.Write("proc/sys/kernel/hostname", "al\x1bpha\n");
  EXPECT_EQ(host.Name(), "al?pha");
  EXPECT_EQ(Hex(host.BootID()), "6c5c3d3e8f0b4c539a5e5d9a1b8e9f10");
  for (const char *malformed : {"", "6c5c3d3e\n", "6c5c3d3e-8f0b-4c53-9a5e-5d9a1b8e9fzz\n"}) {
    saved.Write("proc/sys/kernel/random/boot_id", malformed);
    EXPECT_EQ(Hex(host.BootID()), std::string(32, '0')) << malformed;
  }
}

TEST(SampledHost, AFolderThatDoesNotExist) {
  SampledHost host("/nonexistent", Reach::kRootFolder, 100);
  EXPECT_EQ(host.Open(), HVC_NOT_FOUND);
}

}  // namespace
}  // namespace platkit
