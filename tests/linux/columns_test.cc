// Compares the tables of columns in docs/linux.md with the reports. Each report runs over a source whose records are
// changed one field at a time. This shows the figures that a column depends on.
#include <fcntl.h>
#include <getopt.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "platkit/catalogue.h"
#include "platkit/source.h"
#include "src/reports/reports.h"
#include "tests/linux/linux_page.h"

namespace platkit {
namespace {

using Texts = std::vector<std::string>;
using Names = std::set<std::string>;

// Splits a text at the separator. Parts may be empty.
Texts Split(std::string_view text, std::string_view separator) {
  Texts parts;
  size_t start = 0;
  for (size_t end; (end = text.find(separator, start)) != std::string_view::npos; start = end + separator.size())
    parts.emplace_back(text.substr(start, end - start));
  parts.emplace_back(text.substr(start));
  return parts;
}

// The last fixed part of a node's path, such as "vmm". If several paths end in this part, the last two fixed parts,
// such as "heaps/stats".
std::string ShortName(const Node &node) {
  Texts parts;
  for (const std::string_view piece : node.pieces) {
    for (const std::string &part : Split(piece, "/"))
      if (!part.empty()) parts.push_back(part);
  }
  const std::string &last = parts.back();
  const bool isAmbiguous = last == "stats" || last == "info" || last == "kestrel";
  return isAmbiguous && parts.size() > 1 ? parts[parts.size() - 2] + "/" + last : last;
}

// A field of a record, or a list if `field` is empty.
struct Input {
  const Node *node;
  std::string field;  // for a field of an entry, the names of both fields, such as "sizes.free"
  FieldUnit unit = FieldUnit::NONE;
  size_t offset = 0;
  size_t size = 0;

  std::string Name() const { return field.empty() ? ShortName(*node) : ShortName(*node) + "." + field; }
};

void AddFields(const Node &node, const RecordLayout &record, const std::string &prefix, size_t base,
               std::vector<Input> &inputs) {
  for (const Field &field : record.fields) {
    const std::string name = prefix + std::string(field.name);
    for (uint32_t i = 0; field.entry != nullptr && i < field.count; ++i)
      AddFields(node, *field.entry, name + ".", base + field.offset + i * field.size, inputs);
    if (field.type == FieldType::kGap || field.entry != nullptr) continue;
    inputs.push_back({&node, name, field.unit, base + field.offset, field.size});
  }
}

// A host with one instance of everything. All groups are VMs with a VMM. The value of one input may be changed.
class ProbeSource : public Source {
 public:
  explicit ProbeSource(const Input *changed = nullptr) : changed_(changed) {}

  // The nodes that were read since the test last cleared this set.
  static std::set<const Node *> &Read() {
    static std::set<const Node *> read;
    return read;
  }

  HVC_ReturnStatus Get(const Node &node, Arguments, std::span<std::byte> record) override {
    Read().insert(&node);
    std::vector<Input> inputs;
    AddFields(node, *node.record, "", 0, inputs);
    for (const Input &input : inputs)
      Write(input, record.subspan(input.offset, input.size));
    return HVC_OK;
  }

  HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) override {
    Read().insert(&node);
    const bool isChanged = changed_ != nullptr && changed_->node == &node && changed_->field.empty();
    if (node.entry.kind == ParamKind::kText) {
      // buddy-stats takes the node's number and the type of memory from the name of an allocator.
      if (ShortName(node) == "buddy") return list.Add(isChanged ? "memmap-01-hi" : "memmap-00-lo");
      return list.Add(isChanged ? "other" : "name");
    }
    return ShortName(node) == "groups" ? ListGroups(arguments[0].integer, isChanged, list)
                                       : list.Add(isChanged ? 2 : 1);
  }

 private:
  // A chain of three groups: 0, 1 and 2, or 0, 101 and 102. The changed host has one more member.
  static HVC_ReturnStatus ListGroups(int64_t parent, bool isChanged, ParamList &list) {
    if (parent % 100 == 2) return HVC_OK;
    const bool isHost = parent == 0;
    HVC_ReturnStatus status = list.Add(isHost && isChanged ? 101 : parent + 1);
    if (isHost && isChanged && status == HVC_OK) status = list.Add(202);
    return status;
  }

  // Numbers are large enough to change in each unit, and small enough to be neither negative nor unlimited.
  void Write(const Input &input, std::span<std::byte> bytes) const {
    const bool isChanged = changed_ != nullptr && changed_->node == input.node && changed_->offset == input.offset &&
                           !changed_->field.empty();
    uint64_t value = bytes.size() == 1 ? 5 : bytes.size() == 2 ? 500 : 50'000'000;
    uint64_t step = bytes.size() == 1 ? 1 : bytes.size() == 2 ? 100 : 10'000'000;
    if (input.field == "flags") {
      value = HVC_GROUP_USER_WORLD | HVC_GROUP_VMM_SUB_CONTAINER | (isChanged ? 0 : HVC_GROUP_VM);
      step = 0;
    } else if (input.unit == FieldUnit::BOOL || input.field == "memState" || input.field == "currentSwapper") {
      value = 0;
      step = 1;
    } else if (input.field == "numNodes" || input.field == "numVMs") {
      value = 1;
      step = 0;
    } else if (input.unit == FieldUnit::NONE) {
      const std::string_view text = isChanged ? "changed" : "text";
      std::memset(bytes.data(), 0, bytes.size());
      std::memcpy(bytes.data(), text.data(), text.size());
      return;
    }
    if (isChanged) value += step;
    std::memcpy(bytes.data(), &value, bytes.size());
  }

  const Input *changed_;
};

// Runs a function and returns what it prints.
std::string OutputOf(const std::function<void()> &run) {
  std::fflush(stdout);
  const int saved = dup(STDOUT_FILENO);
  const int file = memfd_create("output", MFD_CLOEXEC);
  dup2(file, STDOUT_FILENO);
  run();
  std::fflush(stdout);
  dup2(saved, STDOUT_FILENO);
  std::string text(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
  EXPECT_EQ(pread(file, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  close(saved);
  close(file);
  return text;
}

// The cells of each column, without those of totals.
using Cells = std::vector<Texts>;

Cells RunReport(const kestrel::Report &report, const Input *changed) {
  UseSource(std::make_unique<ProbeSource>(changed));
  const std::string text = OutputOf([&report] {
    std::string words[] = {"kestrel", "-q"};
    char *argv[] = {words[0].data(), words[1].data(), nullptr};
    optind = 0;
    EXPECT_EQ(report.run(report, 2, argv), HVC_OK) << report.name;
  });
  Cells cells(report.columns.size());
  std::istringstream lines(text);
  std::string line;
  std::getline(lines, line);  // the header
  while (std::getline(lines, line)) {
    if (line.starts_with("Total") || line.starts_with(',')) continue;
    std::istringstream fields(line);
    for (Texts &column : cells)
      std::getline(fields, column.emplace_back(), ',');
  }
  return cells;
}

// Whether two columns have the same cells, up to the end of the shorter one.
bool HaveTheSameStart(const Texts &a, const Texts &b) {
  const auto size = static_cast<ptrdiff_t>(std::min(a.size(), b.size()));
  return std::equal(a.begin(), a.begin() + size, b.begin(), b.begin() + size);
}

// The inputs that each column depends on, by the name of the column.
std::map<std::string, Names> InputsOf(const kestrel::Report &report) {
  ProbeSource::Read().clear();
  const Cells base = RunReport(report, nullptr);
  std::vector<Input> inputs;
  for (const Node *node : std::set(ProbeSource::Read())) {
    if (node->isRecord()) AddFields(*node, *node->record, "", 0, inputs);
    if (node->isList) inputs.push_back({.node = node, .field = ""});
  }
  std::map<std::string, Names> found;
  for (const Input &input : inputs) {
    const Cells changed = RunReport(report, &input);
    for (size_t i = 0; i < base.size(); ++i) {
      Names &names = found[report.columns[i].name];
      if (!HaveTheSameStart(changed[i], base[i])) names.insert(input.Name());
    }
  }
  return found;
}

// A row of a table of columns.
struct ColumnRow {
  std::string column;
  Names figures;
  std::string source, known;
  Texts tests;
  bool isOneOfSeveral;
};

std::string Plain(std::string text) {
  std::erase(text, '`');
  return text;
}

// The rows of a report. One row may describe several columns: "`4KBfree` to `4MBfree`".
std::vector<ColumnRow> RowsOf(const kestrel::Report &report) {
  std::vector<ColumnRow> rows;
  static const std::vector<PageTable> tables = ReadPageTables();
  for (const PageTable &table : tables) {
    if (table.header.empty() || table.header[0] != "column" || Plain(table.heading) != report.name) continue;
    for (const Texts &cells : table.rows) {
      EXPECT_EQ(cells.size(), 5u) << report.name << ": " << cells[0];
      const std::string names = Plain(cells[0]);
      const std::string first = names.substr(0, names.find(" to "));
      const std::string last = names.substr(first.size() == names.size() ? 0 : first.size() + 4);
      const Texts figures = cells[1] == "-" ? Texts() : Split(Plain(cells[1]), ", ");
      ColumnRow row = {.column = first,
                       .figures = {figures.begin(), figures.end()},
                       .source = cells[2],
                       .known = cells[3],
                       .tests = Split(cells[4], ", "),
                       .isOneOfSeveral = first != last};
      bool isInside = false;
      for (const kestrel::ColumnDesc &column : report.columns) {
        isInside |= column.name == first;
        if (isInside) rows.push_back(row), rows.back().column = column.name;
        if (column.name == last) isInside = false;
      }
    }
  }
  return rows;
}

// Whether a column can show anything other than 0 and "not available".
bool CarriesAFigure(const ColumnRow &row) {
  return row.source != "none" && !row.known.starts_with("never") && !row.known.starts_with("only 0");
}

class ColumnsTest : public testing::Test {
 protected:
  ~ColumnsTest() override { UseSource(nullptr); }
};

TEST_F(ColumnsTest, EachColumnHasARow) {
  for (const kestrel::Report *report : kestrel::kReports) {
    Texts columns, documented;
    for (const kestrel::ColumnDesc &column : report->columns)
      columns.emplace_back(column.name);
    for (const ColumnRow &row : RowsOf(*report))
      documented.push_back(row.column);
    EXPECT_EQ(documented, columns) << report->name;
  }
}

// dcpmm-stats programs the counters of devices, so it does not run here.
TEST_F(ColumnsTest, EachColumnShowsTheFiguresOfItsRow) {
  for (const kestrel::Report *report : kestrel::kReports) {
    if (!report->readsSavedHosts) continue;
    const std::map<std::string, Names> inputs = InputsOf(*report);
    for (const ColumnRow &row : RowsOf(*report))
      EXPECT_EQ(row.figures, inputs.at(row.column)) << report->name << " " << row.column;
  }
}

// A row of a table of figures. The name of a figure starts with its record, as in "vmm.mapped".
struct FigureRow {
  std::string figure, file, source;
};

std::vector<FigureRow> FigureRows() {
  std::vector<FigureRow> rows;
  for (const PageTable &table : ReadFigureTables()) {
    const std::string end = table.heading.starts_with('/') ? table.heading : '/' + table.heading;
    for (const Node &node : Nodes()) {
      if (!node.path.ends_with(end) || !node.isRecord()) continue;
      for (const Texts &row : table.rows)
        rows.push_back({ShortName(node) + "." + row[1], row[2], row[4]});
    }
  }
  return rows;
}

TEST_F(ColumnsTest, AColumnWithoutAFileIsConstant) {
  std::multimap<std::string, std::string> files;
  for (const FigureRow &row : FigureRows())
    files.emplace(row.figure, row.file);
  for (const kestrel::Report *report : kestrel::kReports) {
    for (const ColumnRow &row : RowsOf(*report)) {
      size_t figures = 0, constants = 0;
      for (const std::string &figure : row.figures) {
        const auto [first, last] = files.equal_range(figure);
        figures += static_cast<size_t>(std::distance(first, last));
        constants += static_cast<size_t>(std::count_if(first, last, [](auto &one) { return one.second == "none"; }));
      }
      if (figures == 0) continue;  // an identity
      EXPECT_EQ(row.source == "none", figures == constants) << report->name << " " << row.column;
      EXPECT_EQ(row.source == "none", row.known.starts_with("never: ")) << report->name << " " << row.column;
    }
  }
}

// The definitions of all tests: "(Suite, Case)" of GoogleTest, "file.test_case(" of Python.
std::string AllTests() {
  std::string tests;
  for (const auto &entry : std::filesystem::recursive_directory_iterator(TESTS_FOLDER)) {
    const bool isPython = entry.path().extension() == ".py";
    if (!isPython && entry.path().extension() != ".cc") continue;
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with("TEST")) tests += line.substr(line.find('(')) + "\n";
      if (isPython && line.starts_with("    def test_")) tests += entry.path().stem().string() + "." + line.substr(8);
    }
  }
  return tests;
}

bool IsDefined(const std::string &test, const std::string &definitions) {
  const size_t dot = test.find('.');
  return dot != std::string::npos &&
         (definitions.find("(" + test.substr(0, dot) + ", " + test.substr(dot + 1) + ")") != std::string::npos ||
          definitions.find(test + "(") != std::string::npos);
}

TEST_F(ColumnsTest, EachFigureIsTested) {
  const std::string definitions = AllTests();
  for (const kestrel::Report *report : kestrel::kReports) {
    for (const ColumnRow &row : RowsOf(*report)) {
      EXPECT_FALSE(row.known.empty()) << report->name << " " << row.column;
      if (!CarriesAFigure(row)) continue;
      for (const std::string &test : row.tests)
        EXPECT_TRUE(IsDefined(Plain(test), definitions)) << report->name << " " << row.column << ": " << test;
    }
  }
}

// The methods of the tests in Python, by name as in "guest_test.test_vm_stats".
std::map<std::string, std::string> PythonMethods() {
  std::map<std::string, std::string> methods;
  for (const auto &entry : std::filesystem::directory_iterator(TESTS_FOLDER "/machines")) {
    if (entry.path().extension() != ".py") continue;
    std::ifstream file(entry.path());
    std::string *method = nullptr;
    for (std::string line; std::getline(file, line);) {
      if (!line.empty() && line[0] != ' ') method = nullptr;
      if (line.starts_with("    def "))
        method = &methods[entry.path().stem().string() + "." + line.substr(8, line.find('(') - 8)];
      if (method != nullptr) *method += line + "\n";
    }
  }
  return methods;
}

// Whether a method, or a method of the same file that it calls, contains a word.
bool Mentions(const std::map<std::string, std::string> &methods, const std::string &method, const std::string &word,
              Names seen = {}) {
  const auto found = methods.find(method);
  if (found == methods.end() || !seen.insert(method).second) return false;
  const std::string &text = found->second;
  if (std::regex_search(text, std::regex("\\b" + word + "\\b"))) return true;
  static const std::regex call("self\\.(\\w+)\\(");
  const std::string file = method.substr(0, method.find('.') + 1);
  return std::any_of(std::sregex_iterator(text.begin(), text.end(), call), std::sregex_iterator(),
                     [&](const std::smatch &name) { return Mentions(methods, file + name.str(1), word, seen); });
}

TEST_F(ColumnsTest, TestsOnARealKernelCheckTheirColumns) {
  const std::map<std::string, std::string> methods = PythonMethods();
  for (const kestrel::Report *report : kestrel::kReports) {
    for (const ColumnRow &row : RowsOf(*report)) {
      if (row.isOneOfSeveral) continue;
      for (const std::string &test : row.tests) {
        if (std::islower(Plain(test)[0]) == 0) continue;
        EXPECT_TRUE(Mentions(methods, Plain(test), row.column)) << report->name << " " << row.column << ": " << test;
      }
    }
  }
}

// The tests of each figure on a real kernel, by the name of the figure, such as "vmm.mapped".
std::map<std::string, Names> MachineTestsOfFigures() {
  std::map<std::string, Names> tests;
  for (const kestrel::Report *report : kestrel::kReports) {
    for (const ColumnRow &row : RowsOf(*report)) {
      for (const std::string &figure : row.figures)
        std::ranges::copy_if(row.tests, std::inserter(tests[figure], tests[figure].end()),
                             [](const std::string &test) { return std::islower(Plain(test)[0]) != 0; });
    }
  }
  return tests;
}

TEST_F(ColumnsTest, ExactFiguresAreComparedOnARealKernel) {
  const std::map<std::string, Names> tests = MachineTestsOfFigures();
  for (const FigureRow &row : FigureRows()) {
    if (row.file == "none" || row.source.find("exact") == std::string::npos) continue;
    const auto found = tests.find(row.figure);
    EXPECT_TRUE(found != tests.end() && !found->second.empty()) << row.figure << " is not exact, but as read";
  }
}

TEST_F(ColumnsTest, Total) {
  size_t columns = 0, figures = 0;
  for (const kestrel::Report *report : kestrel::kReports) {
    const std::vector<ColumnRow> rows = RowsOf(*report);
    columns += rows.size();
    figures += static_cast<size_t>(std::ranges::count_if(rows, CarriesAFigure));
  }
  const std::string total =
      "Of " + std::to_string(columns) + " columns, " + std::to_string(figures) + " carry a figure";
  EXPECT_NE(ReadPage().find(total), std::string::npos) << total;
}

}  // namespace
}  // namespace platkit
