#include "platkit/linux/kernel/libvirt_status.h"

#include <string>

#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/files/xml_scanner.h"
#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/kernel/process_status.h"

namespace platkit {
namespace {

// A file has about 10 KB; each device adds less than 1 KB.
constexpr size_t kMaxStatusFile = size_t{1} << 20;
constexpr size_t kMaxName = 200;

// An amount of an element such as <memory unit='KiB'>262144</memory>. libvirt always writes this unit.
Figure AmountIn(const XmlScanner &xml) {
  return xml.Attribute("unit") == "KiB" ? ParseFigure(xml.text()) : Figure::Unreadable();
}

int64_t PidIn(std::string_view text) {
  uint64_t pid = 0;
  return ParseNumber(text, pid) && pid <= static_cast<uint64_t>(kMaxPid) ? static_cast<int64_t>(pid) : 0;
}

Figure JobIn(const XmlScanner &xml) {
  const std::string_view job = xml.Attribute("async");
  return Figure(job.empty() || job == "none" ? 0 : 1);
}

// Without the attribute `period`, QEMU does not query the balloon driver.
void TakeBalloon(const XmlScanner &xml, LibvirtStatus &status) {
  const std::string_view model = xml.Attribute("model");
  if (model.empty()) return;
  status.hasBalloon = Figure(model == "none" ? 0 : 1);
  status.pollingSeconds = Figure(0);
}

void TakeElementOfDomain(std::string_view path, const XmlScanner &xml, LibvirtStatus &status) {
  if (path == "/memory") status.memory = AmountIn(xml);
  if (path == "/currentMemory") status.currentMemory = AmountIn(xml);
  if (path == "/devices/memballoon") TakeBalloon(xml, status);
  if (path == "/devices/memballoon/stats") status.pollingSeconds = ParseFigure(xml.Attribute("period"));
}

// Whether a guest can have this name. libvirt names its files after the guests, so it accepts only names of files.
bool IsFileName(std::string_view name) {
  return !name.empty() && name.size() <= kMaxName && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

}  // namespace

LibvirtStatus ParseLibvirtStatus(std::string_view text) {
  constexpr std::string_view kStatus = "/domstatus";
  constexpr std::string_view kDomain = "/domain";
  LibvirtStatus status;
  XmlScanner xml(text);
  while (xml.Next()) {
    std::string_view path = xml.path();
    if (path == kStatus) status.pid = PidIn(xml.Attribute("pid"));
    const bool isStatus = path.starts_with(kStatus);
    if (isStatus) path.remove_prefix(kStatus.size());
    if (isStatus && path == "/job") status.hasJob = JobIn(xml);
    // libvirt writes the element of a job before the domain's. If there is no job, the element is missing.
    if (isStatus && path == kDomain) status.hasJob = status.hasJob.IfAbsent(Figure(0));
    if (path.starts_with(kDomain)) TakeElementOfDomain(path.substr(kDomain.size()), xml, status);
  }
  return status;
}

bool HasLibvirtStatus(HostFiles &files) { return files.Exists(HostPath("run/libvirt/qemu")); }

LibvirtStatus ReadLibvirtStatus(HostFiles &files, std::string_view guestName) {
  std::string text;
  if (!IsFileName(guestName) ||
      files.ReadTrusted(HostPath("run/libvirt/qemu/", guestName, ".xml"), kMaxStatusFile, text) != HVC_OK) {
    return {};
  }
  return ParseLibvirtStatus(text);
}

}  // namespace platkit
