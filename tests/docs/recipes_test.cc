// The recipes in docs/recipes.md print exactly what the document shows.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/docs/markdown.h"
#include "tests/support/process.h"
#include "tests/support/scratch.h"

namespace docs {

// For failure messages.
void PrintTo(const Section &recipe, std::ostream *stream) { *stream << recipe.name; }

namespace {

using testing_support::ReadFile;
using testing_support::ScratchDirectory;
using testing_support::WriteFile;

std::vector<Section> ReadRecipes() {
  std::vector<Section> sections = ReadSections(RECIPES_PAGE);
  sections.erase(sections.begin());
  return sections;
}

std::vector<std::string> Matches(const std::string &text, const std::string &pattern) {
  const std::regex regex(pattern);
  std::vector<std::string> matches;
  for (auto match = std::sregex_iterator(text.begin(), text.end(), regex); match != std::sregex_iterator(); ++match)
    matches.push_back((*match)[match->size() > 1 ? 1 : 0]);
  return matches;
}

bool IsInstalled(const std::string &program) {
  return std::system(("command -v " + program + " >/dev/null").c_str()) == 0;
}

// Runs shell scripts in a folder with the sample host.
class Workbench {
 public:
  Workbench() {
    std::filesystem::copy_file(SAMPLE_SNAPSHOT, folder_.File("two-vms.nodal"));
    // Links, because the path of a clone may contain a colon or a blank. A folder in PATH must not contain a colon, and
    // a program in ExecStart must not contain a blank.
    std::filesystem::create_directory_symlink(STANDINS, links_.File("standins"));
    std::filesystem::create_directory_symlink(std::filesystem::path(NODAL_PROGRAM).parent_path(), links_.File("bin"));
  }

  testing_support::Outcome Run(const std::string &script) const {
    const std::string path = links_.File("standins") + ":" + links_.File("bin") + ":" + std::getenv("PATH");
    return testing_support::Run({.program = "/bin/sh",
                                 .arguments = {"-c", script},
                                 .environment = {{"PATH", path}, {"NODAL", NODAL_PROGRAM}, {"SAMPLE", SAMPLE_SNAPSHOT}},
                                 .directory = folder_.path().string(),
                                 .errorsToOutput = true});
  }

  std::string File(const std::string &name) const { return folder_.File(name); }
  std::string Nodal() const { return links_.File("bin/nodal"); }

 private:
  const ScratchDirectory folder_;
  const ScratchDirectory links_;
};

class RecipeTest : public testing::TestWithParam<Section> {};

TEST_P(RecipeTest, DoesWhatItShows) {
  const Section &recipe = GetParam();
  for (const std::string &program : Matches(recipe.prose, "Needs `([a-z0-9]+)`")) {
    if (!IsInstalled(program)) GTEST_SKIP() << program << " is missing";
  }
  const Workbench workbench;
  for (size_t i = 0; i < recipe.blocks.size(); ++i) {
    if (recipe.blocks[i].language != "sh") continue;
    const bool isShown = i + 1 < recipe.blocks.size() && recipe.blocks[i + 1].language == "text";
    const testing_support::Outcome outcome = workbench.Run(recipe.blocks[i].text);
    EXPECT_EQ(outcome.exitStatus, 0) << recipe.blocks[i].text;
    EXPECT_EQ(outcome.output, isShown ? recipe.blocks[i + 1].text : "") << recipe.blocks[i].text;
  }
}

INSTANTIATE_TEST_SUITE_P(Recipes, RecipeTest, testing::ValuesIn(ReadRecipes()), [](const auto &recipe) {
  return std::regex_replace(recipe.param.name, std::regex("[^A-Za-z]"), "");
});

// The configuration files in the recipes, by name. The paragraph above a file contains its name.
std::map<std::string, std::string> FilesOfRecipes() {
  std::map<std::string, std::string> files;
  for (const Section &recipe : ReadRecipes()) {
    for (const Block &block : recipe.blocks) {
      if (block.language == "sh" || block.language == "text") continue;
      const std::vector<std::string> names = Matches(block.before, "in\\s+`([^`]+)`");
      EXPECT_FALSE(names.empty()) << block.text;
      if (!names.empty()) files[std::filesystem::path(names.back()).filename()] = block.text;
    }
  }
  return files;
}

TEST(RecipeFiles, AreTwo) {
  std::set<std::string> names;
  for (const auto &[name, text] : FilesOfRecipes())
    names.insert(name);
  EXPECT_EQ(names, (std::set<std::string>{"kestrel-alerts.yml", "kestrel-metrics"}));
}

// The units of the package, by name.
std::map<std::string, std::string> Units() {
  std::map<std::string, std::string> units;
  for (const char *name : {"kestrel-history.service", "kestrel-metrics.service", "kestrel-metrics.timer"})
    units[name] = ReadFile(std::string(UNITS) + "/" + name);
  return units;
}

// Replaces the installed program and the metrics folder with the test's own.
std::string InPlace(std::string text, const Workbench &workbench) {
  text = std::regex_replace(text, std::regex("/usr/bin/nodal"), workbench.Nodal());
  text = std::regex_replace(text, std::regex("ExecStart=nodal"), "ExecStart=" + workbench.Nodal());
  return std::regex_replace(text, std::regex("/run/kestrel/metrics"), workbench.File("metrics"));
}

TEST(RecipeFiles, ServiceAndCronWriteTheMetrics) {
  const std::vector<std::string> commands = {
      Matches(Units()["kestrel-metrics.service"], "ExecStart=(.*)").at(0),
      Matches(FilesOfRecipes()["kestrel-metrics"], "(?:\\* ){5}root (.*)").at(0)};
  for (const std::string &command : commands) {
    const Workbench workbench;
    std::filesystem::create_directory(workbench.File("metrics"));
    const testing_support::Outcome outcome = workbench.Run(InPlace(command, workbench));
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.output;
    EXPECT_TRUE(ReadFile(workbench.File("metrics/kestrel.prom")).ends_with("# EOF\n"));
  }
}

TEST(Units, AreValidAndConfined) {
  if (!IsInstalled("systemd-analyze")) GTEST_SKIP() << "systemd-analyze is missing";
  const Workbench workbench;
  for (const auto &[name, text] : Units())
    WriteFile(workbench.File(name), InPlace(text, workbench));
  for (const char *unit : {"kestrel-history.service", "kestrel-metrics.service", "kestrel-metrics.timer"}) {
    const testing_support::Outcome outcome = workbench.Run("systemd-analyze verify --man=no ./" + std::string(unit));
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.output;
    EXPECT_EQ(outcome.output.find(unit), std::string::npos) << outcome.output;
  }
  // The threshold is an exposure level from 0 to 100. Without the settings in its unit, a service would have 96.
  for (const char *service : {"kestrel-history.service", "kestrel-metrics.service"}) {
    const testing_support::Outcome security =
        workbench.Run("systemd-analyze security --offline=yes --threshold=25 ./" + std::string(service));
    EXPECT_EQ(security.exitStatus, 0) << security.output;
  }
}

TEST(RecipeFiles, AlertsFire) {
  if (!IsInstalled("promtool")) GTEST_SKIP() << "promtool is missing (package prometheus)";
  const Workbench workbench;
  WriteFile(workbench.File("kestrel-alerts.yml"), FilesOfRecipes()["kestrel-alerts.yml"]);
  std::filesystem::copy_file(ALERTS_TEST, workbench.File("alerts_test.yml"));
  const testing_support::Outcome check = workbench.Run("promtool check rules kestrel-alerts.yml");
  EXPECT_EQ(check.exitStatus, 0) << check.output;
  const testing_support::Outcome test = workbench.Run("promtool test rules alerts_test.yml");
  EXPECT_EQ(test.exitStatus, 0) << test.output;
}

// A rule on an unknown metric would never fire.
TEST(RecipeFiles, MetricsThatAreNamedExist) {
  const testing_support::Outcome metrics = Workbench().Run("nodal --cache two-vms.nodal metrics");
  const std::vector<std::string> named = Matches(ReadFile(RECIPES_PAGE), "kestrel_[a-z_]+");
  EXPECT_GT(named.size(), 3u);
  for (const std::string &name : named)
    EXPECT_NE(metrics.output.find("\n" + name + "{"), std::string::npos) << name;
}

}  // namespace
}  // namespace docs
