#include "tools/nodal/snapshot/diff.h"

#include "tools/nodal/snapshot/diff_printer.h"
#include "tools/nodal/tree/path_filter.h"

namespace nodal {

bool DiffSnapshots(const DiffOptions &options) {
  OpenedSnapshot from(options.from), to(options.to);
  PathFilter filter(options.only);
  const EntriesInPathOrder::Filter isWanted = [&filter](std::string_view path) {
    filter.MarkFound(path);
    return filter.Contains(path);
  };
  EntriesInPathOrder fromEntries(from, isWanted), toEntries(to, isWanted);
  const std::unique_ptr<DiffPrinter> printer = options.json ? MakeDiffJsonPrinter() : MakeDiffTextPrinter();
  bool areEqual = true;
  printer->Begin(from, to);
  FindChanges(fromEntries, toEntries, [&](const Change &change) {
    areEqual = false;
    printer->Show(change);
  });
  printer->End();
  filter.RequireAllFound();
  return areEqual;
}

}  // namespace nodal
