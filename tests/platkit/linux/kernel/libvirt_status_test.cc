#include "platkit/linux/kernel/libvirt_status.h"

#include <sys/stat.h>

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

// A status file as libvirt 9.0 writes it, without the devices that do not matter here.
constexpr char kStatus[] = R"(<!--
WARNING: THIS IS AN AUTO-GENERATED FILE.
-->

<domstatus state='running' reason='booted' pid='4242'>
  <taint flag='high-privileges'/>
  <monitor path='/var/lib/libvirt/qemu/domain-1-web/monitor.sock' type='unix'/>
  <domain type='kvm' id='1'>
    <name>web</name>
    <metadata>
      <other:memory xmlns:other="x" unit='KiB'>1</other:memory>
      <memory unit='KiB'>2</memory>
    </metadata>
    <memory unit='KiB'>262144</memory>
    <currentMemory unit='KiB'>131072</currentMemory>
    <devices>
      <memballoon model='virtio'>
        <stats period='10'/>
        <alias name='balloon0'/>
      </memballoon>
    </devices>
  </domain>
</domstatus>
)";

std::string With(std::string text, const std::string &part, const std::string &replacement) {
  const size_t found = text.find(part);
  EXPECT_NE(found, std::string::npos) << part;
  return text.replace(found, part.size(), replacement);
}

std::string With(const std::string &part, const std::string &replacement) { return With(kStatus, part, replacement); }

TEST(LibvirtStatus, AWholeFile) {
  const LibvirtStatus status = ParseLibvirtStatus(kStatus);
  EXPECT_EQ(status.pid, 4242);
  EXPECT_EQ(status.memory, Figure(262144));
  EXPECT_EQ(status.currentMemory, Figure(131072));
  EXPECT_EQ(status.pollingSeconds, Figure(10));
  EXPECT_EQ(status.hasBalloon, Figure(1));
  EXPECT_EQ(status.hasJob, Figure(0));
}

TEST(LibvirtStatus, ADomainAlone) {
  const LibvirtStatus status = ParseLibvirtStatus(
      "<domain type='kvm'><memory unit='KiB'>7</memory><devices><memballoon model='virtio'/></devices></domain>");
  EXPECT_EQ(status.pid, 0);
  EXPECT_EQ(status.memory, Figure(7));
  EXPECT_EQ(status.currentMemory, kAbsent);
  EXPECT_EQ(status.pollingSeconds, Figure(0));
  EXPECT_EQ(status.hasBalloon, Figure(1));
  EXPECT_EQ(status.hasJob, kAbsent);
}

TEST(LibvirtStatus, Pids) {
  for (const char *pid : {"", "0", "-1", "x", "4242x", "5000000", "99999999999999999999"})
    EXPECT_EQ(ParseLibvirtStatus(With("pid='4242'", "pid='" + std::string(pid) + "'")).pid, 0) << pid;
  EXPECT_EQ(ParseLibvirtStatus(With(" pid='4242'", "")).pid, 0);
}

TEST(LibvirtStatus, Amounts) {
  const auto current = [](const std::string &element) {
    return ParseLibvirtStatus(With("<currentMemory unit='KiB'>131072</currentMemory>", element)).currentMemory;
  };
  EXPECT_EQ(current("<currentMemory unit='KiB'> 12 </currentMemory>"), Figure(12));
  EXPECT_EQ(current("<currentMemory unit='MiB'>12</currentMemory>"), kUnreadable);
  EXPECT_EQ(current("<currentMemory>12</currentMemory>"), kUnreadable);
  EXPECT_EQ(current("<currentMemory unit='KiB'>-12</currentMemory>"), kUnreadable);
  EXPECT_EQ(current("<currentMemory unit='KiB'><b>12</b></currentMemory>"), kUnreadable);
  EXPECT_EQ(current("<currentMemory unit='KiB'/>"), kUnreadable);
  EXPECT_EQ(current(""), kAbsent);
  EXPECT_EQ(current("<description><![CDATA[<currentMemory unit='KiB'>1</currentMemory>]]></description>"), kAbsent);
}

TEST(LibvirtStatus, Balloons) {
  const LibvirtStatus none = ParseLibvirtStatus(With("model='virtio'", "model='none'"));
  EXPECT_EQ(none.hasBalloon, Figure(0));
  const LibvirtStatus unpolled = ParseLibvirtStatus(With("<stats period='10'/>", ""));
  EXPECT_EQ(unpolled.hasBalloon, Figure(1));
  EXPECT_EQ(unpolled.pollingSeconds, Figure(0));
  EXPECT_EQ(ParseLibvirtStatus(With("period='10'", "period='x'")).pollingSeconds, kUnreadable);
}

TEST(LibvirtStatus, Jobs) {
  const auto hasJob = [](const std::string &element) {
    return ParseLibvirtStatus(With("<taint flag='high-privileges'/>", element)).hasJob;
  };
  EXPECT_EQ(hasJob("<job type='none' async='migration out' phase='perform3'><flag/></job>"), Figure(1));
  EXPECT_EQ(hasJob("<job type='modify' async='none'/>"), Figure(0));
  EXPECT_EQ(hasJob("<job type='none'/>"), Figure(0));
  EXPECT_EQ(hasJob(""), Figure(0));
  EXPECT_EQ(hasJob("<"), kAbsent) << "malformed before the domain";
}

TEST(LibvirtStatus, IsReadAtEveryTruncation) {
  const std::string whole = kStatus;
  for (size_t size = 0; size < whole.size(); ++size) {
    const LibvirtStatus status = ParseLibvirtStatus(std::string_view(whole).substr(0, size));
    EXPECT_TRUE(status.pid == 0 || status.pid == 4242) << size;
    EXPECT_TRUE(status.hasBalloon.isAbsent() || status.hasBalloon == Figure(1)) << size;
  }
}

class StatusFile : public testing::Test {
 protected:
  StatusFile() { Write("web"); }

  void Write(const std::string &name) {
    const std::string path = "run/libvirt/qemu/" + name + ".xml";
    kernel_.host().Write(path, kStatus);
    EXPECT_EQ(chmod(kernel_.host().Path(path).c_str(), 0600), 0);
  }
  int64_t PidOf(std::string_view name) { return ReadLibvirtStatus(kernel_.files(), name).pid; }

  KernelFiles kernel_;
};

TEST_F(StatusFile, HasTheNameOfTheGuest) {
  EXPECT_EQ(PidOf("web"), 4242);
  EXPECT_EQ(PidOf("mail"), 0);
  EXPECT_EQ(PidOf(""), 0);
  Write("a b.c");
  EXPECT_EQ(PidOf("a b.c"), 4242);
}

// Any user can start a process with any guest's name, so a name must not lead out of the folder.
TEST_F(StatusFile, IsInItsFolder) {
  EXPECT_EQ(PidOf("../qemu/web"), 0);
  EXPECT_EQ(PidOf(std::string_view("web\0", 4)), 0);
  EXPECT_EQ(PidOf(std::string(300, 'x')), 0);
  Write("channel/web");
  EXPECT_EQ(PidOf("channel/web"), 0);
}

TEST_F(StatusFile, IsRootsAlone) {
  EXPECT_EQ(chmod(kernel_.host().Path("run/libvirt/qemu/web.xml").c_str(), 0666), 0);
  EXPECT_EQ(PidOf("web"), 0);
  kernel_.host().Forbid("run/libvirt/qemu/web.xml");
  OrdinaryUser user;
  EXPECT_EQ(PidOf("web"), 0);
}

TEST_F(StatusFile, IsNoLinkAndHasABoundedSize) {
  kernel_.host().MakeLink("run/libvirt/qemu/link.xml", "web.xml");
  EXPECT_EQ(PidOf("link"), 0);
  kernel_.host().Write("run/libvirt/qemu/web.xml", kStatus + std::string(2 << 20, ' '));
  EXPECT_EQ(PidOf("web"), 0);
}

}  // namespace
}  // namespace platkit
