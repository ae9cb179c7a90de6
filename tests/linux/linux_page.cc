#include "tests/linux/linux_page.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

namespace platkit {
namespace {

std::vector<std::string> CellsOf(const std::string &line) {
  std::vector<std::string> cells;
  for (size_t start = 1, end = 0; (end = line.find('|', start)) != std::string::npos; start = end + 1) {
    std::string cell = line.substr(start, end - start);
    cell.erase(0, cell.find_first_not_of(' '));
    cell.erase(cell.find_last_not_of(' ') + 1);
    cells.push_back(cell);
  }
  return cells;
}

}  // namespace

std::string ReadPage() {
  std::ifstream page(LINUX_PAGE);
  EXPECT_TRUE(page);
  return {std::istreambuf_iterator<char>(page), {}};
}

std::vector<PageTable> ReadPageTables() {
  std::istringstream page(ReadPage());
  std::vector<PageTable> tables;
  std::string heading;
  bool inTable = false;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with('#')) heading = line.substr(line.find(' ') + 1);
    if (!line.starts_with('|')) {
      inTable = false;
    } else if (!inTable) {
      tables.push_back({heading, CellsOf(line), {}});
      inTable = true;
    } else if (!line.starts_with("|---")) {
      tables.back().rows.push_back(CellsOf(line));
    }
  }
  return tables;
}

std::vector<PageTable> ReadFigureTables() {
  std::vector<PageTable> tables = ReadPageTables();
  std::erase_if(tables, [](const PageTable &t) { return t.header.size() < 2 || t.header[1] != "field"; });
  return tables;
}

}  // namespace platkit
