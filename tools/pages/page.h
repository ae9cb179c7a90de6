// The parts of manual pages, in the language of man(7), that are not written by hand.
#ifndef PAGES_PAGE_H
#define PAGES_PAGE_H

#include <istream>
#include <ostream>

namespace pages {

// Every node of the tree: its path, its identifier object, its arguments, and what it yields.
void WriteNodes(std::ostream &page);

// Every record that nodes yield, field by field.
void WriteRecords(std::ostream &page);

// A Markdown text of the form that those in docs/ have, without its title: headings, paragraphs, lists of one level,
// tables, blocks of code; in a line, `code` and **terms**.
void WriteMarkdown(std::istream &text, std::ostream &page);

}  // namespace pages

#endif  // PAGES_PAGE_H
