// PCI functions, and reads and writes of their registers.
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

namespace fs = std::filesystem;
using IDs = std::vector<int64_t>;
const std::string kPciDevices = "sys/bus/pci/devices";
const std::string kConfig = kPciDevices + "/0000:3a:0a.2/config";
constexpr auto kRegister = nodes::hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr;

// A configuration space in which each byte depends on its address.
std::string Pattern(size_t size) {
  std::string bytes;
  for (size_t i = 0; i < size; ++i)
    bytes += static_cast<char>(i % 251);
  return bytes;
}

uint8_t ByteAt(size_t address) { return static_cast<uint8_t>(address % 251); }

// --- Lists of PCI devices

HVC_ReturnStatus ListPci(SavedHost &host, const IDs &above, IDs &below) {
  constexpr NodeRef<NoRecord> kLists[] = {nodes::hardware_pci_seg, nodes::hardware_pci_seg_bus,
                                          nodes::hardware_pci_seg_bus_slot, nodes::hardware_pci_seg_bus_slot_func};
  return host.ask().List(kLists[above.size()], Given(above), below);
}

IDs Pci(SavedHost &host, const IDs &above) {
  IDs below;
  EXPECT_EQ(ListPci(host, above, below), HVC_OK);
  return below;
}

TEST(PciLists, EachListHoldsWhatIsThere) {
  SavedHost host("persistent-memory.host");
  EXPECT_EQ(Pci(host, {}), (IDs{0, 0x10000}));
  EXPECT_EQ(Pci(host, {0}), (IDs{0, 0x3a, 0xae}));
  EXPECT_EQ(Pci(host, {0x10000}), IDs{1});
  EXPECT_EQ(Pci(host, {0, 0}), (IDs{0, 0x1f}));
  EXPECT_EQ(Pci(host, {0, 0x3a}), (IDs{8, 10}));
  EXPECT_EQ(Pci(host, {0, 0, 0x1f}), (IDs{0, 4}));
  EXPECT_EQ(Pci(host, {0, 0x3a, 10}), (IDs{2, 6}));
  EXPECT_EQ(Pci(host, {0x10000, 1, 0}), IDs{0});
}

TEST(PciLists, NothingIsFoundBelowAMissingParent) {
  SavedHost host("persistent-memory.host");
  for (const IDs &above : {IDs{1}, IDs{-1}, IDs{0x3a}, IDs{INT64_MAX}, IDs{0, 1}, IDs{0, -1}, IDs{0x10000, 0},
                           IDs{0, 0, 1}, IDs{0, 0, 10}, IDs{0, INT64_MIN, 0}}) {
    IDs below;
    EXPECT_EQ(ListPci(host, above, below), HVC_NOT_FOUND) << testing::PrintToString(above);
  }
}

TEST(PciLists, AHostWithoutTheBusHasNoSegments) {
  SavedHost host("v2.host");
  EXPECT_EQ(Pci(host, {}), IDs{});
  IDs below;
  EXPECT_EQ(ListPci(host, {0}, below), HVC_NOT_FOUND);
}

TEST(PciLists, OtherNamesAreNoDevices) {
  SavedHost host;
  for (const char *name : {"0000:00:00",
                           "0000:00:00.8",
                           "0000:00:20.0",
                           "0000:100:00.0",
                           "000:00:00.0",
                           "00000:00:00.0",
                           "0000:0:00.0",
                           "0000:00:0.0",
                           "0000:00:00.00",
                           "0000:00:0A.0",
                           "0000-00:00.0",
                           "0000:00.00.0",
                           "0000:00:00.0 ",
                           " 0000:00:00.0",
                           "0x00:00:00.0",
                           "-001:00:00.0",
                           "100000000:00:00.0",
                           "pci0000:00",
                           ":::",
                           "....",
                           "x"}) {
    host.MakeFolder(kPciDevices + "/" + name);
  }
  EXPECT_EQ(Pci(host, {}), IDs{});
  host.MakeFolder(kPciDevices + "/ffffffff:ff:1f.7");
  host.MakeLink(kPciDevices + "/00ab:0c:0d.1", "../../../devices/pci00ab:0c/00ab:0c:0d.1");
  EXPECT_EQ(Pci(host, {}), (IDs{0xab, 0xffffffff}));
  EXPECT_EQ(Pci(host, {0xab}), IDs{0xc});
  EXPECT_EQ(Pci(host, {0xffffffff, 0xff, 0x1f}), IDs{7});
}

TEST(PciLists, AFolderThatCannotBeRead) {
  SavedHost host("persistent-memory.host");
  host.Forbid(kPciDevices);
  OrdinaryUser user;
  IDs below;
  EXPECT_EQ(ListPci(host, {}, below), HVC_NO_PERMISSION);
  EXPECT_EQ(ListPci(host, {0}, below), HVC_NO_PERMISSION);
}

// Visits all functions, as a search for a device does, and returns their number.
int Search(SavedHost &host) {
  int functions = 0;
  for (const int64_t segment : Pci(host, {})) {
    for (const int64_t bus : Pci(host, {segment})) {
      for (const int64_t slot : Pci(host, {segment, bus})) {
        for (const int64_t function : Pci(host, {segment, bus, slot})) {
          host.ask().Record(nodes::hardware_pci_seg_bus_slot_func_pciConfigHeader, {segment, bus, slot, function});
          ++functions;
        }
      }
    }
  }
  return functions;
}

TEST(PciLists, ASearchReadsEachFileOnceAndTouchesNoDevice) {
  SavedHost host("persistent-memory.host");
  EXPECT_EQ(Search(host), 8);
  EXPECT_EQ(host.Opens(kPciDevices), 1);
  EXPECT_EQ(host.Opens(kConfig), 0);
  EXPECT_EQ(host.opened().size(), 1u + 2 * 8);
}

TEST(PciLists, ASecondSearchSeesChanges) {
  SavedHost host("persistent-memory.host");
  Search(host);
  host.Remove(kPciDevices + "/10000:01:00.0");
  host.MakeFolder(kPciDevices + "/0000:3a:0a.7");
  EXPECT_EQ(Pci(host, {}), IDs{0});
  EXPECT_EQ(Pci(host, {0, 0x3a, 10}), (IDs{2, 6, 7}));
}

// --- Headers

HVC_ReturnStatus Header(SavedHost &host, const IDs &function, PciConfigHeaderRecord &header) {
  return host.ask().Get(nodes::hardware_pci_seg_bus_slot_func_pciConfigHeader, Given(function), header);
}

TEST(PciHeader, Identifiers) {
  SavedHost host("persistent-memory.host");
  PciConfigHeaderRecord header;
  std::fill_n(reinterpret_cast<char *>(&header), sizeof header, '\xff');
  ASSERT_EQ(Header(host, {0, 0x3a, 10, 2}, header), HVC_OK);
  EXPECT_EQ(std::string(reinterpret_cast<char *>(&header), sizeof header),
            std::string("\x86\x80\x42\x20", 4) + std::string(160, '\0'));
  ASSERT_EQ(Header(host, {0x10000, 1, 0, 0}, header), HVC_OK);
  EXPECT_CELL(header.deviceID, 0x0a54);
}

TEST(PciHeader, AddressesWithoutAFunctionAreNotFound) {
  SavedHost host("persistent-memory.host");
  PciConfigHeaderRecord header;
  for (const IDs &function :
       {IDs{0, 0x3a, 10, 3}, IDs{1, 0x3a, 10, 2}, IDs{-1, 0, 0, 0}, IDs{0, -1, 0, 0}, IDs{0, 0, 0, 8}, IDs{0, 0, 32, 0},
        IDs{0, 256, 0, 0}, IDs{0x100000000, 0, 0, 0}, IDs{INT64_MAX, INT64_MAX, INT64_MAX, INT64_MAX}}) {
    EXPECT_EQ(Header(host, function, header), HVC_NOT_FOUND) << testing::PrintToString(function);
  }
}

TEST(PciHeader, EachFile) {
  SavedHost host("persistent-memory.host");
  const IDs function = {0, 0x3a, 10, 2};
  PciConfigHeaderRecord header;
  for (const char *file : {"vendor", "device"}) {
    const std::string path = kPciDevices + "/0000:3a:0a.2/" + file;
    const std::string good = host.Read(path);
    host.Write(path, "0xABcd");
    EXPECT_EQ(Header(host, function, header), HVC_OK) << path;
    EXPECT_CELL(path.ends_with("vendor") ? header.vendorID : header.deviceID, 0xabcd);
    for (const std::string &bad :
         {std::string(), std::string("\n"), std::string("8086\n"), std::string("0x\n"), std::string("0x8086x\n"),
          std::string("0x10000\n"), std::string("0x-1\n"), std::string(1000, '0'), std::string("0x80\00086", 7)}) {
      host.Write(path, bad);
      EXPECT_EQ(Header(host, function, header), HVC_IO_ERROR) << path << ": " << bad;
    }
    host.Write(path, good);
    host.Forbid(path);
    {
      OrdinaryUser user;
      EXPECT_EQ(Header(host, function, header), HVC_NO_PERMISSION) << path;
    }
    host.Remove(path);
    EXPECT_EQ(Header(host, function, header), HVC_NOT_FOUND) << path;
    host.Write(path, good);
  }
}

// --- Reading registers

HVC_ReturnStatus ReadRegister(SavedHost &host, int64_t size, int64_t address, uint64_t &value) {
  PciConfigRegRecord record = {.value = 0xffffffff};
  const HVC_ReturnStatus status = host.ask().Get(kRegister, {0, 0x3a, 10, 2, size, address}, record);
  value = record.value;
  return status;
}

HVC_ReturnStatus ReadStatus(SavedHost &host, int64_t size, int64_t address) {
  uint64_t value = 0;
  return ReadRegister(host, size, address, value);
}

TEST(PciRegister, ARegisterIsReadWithTheSizeAskedFor) {
  SavedHost host("persistent-memory.host");
  host.Write(kConfig, Pattern(4096));
  for (const int64_t size : {1, 2, 4}) {
    for (int64_t address = 0; address < 4096; address += size) {
      uint64_t expected = 0;
      for (int64_t i = size; i-- > 0;)
        expected = expected << 8 | ByteAt(static_cast<size_t>(address + i));
      uint64_t value = 0;
      ASSERT_EQ(ReadRegister(host, size, address, value), HVC_OK) << address;
      ASSERT_EQ(value, expected) << size << " bytes at " << address;
    }
  }
  EXPECT_TRUE(host.openedForWriting().empty());
}

TEST(PciRegister, ARegisterIsReadAgainEachTime) {
  SavedHost host("persistent-memory.host");
  uint64_t value = 0;
  EXPECT_EQ(ReadRegister(host, 4, 0, value), HVC_OK);
  EXPECT_EQ(value, 0x20428086u);
  host.Write(kConfig, "abcd");
  EXPECT_EQ(ReadRegister(host, 4, 0, value), HVC_OK);
  EXPECT_EQ(value, 0x64636261u);
  EXPECT_EQ(host.Opens(kConfig), 2);
  EXPECT_EQ(host.opened().size(), 2u) << "and nothing else";
}

TEST(PciRegister, InvalidRegisters) {
  SavedHost host("persistent-memory.host", Writes::kTaken);
  host.Write(kConfig, Pattern(4096));
  const auto expect = [&host](int64_t size, int64_t address, HVC_ReturnStatus status) {
    EXPECT_EQ(ReadStatus(host, size, address), status) << size << " bytes at " << address;
    EXPECT_EQ(host.ask().Set(kRegister, {0, 0x3a, 10, 2, size, address}, {0}), status) << size << ", " << address;
  };
  for (const int64_t size : {int64_t{0}, int64_t{3}, int64_t{5}, int64_t{8}, int64_t{-1}, int64_t{-4}, INT64_MAX,
                             INT64_MIN, int64_t{0x100000004}}) {
    expect(size, 0, HVC_BAD_PARAM);
  }
  for (const int64_t address : {1, 2, 3, 5, 0x102, 4093, 4094, 4095})
    expect(4, address, HVC_UNALIGNED_ADDRESS);
  for (const int64_t address : {1, 3, 4095})
    expect(2, address, HVC_UNALIGNED_ADDRESS);
  for (const int64_t size : {1, 2, 4}) {
    for (const int64_t address :
         {int64_t{4096}, int64_t{4097}, int64_t{-4}, int64_t{-1}, int64_t{0x100000000}, INT64_MAX, INT64_MIN}) {
      expect(size, address, HVC_ADDRESS_TOO_HIGH);
    }
  }
  EXPECT_TRUE(host.opened().empty()) << "no file is opened for them";
}

TEST(PciRegister, ASpaceThatIsNotExtendedEndsAt256) {
  SavedHost host("persistent-memory.host");
  host.Write(kConfig, Pattern(256));
  EXPECT_EQ(ReadStatus(host, 4, 252), HVC_OK);
  EXPECT_EQ(ReadStatus(host, 1, 255), HVC_OK);
  EXPECT_EQ(ReadStatus(host, 1, 256), HVC_ADDRESS_TOO_HIGH);
  EXPECT_EQ(ReadStatus(host, 4, 0x230), HVC_ADDRESS_TOO_HIGH);
}

TEST(PciRegister, OrdinaryUsersReadOnlyTheHeader) {
  SavedHost host("persistent-memory.host");
  EXPECT_EQ(ReadStatus(host, 4, 60), HVC_OK);
  EXPECT_EQ(ReadStatus(host, 4, 64), HVC_NO_PERMISSION);
  EXPECT_EQ(ReadStatus(host, 4, 0xd8), HVC_NO_PERMISSION);
  EXPECT_EQ(ReadStatus(host, 1, 255), HVC_NO_PERMISSION);
  host.Write(kConfig, Pattern(66));
  EXPECT_EQ(ReadStatus(host, 2, 64), HVC_OK);
  EXPECT_EQ(ReadStatus(host, 4, 64), HVC_NO_PERMISSION) << "half a register is none";
  host.Write(kConfig, "");
  EXPECT_EQ(ReadStatus(host, 1, 0), HVC_NO_PERMISSION);
}

TEST(PciRegister, AFileThatCannotBeRead) {
  SavedHost host("persistent-memory.host");
  host.Forbid(kConfig);
  {
    OrdinaryUser user;
    EXPECT_EQ(ReadStatus(host, 4, 0), HVC_NO_PERMISSION);
  }
  host.Remove(kConfig);
  EXPECT_EQ(ReadStatus(host, 4, 0), HVC_NOT_FOUND);
  host.MakeFolder(kConfig);
  EXPECT_EQ(ReadStatus(host, 4, 0), HVC_IO_ERROR);
  EXPECT_EQ(host.ask().Status(kRegister, {0, 0x3a, 10, 3, 4, 0}), HVC_NOT_FOUND);
  EXPECT_EQ(host.ask().Status(kRegister, {0, 0x3a, 10, 8, 4, 0}), HVC_NOT_FOUND);
  EXPECT_EQ(host.ask().Status(kRegister, {-1, 0x3a, 10, 2, 4, 0}), HVC_NOT_FOUND);
}

// --- Writing registers

class PciWrite : public testing::Test {
 protected:
  PciWrite() { host_.Write(kConfig, Pattern(4096)); }

  HVC_ReturnStatus Write(int64_t size, int64_t address, const IDs &input) {
    return host_.ask().Set(kRegister, {0, 0x3a, 10, 2, size, address}, Given(input));
  }

  // Every file of the host with its content.
  std::map<std::string, std::string> Contents() const {
    std::map<std::string, std::string> contents;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(host_.Path(""))) {
      const std::string path = fs::relative(entry.path(), host_.Path(""));
      contents[path] = entry.is_regular_file() ? host_.Read(path) : "";
    }
    return contents;
  }

  SavedHost host_{"persistent-memory.host", Writes::kTaken};
};

TEST_F(PciWrite, ADeviceThatADriverUsesIsBusy) {
  host_.MakeFolder("sys/bus/pci/devices/0000:3a:0a.2/driver");
  EXPECT_EQ(Write(4, 0xd8, {1}), HVC_BUSY);
  EXPECT_EQ(host_.Read(kConfig), Pattern(4096));
}

TEST_F(PciWrite, ExactlyTheBytesOfTheRegisterAreWritten) {
  const struct {
    int64_t size, address, value;
    std::string bytes;
  } writes[] = {
      {4, 0xd8, 0x004000e7, std::string("\xe7\x00\x40\x00", 4)},
      {4, 0xf4, 0x102, std::string("\x02\x01\x00\x00", 4)},
      {4, 0x230, 0xffffffff, "\xff\xff\xff\xff"},
      {4, 0, 0x04030201, "\x01\x02\x03\x04"},
      {4, 4092, 0x0a0b0c0d, "\x0d\x0c\x0b\x0a"},
      {2, 0x52, 0xbeef, "\xef\xbe"},
      {2, 4094, 0, std::string(2, '\0')},
      {1, 0x53, 0xff, "\xff"},
      {1, 4095, 0x5a, "\x5a"},
  };
  std::map<std::string, std::string> expected = Contents();
  for (const auto &write : writes) {
    ASSERT_EQ(Write(write.size, write.address, {write.value}), HVC_OK) << write.address;
    expected[kConfig].replace(static_cast<size_t>(write.address), write.bytes.size(), write.bytes);
    ASSERT_EQ(Contents(), expected) << write.address;
    uint64_t value = 0;
    ASSERT_EQ(ReadRegister(host_, write.size, write.address, value), HVC_OK);
    ASSERT_EQ(value, static_cast<uint64_t>(write.value));
  }
  EXPECT_EQ(host_.openedForWriting(), std::vector<std::string>(std::size(writes), kConfig));
}

TEST_F(PciWrite, AWriteReadsNothing) {
  ASSERT_EQ(Write(4, 0xd8, {1}), HVC_OK);
  EXPECT_EQ(host_.opened(), std::vector<std::string>{kConfig});
  EXPECT_EQ(host_.openedForWriting(), std::vector<std::string>{kConfig});
}

TEST_F(PciWrite, TheValueMustFitTheRegister) {
  const std::map<std::string, std::string> before = Contents();
  for (const int64_t size : {1, 2, 4}) {
    for (const int64_t value : {int64_t{1} << (8 * size), int64_t{-1}, INT64_MAX, INT64_MIN})
      EXPECT_EQ(Write(size, 0xd8, {value}), HVC_OUT_OF_RANGE) << size << ": " << value;
  }
  EXPECT_EQ(Write(4, 0xd8, {}), HVC_NODE_NOT_WRITABLE);
  EXPECT_EQ(Write(4, 0xd8, {1, 2}), HVC_NODE_NOT_WRITABLE);
  EXPECT_EQ(Contents(), before);
  EXPECT_TRUE(host_.opened().empty());
}

TEST_F(PciWrite, AFileIsNotExtended) {
  for (const size_t size : {0u, 64u, 66u, 255u, 256u, 4094u}) {
    host_.Write(kConfig, Pattern(size));
    const int64_t past = static_cast<int64_t>(size + 3) / 4 * 4;
    const HVC_ReturnStatus status = past < 256 ? HVC_NO_PERMISSION : HVC_ADDRESS_TOO_HIGH;
    if (past < 4096) {
      EXPECT_EQ(Write(4, past, {1}), status) << size;
    }
    if (size % 4 != 0) {
      EXPECT_EQ(Write(4, past - 4, {1}), past - 4 < 256 ? HVC_NO_PERMISSION : HVC_ADDRESS_TOO_HIGH) << size;
    }
    EXPECT_EQ(host_.Read(kConfig), Pattern(size));
  }
}

TEST_F(PciWrite, AFileIsNotCreated) {
  host_.Remove(kConfig);
  const std::map<std::string, std::string> before = Contents();
  EXPECT_EQ(Write(4, 0xd8, {1}), HVC_NOT_FOUND);
  EXPECT_EQ(host_.ask().Set(kRegister, {0, 1, 2, 3, 4, 0xd8}, {1}), HVC_NOT_FOUND);
  EXPECT_EQ(host_.ask().Set(kRegister, {0, 0, 0, -1, 4, 0xd8}, {1}), HVC_NOT_FOUND);
  EXPECT_EQ(Contents(), before);
}

TEST_F(PciWrite, AnOrdinaryUserMayNotWrite) {
  fs::permissions(host_.Path(kConfig), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  const std::map<std::string, std::string> before = Contents();
  {
    OrdinaryUser user;
    EXPECT_EQ(Write(4, 0xd8, {1}), HVC_NO_PERMISSION);
    EXPECT_EQ(ReadStatus(host_, 4, 0xd8), HVC_OK);
  }
  EXPECT_EQ(Contents(), before);
}

TEST_F(PciWrite, OnlyARegularFileIsWritten) {
  host_.Remove(kConfig);
  host_.Write("other", Pattern(4096));
  host_.MakeLink(kConfig, "/other");
  EXPECT_EQ(Write(4, 0xd8, {1}), HVC_IO_ERROR);
  EXPECT_EQ(host_.Read("other"), Pattern(4096));
  host_.Remove(kConfig);
  host_.MakeFolder(kConfig);
  EXPECT_EQ(Write(4, 0xd8, {1}), HVC_IO_ERROR);
  host_.Remove(kConfig);
  ASSERT_EQ(mkfifo(host_.Path(kConfig).c_str(), 0666), 0);
  EXPECT_EQ(Write(4, 0xd8, {1}), HVC_IO_ERROR);
}

TEST_F(PciWrite, ADeviceIsReachedThroughTheLinkOfItsBus) {
  host_.MakeFolder("sys/devices");
  fs::rename(host_.Path(kPciDevices + "/0000:3a:0a.2"), host_.Path("sys/devices/0000:3a:0a.2"));
  host_.MakeLink(kPciDevices + "/0000:3a:0a.2", "../../../devices/0000:3a:0a.2");
  EXPECT_EQ(Write(1, 0, {7}), HVC_OK);
  EXPECT_EQ(host_.Read("sys/devices/0000:3a:0a.2/config").front(), '\x07');
}

TEST_F(PciWrite, ASavedRootRefusesWritesByDefault) {
  SavedHost host("persistent-memory.host");
  EXPECT_EQ(host.ask().Set(kRegister, {0, 0x3a, 10, 2, 4, 0}, {1}), HVC_READ_ONLY);
  EXPECT_TRUE(host.opened().empty());
}

// Reads every node of the catalogue and tries to write it.
TEST_F(PciWrite, NoOtherNodeIsWritten) {
  const std::map<std::string, std::string> before = Contents();
  const auto text = [](const char *chars) {
    return NODAL_Param{.kind = ParamKind::kText, .length = static_cast<uint32_t>(strlen(chars)), .chars = chars};
  };
  const auto integer = [](int64_t value) {
    return NODAL_Param{.kind = ParamKind::kInt, .length = 0, .integer = value};
  };
  const NODAL_Param input[] = {integer(1)};
  for (const Node &node : Nodes()) {
    for (const IDs &values : {IDs{0, 0x3a, 10, 2, 4, 0}, IDs{0, 0, 0, 0, 1, 0}}) {
      std::vector<NODAL_Param> arguments;
      for (uint32_t i = 0; i < node.recordArguments(); ++i)
        arguments.push_back(node.arguments[i].kind == ParamKind::kInt ? integer(values[i]) : text("some"));
      if (node.isRecord()) {
        std::vector<std::byte> record(node.record->size);
        static_cast<void>(host_.source().Get(node, arguments, record));
      }
      if (node.id != kRegister.id()) {
        EXPECT_EQ(host_.source().Set(node, arguments, input), HVC_READ_ONLY) << node.name;
      }
      if (!node.isList) continue;
      ParamList *list = ParamList::Make();
      arguments.resize(node.listArguments());
      static_cast<void>(host_.source().List(node, arguments, *list));
      list->Destroy();
    }
  }
  EXPECT_GT(host_.opened().size(), 10u);
  EXPECT_TRUE(host_.openedForWriting().empty());
  EXPECT_EQ(Contents(), before);
}

// --- Through the C interface

class PciInterface : public testing::Test {
 protected:
  PciInterface() {
    for (const int64_t argument : {0, 0x3a, 10, 2, 4, 0xd8})
      EXPECT_EQ(NODAL_ParamListAddInt(arguments_, argument), HVC_OK);
    EXPECT_EQ(NODAL_ParamListAddInt(input_, 0x004000e7), HVC_OK);
    host_.Write(kConfig, Pattern(4096));
  }
  ~PciInterface() override {
    NODAL_ParamListDestroy(arguments_);
    NODAL_ParamListDestroy(input_);
    UseSource(nullptr);
  }

  HVC_ReturnStatus Use(uint32_t flags) { return NODAL_UseCache(host_.Path("").c_str(), flags); }
  HVC_ReturnStatus Set() {
    return NODAL_Set(NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr, arguments_, input_, nullptr, 0);
  }

  SavedHost host_{"persistent-memory.host"};
  NODAL_ParamList *arguments_ = NODAL_ParamListCreate(NODAL_LIST_INSTANCES, 1);
  NODAL_ParamList *input_ = NODAL_ParamListCreate(NODAL_LIST_INPUT, 1);
};

TEST_F(PciInterface, AWritableRootTakesWrites) {
  ASSERT_EQ(Use(NODAL_CACHE_ROOT_FOLDER | NODAL_CACHE_WRITABLE), HVC_OK);
  EXPECT_EQ(Set(), HVC_OK);
  EXPECT_EQ(host_.Read(kConfig), Pattern(4096).replace(0xd8, 4, std::string("\xe7\x00\x40\x00", 4)));
  PciConfigRegRecord record = {};
  EXPECT_EQ(
      NODAL_Get(NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr, arguments_, &record, sizeof record),
      HVC_OK);
  EXPECT_CELL(record.value, 0x004000e7);
  EXPECT_EQ(NODAL_ParamListAddInt(input_, 0), HVC_OK);
  EXPECT_EQ(Set(), HVC_NODE_NOT_WRITABLE);
  EXPECT_EQ(NODAL_ParamListRemoveLastParam(input_), HVC_OK);
  EXPECT_EQ(NODAL_ParamListRemoveLastParam(input_), HVC_OK);
  EXPECT_EQ(NODAL_ParamListAddString(input_, "1"), HVC_OK);
  EXPECT_EQ(Set(), HVC_NODE_NOT_WRITABLE);
}

TEST_F(PciInterface, AnotherRootDoesNot) {
  ASSERT_EQ(Use(NODAL_CACHE_ROOT_FOLDER), HVC_OK);
  EXPECT_EQ(Set(), HVC_READ_ONLY);
  EXPECT_EQ(host_.Read(kConfig), Pattern(4096));
}

TEST_F(PciInterface, ConflictingFlags) {
  for (const uint32_t flags : {NODAL_CACHE_SNAPSHOT | NODAL_CACHE_WRITABLE, 4u, 5u, 7u, UINT32_MAX})
    EXPECT_EQ(Use(flags), HVC_BAD_PARAM) << flags;
}

}  // namespace
}  // namespace platkit
