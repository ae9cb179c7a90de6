// One sample of a screen: its rows, and the records that the shown columns need.
#ifndef NODAL_TOP_READING_H
#define NODAL_TOP_READING_H

#include <bitset>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platkit/source.h"
#include "tools/nodal/top/screen.h"

namespace nodal::top {

// The identifiers of the nodes whose records are needed.
using NodeSet = std::bitset<platkit::kMaxNodes + 1>;

NodeSet NodesOf(const Screen &screen, std::span<const ColumnChoice> choices);

struct Row {
  static constexpr int64_t kUnset = -1;

  std::string key;   // identifies the row in other samples
  std::string name;  // printable
  int parent = -1;   // the index of the parent row, which comes earlier; -1: none
  int depth = 0;
  uint32_t members = 0;  // the number of rows directly below
  // The instances whose records the row shows.
  int64_t group = kUnset, client = kUnset, monitor = kUnset, memNode = kUnset, numaNode = kUnset;
  std::string_view kind = {};  // of `instance`: heap, buddy or pool
  std::string instance = {};
  bool isSharingPool = false;
  bool isMachine = false;  // the group is a virtual machine
  const HostFigure *figure = nullptr;
};

// The records of one node, by row.
struct NodeRecords {
  const platkit::Node *node;
  std::vector<std::byte> bytes = {};
  std::vector<HVC_ReturnStatus> statuses = {};
  bool isLate = false;  // read after the start of the sample, so that it gives no rate

  std::span<const std::byte> Of(size_t row) const {
    return std::span(bytes).subspan(row * node->record->size, node->record->size);
  }
};

// The figures of the host that are shown above each screen.
struct HostSummary {
  Cell total, free, state;
};

struct Reading {
  std::vector<Row> rows = {};
  std::vector<NodeRecords> records = {};
  std::vector<Cell> own = {};  // the figure of each row, for columns with Use::kRow
  bool isOwnLate = false;      // like NodeRecords::isLate
  HostSummary host = {};
  std::string problem = {};  // a message about a list that could not be read, or about too many rows
  size_t groups = 0;         // groups that were found, including those without a row
  unsigned turn = 0;         // the number of earlier samples of this screen
  bool hasClients = false;   // whether the clients of processes and machines were read

  const NodeRecords *Of(platkit::NodeId node) const;

  // Marks the records that `earlier` lacks as late. `earlier` is a previous reading of the same screen and sample, or
  // null.
  void MarkLate(const Reading *earlier);
};

// Reads one sample of a screen. A figure that cannot be read is unavailable. Throws std::bad_alloc if memory runs out.
// `before` is an earlier sample of the same screen and host, or null. Most names of control groups are copied from it.
Reading ReadScreen(const Screen &screen, platkit::Source &source, const NodeSet &nodes, const Reading *before);

// The figures of one column.
class ColumnReader {
 public:
  ColumnReader(const Reading &reading, const Column &column);

  Cell operator()(size_t row) const;

  bool isLate() const;

 private:
  struct Part {
    const NodeRecords *records;
    const platkit::Field *field;
    Term term;
    bool isLimit;
  };

  static Part PartOf(const Reading &reading, const Term &term);
  static Cell Value(const Part &part, size_t row);
  Cell WithoutRecord(size_t row) const;

  const Reading &reading_;
  const Column &column_;
  std::vector<Part> parts_;
  std::optional<Part> otherwise_;
};

// Returns the printable text of a row in a column of texts.
std::string TextOf(const Reading &reading, const Column &column, size_t row);

// Returns the value of a term in a record.
Cell TermValue(const Term &term, std::span<const std::byte> record);

}  // namespace nodal::top

#endif  // NODAL_TOP_READING_H
