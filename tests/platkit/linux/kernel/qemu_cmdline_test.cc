#include "platkit/linux/kernel/qemu_cmdline.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

// Parses a command line of these arguments.
QemuOptions Parse(const std::vector<std::string> &words) {
  std::string line;
  for (const std::string &word : words)
    line += word + '\0';
  return ParseQemuCommandLine(line);
}

Figure Memory(const std::string &size) { return Parse({"qemu-kvm", "-m", size}).memory; }

constexpr Figure MB(uint64_t amount) { return Figure(amount * 1024); }

TEST(QemuCmdline, Names) {
  EXPECT_EQ(Parse({"qemu", "-name", "mail"}).name, "mail");
  EXPECT_EQ(Parse({"qemu", "--name", "guest=mail,debug-threads=on"}).name, "mail");
  EXPECT_EQ(Parse({"qemu", "-name", "debug-threads=on,guest=mail"}).name, "mail");
  EXPECT_EQ(Parse({"qemu", "-name", "a,,b,process=x"}).name, "a,b");
  EXPECT_EQ(Parse({"qemu", "-name", "first", "-name", "second"}).name, "second");
  EXPECT_EQ(Parse({"qemu", "-name", "debug-threads=on"}).name, "");
  for (const std::vector<std::string> &words : {std::vector<std::string>{},
                                                {""},
                                                {"-name"},
                                                {"qemu", "-name"},
                                                {"qemu", "-name", ""},
                                                {"qemu", "-name", ","}}) {
    EXPECT_EQ(Parse(words).name, "");
  }
}

TEST(QemuCmdline, MemorySizes) {
  EXPECT_EQ(Memory("4096"), MB(4096));
  EXPECT_EQ(Memory("4G"), MB(4096));
  EXPECT_EQ(Memory("1t"), MB(1 << 20));
  EXPECT_EQ(Memory("1.5g"), MB(1536));
  EXPECT_EQ(Memory("2048K"), MB(2));
  EXPECT_EQ(Memory("1048576b"), MB(1));
  EXPECT_EQ(Memory("512M"), MB(512));
  EXPECT_EQ(Memory("size=4G,slots=2,maxmem=16G"), MB(4096));
  EXPECT_EQ(Memory("slots=2,size=512,maxmem=16G"), MB(512));
  EXPECT_EQ(Memory("4G,maxmem=16G"), MB(4096));
  EXPECT_EQ(Parse({"qemu", "-m", "1G", "-m", "2G"}).memory, MB(2048));
  for (const char *bad : {"", "G", "0", "4X", "4GB", "-1", "maxmem=4G", "99999999999999999999", "99999999999999999E"}) {
    EXPECT_TRUE(Memory(bad).isAbsent()) << bad;
  }
}

TEST(QemuCmdline, MemoryMayGrow) {
  const auto maxMemory = [](const std::string &size) { return Parse({"qemu-kvm", "-m", size}).maxMemory; };
  EXPECT_EQ(maxMemory("size=4G,slots=2,maxmem=16G"), MB(16384));
  EXPECT_EQ(maxMemory("4G,maxmem=16G"), MB(16384));
  EXPECT_EQ(Parse({"qemu-kvm", "-m", "4G", "-m", "maxmem=8G"}).maxMemory, MB(8192));
  for (const char *none : {"4G", "size=4G", "4G,maxmem=", "4G,maxmem=x"})
    EXPECT_TRUE(maxMemory(none).isAbsent()) << none;
}

TEST(QemuCmdline, Balloons) {
  using Words = std::vector<std::string>;
  const auto hasBalloon = [](const Words &words) { return Parse(words).hasBalloon; };
  EXPECT_EQ(hasBalloon({"qemu-kvm", "-device", "virtio-balloon-pci,id=b"}), Figure(1));
  EXPECT_EQ(hasBalloon({"qemu-kvm", "--device", R"({"driver":"virtio-balloon-pci","id":"b"})", "-device", "e1000"}),
            Figure(1));
  EXPECT_EQ(hasBalloon({"qemu-kvm", "-device", "virtio-balloon", "-readconfig", "file"}), Figure(1));
  EXPECT_EQ(hasBalloon({"qemu-kvm", "-device", "e1000"}), Figure(0));
  EXPECT_EQ(hasBalloon({"qemu-kvm", "-name", "virtio-balloon"}), Figure(0));
  EXPECT_EQ(hasBalloon({"qemu-kvm", "-readconfig", "file"}), kAbsent) << "the file may have one";
  for (const Words &words : {Words{}, Words{"appliance"}})
    EXPECT_EQ(hasBalloon(words), kAbsent) << "not QEMU";
}

TEST(QemuCmdline, ATruncatedCommandLineMayHideABalloon) {
  KernelFiles kernel;
  const auto hasBalloon = [&kernel](size_t length) {
    std::string line = std::string("kvm\0", 4) + std::string(length, 'x');
    return ReadQemuCommandLine(kernel.With("proc/7/cmdline", line), 7).hasBalloon;
  };
  EXPECT_EQ(hasBalloon(1000), Figure(0));
  EXPECT_EQ(hasBalloon(100000), kAbsent);
}

TEST(QemuCmdline, ThePrograms) {
  for (const char *program : {"/usr/bin/qemu-system-x86_64", "qemu-kvm", "/opt/kvm"})
    EXPECT_TRUE(Parse({program}).isQemu) << program;
  for (const char *program : {"", "qemu-img", "/opt/kvm-tool", "kvm/", "x kvm"})
    EXPECT_FALSE(Parse({program}).isQemu) << program;
}

TEST(QemuCmdline, TheFile) {
  KernelFiles kernel;
  const auto memory = [&kernel] { return ReadQemuCommandLine(kernel.files(), 7).memory; };
  EXPECT_EQ(memory(), kAbsent) << "missing";
  kernel.host().Write("proc/7/cmdline", std::string("kvm\0-m\0001G", 9) + '\0');
  EXPECT_EQ(memory(), MB(1024));
  kernel.host().Write("proc/7/cmdline", std::string(100000, 'x'));
  EXPECT_EQ(memory(), kAbsent);
  kernel.host().Forbid("proc/7/cmdline");
  OrdinaryUser user;
  EXPECT_EQ(memory(), kAbsent);
}

}  // namespace
}  // namespace platkit
