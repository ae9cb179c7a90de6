// Reads the tables of docs/linux.md.
#ifndef TESTS_LINUX_LINUX_PAGE_H
#define TESTS_LINUX_LINUX_PAGE_H

#include <string>
#include <vector>

namespace platkit {

struct PageTable {
  std::string heading;  // the nearest heading above the table, of any level
  std::vector<std::string> header;
  std::vector<std::vector<std::string>> rows;
};

// All tables of the page.
std::vector<PageTable> ReadPageTables();

// The tables of figures: kind of group, field, file, value, source.
std::vector<PageTable> ReadFigureTables();

// The text of the page.
std::string ReadPage();

}  // namespace platkit

#endif  // TESTS_LINUX_LINUX_PAGE_H
