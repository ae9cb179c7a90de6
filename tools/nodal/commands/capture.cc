// nodal capture: the tree of a host as a snapshot.
#include <memory>

#include "tools/nodal/capture/capture.h"
#include "tools/nodal/commands/command.h"
#include "tools/nodal/history/moment_file.h"

namespace nodal {

Run DeclareCapture(OptionSet &options, const SourceOptions &source) {
  const auto values = std::make_shared<CaptureOptions>();
  options.Add("-o,--output SNAPSHOT", values->snapshot, "The snapshot to write").Required().NotEmpty();
  options.AddRepeatable("--only PATH", values->only, "Save only this path and everything below it; repeatable");
  const Option anonymize = options.AddFlag("--anonymize", values->anonymize,
                                           "Replace names and UUIDs, including the host's own, with pseudonyms");
  options
      .Add("--key-file FILE", values->keyFile,
           "Derive the pseudonyms from the key in this file (- means standard input); the same key gives the same "
           "pseudonyms")
      .Needs(anonymize)
      .NotEmpty();
  options.Refuse("--key", "every user could see the key in the list of processes; use --key-file");
  options.SetFooter(
      "PCI devices are saved only with --only /hardware/pci; their registers are never saved.\n"
      "A node that cannot be read is saved with its failure status, so a report on the snapshot fails as on the host.");
  return [values, &source] {
    // The header and the nodes are read one after the other, but must be from the same sample.
    const SourceOptions fixed = {.cache = WithFixedTime(source.cache), .root = source.root};
    UseSource(fixed);
    values->cache = fixed.cache;
    values->root = fixed.root;
    Capture(*values);
    return kSuccess;
  };
}

}  // namespace nodal
