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

struct Choice {
  std::string text;
  std::string meaning;  // may be empty
};

// Prints one case of a case statement in the syntax of the shell.
using PrintCase = std::function<void(const std::string &key, const std::vector<Choice> &choices)>;

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

std::string Replaced(std::string text, char from, std::string_view to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, 1, to);
  return text;
}

// Quotes for bash and zsh, where a quoted string cannot contain a single quote.
std::string Quoted(std::string text) { return "'" + Replaced(std::move(text), '\'', "'\\''") + "'"; }

std::vector<Choice> Columns(const Report &report) {
  std::vector<Choice> choices;
  for (const ColumnDesc &column : report.columns)
    choices.push_back({column.name, std::string(MeaningOf(column))});
  return choices;
}

std::vector<Choice> Units(const Report &report) {
  std::vector<Choice> choices;
  for (std::string &unit : UnitsOf(report))
    choices.push_back({std::move(unit), ""});
  return choices;
}

std::vector<Choice> Flags(const Report &report) {
  std::vector<Choice> choices;
  for (const FlagName &flag : report.filterFlags)
    choices.push_back({flag.name, ""});
  return choices;
}

std::vector<Choice> Reports() {
  std::vector<Choice> choices;
  for (const Report *report : kestrel::kReports)
    choices.push_back({report->name, report->summary});
  return choices;
}

std::vector<Choice> OptionChoices(const Report &report) {
  std::vector<Choice> choices;
  for (const Option &option : OptionsOf(report)) {
    choices.push_back({std::string("-") + option.letter, option.meaning});
    if (option.longName != nullptr) choices.push_back({std::string("--") + option.longName, option.meaning});
  }
  return choices;
}

// The action of an argument in zsh's _arguments.
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

// The specifications of each option for zsh's _arguments: its short and its long form, which exclude each other.
std::vector<Choice> ZshOptions(const Report &report) {
  std::vector<Choice> choices;
  for (const Option &option : OptionsOf(report)) {
    const bool takesArgument = option.argument != Argument::kNone;
    std::ostringstream rest;
    rest << '[' << option.meaning << ']';
    if (takesArgument) rest << ':' << option.placeholder << ':' << ZshAction(option.argument);
    std::ostringstream either;
    if (option.longName != nullptr) either << "(-" << option.letter << " --" << option.longName << ')';
    std::ostringstream letter;
    letter << either.str() << '-' << option.letter << (takesArgument ? "+" : "") << rest.str();
    choices.push_back({letter.str(), ""});
    if (option.longName == nullptr) continue;
    std::ostringstream longName;
    longName << either.str() << "--" << option.longName << (takesArgument ? "=" : "") << rest.str();
    choices.push_back({longName.str(), ""});
  }
  return choices;
}

void PrintCases(const PrintCase &put, const std::function<std::vector<Choice>(const Report &)> &options) {
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

void bash::PrintChoices(std::ostream &out) {
  PrintCases(
      [&](const std::string &key, const std::vector<Choice> &choices) {
        out << "    " << key << ") choices=(";
        for (const Choice &choice : choices)
          out << (&choice == choices.data() ? "" : " ") << choice.text;
        out << ") ;;\n";
      },
      OptionChoices);
}

void zsh::PrintChoices(std::ostream &out) {
  PrintCases(
      [&](const std::string &key, const std::vector<Choice> &choices) {
        out << "    " << key << ") choices=(\n";
        for (const Choice &choice : choices) {
          const std::string text = choice.meaning.empty() ? choice.text : choice.text + ":" + choice.meaning;
          out << "      " << Quoted(text) << '\n';
        }
        out << "    ) ;;\n";
      },
      ZshOptions);
}

void fish::PrintChoices(std::ostream &out) {
  PrintCases(
      [&](const std::string &key, const std::vector<Choice> &choices) {
        out << "        case " << key << "\n            printf '%s\\n'";
        for (const Choice &choice : choices) {
          // A tab separates a choice from its meaning.
          std::string text = choice.meaning.empty() ? choice.text : choice.text + "\t" + choice.meaning;
          text = Replaced(Replaced(std::move(text), '\\', "\\\\"), '\'', "\\'");
          out << " \\\n                '" << text << '\'';
        }
        out << '\n';
      },
      OptionChoices);
}

}  // namespace describe
