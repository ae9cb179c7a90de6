// A tree that caches the results of reads.
#ifndef NODAL_TREE_CACHING_TREE_H
#define NODAL_TREE_CACHING_TREE_H

#include <functional>
#include <map>
#include <string>

#include "tools/nodal/tree/tree.h"

namespace nodal {

// The result of reading a node.
struct Answer {
  const Node *node;
  bool asRecord;
  Arguments arguments;
  HVC_ReturnStatus status = HVC_NOT_FOUND;
  std::string record = {};         // the bytes of the record
  Arguments entries = {};          // the entries of the list
  bool isReportedMissing = false;  // a capture saves the status "not found"
};

// Reads each node of another tree at most once. A list that cannot be read is reported as not found, so that a walk
// continues without it.
class CachingTree : public Tree {
 public:
  // Calls `beforeReading` before each read of the host.
  CachingTree(Tree &host, std::function<void()> beforeReading)
      : host_(host), beforeReading_(std::move(beforeReading)) {}

  HVC_ReturnStatus Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) override;

  // Reads a node only to cache it.
  void Read(const Node &node, bool asRecord, const Arguments &arguments) { Find(node, asRecord, arguments); }

  // Stops reading: from now on, nodes without a cached result are not found.
  void Freeze() { isFrozen_ = true; }

  // The results by path.
  std::map<std::string, Answer> &answers() { return answers_; }

 private:
  Answer *Find(const Node &node, bool asRecord, const Arguments &arguments);

  Tree &host_;
  std::function<void()> beforeReading_;
  bool isFrozen_ = false;
  std::map<std::string, Answer> answers_;
};

}  // namespace nodal

#endif  // NODAL_TREE_CACHING_TREE_H
