#include "tests/support/standin_host.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <set>
#include <sstream>

#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace testing_support {
namespace {

std::string Joined(const std::vector<Instance> &instances, const char *separator) {
  std::string text;
  for (const Instance &instance : instances)
    text += (text.empty() ? "" : separator) + instance.written;
  return text;
}

std::string Hex(HVC_ReturnStatus status) {
  char text[16];
  std::snprintf(text, sizeof text, "%#x", status);
  return text;
}

bool StartsWith(const std::string &line, std::string_view start) { return line.compare(0, start.size(), start) == 0; }

// The list that a call created, such as "list4"; empty if it created none.
std::string MadeList(const std::string &call) {
  const size_t place = call.rfind(" list");
  return StartsWith(call, "NODAL_ParamListCreate") || StartsWith(call, "NODAL_GetInstanceListAlloc")
             ? (place == call.npos ? "" : call.substr(place + 1))
             : "";
}

}  // namespace

StandinHost &StandinHost::AllowShortRecords() {
  script_ += "short-records\n";
  return *this;
}

StandinHost &StandinHost::AddBytes(std::string_view node, const std::vector<Instance> &arguments,
                                   std::string_view bytes) {
  script_ += "record " + std::string(node) + " [" + Joined(arguments, ",") + "] ";
  size_t end = script_.size();
  script_.resize(end + 2 * bytes.size());
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    script_[end++] = "0123456789abcdef"[value >> 4];
    script_[end++] = "0123456789abcdef"[value & 15];
  }
  script_ += '\n';
  return *this;
}

StandinHost &StandinHost::AddList(std::string_view node, const std::vector<Instance> &arguments,
                                  const std::vector<Instance> &instances) {
  script_ += "list " + std::string(node) + " [" + Joined(arguments, ",") + "] " + Joined(instances, " ") + '\n';
  return *this;
}

StandinHost &StandinHost::Add(const Group &group) {
  GroupNameRecord name;
  SetText(name.name, group.name);
  GroupTagRecord tag;
  SetText(tag.tag, group.tag);
  AddRecord("sched_groups_groupName", {group.id}, name);
  AddRecord("sched_groups_groupTag", {group.id}, tag);
  AddRecord("sched_groups_parentGroupID", {group.id}, ParentGroupIDRecord{group.parent});
  AddRecord("sched_groups_groupFlags", {group.id}, GroupFlagsRecord{group.flags});
  AddRecord("sched_groups_memAllocationInKB", {group.id}, group.alloc);
  AddRecord("sched_groups_stats_capacity", {group.id}, group.capacity);
  AddRecord("sched_groups_stats_memoryStats", {group.id}, group.memory);
  return AddList("sched_groups_members_groups", {group.id}, group.children);
}

StandinHost &StandinHost::Add(const Unit &unit) {
  std::ostringstream lines;
  lines << "unit " << unit.segment << ' ' << unit.bus << ' ' << unit.slot << ' ' << unit.function << '\n';
  for (const Unit::Traffic &traffic : unit.traffic) {
    lines << "traffic " << traffic.event;
    for (const uint64_t amount : traffic.amounts)
      lines << ' ' << amount;
    lines << '\n';
  }
  script_ += lines.str();
  return *this;
}

StandinHost &StandinHost::SetClock(int64_t secondsSince1970) {
  script_ += "clock " + std::to_string(secondsSince1970) + '\n';
  return *this;
}

StandinHost &StandinHost::AddCache(std::string_view path) {
  script_ += "cache " + std::string(path) + '\n';
  return *this;
}

StandinHost &StandinHost::Fail(const Fault &fault) {
  script_ += "fail " + fault.operation + ' ' + fault.node + ' ' + std::to_string(fault.call) + ' ' + Hex(fault.status) +
             (fault.answers ? " answers\n" : "\n");
  return *this;
}

StandinHost &StandinHost::Signature(HVC_ReturnStatus status, std::string_view kernelBuild, std::string_view ownBuild) {
  std::ostringstream line;
  line << "signature " << Hex(status) << ' ' << std::quoted(kernelBuild) << ' ' << std::quoted(ownBuild) << '\n';
  script_ += line.str();
  return *this;
}

StandinRun RunKestrel(const StandinHost &host, const std::vector<std::string> &arguments, const RunOptions &options) {
  const ScratchDirectory scratch;
  const std::string script = scratch.File("script");
  const std::string log = scratch.File("log");
  WriteFile(script, host.script());

  Command command = {
      .program = options.program.empty() ? KESTREL_PROGRAM : options.program,
      .arguments = arguments,
      .environment = {{"STANDIN_SCRIPT", script}, {"STANDIN_LOG", log}},
      .directory = options.directory,
      .output = options.output,
      .errorsToOutput = options.errorsToOutput,
  };
  Preload(command, STANDIN_LIBRARY);
  if (!options.timeZone.empty()) command.environment.emplace_back("TZ", options.timeZone);

  StandinRun run;
  run.outcome = Run(command);
  run.outcome.output = MaskTimes(run.outcome.output);
  if (std::filesystem::exists(log)) run.calls = Lines(ReadFile(log));
  return run;
}

std::string ListErrors(const StandinRun &run) {
  std::string errors;
  std::set<std::string> living;
  for (const std::string &call : run.calls) {
    if (StartsWith(call, "misuse:")) errors += call + '\n';
    if (const std::string made = MadeList(call); !made.empty()) living.insert(made);
    if (StartsWith(call, "NODAL_ParamListDestroy(")) {
      const size_t start = call.find('(') + 1;
      living.erase(call.substr(start, call.size() - start - 1));
    }
  }
  for (const std::string &list : living)
    errors += list + " is never destroyed\n";
  return errors;
}

unsigned FallibleCalls(const StandinRun &run) {
  return static_cast<unsigned>(std::count_if(run.calls.begin(), run.calls.end(), [](const std::string &call) {
    return !StartsWith(call, "NODAL_ParamListDestroy") && !StartsWith(call, "NODAL_ParamListUsedCount") &&
           !StartsWith(call, "NODAL_ParamGetInt") && !StartsWith(call, "sleep");
  }));
}

std::ostream &operator<<(std::ostream &stream, const StandinRun &run) {
  stream << run.outcome << "--- calls\n";
  for (const std::string &call : run.calls)
    stream << call << '\n';
  return stream;
}

}  // namespace testing_support
