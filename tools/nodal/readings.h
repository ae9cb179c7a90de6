// All that was read of a tree so far.
#ifndef NODAL_READINGS_H
#define NODAL_READINGS_H

#include <functional>
#include <map>
#include <string>

#include "tools/nodal/tree.h"

namespace nodal {

struct Reading {
  const Node *node;
  bool asRecord;
  Arguments arguments;
  HVC_ReturnStatus status = HVC_NOT_FOUND;
  std::string record = {};  // the bytes
  Arguments entries = {};   // of the list
  bool isToldOf = false;    // that there was nothing is worth telling
};

// A tree that asks another one for each node once, and remembers the answer. What the answers say of instances is all
// that those who walk it go by, so a list that cannot be read is like one that is not there.
class Readings : public Tree {
 public:
  // `beforeReading` is called before each question to the host.
  Readings(Tree &host, std::function<void()> beforeReading) : host_(host), beforeReading_(std::move(beforeReading)) {}

  HVC_ReturnStatus Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) override;

  // Reads a node for what is remembered of it.
  void Read(const Node &node, bool asRecord, const Arguments &arguments) { Ask(node, asRecord, arguments); }

  // From now on, what has not been read is not there.
  void Close() { isClosed_ = true; }

  // By path.
  std::map<std::string, Reading> &byPath() { return byPath_; }

 private:
  Reading *Ask(const Node &node, bool asRecord, const Arguments &arguments);

  Tree &host_;
  std::function<void()> beforeReading_;
  bool isClosed_ = false;
  std::map<std::string, Reading> byPath_;
};

}  // namespace nodal

#endif  // NODAL_READINGS_H
