// Runs nodal through a shell.
#ifndef TESTS_TOOLS_NODAL_PROGRAM_H
#define TESTS_TOOLS_NODAL_PROGRAM_H

#include <gtest/gtest.h>

#include <string>

#include "tests/platkit/scratch.h"
#include "tests/support/process.h"
#include "tests/support/text.h"

// Quoted for the shell.
inline const std::string kNodal = testing_support::Quoted(NODAL_PROGRAM);
inline const std::string kSample = testing_support::Quoted(SAMPLE_SNAPSHOT);

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

// `words` are the arguments as typed in a shell, including redirections.
inline Outcome Nodal(const std::string &words) {
  const std::string command = kNodal + " " + words;
  const testing_support::Outcome run = testing_support::Run({.program = "/bin/sh", .arguments = {"-c", command}});
  return {run.exitStatus, run.output, run.errors};
}

inline Outcome OnSample(const std::string &words) { return Nodal("--cache " + kSample + " " + words); }

// Builds a snapshot from the JSON text and returns its path.
inline std::string Built(const Scratch &scratch, const std::string &json, const std::string &name = "host.nodal") {
  const std::string source = scratch.Write(name + ".json", json);
  const Outcome outcome = Nodal("build " + source + " -o " + scratch.Path(name));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  return scratch.Path(name);
}

inline std::string HostOf(const std::string &nodes) { return R"({"format": 1, "nodes": {)" + nodes + "}}"; }

#endif  // TESTS_TOOLS_NODAL_PROGRAM_H
