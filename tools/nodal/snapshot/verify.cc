#include "tools/nodal/snapshot/verify.h"

#include <algorithm>
#include <memory>

#include "platkit/history/history_source.h"
#include "platkit/snapshot/snapshot_source.h"
#include "tools/nodal/history/moment_file.h"
#include "tools/nodal/snapshot/open_failure.h"
#include "tools/nodal/snapshot/reference_check.h"
#include "tools/nodal/snapshot/snapshot_entries.h"

namespace nodal {
namespace {

std::unique_ptr<platkit::Source> SourceOf(const std::string &snapshot) {
  std::unique_ptr<platkit::Source> source;
  const HVC_ReturnStatus status = IsMoment(snapshot) ? platkit::OpenMoment(snapshot.c_str(), source)
                                                     : platkit::OpenSnapshot(snapshot.c_str(), source);
  if (status != HVC_OK) throw OpenFailure(snapshot, status);
  return source;
}

std::string Summary(const CheckedNodes &nodes, const Problems &problems) {
  const auto isReadRecord = [&](const auto &node) {
    return node.second.asRecord && !nodes.unread.contains(node.first);
  };
  const auto records = static_cast<size_t>(std::ranges::count_if(nodes.byPath, isReadRecord));
  const size_t lists = nodes.byPath.size() - nodes.unread.size() - records;
  std::string summary = Plural(records, "record") + ", " + Plural(lists, "list") + ", ";
  if (!nodes.unread.empty()) summary += Plural(nodes.unread.size(), "failure") + ", ";
  return summary + (problems.count() == 0 ? "no problems" : Plural(problems.count(), "problem"));
}

}  // namespace

bool VerifySnapshot(const std::string &snapshot) {
  OpenedSnapshot opened(snapshot);
  const std::unique_ptr<platkit::Source> source = SourceOf(snapshot);
  Problems problems;
  const CheckedNodes nodes = CheckFile(opened.file, problems);
  CheckReferences(nodes, *source, problems);
  Print(Printable(snapshot) + ": " + Summary(nodes, problems) + "\n");
  return problems.count() == 0;
}

}  // namespace nodal
