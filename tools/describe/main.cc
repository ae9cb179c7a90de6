// describe: fills the templates of the manual pages and of the completions from the reports, the node catalogue and the
// commands of nodal.
//   describe TEMPLATE OUTPUT
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "src/reports/reports.h"
#include "tools/describe/writers.h"

namespace describe {
namespace {

using kestrel::Report;

const Report &FindReport(const std::string &name) {
  for (const Report *report : kestrel::kReports) {
    if (report->name == name) return *report;
  }
  throw std::runtime_error("unknown report: " + name);
}

std::vector<std::string> ReportPlaceholders() {
  std::vector<std::string> placeholders;
  for (const Report *report : kestrel::kReports) {
    placeholders.push_back("report " + std::string(report->name));
    placeholders.push_back("columns " + std::string(report->name));
  }
  return placeholders;
}

// Copies a template and replaces its placeholders. A placeholder is a whole line, such as "@report comp-stats@", except
// "@version@", which may be anywhere in a line.
class Filler {
 public:
  explicit Filler(std::ostream &out) : out_(out) {}

  void CopyLine(const std::string &line) {
    if (line.size() > 2 && line.front() == '@' && line.back() == '@') {
      std::istringstream text(line.substr(1, line.size() - 2));
      Replace({std::istream_iterator<std::string>(text), {}});
      return;
    }
    constexpr std::string_view kVersion = "@version@";
    const size_t at = line.find(kVersion);
    if (at == std::string::npos) {
      out_ << line << '\n';
    } else {
      out_ << line.substr(0, at) << VERSION << line.substr(at + kVersion.size()) << '\n';
    }
  }

  // A page that describes any report must describe each report exactly once. The same holds for the commands of nodal.
  void CheckCompleteness() const {
    for (const std::vector<std::string> &required : {ReportPlaceholders(), manual::CommandPlaceholders()}) {
      if (std::ranges::none_of(required, [&](const std::string &name) { return shown_.contains(name); })) continue;
      for (const std::string &name : required) {
        const size_t count = shown_.count(name);
        if (count != 1) throw std::runtime_error("@" + name + "@ occurs " + std::to_string(count) + " times");
      }
    }
  }

 private:
  void Replace(std::vector<std::string> words) {
    words.resize(4);  // missing words are empty
    const std::string &name = words[0];
    shown_.insert(name + ' ' + words[1] + (name == "option" ? ' ' + words[2] : ""));
    if (name == "report") return manual::PrintReport(out_, FindReport(words[1]));
    if (name == "columns") return manual::PrintColumns(out_, FindReport(words[1]));
    if (name == "reports") return manual::PrintReports(out_);
    if (name == "command") return manual::PrintCommand(out_, words[1]);
    if (name == "option") return manual::PrintOption(out_, words[1], words[2], words[3]);
    if (name == "nodes") return manual::PrintNodes(out_);
    if (name == "records") return manual::PrintRecords(out_);
    if (name == "bash-choices") return bash::PrintChoices(out_);
    if (name == "zsh-choices") return zsh::PrintChoices(out_);
    if (name == "fish-choices") return fish::PrintChoices(out_);
    throw std::runtime_error("unknown placeholder: @" + name + "@");
  }

  std::ostream &out_;
  std::multiset<std::string> shown_;  // the placeholders, without the names of arguments
};

void Fill(const char *source, const char *target) {
  std::ifstream in(source);
  std::ofstream out(target);
  Filler filler(out);
  for (std::string line; std::getline(in, line);)
    filler.CopyLine(line);
  filler.CheckCompleteness();
  if (!in.eof()) throw std::runtime_error("cannot read the template");
  if (!out.flush()) throw std::runtime_error("cannot write " + std::string(target));
}

}  // namespace
}  // namespace describe

int main(int argc, char **argv) {
  if (argc != 3) {
    std::cerr << "Usage: describe TEMPLATE OUTPUT\n";
    return 1;
  }
  try {
    describe::Fill(argv[1], argv[2]);
    return 0;
  } catch (const std::exception &failure) {
    std::cerr << "describe: " << argv[1] << ": " << failure.what() << '\n';
    std::remove(argv[2]);
    return 1;
  }
}
