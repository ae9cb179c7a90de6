// The front end: parses the global options, opens the cache file, checks the definitions and runs a report.
#include <fcntl.h>
#include <getopt.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iterator>

#include "platkit/export.h"
#include "platkit/nodal.h"
#include "platkit/warning.h"
#include "src/main/usage.h"
#include "src/reports/reports.h"
#include "src/table/output.h"
#include "src/table/terminal_text.h"

namespace kestrel {
namespace {

struct GlobalOptions {
  const Report *report = nullptr;
  const char *cacheFile = nullptr;
  bool checkVersion = true;
};

// The action after the global options are parsed.
enum class Next { kGoOn, kExitSuccess, kExitFailure };

const Report *FindReport(const char *name) {
  const auto *end = std::end(kReports);
  const auto *found = std::find_if(kReports, end, [&](const Report *r) { return strcasecmp(r->name, name) == 0; });
  return found == end ? nullptr : *found;
}

// Parses the options up to and including -r. The other arguments belong to the report.
Next ParseGlobalOptions(int argc, char **argv, GlobalOptions &options) {
  // -f takes an argument, which is ignored. --force takes no argument. Scripts rely on both.
  static constexpr char kShortOptions[] = "f:c:r:h";
  static constexpr option kLongOptions[] = {
      {"force", no_argument, nullptr, 'f'},
      {"cache", required_argument, nullptr, 'c'},
      {"report", required_argument, nullptr, 'r'},
      {"help", no_argument, nullptr, 'h'},
      {nullptr, 0, nullptr, 0},
  };
  while (options.report == nullptr) {
    switch (getopt_long(argc, argv, kShortOptions, kLongOptions, nullptr)) {
      case -1: return Next::kGoOn;
      case 'f': options.checkVersion = false; break;
      case 'c': options.cacheFile = optarg; break;
      case 'h': PrintUsage(argv[0]); return Next::kExitSuccess;
      case 'r':
        options.report = FindReport(optarg);
        if (options.report != nullptr) break;
        Warning("Invalid report %s\n", WarningText(optarg).c_str());
        PrintUsage(argv[0]);
        return Next::kExitFailure;
      case '?':
        Warning("Unexpected or out-of-sequence argument detected\n");
        PrintUsage(argv[0]);
        return Next::kExitFailure;
      default: break;
    }
  }
  return Next::kGoOn;
}

bool UseCacheFile(const GlobalOptions &options) {
  if (options.cacheFile == nullptr) return true;
  if (options.report != nullptr && !options.report->readsSavedHosts) {
    Warning("DCPMM report does not work on cache file\n");
    return false;
  }
  const HVC_ReturnStatus status = NODAL_UseCache(options.cacheFile, NODAL_CACHE_SNAPSHOT);
  if (status != HVC_OK)
    Warning("Couldn't open cache file %s, error code: %u\n", WarningText(options.cacheFile).c_str(), status);
  return status == HVC_OK;
}

bool CheckDefinitions(const GlobalOptions &options) {
  char runningBuild[21] = "";
  const char *ownBuild = "";
  const HVC_ReturnStatus status = NODAL_CheckSig(runningBuild, sizeof runningBuild, &ownBuild);
  if (status == HVC_OK) return true;
  runningBuild[sizeof runningBuild - 1] = '\0';
  Warning("%#x: md5 signature mismatch with running hvcore built on %s. (vs %s for app sysinfo)\n", status,
          WarningText(runningBuild).c_str(), WarningText(ownBuild).c_str());
  if (options.checkVersion) Warning("Version check failed\n");
  return !options.checkVersion;
}

int Run(int argc, char **argv) {
  opterr = 0;
  GlobalOptions options;
  switch (ParseGlobalOptions(argc, argv, options)) {
    case Next::kExitSuccess: return EXIT_SUCCESS;
    case Next::kExitFailure: return EXIT_FAILURE;
    case Next::kGoOn: break;
  }
  if (!UseCacheFile(options) || !CheckDefinitions(options)) return EXIT_FAILURE;
  if (options.report == nullptr) {
    PrintUsage(argv[0]);
    return EXIT_SUCCESS;
  }
  return options.report->run(*options.report, argc, argv) == HVC_OK ? EXIT_SUCCESS : EXIT_FAILURE;
}

// Opens closed standard descriptors, so that no other file gets their numbers and receives reports or warnings. Using
// them still fails, because each is opened for the wrong direction.
void OccupyStandardDescriptors() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) == -1) static_cast<void>(open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

}  // namespace
}  // namespace kestrel

PLATKIT_EXPORT int main(int argc, char **argv) {
  kestrel::OccupyStandardDescriptors();
  // With the signals ignored, failed writes return EPIPE or EFBIG instead of ending the process.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  kestrel::OpenOutput();
  const int result = kestrel::Run(argc, argv);
  return kestrel::FinishOutput() ? result : EXIT_FAILURE;
}
