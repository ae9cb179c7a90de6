// The functions that replace the placeholders of the templates.
#ifndef TOOLS_DESCRIBE_WRITERS_H
#define TOOLS_DESCRIBE_WRITERS_H

#include <ostream>
#include <string>
#include <vector>

#include "src/reports/report.h"

namespace describe {

// For manual pages, in man(7).
namespace manual {
void PrintReports(std::ostream &out);  // the name and the summary of each report
void PrintReport(std::ostream &out, const kestrel::Report &report);
void PrintColumns(std::ostream &out, const kestrel::Report &report);

// Prints each node: its path, its identifier object, its arguments and its record or list.
void PrintNodes(std::ostream &out);

// Prints each record field by field.
void PrintRecords(std::ostream &out);

// Prints the heading and the summary of a nodal command.
void PrintCommand(std::ostream &out, const std::string &name);

// Prints an option of a nodal command and its help text. `argument` is a name for its argument; empty if it has none.
void PrintOption(std::ostream &out, const std::string &command, const std::string &name, const std::string &argument);

// The placeholders "command NAME" and "option NAME --OPTION" for every command and option of nodal.
std::vector<std::string> CommandPlaceholders();
}  // namespace manual

// For completions: print the cases of a shell's case statement over a key. The key is "reports", or a report's name in
// lower case followed by "/options", "/columns", "/units" or "/flags". In bash and zsh, a case assigns the choices to
// the array "choices"; in fish, it prints them.
namespace bash {
void PrintChoices(std::ostream &out);
}
namespace zsh {
void PrintChoices(std::ostream &out);
}
namespace fish {
void PrintChoices(std::ostream &out);
}

}  // namespace describe

#endif  // TOOLS_DESCRIBE_WRITERS_H
