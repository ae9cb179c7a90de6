// The sample host has every node and a value in every field.
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "platkit/path.h"
#include "tests/tools/nodal/program.h"

namespace {

using platkit::Field;
using platkit::FieldType;

nlohmann::json SampleNodes() { return nlohmann::json::parse(Nodal("dump " + kSample).out)["nodes"]; }

TEST(Sample, EveryNodeOccurs) {
  std::set<std::pair<const platkit::Node *, bool>> met;
  const nlohmann::json nodes = SampleNodes();
  for (const auto &entry : nodes.items()) {
    const platkit::PathTarget target = platkit::ParsePath(entry.key());
    ASSERT_NE(target.node, nullptr) << entry.key();
    met.insert({target.node, target.asRecord});
  }
  for (const platkit::Node &node : platkit::Nodes()) {
    EXPECT_EQ(met.contains({&node, false}), node.isList) << "list " << node.path;
    EXPECT_EQ(met.contains({&node, true}), node.isRecord()) << "record " << node.path;
  }
}

TEST(Sample, EveryFieldOfEveryNodeHasAFigure) {
  std::map<const platkit::Node *, std::set<std::string>> met;
  const nlohmann::json nodes = SampleNodes();
  for (const auto &entry : nodes.items()) {
    const platkit::PathTarget target = platkit::ParsePath(entry.key());
    if (!target.asRecord) continue;
    for (const auto &field : entry.value().items()) {
      const bool isEmpty = field.value() == 0 || field.value() == nlohmann::json(std::string()) ||
                           field.value() == nlohmann::json::array();
      if (!isEmpty) met[target.node].insert(field.key());
    }
  }
  for (const platkit::Node &node : platkit::Nodes()) {
    if (!node.isRecord()) continue;
    for (const Field &field : node.record->fields) {
      if (field.type == FieldType::kGap) continue;
      EXPECT_TRUE(met[&node].contains(std::string(field.name))) << node.path << " " << field.name;
    }
  }
}

TEST(Sample, FitsTogether) {
  const Outcome outcome = Nodal("verify " + kSample);
  EXPECT_EQ(outcome.status, 0) << outcome.out;
}

TEST(Sample, BuildsToTheSameBytes) {
  const Scratch scratch;
  EXPECT_TRUE(Contents(Built(scratch, Contents(SAMPLE_JSON))) == Contents(SAMPLE_SNAPSHOT));
}

}  // namespace
