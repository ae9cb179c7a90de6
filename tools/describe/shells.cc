#include <algorithm>
#include <cctype>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "src/reports/reports.h"
#include "tools/describe/text.h"
#include "tools/describe/writers.h"

namespace describe {
namespace {

using kestrel::ColumnDesc;
using kestrel::FlagName;
using kestrel::Report;

struct Word {
  std::string text;
  std::string meaning;  // may be empty
};

// How a shell writes a case that gives some words.
using PutCase = std::function<void(const std::string &key, const std::vector<Word> &words)>;

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

std::string Replaced(std::string text, char from, std::string_view to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, 1, to);
  return text;
}

// Within '...' of bash and zsh, there is no way to write the mark itself.
std::string InMarks(std::string text) { return "'" + Replaced(std::move(text), '\'', "'\\''") + "'"; }

std::vector<Word> Columns(const Report &report) {
  std::vector<Word> words;
  for (const ColumnDesc &column : report.columns)
    words.push_back({column.name, std::string(MeaningOf(column))});
  return words;
}

std::vector<Word> Units(const Report &report) {
  std::vector<Word> words;
  for (std::string &unit : UnitsOf(report))
    words.push_back({std::move(unit), ""});
  return words;
}

std::vector<Word> Flags(const Report &report) {
  std::vector<Word> words;
  for (const FlagName &flag : report.filterFlags)
    words.push_back({flag.name, ""});
  return words;
}

std::vector<Word> Reports() {
  std::vector<Word> words;
  for (const Report *report : kestrel::kReports)
    words.push_back({report->name, report->summary});
  return words;
}

std::vector<Word> OptionWords(const Report &report) {
  std::vector<Word> words;
  for (const Option &option : OptionsOf(report)) {
    words.push_back({std::string("-") + option.letter, option.meaning});
    if (option.longName != nullptr) words.push_back({std::string("--") + option.longName, option.meaning});
  }
  return words;
}

// What zsh's _arguments takes for an option.
std::string ZshAction(Argument argument) {
  switch (argument) {
    case Argument::kNone: return "";
    case Argument::kNumber: return " ";
    case Argument::kUnit: return " _kestrel_choose $report/units";
    case Argument::kColumns: return " _kestrel_list $report/columns";
    case Argument::kFlags: return " _kestrel_list $report/flags";
  }
  return "";
}

// The forms of an option that _arguments is to know, each of which rules out the other.
std::vector<Word> ZshOptions(const Report &report) {
  std::vector<Word> words;
  for (const Option &option : OptionsOf(report)) {
    const bool takesArgument = option.argument != Argument::kNone;
    std::ostringstream rest;
    rest << '[' << option.meaning << ']';
    if (takesArgument) rest << ':' << option.placeholder << ':' << ZshAction(option.argument);
    std::ostringstream either;
    if (option.longName != nullptr) either << "(-" << option.letter << " --" << option.longName << ')';
    std::ostringstream letter;
    letter << either.str() << '-' << option.letter << (takesArgument ? "+" : "") << rest.str();
    words.push_back({letter.str(), ""});
    if (option.longName == nullptr) continue;
    std::ostringstream longName;
    longName << either.str() << "--" << option.longName << (takesArgument ? "=" : "") << rest.str();
    words.push_back({longName.str(), ""});
  }
  return words;
}

void PutCases(const PutCase &put, const std::function<std::vector<Word>(const Report &)> &options) {
  put("reports", Reports());
  for (const Report *report : kestrel::kReports) {
    const std::string name = LowerCase(report->name);
    put(name + "/options", options(*report));
    if (report->options.Takes('s')) put(name + "/columns", Columns(*report));
    if (report->options.Takes('u')) put(name + "/units", Units(*report));
    if (!report->filterFlags.empty()) put(name + "/flags", Flags(*report));
  }
}

}  // namespace

void bash::PutWords(std::ostream &out) {
  PutCases(
      [&](const std::string &key, const std::vector<Word> &words) {
        out << "    " << key << ") choices=(";
        for (const Word &word : words)
          out << (&word == words.data() ? "" : " ") << word.text;
        out << ") ;;\n";
      },
      OptionWords);
}

void zsh::PutWords(std::ostream &out) {
  PutCases(
      [&](const std::string &key, const std::vector<Word> &words) {
        out << "    " << key << ") choices=(\n";
        for (const Word &word : words) {
          const std::string text = word.meaning.empty() ? word.text : word.text + ":" + word.meaning;
          out << "      " << InMarks(text) << '\n';
        }
        out << "    ) ;;\n";
      },
      ZshOptions);
}

void fish::PutWords(std::ostream &out) {
  PutCases(
      [&](const std::string &key, const std::vector<Word> &words) {
        out << "        case " << key << "\n            printf '%s\\n'";
        for (const Word &word : words) {
          // A tab stands between a word and its meaning.
          std::string text = word.meaning.empty() ? word.text : word.text + "\t" + word.meaning;
          text = Replaced(Replaced(std::move(text), '\\', "\\\\"), '\'', "\\'");
          out << " \\\n                '" << text << '\'';
        }
        out << '\n';
      },
      OptionWords);
}

}  // namespace describe
