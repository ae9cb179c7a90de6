#include "tests/manual/kestrel_page.h"

#include <algorithm>
#include <regex>

#include "tests/manual/page.h"

namespace manual {
namespace {

bool IsMacro(const std::string &line, const std::string &name) { return line == name || line.starts_with(name + " "); }

// The argument of a macro, without surrounding quotation marks.
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

KestrelPage::KestrelPage() {
  const Page page("kestrel.1");
  const std::vector<std::string> &lines = page.lines();
  std::string section;
  for (size_t at = 0; at < lines.size(); ++at) {
    if (IsMacro(lines[at], ".SH")) section = WordsOf(lines[at]);
    if (section == "DESCRIPTION" && lines[at] == ".TP") listed_.push_back(WordsOf(lines[at + 1]));
    if (section == "REPORTS" && IsMacro(lines[at], ".SS")) ReadReport(lines, at);
  }
}

void KestrelPage::ReadReport(const std::vector<std::string> &lines, size_t &at) {
  ReportSection &report = reports_[WordsOf(lines[at])];
  for (++at; at < lines.size() && !lines[at].starts_with(".S"); ++at) {
    static const std::regex option(R"(\.RB \[ \\-([a-z]).*\])");
    std::smatch letter;
    if (std::regex_match(lines[at], letter, option)) report.letters += letter[1];
    if (lines[at] == "A row of totals follows.") report.hasTotals = true;
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

}  // namespace manual
