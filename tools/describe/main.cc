// describe: fills the templates of the manual pages and of the completions from the reports and the node catalogue.
//   describe TEMPLATE OUTPUT
#include <cstdio>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

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

// Copies a template and replaces its placeholders. A placeholder is a whole line, such as "@report comp-stats@", except
// "@version@", which may be anywhere in a line.
class Filler {
 public:
  explicit Filler(std::ostream &out) : out_(out) {}

  void CopyLine(const std::string &line) {
    if (line.size() > 2 && line.front() == '@' && line.back() == '@') {
      std::istringstream placeholder(line.substr(1, line.size() - 2));
      std::string name;
      std::string argument;
      placeholder >> name >> argument;
      Replace(name, argument);
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

  // A page that describes one report must describe every report once.
  void CheckReports() const {
    if (shown_.empty()) return;
    for (const Report *report : kestrel::kReports) {
      for (const std::string placeholder : {"report ", "columns "}) {
        const size_t count = shown_.count(placeholder + report->name);
        if (count != 1)
          throw std::runtime_error("@" + placeholder + report->name + "@ occurs " + std::to_string(count) + " times");
      }
    }
  }

 private:
  void Replace(const std::string &name, const std::string &argument) {
    if (name == "report") return manual::PrintReport(out_, NextReport(name, argument));
    if (name == "columns") return manual::PrintColumns(out_, NextReport(name, argument));
    if (name == "reports") return manual::PrintReports(out_);
    if (name == "nodes") return manual::PrintNodes(out_);
    if (name == "records") return manual::PrintRecords(out_);
    if (name == "bash-choices") return bash::PrintChoices(out_);
    if (name == "zsh-choices") return zsh::PrintChoices(out_);
    if (name == "fish-choices") return fish::PrintChoices(out_);
    throw std::runtime_error("unknown placeholder: @" + name + "@");
  }

  const Report &NextReport(const std::string &placeholder, const std::string &report) {
    shown_.insert(placeholder + ' ' + report);
    return FindReport(report);
  }

  std::ostream &out_;
  std::multiset<std::string> shown_;
};

void Fill(const char *source, const char *target) {
  std::ifstream in(source);
  std::ofstream out(target);
  Filler filler(out);
  for (std::string line; std::getline(in, line);)
    filler.CopyLine(line);
  filler.CheckReports();
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
