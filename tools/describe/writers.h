// What the templates' placeholders stand for.
#ifndef TOOLS_DESCRIBE_WRITERS_H
#define TOOLS_DESCRIBE_WRITERS_H

#include <istream>
#include <ostream>

#include "src/reports/report.h"

namespace describe {

// The manual pages, in man(7).
namespace manual {
void PutReports(std::ostream &out);  // a line for each report
void PutReport(std::ostream &out, const kestrel::Report &report);
void PutColumns(std::ostream &out, const kestrel::Report &report);

// Every node of the tree: its path, its identifier object, its arguments, and what it yields.
void PutNodes(std::ostream &out);

// Every record that nodes yield, field by field.
void PutRecords(std::ostream &out);

// A Markdown text of the form that those in docs/ have, without its title: headings, paragraphs, lists of one level,
// tables, blocks of code; in a line, `code` and **terms**.
void PutMarkdown(std::ostream &out, std::istream &text);
}  // namespace manual

// The cases of a shell's statement over a key: "reports", or a report's name in lower case with "/options", "/columns",
// "/units" or "/flags" behind it. They put what the key stands for into an array "choices"; in fish, they print it.
namespace bash {
void PutWords(std::ostream &out);
}
namespace zsh {
void PutWords(std::ostream &out);
}
namespace fish {
void PutWords(std::ostream &out);
}

}  // namespace describe

#endif  // TOOLS_DESCRIBE_WRITERS_H
