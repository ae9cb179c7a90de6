// Documents in Markdown, as their reader sees them.
#ifndef TESTS_DOCS_MARKDOWN_H
#define TESTS_DOCS_MARKDOWN_H

#include <filesystem>
#include <string>
#include <vector>

namespace docs {

// A block that stands word for word.
struct Block {
  std::string language;
  std::string text;
  std::string before;  // the paragraph above it
};

struct Section {
  std::string name;
  std::string prose;
  std::vector<Block> blocks;
};

// The sections of a document. The first, without a name, is what comes before all headings but the title.
std::vector<Section> ReadSections(const std::filesystem::path &file);

}  // namespace docs

#endif  // TESTS_DOCS_MARKDOWN_H
