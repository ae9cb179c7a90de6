// nodal: reads the system-information tree, and makes, shows and verifies snapshots of it.
#include <signal.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <sstream>
#include <string>

#include "platkit/catalogue.h"
#include "platkit/nodal.h"
#include "platkit/version.h"
#include "tools/nodal/commands.h"
#include "tools/nodal/metric_table.h"
#include "tools/nodal/output.h"

namespace {

enum ExitStatus { kSuccess = 0, kFailure = 1, kDifferent = 1, kUsage = 2, kTrouble = 2 };

// What the command at work ends with when it fails.
ExitStatus failureStatus = kFailure;

struct Options {
  std::string cache;
  std::string root;
  nodal::ListOptions list;
  nodal::GetOptions get;
  nodal::MetricsOptions metrics;
  nodal::CaptureOptions capture;
  std::string input;
  nodal::DiffOptions diff;
  std::string snapshot;
};

void UseSourceOf(const Options &options) {
  const bool isCache = !options.cache.empty();
  if (!isCache && options.root.empty()) return;
  const std::string &path = isCache ? options.cache : options.root;
  const HVC_ReturnStatus status =
      NODAL_UseCache(path.c_str(), isCache ? NODAL_CACHE_SNAPSHOT : NODAL_CACHE_ROOT_FOLDER);
  if (status != HVC_OK) throw nodal::Failure(path, status);
}

nodal::CaptureOptions CaptureOptionsOf(const Options &options) {
  nodal::CaptureOptions capture = options.capture;
  capture.snapshot = options.snapshot;
  capture.cache = options.cache;
  capture.root = options.root;
  return capture;
}

std::string MetricFamiliesText() {
  std::string text = "Families (* only if asked for):";
  for (const nodal::FamilyDescription &family : nodal::MetricFamilies())
    text += "\n  " + std::string(family.name) + (family.isStandard ? "  " : "* ") + std::string(family.text);
  return text;
}

void Define(CLI::App &app, Options &options) {
  app.require_subcommand(1);
  app.fallthrough();
  app.set_version_flag("--version", "nodal " PLATKIT_VERSION ", definitions " + platkit::OwnDefinitions().build);
  CLI::Option *cache = app.add_option("--cache", options.cache,
                                      "Read a snapshot instead of the running host (ls, get, metrics, capture)");
  app.add_option("--root", options.root,
                 "Read the /proc and /sys saved in a folder instead of the running host (ls, get, metrics, capture)")
      ->excludes(cache);
  const auto isGiven = [](const std::string &value) { return value.empty() ? "the name is empty" : ""; };
  for (CLI::Option *source : app.get_options())
    source->check(isGiven);

  CLI::App *list = app.add_subcommand("ls", "List what lies below a path; what has something below it ends in '/'");
  list->add_option("path", options.list.path, "The path; without it, the whole tree's");
  list->add_flag("-l,--long", options.list.detailed, "Show kind, size (bytes or entries) and full path");

  CLI::App *get = app.add_subcommand("get", "Show a record or a list");
  get->add_option("path", options.get.path, "The path of a node, such as /sched/groups/0/groupName")->required();
  CLI::Option *descriptions = get->add_flag("-v,--verbose", options.get.descriptions, "Describe the fields");
  CLI::Option *json = get->add_flag("--json", options.get.json, "Show JSON");
  get->add_flag("--raw", options.get.raw, "Write the bytes as they are")->excludes(json)->excludes(descriptions);
  json->excludes(descriptions);

  CLI::App *metrics = app.add_subcommand("metrics", "Show the host's figures as metrics, in Prometheus' text format");
  metrics->add_option("--prefix", options.metrics.prefix, "What the names begin with")->capture_default_str();
  metrics
      ->add_option("--only", options.metrics.only,
                   "Show this family, or this metric by its name without the prefix; may be repeated")
      ->allow_extra_args(false);
  metrics->add_option("-o,--output", options.metrics.output, "The file to write, at once and whole")->check(isGiven);
  metrics->footer(MetricFamiliesText());

  CLI::App *capture = app.add_subcommand("capture", "Save the running host as a snapshot");
  capture->add_option("-o,--output", options.snapshot, "The snapshot to make")->required();
  capture->add_option("--only", options.capture.only, "Save what stands at and below this path; may be repeated")
      ->allow_extra_args(false);
  CLI::Option *anonymize = capture->add_flag("--anonymize", options.capture.anonymize,
                                             "Put pseudonyms in the place of names and UUIDs, the host's own included");
  capture->add_option("--key", options.capture.key, "Give the same pseudonyms as another capture with this key")
      ->needs(anonymize)
      ->check(isGiven);
  capture->footer(
      "Devices on the PCI bus are saved only if --only leads there (/hardware/pci), their registers never.\n"
      "What could not be read is saved as that: a report shows it as it would have on the host.");

  CLI::App *dump = app.add_subcommand("dump", "Show a whole snapshot as JSON");
  dump->add_option("snapshot", options.snapshot, "The snapshot")->required();

  CLI::App *diff = app.add_subcommand("diff", "Show what is different between two snapshots");
  diff->add_option("from", options.diff.from, "The first snapshot")->required();
  diff->add_option("to", options.diff.to, "The second snapshot")->required();
  diff->add_option("--only", options.diff.only, "Compare what stands at and below this path; may be repeated")
      ->allow_extra_args(false);
  diff->add_flag("--json", options.diff.json, "Show JSON");
  diff->footer("The exit status is 0 if they are equal, 1 if not, 2 on trouble. Host and time are not compared.");

  CLI::App *build = app.add_subcommand("build", "Make a snapshot from JSON, such as dump shows");
  build->add_option("json", options.input, "The JSON file; - for standard input")->required();
  build->add_option("-o,--output", options.snapshot, "The snapshot to make")->required();

  CLI::App *verify = app.add_subcommand("verify", "Check all of a snapshot: the file, and that its parts fit together");
  verify->add_option("snapshot", options.snapshot, "The snapshot")->required();

  list->callback([&options] { UseSourceOf(options), nodal::List(options.list); });
  get->callback([&options] { UseSourceOf(options), nodal::Get(options.get); });
  metrics->callback([&options] { UseSourceOf(options), nodal::ShowMetrics(options.metrics); });
  capture->callback([&options] { UseSourceOf(options), nodal::Capture(CaptureOptionsOf(options)); });
  dump->callback([&options] { nodal::Dump(options.snapshot); });
  diff->callback([&options] {
    failureStatus = kTrouble;
    if (!nodal::Diff(options.diff)) throw CLI::RuntimeError(kDifferent);
  });
  build->callback([&options] { nodal::Build(options.input, options.snapshot); });
  verify->callback([&options] {
    if (!nodal::Verify(options.snapshot)) throw CLI::RuntimeError(kFailure);
  });
}

int Run(int argc, char **argv) {
  Options options;
  CLI::App app("Reads the system-information tree of a hypervisor host, and makes, shows and verifies snapshots of it.",
               "nodal");
  Define(app, options);
  int status = kSuccess;
  try {
    app.parse(argc, argv);
  } catch (const CLI::RuntimeError &result) {
    status = result.get_exit_code();
  } catch (const CLI::Success &request) {
    std::ostringstream text;  // help or version
    app.exit(request, text, text);
    nodal::Print(text.str());
  } catch (const CLI::ParseError &error) {
    nodal::Complain(error.what());
    return kUsage;
  }
  nodal::FinishOutput();
  return status;
}

// A value of the JSON library takes memory to be destroyed: for want of that, nothing can be caught any more.
[[noreturn]] void EndWithoutMemory() {
  try {
    if (const std::exception_ptr failure = std::current_exception()) std::rethrow_exception(failure);
  } catch (const std::bad_alloc &) {
    std::fputs("nodal: out of memory\n", stderr);
    std::_Exit(failureStatus);
  } catch (...) {
  }
  std::abort();
}

}  // namespace

int main(int argc, char **argv) {
  nodal::HoldStandardDescriptors();
  // Writes to a closed pipe, and beyond a limit on file sizes, fail like any other, and are cleaned up after.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  std::set_terminate(EndWithoutMemory);
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc &) {
    nodal::Complain("out of memory");
  } catch (const std::exception &failure) {
    nodal::Complain(failure.what());
  }
  return failureStatus;
}
