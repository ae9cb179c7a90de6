// Runs reports in this process while allocations fail.
#ifndef TESTS_STRESS_SHORT_RUN_H
#define TESTS_STRESS_SHORT_RUN_H

#include <ostream>
#include <string>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "tests/linux/saved_host.h"
#include "tests/stress/allocations.h"
#include "tests/support/scratch.h"

namespace stress {

struct Outcome {
  int status = 0;
  std::string output;
  std::string errors;

  bool operator==(const Outcome &) const = default;
};

std::ostream &operator<<(std::ostream &stream, const Outcome &outcome);

// Runs kestrel over the current source of the process.
Outcome RunKestrel(const std::vector<std::string> &words, Shortage shortage = {});

// The number of allocations in the last run.
uint64_t AllocationsOfRun();

// A host for reports.
class Host {
 public:
  virtual ~Host() = default;

  // Makes the host the current source, without any cached values.
  virtual void Open() = 0;

  // Lets the cached values expire.
  virtual void Age() {}

  // The words of kestrel's command line that select the host.
  virtual std::vector<std::string> Words() const { return {}; }

  // Whether all runs of a report have the same output.
  virtual bool IsConstant() const { return true; }
};

// An archive of tests/linux/hosts, as a saved root folder, or as if it were the running host. Its clock stands still
// until Age().
class SavedRoot : public Host {
 public:
  SavedRoot(const std::string &archive, platkit::Reach reach) : files_(archive), reach_(reach) {}

  void Open() override;
  void Age() override { now_ += platkit::kFreshTime; }

  platkit::SavedHost &files() { return files_; }

 private:
  platkit::SavedHost files_;
  platkit::Reach reach_;
  platkit::Clock::Time now_;
};

// A snapshot.
class Snapshot : public Host {
 public:
  explicit Snapshot(std::string path) : path_(std::move(path)) {}

  void Open() override {}
  std::vector<std::string> Words() const override { return {"-c", path_}; }

 private:
  std::string path_;
};

// The running host.
class RunningHost : public Host {
 public:
  void Open() override;
  bool IsConstant() const override { return false; }
};

// Fails each allocation of a report, alone and together with all later ones. On a host that is not constant, fails only
// about a hundred allocations. The library must refuse the reads for which it lacks memory, and answer all others as
// with enough memory. Afterwards, the report must be right in the same process, before and after the cached values have
// expired. Nothing may leak.
void FailEachAllocation(Host &host, const std::string &report);

}  // namespace stress

#endif  // TESTS_STRESS_SHORT_RUN_H
