#include "tests/manual/page.h"

#include <algorithm>
#include <regex>

#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace manual {
namespace {

// What a line of the source prints.
std::string Printed(std::string line) {
  static const std::pair<std::regex, const char *> kEscapes[] = {
      {std::regex(R"(\\f[A-Z])"), ""}, {std::regex(R"(\\\(aq)"), "'"}, {std::regex(R"(\\&)"), ""},
      {std::regex(R"(\\-)"), "-"},     {std::regex(R"(\\ )"), " "},    {std::regex(R"(\\e)"), "\\"},
  };
  for (const auto &[escape, text] : kEscapes)
    line = std::regex_replace(line, escape, text);
  return line;
}

bool IsMacro(const std::string &line, const std::string &name) { return line == name || line.starts_with(name + " "); }

// A macro's words, without quotation marks around all of them.
std::string WordsOf(const std::string &line) {
  std::string words = line.substr(std::min(line.find(' ') + 1, line.size()));
  if (words.size() >= 2 && words.front() == '"' && words.back() == '"') words = words.substr(1, words.size() - 2);
  return Printed(words);
}

Column ReadColumn(const std::string &name, const std::string &text) {
  const size_t parenthesis = text.rfind(" (");
  Column column;
  column.name = name;
  column.meaning = text.substr(0, parenthesis);
  std::string facts = text.substr(parenthesis + 2, text.size() - parenthesis - 3);
  const size_t always = facts.find("; always shown");
  column.alwaysShown = always != facts.npos;
  if (column.alwaysShown) facts.erase(always);
  column.inTotal = facts.find("; ") != facts.npos;
  column.kind = facts.substr(0, facts.find("; "));
  return column;
}

}  // namespace

Page::Page(const std::string &file) {
  const std::vector<std::string> lines = testing_support::Lines(testing_support::ReadFile(file));
  std::string section;
  for (size_t at = 0; at < lines.size(); ++at) {
    if (IsMacro(lines[at], ".SH")) section = WordsOf(lines[at]);
    if (section == "DESCRIPTION" && lines[at] == ".TP") listed_.push_back(WordsOf(lines[at + 1]));
    if (section == "REPORTS" && IsMacro(lines[at], ".SS")) ReadReport(lines, at);
    if (lines[at] == ".EX") ReadExample(lines, at);
  }
}

void Page::ReadReport(const std::vector<std::string> &lines, size_t &at) {
  ReportSection &report = reports_[WordsOf(lines[at])];
  for (++at; at < lines.size() && !lines[at].starts_with(".S"); ++at) {
    static const std::regex option(R"(\.RB \[ \\-([a-z]).*\])");
    std::smatch letter;
    if (std::regex_match(lines[at], letter, option)) report.letters += letter[1];
    if (lines[at] == "A row of totals follows the others.") report.hasTotals = true;
    if (!IsMacro(lines[at], ".TP")) continue;
    const std::string name = WordsOf(lines[at + 1]);
    std::string text;
    for (at += 2; !lines[at].starts_with('.'); ++at)
      text += (text.empty() ? "" : " ") + Printed(lines[at]);
    --at;
    report.columns.push_back(ReadColumn(name, text));
  }
  --at;
  std::sort(report.letters.begin(), report.letters.end());
}

// A command stands behind a prompt, and goes on behind prompts of the other kind.
void Page::ReadExample(const std::vector<std::string> &lines, size_t &at) {
  Example example;
  for (++at; lines[at] != ".EE"; ++at) {
    const std::string line = Printed(lines[at]);
    const bool isCommand = line.starts_with("$ ") || line.starts_with("> ");
    (isCommand ? example.command : example.output) += (isCommand ? line.substr(2) : line) + '\n';
  }
  examples_.push_back(example);
}

}  // namespace manual
