#include "platkit/linux/kernel/pci.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <string_view>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

constexpr std::string_view kPciDevices = "sys/bus/pci/devices";

constexpr PciAddress kMaxAddress = {UINT32_MAX, 255, 31, 7};

constexpr int64_t kConfigSpace = 256;           // size for any function
constexpr int64_t kExtendedConfigSpace = 4096;  // size for a PCI Express function

bool IsAddress(const PciAddress &address) {
  for (size_t part = 0; part < address.size(); ++part) {
    if (address[part] < 0 || address[part] > kMaxAddress[part]) return false;
  }
  return true;
}

// The name of a function's folder, such as "0000:3a:0a.2".
class FunctionName {
 public:
  // REQUIRES: IsAddress(address).
  explicit FunctionName(const PciAddress &address) {
    const auto part = [&address](size_t index) { return static_cast<unsigned>(address[index]); };
    std::snprintf(name_, sizeof name_, "%04x:%02x:%02x.%x", part(0), part(1), part(2), part(3));
  }

  std::string_view view() const { return name_; }

 private:
  char name_[32];
};

// Accepts only the kernel's form of a name, so that each function has one name.
bool ParseName(std::string_view name, PciAddress &address) {
  constexpr std::string_view kSeparators[] = {":", ":", ".", ""};
  TextScanner scanner(name);
  for (size_t part = 0; part < address.size(); ++part) {
    uint32_t number = 0;
    if (!scanner.TakeNumber(number, 16) || !scanner.Take(kSeparators[part])) return false;
    address[part] = number;
  }
  return IsAddress(address) && name == FunctionName(address).view();
}

HVC_ReturnStatus ReadId(HostFiles &files, const HostPath &path, uint16_t &id) {
  char buffer[16];
  std::string_view text;
  const HVC_ReturnStatus status = files.ReadShort(path, buffer, text);
  if (status != HVC_OK) return status;
  return ParseHexNumber(Trim(text), id) ? HVC_OK : HVC_IO_ERROR;
}

HVC_ReturnStatus CheckRegister(const PciRegister &where) {
  if (!IsAddress(where.function)) return HVC_NOT_FOUND;
  if (where.size != 1 && where.size != 2 && where.size != 4) return HVC_BAD_PARAM;
  if (where.address < 0 || where.address >= kExtendedConfigSpace) return HVC_ADDRESS_TOO_HIGH;
  return where.address % where.size == 0 ? HVC_OK : HVC_UNALIGNED_ADDRESS;
}

HostPath ConfigPath(const PciAddress &function) {
  return HostPath(kPciDevices, "/", FunctionName(function).view(), "/config");
}

// Every function has at least 256 bytes. If the file is shorter, it was saved by an ordinary user, who could read only
// the start.
HVC_ReturnStatus StatusPastEnd(const PciRegister &where) {
  return where.address < kConfigSpace ? HVC_NO_PERMISSION : HVC_ADDRESS_TOO_HIGH;
}

}  // namespace

HVC_ReturnStatus ListPciFunctions(HostFiles &files, std::vector<PciAddress> &functions) {
  functions.clear();
  FolderReader folder(files, HostPath(kPciDevices));
  for (FolderReader::Entry entry; folder.Next(entry);) {
    PciAddress address;
    if (ParseName(entry.name, address)) functions.push_back(address);
  }
  std::sort(functions.begin(), functions.end());
  return folder.status() == HVC_NOT_FOUND ? HVC_OK : folder.status();
}

HVC_ReturnStatus ReadPciIds(HostFiles &files, const PciAddress &function, PciIds &ids) {
  if (!IsAddress(function)) return HVC_NOT_FOUND;
  const FunctionName name(function);
  const HVC_ReturnStatus status = ReadId(files, HostPath(kPciDevices, "/", name.view(), "/vendor"), ids.vendor);
  return status == HVC_OK ? ReadId(files, HostPath(kPciDevices, "/", name.view(), "/device"), ids.device) : status;
}

HVC_ReturnStatus ReadPciRegister(HostFiles &files, const PciRegister &where, uint32_t &value) {
  HVC_ReturnStatus status = CheckRegister(where);
  if (status != HVC_OK) return status;
  value = 0;  // little-endian, like the register
  status = files.ReadAt(ConfigPath(where.function), static_cast<uint32_t>(where.address),
                        std::as_writable_bytes(std::span(&value, 1)).first(static_cast<size_t>(where.size)));
  if (status == HVC_OFFSET_PAST_END) return StatusPastEnd(where);
  // The file is as long as the configuration space, but ordinary users can read only the header.
  return status == HVC_TRANSFER_TRUNCATED ? HVC_NO_PERMISSION : status;
}

HVC_ReturnStatus WritePciRegister(HostFiles &files, const PciRegister &where, int64_t value) {
  HVC_ReturnStatus status = CheckRegister(where);
  if (status != HVC_OK) return status;
  if (value < 0 || value >> (8 * where.size) != 0) return HVC_OUT_OF_RANGE;
  if (files.Exists(HostPath(kPciDevices, "/", FunctionName(where.function).view(), "/driver"))) return HVC_BUSY;
  const auto bytes = static_cast<uint32_t>(value);
  status = files.WriteAt(ConfigPath(where.function), static_cast<uint32_t>(where.address),
                         std::as_bytes(std::span(&bytes, 1)).first(static_cast<size_t>(where.size)));
  return status == HVC_OFFSET_PAST_END ? StatusPastEnd(where) : status;
}

}  // namespace platkit
