#include "platkit/linux/records/nvdimm_records.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <vector>

namespace platkit {
namespace {

// "nmem12", beside the bus' regions and namespaces.
bool ParseName(std::string_view name, uint32_t &number) {
  constexpr std::string_view kModule = "nmem";
  if (!name.starts_with(kModule)) return false;
  const std::string_view digits = name.substr(kModule.size());
  const std::errc error = std::from_chars(digits.data(), digits.data() + digits.size(), number).ec;
  return error == std::errc() && digits == std::to_string(number);
}

}  // namespace

HVC_ReturnStatus ListNvdimms(HostFiles &files, ParamList &list) {
  FolderReader folder(files, HostPath("sys/bus/nd/devices"));
  if (folder.status() == HVC_NOT_FOUND) return HVC_OK;
  std::vector<uint32_t> numbers;
  FolderReader::Entry entry;
  while (folder.Next(entry)) {
    uint32_t number = 0;
    if (ParseName(entry.name, number)) numbers.push_back(number);
  }
  if (folder.status() != HVC_OK) return folder.status();
  std::sort(numbers.begin(), numbers.end());
  list.Expect(numbers.size());
  for (const uint32_t number : numbers) {
    const HVC_ReturnStatus status = list.Add(number);
    if (status != HVC_OK) return status;
  }
  return HVC_OK;
}

}  // namespace platkit
