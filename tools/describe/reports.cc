#include <string>
#include <string_view>

#include "src/reports/reports.h"
#include "tools/describe/roff.h"
#include "tools/describe/text.h"
#include "tools/describe/writers.h"

namespace describe::manual {
namespace {

using kestrel::ColumnDesc;
using kestrel::Report;
using kestrel::Sums;

std::string Capitalized(std::string_view text) {
  std::string capitalized(text);
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') capitalized[0] = static_cast<char>(text[0] - 'a' + 'A');
  return capitalized;
}

// Font macros such as .B keep the spaces in their argument only if it is quoted.
std::string Quoted(std::string_view text) { return '"' + Literal(text) + '"'; }

void PrintSynopsis(std::ostream &out, const Report &report) {
  out << ".PP\n.nh\n.B kestrel \\-r " << Literal(report.name) << '\n';
  for (const Option &option : OptionsOf(report)) {
    if (option.argument == Argument::kNone) {
      out << ".RB [ \\-" << option.letter << " ]\n";
    } else {
      out << ".RB [ \\-" << option.letter << "\\ \\fI" << Literal(option.placeholder) << "\\fR ]\n";
    }
  }
  out << ".hy\n";
}

// Breaks a text into lines of at most 80 characters.
void PrintFilled(std::ostream &out, std::string_view text) {
  constexpr size_t kLine = 80;
  while (text.size() > kLine) {
    const size_t end = text.rfind(' ', kLine);
    if (end == std::string_view::npos) break;
    out << text.substr(0, end) << '\n';
    text.remove_prefix(end + 1);
  }
  out << text << '\n';
}

void PrintColumn(std::ostream &out, const Report &report, const ColumnDesc &column) {
  out << ".TP 20\n.B " << Quoted(column.name) << '\n';
  std::string text = Capitalized(MeaningOf(column)) + " (" + KindOf(column);
  const std::string sum = SumOf(report, column);
  if (!sum.empty()) text += "; " + sum;
  if (column.IsMandatory()) text += "; always shown";
  PrintFilled(out, Literal(text + ')'));
}

std::string Listed(const auto &names) {
  std::string list;
  for (const auto &name : names)
    list.append(list.empty() ? "" : ", ").append(name);
  return list;
}

std::vector<std::string> FlagsOf(const Report &report) {
  std::vector<std::string> flags;
  for (const kestrel::FlagName &flag : report.filterFlags)
    flags.emplace_back(flag.name);
  return flags;
}

}  // namespace

void PrintReports(std::ostream &out) {
  for (const Report *report : kestrel::kReports)
    out << ".TP\n.B " << Literal(report->name) << '\n' << Literal(Capitalized(report->summary)) << ".\n";
}

void PrintReport(std::ostream &out, const Report &report) {
  out << ".SS " << Literal(report.name) << '\n' << Literal(Capitalized(report.summary)) << ".\n";
  if (report.sums == Sums::kTotalRow) out << "A row of totals follows.\n";
  PrintSynopsis(out, report);
}

void PrintColumns(std::ostream &out, const Report &report) {
  if (report.inBytes) {
    out << ".PP\nThe units are " << Listed(UnitsOf(report)) << " (default: " << UnitsOf(report).front() << ").\n";
  }
  if (!report.filterFlags.empty()) {
    out << ".PP\n";
    PrintFilled(out, "The filters accept these flags: " + Listed(FlagsOf(report)) + ".");
  }
  out << ".PP\n.PD 0\n";
  for (const ColumnDesc &column : report.columns)
    PrintColumn(out, report, column);
  out << ".PD\n";
}

}  // namespace describe::manual
