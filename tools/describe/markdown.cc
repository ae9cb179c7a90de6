#include <algorithm>
#include <string>
#include <vector>

#include "tools/describe/roff.h"
#include "tools/describe/writers.h"

namespace describe::manual {
namespace {

std::string_view Trim(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string Inline(std::string_view text) {
  std::string page;
  while (!text.empty()) {
    const size_t start = std::min({text.find('`'), text.find("**"), text.size()});
    if (start > 0) page += Prose(text.substr(0, start));
    text.remove_prefix(start);
    if (text.empty()) break;
    const std::string_view mark = text.starts_with('`') ? "`" : "**";
    const size_t end = text.find(mark, mark.size());
    const std::string_view inner = text.substr(mark.size(), end - mark.size());
    page += mark == "`" ? Bold(inner) : Italic(inner);
    text.remove_prefix(end == text.npos ? text.size() : end + mark.size());
  }
  return page;
}

std::vector<std::string_view> Cells(std::string_view row) {
  std::vector<std::string_view> cells;
  for (size_t start = 1, end = 0; (end = row.find('|', start)) != row.npos; start = end + 1)
    cells.push_back(Trim(row.substr(start, end - start)));
  return cells;
}

class Converter {
 public:
  explicit Converter(std::ostream &page) : page_(page) {}

  void Convert(std::istream &text) {
    for (std::string line; std::getline(text, line);)
      Line(line);
    EndTable();
  }

 private:
  void Line(std::string_view line) {
    if (inCode_) return CodeLine(line);
    if (line.starts_with('|')) return Row(line);
    EndTable();
    if (line.empty()) {
      afterGap_ = true;
    } else if (line.starts_with("```")) {
      page_ << ".PP\n.EX\n";
      inCode_ = true;
    } else if (line.starts_with("## ")) {
      page_ << ".SS " << Inline(line.substr(3)) << "\n";
      afterGap_ = atStart_ = true;
    } else if (line.starts_with("- ")) {
      page_ << ".IP \\(bu 2\n" << Inline(line.substr(2)) << "\n";
      afterGap_ = false;
    } else if (!line.starts_with("# ")) {
      if (afterGap_ && !atStart_) page_ << ".PP\n";
      page_ << Inline(Trim(line)) << "\n";
      afterGap_ = atStart_ = false;
    }
  }

  void CodeLine(std::string_view line) {
    inCode_ = !line.starts_with("```");
    page_ << (inCode_ ? Literal(line) : ".EE") << "\n";
  }

  // The last cell may take several lines.
  void Row(std::string_view line) {
    const std::vector<std::string_view> cells = Cells(line);
    if (!inTable_) {
      page_ << ".PP\n.TS\n" << Format(cells.size(), "lb") << "\n" << Format(cells.size(), "l") << "x.\n";
    } else if (line.find_first_not_of("|- ") == line.npos) {
      return;
    }
    inTable_ = true;
    for (size_t i = 0; i + 1 < cells.size(); ++i)
      page_ << Inline(cells[i]) << "\t";
    page_ << "T{\n" << Inline(cells.back()) << "\nT}\n";
  }

  static std::string Format(size_t columns, const std::string &column) {
    std::string format = column;
    for (size_t i = 1; i < columns; ++i)
      format += " " + column;
    return format;
  }

  void EndTable() {
    if (inTable_) page_ << ".TE\n";
    inTable_ = false;
  }

  std::ostream &page_;
  bool atStart_ = true;  // of a section
  bool afterGap_ = false;
  bool inTable_ = false;
  bool inCode_ = false;
};

}  // namespace

void PutMarkdown(std::ostream &out, std::istream &text) { Converter(out).Convert(text); }

}  // namespace describe::manual
