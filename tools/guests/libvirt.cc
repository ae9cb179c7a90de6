#include "tools/guests/libvirt.h"

#include <libvirt/libvirt.h>
#include <libvirt/virterror.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <vector>

#include "platkit/linux/kernel/libvirt_status.h"
#include "platkit/linux/kernel/process_stat.h"
#include "tools/guests/guest.h"

namespace guests {
namespace {

using nlohmann::json;

// libvirt serves at most five calls of one client at the same time.
constexpr size_t kCallsAtOnce = 5;

struct CloseConnection {
  void operator()(virConnectPtr connection) const { virConnectClose(connection); }
};
using Connection = std::unique_ptr<virConnect, CloseConnection>;

struct FreeDomain {
  void operator()(virDomainPtr domain) const { virDomainFree(domain); }
};
using Domain = std::unique_ptr<virDomain, FreeDomain>;

struct FreeStats {
  void operator()(virDomainStatsRecordPtr *records) const { virDomainStatsRecordListFree(records); }
};
using Stats = std::unique_ptr<virDomainStatsRecordPtr[], FreeStats>;

std::string LastError() {
  const char *message = virGetLastErrorMessage();
  return message == nullptr ? "unknown error" : message;
}

Connection Connect(const std::string &uri) {
  // Without this function, libvirt prints its errors.
  virSetErrorFunc(nullptr, [](void *, virErrorPtr) {});
  Connection connection(virConnectOpenReadOnly(uri.c_str()));
  if (connection == nullptr) throw std::runtime_error(LastError());
  return connection;
}

std::vector<Domain> ListDomains(virConnectPtr connection) {
  virDomainPtr *list = nullptr;
  const int count = virConnectListAllDomains(connection, &list, VIR_CONNECT_LIST_DOMAINS_ACTIVE);
  if (count < 0) throw std::runtime_error(LastError());
  std::vector<Domain> domains(static_cast<size_t>(count));
  for (size_t i = 0; i < domains.size(); ++i)
    domains[i].reset(list[i]);
  std::free(list);
  return domains;
}

// Reads the figures that libvirt knows without asking a monitor. Only root can read libvirt's status files; other users
// do not get the PID.
class Host {
 public:
  explicit Host(bool isSystem) : isSystem_(isSystem) {}

  platkit::LibvirtStatus StatusOf(virDomainPtr domain) {
    platkit::LibvirtStatus status;
    if (isSystem_) status = ReadLibvirtStatus(files_, virDomainGetName(domain));
    if (!status.hasBalloon.isAbsent()) return status;
    const std::unique_ptr<char, decltype(&std::free)> text(virDomainGetXMLDesc(domain, 0), std::free);
    return text == nullptr ? status : platkit::ParseLibvirtStatus(text.get());
  }

  Figure StartOf(int64_t pid) { return ReadStartTicks(files_, pid); }

 private:
  bool isSystem_;
  platkit::HostFiles files_{"/", platkit::Reach::kHost};
};

Guest GuestOf(virDomainPtr domain, Host &host) {
  Guest guest{.monitor = "libvirt", .name = virDomainGetName(domain)};
  char uuid[VIR_UUID_STRING_BUFLEN] = "";
  if (virDomainGetUUIDString(domain, uuid) == 0) guest.id = uuid;
  const platkit::LibvirtStatus status = host.StatusOf(domain);
  guest.hasBalloon = status.hasBalloon;
  guest.pollingSeconds = status.pollingSeconds;
  TakeBalloon(guest, status.memory, status.currentMemory);
  if (status.hasJob == Figure(0)) guest.figures[GuestFigure::kWritten] = Figure(0);
  const Figure start = status.pid == 0 ? Figure::Unreadable() : host.StartOf(status.pid);
  if (start != Figure::Unreadable()) {
    guest.figures.pid = status.pid;
    guest.figures.startTicks = start.Cell(0);
  }
  return guest;
}

void TakeParameter(Guest &guest, const virTypedParameter &parameter) {
  struct KnownParameter {
    std::string_view name;
    GuestFigure figure;
    void (*take)(Guest &, GuestFigure, uint64_t);
  };
  static constexpr KnownParameter kKnown[] = {
      {"balloon.available", GuestFigure::kTotal, TakeKB},
      {"balloon.unused", GuestFigure::kFree, TakeKB},
      {"balloon.usable", GuestFigure::kUsable, TakeKB},
      {"balloon.disk_caches", GuestFigure::kDiskCaches, TakeKB},
      {"balloon.swap_in", GuestFigure::kSwappedIn, TakeKB},
      {"balloon.swap_out", GuestFigure::kSwappedOut, TakeKB},
      {"balloon.major_fault", GuestFigure::kMajorFaults, TakeCount},
      {"balloon.hugetlb_pgalloc", GuestFigure::kHugePagesAllocated, TakeCount},
      {"balloon.hugetlb_pgfail", GuestFigure::kHugePagesRefused, TakeCount},
  };
  if (parameter.type != VIR_TYPED_PARAM_ULLONG) return;
  const std::string_view name = parameter.field;
  if (name == "balloon.last-update") guest.lastUpdate = Figure(parameter.value.ul);
  const auto *known = std::ranges::find(kKnown, name, &KnownParameter::name);
  if (known != std::end(kKnown)) known->take(guest, known->figure, parameter.value.ul);
}

Figure ParameterOf(const virDomainStatsRecord &stats, const char *name) {
  unsigned long long value = 0;
  return virTypedParamsGetULLong(stats.params, stats.nparams, name, &value) == 1 ? Figure(value) : Figure();
}

void ReportStats(const virDomainStatsRecord &stats, Host &host, const Report &report) {
  Guest guest = GuestOf(stats.dom, host);
  for (int i = 0; i < stats.nparams; ++i)
    TakeParameter(guest, stats.params[i]);
  TakeBalloon(guest, ParameterOf(stats, "balloon.maximum"), ParameterOf(stats, "balloon.current"));
  // While another call uses the monitor, libvirt omits the monitor's figures without reporting an error.
  guest.hasAnswered = guest.hasBalloon == Figure(0) || !guest.lastUpdate.isAbsent();
  report.Line(ToJson(guest).dump(-1, ' ', false, json::error_handler_t::replace));
}

// Reports the progress of a guest that is being migrated or saved. libvirt asks its monitor.
void ReportJob(virDomainPtr domain, Host &host, const Report &report) {
  int type = 0;
  int count = 0;
  virTypedParameterPtr parameters = nullptr;
  if (virDomainGetJobStats(domain, &type, &parameters, &count, 0) != 0) return;
  Guest guest = GuestOf(domain, host);
  const auto take = [&](const char *name, GuestFigure figure, auto takeValue) {
    unsigned long long value = 0;
    if (virTypedParamsGetULLong(parameters, count, name, &value) == 1) takeValue(guest, figure, value);
  };
  take(VIR_DOMAIN_JOB_MEMORY_PROCESSED, GuestFigure::kWritten, TakeBytes);
  take(VIR_DOMAIN_JOB_MEMORY_REMAINING, GuestFigure::kLeftToWrite, TakeBytes);
  take(VIR_DOMAIN_JOB_MEMORY_DIRTY_RATE, GuestFigure::kDirtyRate, TakeCount);
  virTypedParamsFree(parameters, count);
  report.Line(ToJson(guest).dump(-1, ' ', false, json::error_handler_t::replace));
}

void ReportJobOfAny(virDomainPtr domain, Host &host, const Report &report) {
  if (host.StatusOf(domain).hasJob == Figure(1)) ReportJob(domain, host, report);
}

constexpr unsigned kFlags = VIR_CONNECT_GET_ALL_DOMAINS_STATS_NOWAIT;

void ReportOne(virDomainPtr domain, Host &host, const Report &report) {
  virDomainPtr list[] = {domain, nullptr};
  virDomainStatsRecordPtr *records = nullptr;
  const int count = virDomainListGetStats(list, VIR_DOMAIN_STATS_BALLOON, &records, kFlags);
  const Stats stats(records);
  for (int i = 0; i < count; ++i)
    ReportStats(*stats[static_cast<size_t>(i)], host, report);
  ReportJobOfAny(domain, host, report);
}

using Ask = void (*)(virConnectPtr, const std::vector<Domain> &, bool isSystem, const Report &);

// The PID of a guest is read before its monitor is asked. If the monitor then answers, the process still existed.
void AskOf(const std::string &uri, const Report &report, Ask ask) {
  try {
    const Connection connection = Connect(uri);
    const std::vector<Domain> domains = ListDomains(connection.get());
    const bool isSystem = uri == kSystemUri;
    Host host(isSystem);
    for (const Domain &domain : domains)
      report.Line(ToJson(GuestOf(domain.get(), host)).dump(-1, ' ', false, json::error_handler_t::replace));
    ask(connection.get(), domains, isSystem, report);
  } catch (const std::exception &failure) {
    report.Line(json{{"error", failure.what()}}.dump(-1, ' ', false, json::error_handler_t::replace));
  }
}

}  // namespace

void AskLibvirtAtOnce(const std::string &uri, const Report &report) {
  AskOf(uri, report, [](virConnectPtr connection, const auto &domains, bool isSystem, const Report &to) {
    virDomainStatsRecordPtr *records = nullptr;
    const unsigned flags = kFlags | VIR_CONNECT_GET_ALL_DOMAINS_STATS_ACTIVE;
    const int count = virConnectGetAllDomainStats(connection, VIR_DOMAIN_STATS_BALLOON, &records, flags);
    if (count < 0) throw std::runtime_error(LastError());
    const Stats stats(records);
    Host host(isSystem);
    for (int i = 0; i < count; ++i)
      ReportStats(*stats[static_cast<size_t>(i)], host, to);
    for (const Domain &domain : domains)
      ReportJobOfAny(domain.get(), host, to);
  });
}

void AskLibvirtOneByOne(const std::string &uri, const Report &report) {
  AskOf(uri, report, [](virConnectPtr, const std::vector<Domain> &domains, bool isSystem, const Report &to) {
    std::atomic<size_t> next = 0;
    std::vector<std::jthread> threads;
    for (size_t i = 0; i < std::min(kCallsAtOnce, domains.size()); ++i) {
      threads.emplace_back([&] {
        Host host(isSystem);
        for (size_t mine = next++; mine < domains.size(); mine = next++)
          ReportOne(domains[mine].get(), host, to);
      });
    }
  });
}

}  // namespace guests
