#include "tests/docs/markdown.h"

#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace docs {

std::vector<Section> ReadSections(const std::filesystem::path &file) {
  std::vector<Section> sections(1);
  bool inBlock = false;
  std::string paragraph;
  for (const std::string &line : testing_support::Lines(testing_support::ReadFile(file))) {
    if (line.starts_with("## ") && !inBlock) sections.push_back({.name = line.substr(3), .prose = {}, .blocks = {}});
    Section &section = sections.back();
    if (line.starts_with("```")) {
      inBlock = !inBlock;
      if (inBlock) section.blocks.push_back({.language = line.substr(3), .text = {}, .before = paragraph});
      paragraph.clear();
    } else if (inBlock) {
      section.blocks.back().text += line + "\n";
    } else {
      section.prose += line + "\n";
      paragraph += line + "\n";
    }
  }
  return sections;
}

}  // namespace docs
