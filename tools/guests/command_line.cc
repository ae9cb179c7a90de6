#include "tools/guests/command_line.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <functional>
#include <sstream>
#include <system_error>

#include "platkit/linux/kernel/guests_file.h"
#include "platkit/version.h"

namespace guests {
namespace {

// Accepts only hypervisors of this host, because on another host, a PID means another process.
std::string CheckLocal(const std::string &uri) {
  const size_t colon = uri.find(':');
  const bool isLocal = colon != std::string::npos && uri.compare(colon, 4, ":///") == 0 && uri.find('+') > colon;
  return isLocal ? "" : "not a hypervisor of this host: " + uri;
}

// Checks the range of a number. --help does not show this check.
template <typename Number>
std::function<std::string(const std::string &)> CheckRange(Number lowest, Number highest) {
  return [lowest, highest](const std::string &text) -> std::string {
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (isNumber && value >= lowest && value <= highest) return "";
    return "not in the range from " + CLI::detail::to_string(lowest) + " to " + CLI::detail::to_string(highest) + ": " +
           text;
  };
}

std::string CheckNotEmpty(const std::string &value) { return value.empty() ? "the value is empty" : ""; }

void Declare(CLI::App &app, Options &options) {
  constexpr unsigned kMaxPeriod = platkit::kMaxGuestsPeriod / 1000;
  app.set_version_flag("--version", "nodal-guests " PLATKIT_VERSION);
  app.add_option("-o,--output", options.output, "Write the file that kestrel and nodal read, and print no table")
      ->type_name("FILE")
      ->check(CheckNotEmpty);
  app.add_flag("--json", options.asJson, "Print JSON instead of a table")->excludes("--output");
  app.add_option("--qmp", options.qmp, "Also ask the QEMU process with this QMP socket; repeatable")
      ->type_name("SOCKET")
      ->allow_extra_args(false)
      ->check(CheckNotEmpty);
  CLI::Option *connect = app.add_option("--connect", options.uri, "Ask the hypervisor with this libvirt URI")
                             ->type_name("URI")
                             ->check(CheckLocal)
                             ->capture_default_str();
  app.add_flag("--no-libvirt", options.withoutLibvirt, "Do not ask libvirt")->excludes(connect);
  app.add_option("--deadline", options.deadline, "Stop waiting for answers after this time")
      ->type_name("SECONDS")
      ->check(CheckRange(0.1, 60.0))
      ->capture_default_str();
  app.add_option("--period", options.period, "The time until the next run; after three periods, the file is obsolete")
      ->type_name("SECONDS")
      ->check(CheckRange(1u, kMaxPeriod))
      ->capture_default_str();
}

}  // namespace

Options ParseCommandLine(int argc, const char *const *argv) {
  Options options;
  CLI::App app("Asks the monitors of virtual machines for balloons, migrations, and the memory figures of guests.",
               "nodal-guests");
  Declare(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &request) {
    std::ostringstream text;
    app.exit(request, text, text);
    options.answer = text.str();
  } catch (const CLI::ParseError &error) {
    throw UsageError(std::string(error.what()) + " (see nodal-guests --help)");
  }
  if (options.answer.empty() && options.withoutLibvirt && options.qmp.empty())
    throw UsageError("--no-libvirt requires --qmp (see nodal-guests --help)");
  return options;
}

}  // namespace guests
