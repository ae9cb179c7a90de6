// nodal-guests: asks the monitors of virtual machines, and prints their answers or writes them to a file for
// libplatkit.
//
// Reports never ask a monitor, because a monitor that does not answer would block the report.
#include <signal.h>

#include <exception>
#include <set>

#include "tools/guests/command_line.h"
#include "tools/guests/sample.h"
#include "tools/guests/text.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/output_file.h"

namespace guests {
namespace {

enum ExitStatus { kSuccess = 0, kFailure = 1, kUsageError = 2 };

void WriteGuestsFile(const Sample &sample, const Options &options) {
  platkit::GuestsFile file{.uptime = sample.uptime, .period = uint64_t{options.period} * 1000};
  for (const Guest &guest : sample.guests) {
    if (guest.hasAnswered && guest.figures.pid != 0) file.guests.push_back(guest.figures);
  }
  nodal::WriteFile(options.output, platkit::Readers::kEveryone, FormatGuestsFile(file));
}

void PrintGuests(const Sample &sample, const Options &options) {
  if (!options.asJson) {
    const auto now = std::chrono::system_clock::now();
    nodal::Print(Table(sample.guests, now));
    nodal::Print(Advice(sample.guests, now));
    return;
  }
  nlohmann::json list = nlohmann::json::array();
  for (const Guest &guest : sample.guests)
    list.push_back(ToJson(guest));
  nodal::Print(list.dump(2, ' ', true, nlohmann::json::error_handler_t::replace) + "\n");
}

ExitStatus Run(int argc, char **argv) {
  const Options options = ParseCommandLine(argc, argv);
  if (!options.answer.empty()) {
    nodal::Print(options.answer);
    return kSuccess;
  }
  const std::set<std::string> sockets(options.qmp.begin(), options.qmp.end());
  Monitors monitors{.qmp = {sockets.begin(), sockets.end()}};
  if (!options.withoutLibvirt) monitors.libvirt = options.uri;
  const auto deadline = std::chrono::duration<double>(options.deadline);
  const Sample sample = TakeSample(monitors, std::chrono::duration_cast<std::chrono::milliseconds>(deadline));
  for (const std::string &failure : sample.failures)
    nodal::Complain(failure);
  if (sample.isEmpty) return kFailure;
  if (options.output.empty()) {
    PrintGuests(sample, options);
  } else {
    WriteGuestsFile(sample, options);
  }
  return kSuccess;
}

}  // namespace
}  // namespace guests

int main(int argc, char **argv) {
  nodal::SetProgramName("nodal-guests");
  nodal::HoldStandardDescriptors();
  // A write to a closed pipe or beyond the file size limit then returns an error instead of ending the process.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  try {
    const guests::ExitStatus status = guests::Run(argc, argv);
    nodal::FinishOutput();
    return status;
  } catch (const guests::UsageError &error) {
    nodal::Complain(error.what());
    return guests::kUsageError;
  } catch (const std::exception &failure) {
    nodal::Complain(failure.what());
    return guests::kFailure;
  }
}
