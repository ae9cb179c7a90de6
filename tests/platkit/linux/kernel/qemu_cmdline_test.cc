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
  const auto hasPersistent = [](const Words &words) { return Parse(words).hasPersistentMemory; };
  EXPECT_EQ(hasPersistent({"qemu-kvm", "-device", "nvdimm,memdev=m"}), Figure(1));
  EXPECT_EQ(hasPersistent({"qemu-kvm", "-device", R"({"driver":"virtio-pmem-pci","id":"p"})"}), Figure(1));
  EXPECT_EQ(hasPersistent({"qemu-kvm", "-device", "pc-dimm,memdev=m"}), Figure(0));
  EXPECT_EQ(hasPersistent({"qemu-kvm", "-readconfig", "file"}), kAbsent);
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

TEST(QemuCmdline, MemoryDevices) {
  using Words = std::vector<std::string>;
  const auto memory = [](Words words) {
    words.insert(words.begin(), {"qemu-kvm", "-m", "size=1G,slots=4,maxmem=8G"});
    return Parse(words).memory;
  };
  const Words first = {"-object", "memory-backend-ram,id=m0,size=512M", "-device", "pc-dimm,id=d0,memdev=m0"};
  const Words second = {"-device", R"({"driver":"pc-dimm","node":0,"memdev":"m1","id":"d1","addr":4294967296})",
                        "-object",
                        R"({"qom-type":"memory-backend-memfd","id":"m1","size":268435456,"host-nodes":[0]})"};
  EXPECT_EQ(memory({}), MB(1024));
  EXPECT_EQ(memory(first), MB(1536));
  EXPECT_EQ(memory(second), MB(1280)) << "the device comes first, in JSON";
  Words both = first;
  both.insert(both.end(), second.begin(), second.end());
  EXPECT_EQ(memory(both), MB(1792));
  EXPECT_EQ(memory({"-object", "memory-backend-ram,id=m0,size=512M"}), MB(1024)) << "not plugged";
  EXPECT_EQ(memory({"-device", "pc-dimm,memdev=m0"}), MB(1024)) << "without a backend";
  EXPECT_EQ(memory({"-object", "memory-backend-ram,id=m0", "-device", "pc-dimm,memdev=m0"}), MB(1024));
  EXPECT_EQ(memory({"-object", "memory-backend-ram,id=m0,size=many", "-device", "pc-dimm,memdev=m0"}), MB(1024));
  EXPECT_EQ(memory({"-object", "iothread,id=m0,size=512M", "-device", "pc-dimm,memdev=m0"}), MB(1024));
  EXPECT_EQ(memory({"-object", "memory-backend-ram,id=m0,size=1048576", "-device", "pc-dimm,memdev=m0"}), MB(1025))
      << "a backend's size is in bytes";
  EXPECT_EQ(memory({"-object", "memory-backend-file,id=m0,size=512M", "-device", "nvdimm,memdev=m0"}), MB(1024))
      << "persistent memory is not counted";
}

TEST(QemuCmdline, MemoryThatAVirtioMemDeviceRequests) {
  const std::vector<std::string> words = {"qemu-kvm",
                                          "-m",
                                          "1G,maxmem=8G",
                                          "-object",
                                          "memory-backend-ram,id=m0,size=4G",
                                          "-device",
                                          "virtio-mem-pci,memdev=m0,requested-size=256M"};
  EXPECT_EQ(Parse(words).memory, MB(1280));
  EXPECT_TRUE(Parse(words).mapsOtherMemory) << "its whole backend is mapped";
}

TEST(QemuCmdline, DevicesThatMapOtherMemory) {
  for (const char *device : {"nvdimm,memdev=m", "virtio-pmem-pci,memdev=m", "ivshmem-plain,memdev=m", "qxl-vga"})
    EXPECT_TRUE(Parse({"qemu-kvm", "-device", device}).mapsOtherMemory) << device;
  for (const char *device : {"pc-dimm,memdev=m", "virtio-balloon-pci", "vfio-pci,host=1:0.0", ""})
    EXPECT_FALSE(Parse({"qemu-kvm", "-device", device}).mapsOtherMemory) << device;
}

TEST(QemuCmdline, MemoryThatTheMonitorMakesResident) {
  using Words = std::vector<std::string>;
  for (const Words &words :
       {Words{"-object", "memory-backend-ram,id=m,prealloc=on"},
        Words{"-object", R"({"qom-type":"memory-backend-memfd","prealloc":true})"}, Words{"-mem-prealloc", "-m", "1G"},
        Words{"-overcommit", "mem-lock=on"}, Words{"-incoming", "defer"}, Words{"-loadvm", "x"},
        Words{"-device", "vfio-pci,host=1:0.0"}}) {
    Words all = {"qemu-kvm"};
    all.insert(all.end(), words.begin(), words.end());
    EXPECT_TRUE(Parse(all).isPopulated) << words[0];
  }
  EXPECT_EQ(Parse({"qemu-kvm", "-mem-prealloc", "-m", "1G"}).memory, MB(1024)) << "an option without a value";
  EXPECT_FALSE(Parse({"qemu-kvm", "-m", "1G", "-object", "memory-backend-ram,id=m,prealloc=off", "-overcommit",
                      "mem-lock=off", "-device", "virtio-net-pci"})
                   .isPopulated);
}

TEST(QemuCmdline, WithoutASize) {
  const QemuOptions options = Parse({"qemu-system-x86_64", "-smp", "2"});
  EXPECT_EQ(options.memory, kAbsent);
  EXPECT_EQ(options.defaultMemory, MB(128));
  EXPECT_EQ(Parse({"qemu-kvm", "-m", "1G"}).defaultMemory, kAbsent);
  EXPECT_EQ(Parse({"qemu-kvm", "-m", "99999999999T"}).defaultMemory, kAbsent) << "a size that no machine has";
  EXPECT_EQ(Parse({"appliance"}).defaultMemory, kAbsent) << "not QEMU";
  EXPECT_EQ(Parse({"qemu-kvm", "-readconfig", "/etc/vm.cfg"}).defaultMemory, kAbsent) << "the file may give it";
  const std::vector<std::string> dimm = {"-object", "memory-backend-ram,id=m0,size=512M", "-device",
                                         "pc-dimm,memdev=m0"};
  std::vector<std::string> words = {"qemu-kvm", "-m", "slots=2,maxmem=2G"};
  words.insert(words.end(), dimm.begin(), dimm.end());
  EXPECT_EQ(Parse(words).memory, kAbsent);
  EXPECT_EQ(Parse(words).defaultMemory, MB(640));
  const std::string backend = R"({"qom-type":"memory-backend-ram","id":"pc.ram","size":4294967296})";
  EXPECT_EQ(Parse({"qemu-kvm", "-machine", "pc,memory-backend=pc.ram", "-object", backend}).memory, MB(4096));
  EXPECT_EQ(Parse({"qemu-kvm", "-M", "memory-backend=pc.ram,type=pc", "-object", backend, "-m", "1G"}).memory,
            MB(1024));
  EXPECT_EQ(Parse({"qemu-kvm", "-machine", "pc,memory-backend=x", "-object", backend}).memory, kAbsent);
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
