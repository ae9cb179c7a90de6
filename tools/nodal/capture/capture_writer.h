// Writes the nodes that were read from a host to a snapshot.
#ifndef NODAL_CAPTURE_CAPTURE_WRITER_H
#define NODAL_CAPTURE_CAPTURE_WRITER_H

#include <map>
#include <optional>
#include <set>
#include <string>

#include "platkit/snapshot/snapshot_writer.h"
#include "tools/nodal/capture/pseudonyms.h"
#include "tools/nodal/tree/caching_tree.h"

namespace nodal {

struct CaptureTotals {
  std::set<const Node *> nodes;
  size_t records = 0;
  size_t lists = 0;
  std::map<std::string, size_t> unreadable;  // numbers of unreadable nodes, by the text of their status
};

// AddHeader and Add throw a Failure.
class CaptureWriter {
 public:
  // Without pseudonyms, names are written unchanged.
  explicit CaptureWriter(std::optional<Pseudonyms> pseudonyms) : pseudonyms_(std::move(pseudonyms)) {}

  void AddHeader(platkit::snapshot::Header header);
  void Add(const Answer &answer);

  const CaptureTotals &totals() const { return totals_; }

  [[nodiscard]] HVC_ReturnStatus WriteTo(int fd) { return writer_.WriteTo(fd); }

 private:
  void AddUnreadable(const std::string &path, const Answer &answer);
  void AddRecord(const std::string &path, const Answer &answer);
  void AddList(const std::string &path, const Answer &answer);
  Arguments ArgumentsOf(const Answer &answer);
  Argument Replaced(std::string_view what, const Argument &instance);

  std::optional<Pseudonyms> pseudonyms_;
  platkit::snapshot::SnapshotWriter writer_;
  CaptureTotals totals_;
};

}  // namespace nodal

#endif  // NODAL_CAPTURE_CAPTURE_WRITER_H
