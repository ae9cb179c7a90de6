// Compares two valid snapshots, which the line "=" separates in the input. Both directions must give the same
// differences, and a snapshot must not differ from itself.
#include <nlohmann/json.hpp>

#include "tests/fuzz/captured_output.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/target.h"
#include "tests/fuzz/tree_form.h"
#include "tools/nodal/snapshot/diff.h"

namespace {

bool AreEqual(const std::string &from, const std::string &to) {
  bool areEqual = false;
  std::string changes, json;
  REQUIRE(fuzz::Succeeds([&] { areEqual = nodal::DiffSnapshots({.from = from, .to = to, .only = {}}); }, &changes));
  REQUIRE(changes.empty() == areEqual);
  REQUIRE(fuzz::IsFitForTerminal(changes));
  REQUIRE(fuzz::Succeeds([&] { nodal::DiffSnapshots({.from = from, .to = to, .only = {}, .json = true}); }, &json));
  REQUIRE(nlohmann::json::parse(json)["changes"].empty() == areEqual);
  return areEqual;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  constexpr std::string_view kBetween = "\n=\n";
  const std::string_view text = fuzz::Text(data, size);
  const size_t end = text.find(kBetween);
  if (end == std::string_view::npos) return 0;
  const std::string from = fuzz::ScratchFolder() + "/from.nodal";
  const std::string to = fuzz::ScratchFolder() + "/to.nodal";
  if (!fuzz::WriteTree(text.substr(0, end), from)) return 0;
  if (!fuzz::WriteTree(text.substr(end + kBetween.size()), to)) return 0;
  REQUIRE(AreEqual(from, from));
  REQUIRE(AreEqual(from, to) == AreEqual(to, from));
  return 0;
}
