// Runs kestrel over saved hosts and compares output, messages and exit status with the case files.
//
// With UPDATE_GOLDEN=1 in the environment, it rewrites the cases that differ. Review them before you keep them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tests/reports/golden_case.h"
#include "tests/support/process.h"
#include "tests/support/scratch.h"
#include "tests/support/snapshot.h"
#include "tests/support/text.h"

namespace reports {
namespace {

const std::filesystem::path kFolder = REPORTS_FOLDER;
const std::filesystem::path kSamples = SAMPLES_FOLDER;

// The host of this name in hosts/, or in samples/ if hosts/ has none.
std::filesystem::path HostFile(const std::string &name) {
  const std::filesystem::path own = kFolder / "hosts" / (name + ".json");
  return std::filesystem::exists(own) ? own : kSamples / (name + ".json");
}

// The case with the results of a new run.
GoldenCase RunAnew(const GoldenCase &golden) {
  const testing_support::ScratchDirectory scratch;
  testing_support::BuildSnapshot(HostFile(golden.host), scratch.File("snapshot"));
  std::vector<std::string> arguments = {"-c", scratch.File("snapshot")};
  for (const std::string &word : testing_support::Words(golden.arguments))
    arguments.push_back(word);
  const testing_support::Outcome outcome =
      testing_support::Run({.program = KESTREL_PROGRAM, .arguments = std::move(arguments)});

  GoldenCase anew = golden;
  anew.exitStatus = outcome.exitStatus;
  anew.output = testing_support::MaskTimes(outcome.output);
  anew.errors = outcome.errors;
  return anew;
}

class Report : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(Report, PrintsWhatItShould) {
  const GoldenCase golden = ReadCase(GetParam());
  const GoldenCase anew = RunAnew(golden);
  EXPECT_EQ(Written(anew), Written(golden)) << GetParam();
  if (HasFailure() && std::getenv("UPDATE_GOLDEN") != nullptr) {
    testing_support::WriteFile(GetParam(), Written(anew));
  }
}

std::string NameOf(const testing::TestParamInfo<std::filesystem::path> &info) {
  std::string name = info.param.stem().string();
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Cases, Report, testing::ValuesIn(FindCases(kFolder / "cases")), NameOf);

}  // namespace
}  // namespace reports
