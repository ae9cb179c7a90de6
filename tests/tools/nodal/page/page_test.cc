#include "tests/tools/nodal/page/page_file.h"

#include <sodium.h>
#include <sys/stat.h>

#include <algorithm>

#include "tests/support/scratch.h"
#include "tests/tools/nodal/history/recorded.h"
#include "tests/tools/nodal/program.h"

namespace {

using Json = nlohmann::json;

std::string PageOf(const Scratch &scratch, const std::string &words) {
  const Outcome outcome = Nodal("page -o " + scratch.Path("page.html") + " " + words);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "");
  return testing_support::ReadFile(scratch.Path("page.html"));
}

std::string HashSource(const std::string &text) {
  unsigned char digest[crypto_hash_sha256_BYTES];
  crypto_hash_sha256(digest, reinterpret_cast<const unsigned char *>(text.data()), text.size());
  char encoded[sodium_base64_ENCODED_LEN(sizeof digest, sodium_base64_VARIANT_ORIGINAL)];
  sodium_bin2base64(encoded, sizeof encoded, digest, sizeof digest, sodium_base64_VARIANT_ORIGINAL);
  return "'sha256-" + std::string(encoded) + "'";
}

std::vector<std::string> NamesIn(const Json &family) { return family["name"].get<std::vector<std::string>>(); }

TEST(Page, IsSmall) {
  const Scratch scratch;
  const std::string page = PageOf(scratch, kSample);
  EXPECT_GT(ScriptOf(page).size(), 20000u);
  EXPECT_LE(StyleOf(page).size() + ScriptOf(page).size(), 60000u);
}

TEST(Page, AllowsOnlyItsOwnStyleAndScript) {
  const Scratch scratch;
  const std::string page = PageOf(scratch, kSample);
  const std::string policy = Between(page, "Content-Security-Policy\" content=\"", "\"");
  EXPECT_EQ(policy,
            "default-src 'none'; script-src " + HashSource(ScriptOf(page)) + "; style-src " +
                HashSource(StyleOf(page)) +
                "; base-uri 'none'; form-action 'none'; require-trusted-types-for 'script'; trusted-types 'none'");
  EXPECT_EQ(page.find("http:"), std::string::npos);
  EXPECT_EQ(page.find("https:"), std::string::npos);
  EXPECT_EQ(page.find(" style=\""), std::string::npos);
}

TEST(Page, ScriptEndsOnlyAtItsEnd) {
  const Scratch scratch;
  const std::string script = ScriptOf(PageOf(scratch, kSample));
  EXPECT_EQ(script.find("<!--"), std::string::npos);
  EXPECT_EQ(script.find("<script"), std::string::npos);
  EXPECT_EQ(script.find("innerHTML"), std::string::npos);
}

TEST(Page, HasTheFiguresOfTheSnapshot) {
  const Scratch scratch;
  const Json data = DataOf(PageOf(scratch, kSample));
  EXPECT_EQ(data["host"], "two-vms");
  EXPECT_EQ(data["instants"], Json::parse(R"(["2026-03-14T09:26:53Z"])"));
  EXPECT_EQ(NamesIn(data["families"]["heap"]), (std::vector<std::string>{"main", "net", "storage"}));
  EXPECT_EQ(data["families"]["group"]["id"], Json::parse("[0,1,4,5,6,2,10,11,12,13,20,21,22,3,30,31,32,33]"));
  EXPECT_EQ(data["families"]["group"]["parent"], Json::parse("[-1,0,1,1,1,0,5,6,6,8,5,10,10,0,13,13,13,16]"));
}

// The sample's host, without scripts.
TEST(Page, IsReadableWithoutScripts) {
  const Scratch scratch;
  const std::string page = PageOf(scratch, kSample);
  EXPECT_NE(page.find("Memory state: clear. 22.9 GB of 64.0 GB are free."), std::string::npos);
  EXPECT_NE(page.find("<tr><th scope=\"row\">web-01</th><td>4.00 GB</td><td>3.06 GB</td><td>256 MB</td><td>192 MB</td>"
                      "<td>24.0 MB</td><td>112 MB</td><td>1.63 GB</td></tr>"),
            std::string::npos);
  EXPECT_NE(page.find("<title>machines: 4.51 GB</title>"), std::string::npos);
  EXPECT_NE(page.find("<tr><th scope=\"row\">web-01</th><td>10</td><td>3.02 GB</td><td>3.00 GB</td><td>unlimited</td>"),
            std::string::npos);
}

TEST(Page, ContainsNamesOnlyAsText) {
  const Scratch scratch;
  const std::string name = R"(</script><img src=x onerror=alert(1)>{{data}})";
  const std::string snapshot = Built(scratch, R"({"format": 1, "host": ")" + name + R"(", "nodes": {
    "/sched/groups/0/groupName": {"name": ")" + name +
                                                  R"("},
    "/sched/groups/0/members/groups": [],
    "/sched/groups/0/stats/memoryStats": {"consumed": 5},
    "/system/heaps": [")" + name + R"("]}})");
  const std::string page = PageOf(scratch, snapshot);
  EXPECT_EQ(page.find("<img"), std::string::npos);
  EXPECT_EQ(EncodedDataOf(page).find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/="),
            std::string::npos);
  EXPECT_NE(page.find("<h1>Memory of <bdi>&lt;/script&gt;&lt;img src=x onerror=alert(1)&gt;{{data}}</bdi></h1>"),
            std::string::npos);
  EXPECT_EQ(DataOf(page)["families"]["group"]["name"], name);
}

// Groups that are members of each other appear once.
TEST(Page, EndsInCyclesOfGroups) {
  const Scratch scratch;
  const std::string snapshot = Built(scratch, HostOf(R"(
    "/sched/groups/0/groupName": {"name": "top"}, "/sched/groups/0/members/groups": [1, 1, 0],
    "/sched/groups/1/groupName": {"name": "below"}, "/sched/groups/1/members/groups": [0, 1])"));
  EXPECT_EQ(NamesIn(DataOf(PageOf(scratch, snapshot))["families"]["group"]),
            (std::vector<std::string>{"top", "below"}));
}

TEST(Page, TellsWhatCouldNotBeRead) {
  const Scratch scratch;
  const std::string snapshot = Built(scratch, HostOf(R"(
    "/sched/groups/0/groupName": {"name": "top"}, "/sched/groups/0/members/groups": [],
    "failed:/sched/groups/0/stats/memoryStats": {"status": "No permission"},
    "failed:/system/heaps": {"status": "No permission"})"));
  const Json data = DataOf(PageOf(scratch, snapshot));
  EXPECT_EQ(data["unreadableLists"], Json::parse(R"([["/system/heaps", "No permission"]])"));
  const Json &records = data["families"]["group"]["records"];
  const auto stats =
      std::ranges::find(records, "GroupMemoryStatsRecord", [](const Json &each) { return each["record"]; });
  EXPECT_EQ((*stats)["unreadable"], Json::parse(R"([[0, "No permission"]])"));
}

TEST(Page, AnonymizedHasNoName) {
  const Scratch scratch;
  const std::string page = PageOf(scratch, "--anonymize " + kSample);
  const std::string data = Unpacked(EncodedDataOf(page));
  for (const char *name : {"two-vms", "web-01", "mail-01", "vmm.1001", "collector", "storage", "heap-large", "prod"}) {
    EXPECT_EQ(page.find(name), std::string::npos) << name;
    EXPECT_EQ(data.find("\"" + std::string(name) + "\""), std::string::npos) << name;
  }
  EXPECT_NE(page.find("name-"), std::string::npos);
}

TEST(Page, AnonymizedWithAKeyHasThePseudonymsOfACapture) {
  const Scratch scratch;
  scratch.Write("key", "a secret");
  ASSERT_EQ(chmod(scratch.Path("key").c_str(), 0600), 0);
  const std::string words = "--anonymize --key-file " + scratch.Path("key");
  const Json data = DataOf(PageOf(scratch, words + " " + kSample));
  const std::string capture = scratch.Path("anonymous.nodal");
  ASSERT_EQ(Nodal("--cache " + kSample + " capture -o " + capture + " " + words).status, 0);
  EXPECT_EQ(data["families"], DataOf(PageOf(scratch, capture))["families"]);
}

TEST(Page, IsForItsOwnerOnly) {
  const Scratch scratch;
  PageOf(scratch, kSample);
  struct stat file;
  ASSERT_EQ(stat(scratch.Path("page.html").c_str(), &file), 0);
  EXPECT_EQ(file.st_mode & 07777, 0600u);
}

TEST(Page, TakesOneSource) {
  const Scratch scratch;
  const std::string output = " -o " + scratch.Path("page.html");
  EXPECT_EQ(Nodal("--cache " + kSample + " page" + output).status, 0);
  const Outcome twice = Nodal("--cache " + kSample + " page " + kSample + output);
  EXPECT_EQ(twice.status, 2);
  EXPECT_NE(twice.err.find("the source is given twice"), std::string::npos) << twice.err;
  EXPECT_EQ(Nodal("page " + kSample).status, 2);
  EXPECT_EQ(Nodal("page " + scratch.Path("missing") + output).status, 1);
}

// The history of the sample's host, with two samples.
class PageOfHistory : public testing::Test {
 protected:
  PageOfHistory() {
    history_.host().host = "two-vms";
    for (const int64_t second : {0, 5})
      history_.Add(nodal::SampleOf(SAMPLE_SNAPSHOT), second);
  }

  std::string Page(const std::string &words = "") const {
    return PageOf(history_.scratch(), history_.path() + " " + words);
  }

  nodal::Recorded history_;
};

TEST_F(PageOfHistory, HasItsInstants) {
  const std::string page = Page();
  const Json data = DataOf(page);
  EXPECT_EQ(data["instants"], Json::parse(R"(["2025-11-21T03:12:00Z", "2025-11-21T03:12:05Z"])"));
  EXPECT_EQ(data["host"], "two-vms");
  EXPECT_EQ(data["source"], "history");
  EXPECT_EQ(data["span"]["step"], 5);
  EXPECT_EQ(data["span"]["tolerance"], 0);
  EXPECT_EQ(data["families"]["group"]["id"], Json::parse("[0,1,4,5,6,2,10,11,12,13,20,21,22,3,30,31,32,33]"));
  EXPECT_FALSE(Unpacked(Between(page, "id=\"values\">", "</script>")).empty());
  EXPECT_NE(page.find("2 samples from 2025-11-21T03:12:00Z to 2025-11-21T03:12:05Z"), std::string::npos);
  EXPECT_EQ(DataOf(Page("--from 03:12:05 --to -0s"))["instants"].size(), 1u);
}

// The views for readers without scripts show the last sample.
TEST_F(PageOfHistory, IsReadableWithoutScripts) {
  const std::string page = Page();
  EXPECT_NE(page.find("Memory state: clear. 22.9 GB of 64.0 GB are free."), std::string::npos);
  EXPECT_NE(page.find("<tr><th scope=\"row\">free memory</th><td>22.9 GB</td><td>2025-11-21T03:12:00Z</td>"),
            std::string::npos);
}

TEST_F(PageOfHistory, AnonymizedHasNoName) {
  history_.host().kernel = "kernel-of-alpha";
  history_.Add(nodal::SampleOf(SAMPLE_SNAPSHOT), 10);
  const std::string page = Page("--anonymize");
  const std::string data = Unpacked(EncodedDataOf(page));
  for (const char *name : {"two-vms", "web-01", "mail-01", "vmm.1001", "collector", "storage", "heap-large", "prod"}) {
    EXPECT_EQ(page.find(name), std::string::npos) << name;
    EXPECT_EQ(data.find("\"" + std::string(name) + "\""), std::string::npos) << name;
  }
  EXPECT_EQ(data.find("of-alpha"), std::string::npos);
  EXPECT_EQ(data.find(history_.path()), std::string::npos);
  EXPECT_NE(Unpacked(EncodedDataOf(Page())).find("of-alpha"), std::string::npos);
}

TEST_F(PageOfHistory, NeedsSamples) {
  const auto error = [&](const std::string &words) {
    const Outcome outcome = Nodal("page -o " + history_.scratch().Path("none.html") + " " + words);
    EXPECT_NE(outcome.status, 0);
    return outcome.err;
  };
  EXPECT_NE(error(history_.path() + " --from 2025-11-21T03:12:01Z --to 2025-11-21T03:12:02Z").find("no sample from"),
            std::string::npos);
  EXPECT_NE(error(history_.path() + " --from noon").find("invalid time"), std::string::npos);
  EXPECT_NE(error(kSample + " --from 03:12").find("need the folder of a history"), std::string::npos);
  EXPECT_NE(error(history_.scratch().Path("")).find("no history in this folder"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(history_.scratch().Path("none.html")));
}

}  // namespace
