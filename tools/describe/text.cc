#include "tools/describe/text.h"

#include <algorithm>
#include <stdexcept>

namespace describe {
namespace {

using kestrel::ColumnDesc;
using kestrel::Conversion;
using kestrel::FigureSum;
using kestrel::FigureUnit;
using kestrel::Report;

// Options are identified by the long name, because a letter can mean different options in different reports.
constexpr Option kOptions[] = {
    {'g', "gid", Argument::kNumber, "group", "Start at this scheduler group"},
    {'l', "level", Argument::kNumber, "levels", "Show at most this many levels, counting the start group"},
    {'u', "unit", Argument::kUnit, "unit", "Show amounts in this unit"},
    {'i', "iFilter", Argument::kFlags, "flags", "Include only groups with one of these flags"},
    {'e', "eFilter", Argument::kFlags, "flags", "Exclude groups with one of these flags"},
    {'t', "tags", Argument::kNone, "", "Add sums over the groups of each tag"},
    {'t', "time", Argument::kNumber, "seconds", "Count for this many seconds"},
    {'i', "iterations", Argument::kNumber, "count", "Repeat this many times"},
    {'s', "cSelect", Argument::kColumns, "columns", "Show these columns"},
    {'v', "verbose", Argument::kNone, "", "Describe the columns"},
    {'q', "csvMode", Argument::kNone, "", "Print CSV"},
};

bool TakesArgument(const Report &report, char letter) { return std::strchr(report.options.letters, letter)[1] == ':'; }

const Option &FindOption(std::string_view longName) {
  const auto *found =
      std::find_if(std::begin(kOptions), std::end(kOptions), [&](const Option &o) { return longName == o.longName; });
  if (found == std::end(kOptions)) throw std::runtime_error("unknown option --" + std::string(longName));
  return *found;
}

// The shared option with this letter.
const Option &SharedOption(char letter) {
  for (const option *name = kestrel::kSharedLongNames; name->name != nullptr; ++name) {
    if (name->val == letter) return FindOption(name->name);
  }
  throw std::runtime_error(std::string("unknown option -") + letter);
}

Option OptionOf(const Report &report, char letter) {
  if (report.options.ownLongNames == nullptr) return SharedOption(letter);
  for (const option *name = report.options.ownLongNames; name->name != nullptr; ++name) {
    const bool takesArgument = name->has_arg == required_argument;
    if (name->val == letter && takesArgument == TakesArgument(report, letter)) return FindOption(name->name);
  }
  Option option = SharedOption(letter);
  option.longName = nullptr;
  return option;
}

bool HasFigureSums(const Report &report) {
  return std::any_of(report.columns.begin(), report.columns.end(),
                     [](const ColumnDesc &column) { return column.figure.sum != FigureSum::kNoSum; });
}

}  // namespace

std::vector<Option> OptionsOf(const Report &report) {
  std::vector<Option> options;
  for (const char letter : std::string_view("gluietsvq")) {
    if (report.options.Takes(letter)) options.push_back(OptionOf(report, letter));
  }
  const std::string_view letters = report.options.letters;
  const auto colons = static_cast<size_t>(std::ranges::count(letters, ':'));
  if (options.size() != letters.size() - colons)
    throw std::runtime_error(std::string(report.name) + " has an option that describe does not know");
  return options;
}

std::vector<std::string> UnitsOf(const Report &report) {
  if (!report.options.Takes('u')) return {};
  if (report.inBytes) return {"b", "kb", "mb", "pg"};
  return {"kb", "mb", "pg"};
}

std::string KindOf(const ColumnDesc &column) {
  switch (column.figure.unit) {
    case FigureUnit::kKB:
    case FigureUnit::kPages:
    case FigureUnit::kBytes: return "amount";
    case FigureUnit::kYesNo: return "y or n";
    case FigureUnit::kPlain: break;
  }
  return column.conversion == Conversion::kS ? "text" : "number";
}

std::string SumOf(const Report &report, const ColumnDesc &column) {
  if (report.sums == kestrel::Sums::kNone) return {};
  // Rows of tags show all columns.
  if (report.sums == kestrel::Sums::kTotalRow && !column.IsInTotal()) return {};
  switch (column.figure.sum) {
    case FigureSum::kAdd: return "sum";
    case FigureSum::kAddAvailable: return "sum of the available figures";
    case FigureSum::kAddTwice: return "twice the sum";
    case FigureSum::kMean: return "mean";
    case FigureSum::kLast: return "last value";
    case FigureSum::kAllOnes: return "always -1";
    case FigureSum::kNoSum: break;
  }
  if (column.conversion == Conversion::kS) return "label";
  return HasFigureSums(report) ? "no sum" : "sum";
}

std::string_view MeaningOf(const ColumnDesc &column) {
  std::string_view meaning = column.description;
  return meaning.substr(0, meaning.find_last_not_of(' ') + 1);
}

}  // namespace describe
