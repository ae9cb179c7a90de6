// nodal page: a host as one HTML file.
#include "tools/nodal/page/page.h"

#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/commands/command_line.h"
#include "tools/nodal/history/moment_file.h"
#include "tools/nodal/support/output.h"

namespace nodal {
Run DeclarePage(OptionSet &options, const SourceOptions &source) {
  const auto values = std::make_shared<PageOptions>();
  const auto operand = std::make_shared<std::string>();
  options.Add("source", *operand, "A snapshot, or the folder of a history, instead of the running host");
  options.Add("-o,--output FILE", values->output, "The HTML file to write").Required().NotEmpty();
  const Option anonymize = options.AddFlag("--anonymize", values->anonymize,
                                           "Replace names and UUIDs, including the host's own, with pseudonyms");
  options
      .Add("--key-file FILE", values->keyFile,
           "Derive the pseudonyms from the key in this file (- means standard input); the same key gives the same "
           "pseudonyms")
      .Needs(anonymize)
      .NotEmpty();
  options.Add("--from TIME", values->from, "Start at this time of the history (default: its start)").NotEmpty();
  options.Add("--to TIME", values->to, "End at this time of the history (default: its end)").NotEmpty();
  options.SetFooter("The page needs no network and no other file. Any browser opens it.");
  return [values, operand, &source] {
    SourceOptions own = source;
    if (!operand->empty()) {
      if (!own.cache.empty() || !own.root.empty()) throw UsageError(*operand, "the source is given twice");
      own.cache = *operand;
    }
    if (IsFolder(own.cache)) {
      values->history = own.cache;
      WritePage(*values);
      return kSuccess;
    }
    if (!values->from.empty() || !values->to.empty()) throw UsageError("--from and --to need the folder of a history");
    UseSource(own);
    values->cache = own.cache;
    values->root = own.root;
    WritePage(*values);
    return kSuccess;
  };
}

}  // namespace nodal
