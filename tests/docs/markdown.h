// Reads the sections and code blocks of Markdown documents.
#ifndef TESTS_DOCS_MARKDOWN_H
#define TESTS_DOCS_MARKDOWN_H

#include <filesystem>
#include <string>
#include <vector>

namespace docs {

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

// The sections of a document. The first one has no name and contains the text between the title and the first heading.
std::vector<Section> ReadSections(const std::filesystem::path &file);

}  // namespace docs

#endif  // TESTS_DOCS_MARKDOWN_H
