// describe: fills the templates of kestrel's manual page and of the shells' completions with what the reports say of
// themselves, so that neither can go stale.
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
  throw std::runtime_error("there is no report " + name);
}

// Fills a template line by line. A placeholder is a line of its own, as "@report comp-stats@".
class Filler {
 public:
  explicit Filler(std::ostream &out) : out_(out) {}

  void PutLine(const std::string &line) {
    if (line.size() > 2 && line.front() == '@' && line.back() == '@') {
      std::istringstream words(line.substr(1, line.size() - 2));
      std::string what;
      std::string report;
      words >> what >> report;
      Put(what, report);
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
  void Put(const std::string &what, const std::string &name) {
    if (!name.empty()) shown_.insert(what + ' ' + name);
    if (what == "report") return manual::PutReport(out_, FindReport(name));
    if (what == "columns") return manual::PutColumns(out_, FindReport(name));
    if (what == "reports") return manual::PutReports(out_);
    if (what == "words-of-bash") return bash::PutWords(out_);
    if (what == "words-of-zsh") return zsh::PutWords(out_);
    if (what == "words-of-fish") return fish::PutWords(out_);
    throw std::runtime_error("there is no placeholder @" + what + "@");
  }

  std::ostream &out_;
  std::multiset<std::string> shown_;
};

void Fill(const char *source, const char *target) {
  std::ifstream in(source);
  std::ofstream out(target);
  Filler filler(out);
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
