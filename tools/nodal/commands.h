// The commands of nodal. Each writes its result to standard output and throws a Failure if it cannot be had.
#ifndef NODAL_COMMANDS_H
#define NODAL_COMMANDS_H

#include <string>
#include <vector>

namespace nodal {

struct ListOptions {
  std::string path = "/";
  bool detailed = false;
};
void List(const ListOptions &options);

struct GetOptions {
  std::string path;
  bool descriptions = false;
  bool json = false;
  bool raw = false;
};
void Get(const GetOptions &options);

struct CaptureOptions {
  std::string snapshot;
  std::vector<std::string> only = {};  // paths; none for all
  bool anonymize = false;
  std::string key = {};  // of the pseudonyms; empty for one that nobody knows
  // What is read instead of the running host, if any: a snapshot, or a root folder.
  std::string cache = {};
  std::string root = {};
};
// Tells on standard error what it came to.
void Capture(const CaptureOptions &options);

struct MetricsOptions {
  std::string prefix = "kestrel_";
  std::vector<std::string> only;  // families and metrics; none for the standard ones
  std::string output;             // empty for standard output
};
void ShowMetrics(const MetricsOptions &options);

void Dump(const std::string &snapshot);

struct DiffOptions {
  std::string from;
  std::string to;
  std::vector<std::string> only;  // paths; none for all
  bool json = false;
};
// Whether the snapshots are equal, whatever their headers say.
bool Diff(const DiffOptions &options);

// `input` is a file, or "-" for standard input.
void Build(const std::string &input, const std::string &snapshot);

// Whether the snapshot is without a problem.
bool Verify(const std::string &snapshot);

}  // namespace nodal

#endif  // NODAL_COMMANDS_H
