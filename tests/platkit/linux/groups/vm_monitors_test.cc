// The figures of a VM that only its monitor knows, as records show them. VM 310 of the saved host is named "web" and
// has 2 GB, which may grow to 8 GB.
#include "platkit/linux/groups/vm_monitors.h"

#include <sys/stat.h>

#include <string>

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

constexpr uint64_t kMemoryKB = 2'097'152;
const std::string kStatusFile = "run/libvirt/qemu/web.xml";

class VmMonitorsTest : public testing::Test {
 protected:
  VmMonitorsTest() : host_("clients.host") {
    host_.Write("proc/uptime", "105.00 0.00\n");
    WriteStart(77);
    AddBalloonDevice();
    figures_[GuestFigure::kBalloonDriver] = Figure(1);
    figures_[GuestFigure::kBalloon] = Figure(1000);
    figures_[GuestFigure::kBalloonTarget] = Figure(2000);
    figures_[GuestFigure::kTotal] = Figure(2'000'000);
    figures_[GuestFigure::kUsable] = Figure(1'500'000);
    figures_[GuestFigure::kWritten] = Figure(4096);
  }

  void WriteStart(int ticks) {
    host_.Write("proc/310/stat",
                "310 (qemu) S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 " + std::to_string(ticks) + " 0\n");
  }

  void SetCommandLine(const std::string &options) {
    std::string line =
        "/usr/bin/qemu-system-x86_64 -name guest=web -m size=2097152k,slots=16,maxmem=8388608k " + options;
    for (char &c : line)
      if (c == ' ') c = '\0';
    host_.Write("proc/310/cmdline", line + '\0');
  }
  void AddBalloonDevice() { SetCommandLine("-device virtio-balloon-pci"); }

  // Writes the guests file with these figures of the VM.
  void WriteGuests() {
    Write(kGuestsFile, FormatGuestsFile({.uptime = 100'000, .period = 10'000, .guests = {figures_}}));
  }

  void WriteStatus(const std::string &pid, uint64_t current, const std::string &model = "virtio",
                   const std::string &job = "none") {
    Write(kStatusFile, "<domstatus pid='" + pid + "'><job async='" + job + "'/><domain><memory unit='KiB'>" +
                           std::to_string(kMemoryKB) + "</memory><currentMemory unit='KiB'>" + std::to_string(current) +
                           "</currentMemory><devices><memballoon model='" + model +
                           "'/></devices></domain></domstatus>");
  }

  void Write(const std::string &path, const std::string &text) {
    host_.Write(path, text);
    EXPECT_EQ(chmod(host_.Path(path).c_str(), 0644), 0);
  }

  VmmMemoryStatsRecord Vmm() { return host_.ask().Record(nodes::sched_memClients_kestrel_vmm, {310}); }
  GuestStatsRecord Guest() { return host_.ask().Record(nodes::sched_memClients_kestrel_guest, {310}); }
  uint64_t Written() { return host_.ask().Record(nodes::sched_memClients_swapInfo, {20'000'310}).cptWritten; }

  // Expects the cells of balloonActive, ballooned and balloonTgt.
  void ExpectBalloon(uint8_t isActive, uint64_t size, uint64_t target, const std::string &why) {
    const VmmMemoryStatsRecord vmm = Vmm();
    EXPECT_EQ(int{vmm.balloonActive}, int{isActive}) << why;
    EXPECT_CELL(vmm.ballooned, size) << why;
    EXPECT_CELL(vmm.balloonTgt, target) << why;
  }

  SavedHost host_;
  GuestFigures figures_{.pid = 310, .startTicks = 77};
};

TEST_F(VmMonitorsTest, WithoutAMonitorNothingIsKnown) {
  ExpectBalloon(0xff, kNoFigure, kNoFigure, "there is a balloon device");
  EXPECT_EQ(Written(), kNoFigure);
  EXPECT_CELL(Guest().memTotal, kMemoryKB);
  EXPECT_CELL(Guest().memNeeded, kNoFigure);
}

TEST_F(VmMonitorsTest, AVmWithoutABalloonDeviceHasNoBalloon) {
  SetCommandLine("-device e1000");
  ExpectBalloon(0, 0, 0, "by its command line");
  WriteGuests();
  ExpectBalloon(1, 1000, 2000, "the device was added later");
}

TEST_F(VmMonitorsTest, AVmWithoutABalloonDeviceByLibvirt) {
  WriteStatus("310", kMemoryKB, "none");
  ExpectBalloon(0, 0, 0, "the command line does not matter");
}

TEST_F(VmMonitorsTest, AFileOfOptionsMayHaveABalloonDevice) {
  SetCommandLine("-readconfig file");
  ExpectBalloon(0xff, kNoFigure, kNoFigure, "unknown");
}

TEST_F(VmMonitorsTest, TheFileOfGuests) {
  WriteGuests();
  ExpectBalloon(1, 1000, 2000, "as told");
  EXPECT_CELL(Guest().memTotal, 2'000'000);
  EXPECT_CELL(Guest().memNeeded, 500'000);
  EXPECT_CELL(Guest().lpageTotal, UINT32_MAX);
  EXPECT_EQ(Written(), 4096u);
  figures_[GuestFigure::kBalloonDriver] = Figure();
  figures_[GuestFigure::kBalloonTarget] = Figure();
  WriteGuests();
  ExpectBalloon(1, 1000, kNoFigure, "a filled balloon shows a driver");
  figures_[GuestFigure::kBalloon] = Figure(0);
  WriteGuests();
  ExpectBalloon(0xff, 0, kNoFigure, "an empty one does not");
  figures_[GuestFigure::kBalloonDriver] = Figure(0);
  WriteGuests();
  ExpectBalloon(0, 0, kNoFigure, "there is a device but no driver");
}

TEST_F(VmMonitorsTest, FiguresOfAnotherProcessDoNotCount) {
  WriteGuests();
  WriteStart(78);
  ExpectBalloon(0xff, kNoFigure, kNoFigure, "a later process with the same PID");
  WriteStart(77);
  ExpectBalloon(1, 1000, 2000, "the process itself");
  figures_.pid = 311;
  WriteGuests();
  ExpectBalloon(0xff, kNoFigure, kNoFigure, "another PID");
}

TEST_F(VmMonitorsTest, OldFiguresDoNotCount) {
  WriteGuests();
  host_.Write("proc/uptime", "129.99 0.00\n");
  ExpectBalloon(1, 1000, 2000, "three periods");
  host_.Write("proc/uptime", "130.00 0.00\n");
  ExpectBalloon(0xff, kNoFigure, kNoFigure, "older");
  EXPECT_CELL(Guest().memTotal, kMemoryKB);
}

// A guest can report any statistics.
TEST_F(VmMonitorsTest, ImpossibleStatisticsDoNotCount) {
  const auto expect = [this](uint64_t total, uint64_t usable, uint64_t memTotal, uint64_t memNeeded) {
    figures_[GuestFigure::kTotal] = Figure(total);
    figures_[GuestFigure::kUsable] = Figure(usable);
    WriteGuests();
    EXPECT_CELL(Guest().memTotal, memTotal) << total << " " << usable;
    EXPECT_CELL(Guest().memNeeded, memNeeded) << total << " " << usable;
  };
  expect(8'388'608, 8'388'608, 8'388'608, 0);
  expect(8'388'609, 5, kMemoryKB, kNoFigure);
  expect(UINT64_MAX, 5, kMemoryKB, kNoFigure);
  expect(1000, 1001, 1000, kNoFigure);
  expect(0, 0, 0, 0);
  figures_[GuestFigure::kUsable] = Figure();
  WriteGuests();
  EXPECT_CELL(Guest().memNeeded, kNoFigure);
}

TEST_F(VmMonitorsTest, LibvirtsStatusIsNewerThanTheFileOfGuests) {
  WriteStatus("310", kMemoryKB - 300);
  ExpectBalloon(1, 300, kNoFigure, "the status alone");
  EXPECT_EQ(Written(), 0u) << "no job";
  WriteGuests();
  ExpectBalloon(1, 300, 2000, "both");
  WriteStatus("310", kMemoryKB, "virtio", "migration out");
  EXPECT_EQ(Written(), 4096u);
  ExpectBalloon(1, 0, 2000, "empty");
}

TEST_F(VmMonitorsTest, AStatusOfAnotherProcessDoesNotCount) {
  for (const char *pid : {"311", "0", "", "x"}) {
    WriteStatus(pid, kMemoryKB - 300);
    ExpectBalloon(0xff, kNoFigure, kNoFigure, pid);
  }
}

TEST_F(VmMonitorsTest, AnImpossibleStatusDoesNotCount) {
  WriteStatus("310", kMemoryKB + 1);
  ExpectBalloon(0xff, kNoFigure, kNoFigure, "more than the memory");
  WriteGuests();
  ExpectBalloon(1, 1000, 2000, "the file of guests");
  Write(kStatusFile, "<domstatus pid='310'><domain><memory unit='KiB'>5</memory></domain></domstatus>");
  ExpectBalloon(1, 1000, 2000, "the current memory is missing");
}

TEST_F(VmMonitorsTest, TheFileOfGuestsIsReadOncePerSample) {
  WriteGuests();
  Vmm();
  Guest();
  Written();
  EXPECT_EQ(host_.Opens(kGuestsFile), 1);
}

}  // namespace
}  // namespace platkit
