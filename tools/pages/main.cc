// page FRAME: writes the manual page of a hand-written frame to standard output. The version is put in for
// @PROJECT_VERSION@, and a part that is kept elsewhere for each comment that names it:
//
//   .\" @nodes            the nodes of the tree
//   .\" @records          the records of the tree
//   .\" @markdown FILE    a Markdown text, by its path from the frame
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>

#include "platkit/version.h"
#include "tools/pages/page.h"

namespace {

constexpr std::string_view kPart = ".\\\" @";
constexpr std::string_view kMarkdown = "markdown ";
constexpr std::string_view kVersion = "@PROJECT_VERSION@";

bool WritePart(std::string_view part, const std::filesystem::path &folder) {
  if (part == "nodes") {
    pages::WriteNodes(std::cout);
  } else if (part == "records") {
    pages::WriteRecords(std::cout);
  } else if (part.starts_with(kMarkdown)) {
    std::ifstream text(folder / part.substr(kMarkdown.size()));
    pages::WriteMarkdown(text, std::cout);
    return text.eof();
  } else {
    return false;
  }
  return true;
}

bool WritePage(const std::filesystem::path &path) {
  std::ifstream frame(path);
  for (std::string line; std::getline(frame, line);) {
    if (line.starts_with(kPart)) {
      if (WritePart(line.substr(kPart.size()), path.parent_path())) continue;
      std::cerr << path.string() << ": no such part: " << line << "\n";
      return false;
    }
    if (const size_t at = line.find(kVersion); at != line.npos) line.replace(at, kVersion.size(), PLATKIT_VERSION);
    std::cout << line << "\n";
  }
  return frame.eof() && std::cout.flush();
}

}  // namespace

int main(int argc, char **argv) { return argc == 2 && WritePage(argv[1]) ? 0 : 1; }
