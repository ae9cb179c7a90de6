// Compares the comments in the public headers with the library's tables.
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "platkit/catalogue.h"
#include "platkit/catalogue/records.h"
#include "platkit/status_texts.h"

namespace platkit {
namespace {

std::string Header(const std::string &name) {
  std::ifstream file(PLATKIT_SOURCE_DIR "/include/platkit/" + name);
  EXPECT_TRUE(file) << name;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::smatch> Matches(const std::string &text, const std::regex &form) {
  return {std::sregex_iterator(text.begin(), text.end(), form), {}};
}

// A declaration in a header: the text between `start` and `end`, and the comment right above it.
struct Declaration {
  std::string comment;
  std::string text;
};

std::vector<Declaration> Declarations(const std::string &header, const std::string &start, const std::string &end) {
  std::vector<Declaration> found;
  for (size_t at = header.find(start); at != header.npos; at = header.find(start, at + 1)) {
    const size_t comment = header.rfind("/*", at) + 2;
    const size_t text = at + start.size();
    found.push_back({.comment = header.substr(comment, header.find("*/", comment) - comment),
                     .text = header.substr(text, header.find(end, text) - text)});
    EXPECT_EQ(header.find("*/\n" + start, comment), at - 3) << "no comment above " << found.back().text;
  }
  return found;
}

// Removes the blanks and the asterisks of a comment, because long paths are broken into lines.
std::string WithoutBlanks(const std::string &comment) {
  std::string text = std::regex_replace(comment, std::regex("\n \\*"), "");
  std::erase_if(text, [](unsigned char c) { return std::isspace(c); });
  return text;
}

// The comment that nodes.h must have on a node: its paths and their records or lists. It has no blanks, because long
// paths are broken into lines.
std::string CommentOn(const Node &node) {
  const std::string path(node.path.substr(0, node.path.find('[')));
  std::string whole(node.path);
  std::erase_if(whole, [](char c) { return c == '[' || c == ']'; });
  std::string comment;
  if (node.isList) {
    comment += path + ":listof{" + std::string(node.entry.what);
    comment += node.entry.kind == ParamKind::kInt ? ":int}" : ":text}";
  }
  if (node.isRecord()) comment += whole + ":" + std::string(node.record->name);
  return comment;
}

TEST(HeaderComments, NodesHDeclaresTheNodesOfTheCatalogue) {
  const std::string header = Header("nodes.h");
  const auto declared = Declarations(header, "extern PLATKIT_EXPORT const uint16_t NODAL_NODE_", ";");
  ASSERT_EQ(declared.size(), Nodes().size());
  for (size_t i = 0; i < declared.size(); ++i) {
    EXPECT_EQ(declared[i].text, Nodes()[i].name);
    EXPECT_EQ(WithoutBlanks(declared[i].comment), CommentOn(Nodes()[i]));
  }
}

std::string CommentOn(const Field &field) {
  const std::string unit(UnitInWords(field.unit));
  return (unit.empty() ? "" : unit + ": ") + std::string(field.description);
}

void ExpectFields(const RecordLayout &record, const std::string &body) {
  const std::regex form("\n  \\w+ (\\w+)(?:\\[\\d+\\])?;(?: +/\\* (.*) \\*/)?");
  const std::vector<std::smatch> fields = Matches(body, form);
  ASSERT_EQ(fields.size(), record.fields.size()) << record.name;
  for (size_t i = 0; i < fields.size(); ++i) {
    EXPECT_EQ(fields[i][1].str(), record.fields[i].name) << record.name;
    EXPECT_EQ(fields[i][2].str(), CommentOn(record.fields[i])) << record.name << '.' << fields[i][1];
  }
}

// For each record, the concatenated paths of the nodes that yield it.
std::map<std::string_view, std::string> PathsOfRecords() {
  std::map<std::string_view, std::string> paths = {{"BuddySizeRecord", "AnentryofBuddyComprehensiveRecord."}};
  for (const Node &node : Nodes()) {
    if (!node.isRecord()) continue;
    std::string path(node.path);
    std::erase_if(path, [](char c) { return c == '[' || c == ']'; });
    paths[node.record->name] += path;
  }
  return paths;
}

std::map<std::string_view, const RecordLayout *> Records() {
  std::map<std::string_view, const RecordLayout *> records = {
      {"BuddySizeRecord", &kRecordLayout<BuddySizeRecord>},
  };
  for (const Node &node : Nodes()) {
    if (node.isRecord()) records[node.record->name] = node.record;
  }
  return records;
}

TEST(HeaderComments, RecordsHGivesEveryFieldsUnitAndMeaning) {
  const std::string header = Header("records.h");
  const std::map<std::string_view, const RecordLayout *> records = Records();
  const std::map<std::string_view, std::string> paths = PathsOfRecords();
  const std::vector<Declaration> structs = Declarations(header, "typedef struct ", "\n}");
  EXPECT_EQ(structs.size(), records.size());
  for (const Declaration &declared : structs) {
    const std::string name = declared.text.substr(0, declared.text.find(' '));
    ASSERT_TRUE(records.contains(name)) << name << " is the record of no node";
    EXPECT_EQ(WithoutBlanks(declared.comment), paths.at(name)) << name;
    ExpectFields(*records.at(name), declared.text);
  }
}

TEST(HeaderComments, StatusHGivesEveryText) {
  const std::string header = Header("status.h");
  const std::vector<std::smatch> codes = Matches(header, std::regex("\n  HVC_(\\w+) = (\\w+),? +/\\* (.*) \\*/"));
  ASSERT_EQ(codes.size(), kStatusTexts.size());
  for (size_t i = 0; i < codes.size(); ++i) {
    EXPECT_EQ(std::stoul(codes[i][2], nullptr, 0), kStatusTexts[i].status);
    EXPECT_EQ(codes[i][3].str(), kStatusTexts[i].text);
  }
}

}  // namespace
}  // namespace platkit
