// The figures of a host that a page shows.
#ifndef NODAL_PAGE_PAGE_DATA_H
#define NODAL_PAGE_PAGE_DATA_H

#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/node_ref.h"
#include "tools/nodal/tree/tree.h"

namespace nodal {

// One group, heap or other instance. Its texts are printable UTF-8.
struct PageRow {
  std::string name;
  std::string tag = {};  // of a group
  int64_t id = 0;        // the ID of a group, or the NUMA node of a pool
  int parent = -1;       // of a group: the row of its parent group, which comes earlier; -1: none
  // The instances of the row, by their kind in the paths of nodes. A virtual machine has its own "client", and as
  // "monitor" the client of its monitor.
  std::map<std::string_view, Argument> instances = {};
};

// The records of one node at one instant.
struct PageRecords {
  const Node *node;
  std::map<size_t, std::string> bytes = {};            // the bytes of the records, by row
  std::map<size_t, HVC_ReturnStatus> unreadable = {};  // rows whose record could not be read
};

// Rows that have records of the same nodes.
struct PageFamily {
  std::vector<PageRow> rows = {};
  std::vector<PageRecords> records = {};

  const PageRecords *Of(const Node &node) const {
    for (const PageRecords &each : records) {
      if (each.node == &node) return &each;
    }
    return nullptr;
  }

  // The record of a row, if it has one.
  template <typename Record>
  std::optional<Record> Get(platkit::NodeRef<Record> node, size_t row) const {
    const PageRecords *all = Of(node);
    if (all == nullptr) return std::nullopt;
    const auto found = all->bytes.find(row);
    if (found == all->bytes.end()) return std::nullopt;
    Record record;
    std::memcpy(&record, found->second.data(), sizeof record);
    return record;
  }
};

// A list that could not be read.
struct UnreadableList {
  std::string path;
  HVC_ReturnStatus status;
};

struct PageData {
  std::string host = {};
  std::string time = {};        // in UTC, such as 2026-03-14T09:26:53Z; empty if unknown
  std::string source = {};      // the kind of source, in words
  PageFamily hostFigures = {};  // a single row
  PageFamily states = {};       // memory states, from most to least free memory
  PageFamily groups = {};       // each group directly before its members
  PageFamily buddies = {};
  PageFamily pools = {};
  PageFamily heaps = {};
  std::vector<UnreadableList> unreadableLists = {};
};

}  // namespace nodal

#endif  // NODAL_PAGE_PAGE_DATA_H
