#include "platkit/linux/records/pci_records.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

constexpr std::string_view kDevices = "sys/bus/pci/devices";

// What there can be at most of each part of an address.
constexpr PciAddress kLast = {UINT32_MAX, 255, 31, 7};

// Of any device, and of one whose space is extended.
constexpr int64_t kConfigSpace = 256;
constexpr int64_t kExtendedConfigSpace = 4096;

bool IsAddress(const PciAddress &address) {
  for (size_t part = 0; part < address.size(); ++part) {
    if (address[part] < 0 || address[part] > kLast[part]) return false;
  }
  return true;
}

// A device's name in the folder of devices, "0000:3a:0a.2", for an address that can be.
class DeviceName {
 public:
  explicit DeviceName(const PciAddress &address) {
    const auto part = [&address](size_t index) { return static_cast<unsigned>(address[index]); };
    std::snprintf(name_, sizeof name_, "%04x:%02x:%02x.%x", part(0), part(1), part(2), part(3));
  }

  std::string_view view() const { return name_; }

 private:
  char name_[32];
};

// Only the name that the kernel would give is one, so that no two names stand for the same device.
bool ParseName(std::string_view name, PciAddress &address) {
  constexpr std::string_view kSeparators = "::.";
  const char *at = name.data();
  const char *end = at + name.size();
  for (size_t part = 0; part < address.size(); ++part) {
    uint32_t number = 0;
    const auto [stop, error] = std::from_chars(at, end, number, 16);
    if (error != std::errc()) return false;
    address[part] = number;
    if (part == kSeparators.size()) break;
    if (stop == end || *stop != kSeparators[part]) return false;
    at = stop + 1;
  }
  return IsAddress(address) && name == DeviceName(address).view();
}

// "0x8086" and the end of the line.
bool ParseID(std::string_view text, uint16_t &id) {
  text = Trim(text);
  if (!text.starts_with("0x")) return false;
  const char *end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data() + 2, end, id, 16);
  return error == std::errc() && stop == end;
}

HVC_ReturnStatus ReadID(HostFiles &files, const HostPath &path, uint16_t &id) {
  char buffer[16];
  std::string_view text;
  const HVC_ReturnStatus status = files.ReadShort(path, buffer, text);
  if (status != HVC_OK) return status;
  return ParseID(text, id) ? HVC_OK : HVC_IO_ERROR;
}

HVC_ReturnStatus CheckRegister(const PciRegister &where) {
  if (!IsAddress(where.function)) return HVC_NOT_FOUND;
  if (where.size != 1 && where.size != 2 && where.size != 4) return HVC_BAD_PARAM;
  if (where.address < 0 || where.address >= kExtendedConfigSpace) return HVC_ADDRESS_TOO_HIGH;
  return where.address % where.size == 0 ? HVC_OK : HVC_UNALIGNED_ADDRESS;
}

HostPath ConfigPath(const PciAddress &function) {
  return HostPath(kDevices, "/", DeviceName(function).view(), "/config");
}

// Every device has the first 256 bytes: a file that ends before is what a user without privileges saved of it.
HVC_ReturnStatus StatusPastEnd(const PciRegister &where) {
  return where.address < kConfigSpace ? HVC_NO_PERMISSION : HVC_ADDRESS_TOO_HIGH;
}

}  // namespace

HVC_ReturnStatus PciDevices::FindDevices() {
  devices_.reset();
  std::vector<PciAddress> found;
  FolderReader folder(files_, HostPath(kDevices));
  FolderReader::Entry entry;
  while (folder.Next(entry)) {
    PciAddress address;
    if (ParseName(entry.name, address)) found.push_back(address);
  }
  // A host without the bus has no devices on it.
  if (folder.status() != HVC_OK && folder.status() != HVC_NOT_FOUND) return folder.status();
  std::sort(found.begin(), found.end());
  devices_ = std::move(found);
  return HVC_OK;
}

HVC_ReturnStatus PciDevices::List(Arguments above, ParamList &list) {
  if (above.empty() || !devices_) {
    const HVC_ReturnStatus status = FindDevices();
    if (status != HVC_OK) return status;
  }
  const size_t level = above.size();
  const auto isBelow = [above](const PciAddress &device) {
    return std::equal(above.begin(), above.end(), device.begin(),
                      [](const NODAL_Param &argument, int64_t part) { return argument.integer == part; });
  };
  int64_t last = -1;
  for (const PciAddress &device : *devices_) {
    if (!isBelow(device) || device[level] == last) continue;
    last = device[level];
    const HVC_ReturnStatus status = list.Add(last);
    if (status != HVC_OK) return status;
  }
  return last < 0 && level > 0 ? HVC_NOT_FOUND : HVC_OK;
}

HVC_ReturnStatus PciDevices::ReadHeader(const PciAddress &function, PciConfigHeaderRecord &record) {
  if (!IsAddress(function)) return HVC_NOT_FOUND;
  const DeviceName name(function);
  uint16_t vendor = 0;
  uint16_t device = 0;
  HVC_ReturnStatus status = ReadID(files_, HostPath(kDevices, "/", name.view(), "/vendor"), vendor);
  if (status == HVC_OK) status = ReadID(files_, HostPath(kDevices, "/", name.view(), "/device"), device);
  if (status != HVC_OK) return status;
  record.vendorID = vendor;
  record.deviceID = device;
  return HVC_OK;
}

HVC_ReturnStatus PciDevices::Read(const PciRegister &where, PciConfigRegRecord &record) {
  HVC_ReturnStatus status = CheckRegister(where);
  if (status != HVC_OK) return status;
  uint32_t value = 0;  // little-endian, as the register is
  status = files_.ReadAt(ConfigPath(where.function), static_cast<uint32_t>(where.address),
                         std::as_writable_bytes(std::span(&value, 1)).first(static_cast<size_t>(where.size)));
  if (status == HVC_OFFSET_PAST_END) return StatusPastEnd(where);
  // The file is as long as the space, but gives no more than the header to users without privileges.
  if (status == HVC_TRANSFER_TRUNCATED) return HVC_NO_PERMISSION;
  if (status == HVC_OK) record.value = value;
  return status;
}

HVC_ReturnStatus PciDevices::Write(const PciRegister &where, int64_t value) {
  HVC_ReturnStatus status = CheckRegister(where);
  if (status != HVC_OK) return status;
  if (value < 0 || value >> (8 * where.size) != 0) return HVC_OUT_OF_RANGE;
  const auto bytes = static_cast<uint32_t>(value);
  status = files_.WriteAt(ConfigPath(where.function), static_cast<uint32_t>(where.address),
                          std::as_bytes(std::span(&bytes, 1)).first(static_cast<size_t>(where.size)));
  return status == HVC_OFFSET_PAST_END ? StatusPastEnd(where) : status;
}

}  // namespace platkit
