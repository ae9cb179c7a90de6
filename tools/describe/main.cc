// describe: fills the templates of the manual pages and of the shells' completions with what the reports and the nodes
// say of themselves, so that none can go stale.
//   describe TEMPLATE OUTPUT
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "src/reports/reports.h"
#include "tools/describe/writers.h"

namespace describe {
namespace {

using kestrel::Report;

const Report &FindReport(const std::string &name) {
  for (const Report *report : kestrel::kReports) {
    if (report->name == name) return *report;
  }
  throw std::runtime_error("there is no report " + name);
}

// Fills a template line by line. A placeholder is a line of its own, as "@report comp-stats@". Files that are taken in
// are named by their paths from the template's folder.
class Filler {
 public:
  Filler(std::ostream &out, std::filesystem::path folder) : out_(out), folder_(std::move(folder)) {}

  void PutLine(const std::string &line) {
    if (line.size() > 2 && line.front() == '@' && line.back() == '@') {
      std::istringstream words(line.substr(1, line.size() - 2));
      std::string what;
      std::string argument;
      words >> what >> argument;
      Put(what, argument);
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

  // A page that shows some reports shows all of them.
  void Finish() const {
    if (shown_.empty()) return;
    for (const Report *report : kestrel::kReports) {
      for (const std::string what : {"report ", "columns "}) {
        if (shown_.count(what + report->name) != 1) throw std::runtime_error("not once: " + what + report->name);
      }
    }
  }

 private:
  void Put(const std::string &what, const std::string &argument) {
    if (what == "report") return manual::PutReport(out_, ShownReport(what, argument));
    if (what == "columns") return manual::PutColumns(out_, ShownReport(what, argument));
    if (what == "reports") return manual::PutReports(out_);
    if (what == "nodes") return manual::PutNodes(out_);
    if (what == "records") return manual::PutRecords(out_);
    if (what == "markdown") return PutFile(argument);
    if (what == "words-of-bash") return bash::PutWords(out_);
    if (what == "words-of-zsh") return zsh::PutWords(out_);
    if (what == "words-of-fish") return fish::PutWords(out_);
    throw std::runtime_error("there is no placeholder @" + what + "@");
  }

  const Report &ShownReport(const std::string &what, const std::string &name) {
    shown_.insert(what + ' ' + name);
    return FindReport(name);
  }

  void PutFile(const std::string &name) {
    std::ifstream text(folder_ / name);
    manual::PutMarkdown(out_, text);
    if (!text.eof()) throw std::runtime_error(name + " could not be read");
  }

  std::ostream &out_;
  std::filesystem::path folder_;
  std::multiset<std::string> shown_;
};

void Fill(const char *source, const char *target) {
  std::ifstream in(source);
  std::ofstream out(target);
  Filler filler(out, std::filesystem::path(source).parent_path());
  for (std::string line; std::getline(in, line);)
    filler.PutLine(line);
  filler.Finish();
  if (!in.eof() || !out.flush()) throw std::runtime_error("a file could not be read, or not be written");
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
