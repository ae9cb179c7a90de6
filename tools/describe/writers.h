// What the templates' placeholders stand for.
#ifndef TOOLS_DESCRIBE_WRITERS_H
#define TOOLS_DESCRIBE_WRITERS_H

#include <ostream>

#include "src/reports/report.h"

namespace describe {

// kestrel(1), in man(7).
namespace manual {
void PutReports(std::ostream &out);  // a line for each report
void PutReport(std::ostream &out, const kestrel::Report &report);
void PutColumns(std::ostream &out, const kestrel::Report &report);
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
