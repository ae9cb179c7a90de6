// nodal top: a live view of a host on the terminal.
#include "tools/nodal/top/top.h"

#include <strings.h>

#include <memory>

#include "tools/nodal/commands/amounts.h"
#include "tools/nodal/commands/command.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

struct TopTexts {
  std::string screen = "groups";
  std::string columns;
  std::string sort;
  bool isReversed = false;
  std::string filter;
  std::string subtree;
  bool isFlat = false;
  bool hidesIdle = false;
  std::string unit = "auto";
  std::string every = "1";
  std::string count;
  bool isBatch = false;
};

const top::Screen &ScreenNamed(const std::string &name) {
  std::string names;
  for (const top::Screen &screen : top::Screens()) {
    if (strcasecmp(name.c_str(), screen.name.data()) == 0) return screen;
    names += (names.empty() ? "" : ", ") + std::string(screen.name);
  }
  throw UsageError("--screen " + name, "expected one of " + names);
}

top::ColumnChoice ColumnNamed(const top::Screen &screen, const std::string &option, const std::string &name) {
  if (const auto choice = top::FindColumn(screen, name)) return *choice;
  throw UsageError(option + " " + name, "the screen " + std::string(screen.name) +
                                            " has no such column (in nodal top, c lists the columns)");
}

// Parses column names that are separated by colons. Omits the column with the name of the row, because it is always
// shown.
std::vector<top::ColumnChoice> ColumnsNamed(const top::Screen &screen, std::string names) {
  std::vector<top::ColumnChoice> columns;
  for (names += ':'; !names.empty();) {
    const size_t colon = names.find(':');
    const top::ColumnChoice choice = ColumnNamed(screen, "--columns", names.substr(0, colon));
    if (choice.column != &top::kNameColumn) columns.push_back(choice);
    names.erase(0, colon + 1);
  }
  return columns;
}

top::Settings SettingsOf(const top::Screen &screen, const TopTexts &texts) {
  top::Settings settings = top::DefaultSettings(screen);
  if (!texts.columns.empty()) settings.columns = ColumnsNamed(screen, texts.columns);
  if (!texts.sort.empty()) settings.sort = ColumnNamed(screen, "--sort", texts.sort);
  settings.isAscending = texts.isReversed;
  settings.isFlat = texts.isFlat;
  settings.hidesIdle = texts.hidesIdle;
  settings.filter = texts.filter;
  settings.subtree = texts.subtree;
  return settings;
}

std::string SourceWords(const SourceOptions &source) {
  if (!source.cache.empty()) return " --cache " + top::ShellWord(source.cache);
  return source.root.empty() ? "" : " --root " + top::ShellWord(source.root);
}

top::TopOptions TopOptionsOf(const TopTexts &texts, const SourceOptions &source) {
  top::TopOptions options = {.cache = source.cache, .root = source.root, .isBatch = texts.isBatch};
  for (const top::Screen &screen : top::Screens())
    options.session.settings[static_cast<size_t>(screen.id)] = top::DefaultSettings(screen);
  const top::Screen &screen = ScreenNamed(texts.screen);
  options.session.screen = screen.id;
  options.session.settings[static_cast<size_t>(screen.id)] = SettingsOf(screen, texts);
  const auto unit = top::ParseUnit(texts.unit);
  if (!unit) throw UsageError("--unit " + texts.unit, "expected auto, b, kb, mb or pg");
  options.session.unit = *unit;
  options.interval = ParseInterval(texts.every);
  options.session.every = texts.every;
  options.session.source = SourceWords(source);
  if (!texts.count.empty()) options.count = ParseCount(texts.count);
  return options;
}

}  // namespace

Run DeclareTop(OptionSet &options, const SourceOptions &source) {
  const auto texts = std::make_shared<TopTexts>();
  options.Add("--screen NAME", texts->screen, "Start with groups, machines, host, nodes or heaps").ShowDefault();
  options
      .Add("--columns NAMES", texts->columns,
           "Show only these columns after the names of the rows; separate them with colons")
      .NotEmpty();
  options.Add("--sort COLUMN", texts->sort, "Sort by this column; NAME/s is the change of a counter per second")
      .NotEmpty();
  options.AddFlag("--reverse", texts->isReversed, "Sort in the other direction");
  options.Add("--filter TEXT", texts->filter, "Show only rows whose name contains this text, ignoring case").NotEmpty();
  options
      .Add("--subtree GROUP", texts->subtree,
           "Show only this row and everything below it: a group's number, or a name such as 'node 1'")
      .NotEmpty();
  options.AddFlag("--flat", texts->isFlat, "Show a list instead of a tree");
  options.AddFlag("--hide-idle", texts->hidesIdle, "Hide rows in which all shown figures are 0");
  options
      .Add("--unit UNIT", texts->unit, "Show amounts in b, kb, mb, pg (4 KB), or a unit that fits each amount (auto)")
      .ShowDefault();
  options.Add("--every SECONDS", texts->every, "The time between two samples").ShowDefault();
  options.AddFlag("--batch", texts->isBatch, "Print the table instead of showing it on the terminal");
  options.Add("-n,--count N", texts->count, "End after this number of samples (default with --batch: 1)").NotEmpty();
  options.SetFooter(
      "Press ? for the keys. Settings are not saved. Press w to print, on exit, the command that shows the same view "
      "again.");
  return [texts, &source] {
    top::Show(TopOptionsOf(*texts, source));
    return kSuccess;
  };
}

}  // namespace nodal
