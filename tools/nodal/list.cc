// nodal ls: what lies below a path.
#include <algorithm>
#include <cstdio>
#include <vector>

#include "tools/nodal/commands.h"
#include "tools/nodal/instances.h"
#include "tools/nodal/output.h"
#include "tools/nodal/shape.h"
#include "tools/nodal/text.h"

namespace nodal {
namespace {

struct Child {
  std::string name;
  bool isFolder = false;
  std::string kind = "-";  // of the node of that name, if there is one
  std::string size = "-";  // of the record in bytes, or of the list in entries
};

class Lister {
 public:
  explicit Lister(const std::string &path) : path_(path), parts_(Split(path)) {}

  // Throws a Failure if the path leads nowhere.
  std::vector<Child> Children() {
    for (const Shape &shape : AllShapes())
      AddShape(shape);
    if (!isFolder_ && children_.empty()) throw Failure(path_.empty() ? "/" : path_, HVC_NOT_FOUND);
    // Like a file, a node with nothing below it is listed itself.
    if (isFolder_) std::erase_if(children_, [this](const Child &child) { return child.name == path_; });
    // Names that are fixed stand in the order of the alphabet, instances in that of the kernel.
    if (!areInstances_) std::ranges::sort(children_, {}, &Child::name);
    return std::move(children_);
  }

 private:
  void AddShape(const Shape &shape) {
    const std::vector<std::string_view> parts = Split(shape.path);
    Arguments arguments;
    if (parts.size() < parts_.size() || !Match(shape, parts, arguments)) return;
    if (parts.size() == parts_.size()) {
      AddLeaf(shape, arguments, path_);
      return;
    }
    isFolder_ = true;
    const std::string_view next = parts[parts_.size()];
    const bool isLeaf = parts.size() == parts_.size() + 1;
    if (!IsArgument(next)) {
      AddChild(shape, isLeaf, arguments, std::string(next));
      return;
    }
    areInstances_ = true;
    for (const Argument &instance : instances_.Of(*shape.node, arguments)) {
      Arguments inner = arguments;
      inner.push_back(instance);
      AddChild(shape, isLeaf, inner, PathForm(instance));
    }
  }

  // Whether the start of the shape's path is the path that is listed; its arguments, if so.
  bool Match(const Shape &shape, const std::vector<std::string_view> &parts, Arguments &arguments) {
    for (size_t i = 0; i < parts_.size(); ++i) {
      if (!IsArgument(parts[i])) {
        if (parts[i] != parts_[i]) return false;
        continue;
      }
      const Arguments &instances = instances_.Of(*shape.node, arguments);
      const auto named = std::ranges::find(instances, parts_[i], PathForm);
      if (named == instances.end()) return false;
      arguments.push_back(*named);
    }
    return true;
  }

  Child &ChildNamed(const std::string &name) {
    const auto [place, isNew] = places_.emplace(name, children_.size());
    if (isNew) children_.push_back({.name = name});
    return children_[place->second];
  }

  void AddChild(const Shape &shape, bool isLeaf, const Arguments &arguments, const std::string &name) {
    if (isLeaf) {
      AddLeaf(shape, arguments, name);
    } else {
      ChildNamed(name).isFolder = true;
    }
  }

  // A node that this host does not have is not shown; one that cannot be read is.
  void AddLeaf(const Shape &shape, const Arguments &arguments, const std::string &name) {
    HVC_ReturnStatus status;
    std::string size;
    if (shape.asRecord) {
      std::vector<std::byte> record(shape.node->record->size);
      status = tree_.Get(*shape.node, arguments, record);
      size = std::to_string(record.size());
    } else {
      Arguments entries;
      status = tree_.List(*shape.node, arguments, entries);
      size = std::to_string(entries.size());
    }
    if (status == HVC_NOT_FOUND) return;
    Child &child = ChildNamed(name);
    child.kind = shape.asRecord ? "record" : "list";
    child.size = status == HVC_OK ? size : "?";
  }

  std::string path_;
  std::vector<std::string_view> parts_;
  HostTree tree_;
  Instances instances_{tree_};
  bool isFolder_ = false;
  bool areInstances_ = false;
  std::vector<Child> children_;
  std::map<std::string, size_t> places_;
};

}  // namespace

void List(const ListOptions &options) {
  std::string path = options.path;
  if (!path.starts_with('/')) throw Failure(path, "a path begins with '/'");
  if (path.ends_with('/')) path.pop_back();
  for (const Child &child : Lister(path).Children()) {
    const std::string name = Printable(child.name) + (child.isFolder ? "/" : "");
    if (!options.detailed) {
      Print(name + "\n");
      continue;
    }
    char columns[64];
    std::snprintf(columns, sizeof columns, "%-6s %6s  ", child.kind.c_str(), child.size.c_str());
    const bool isItself = child.name == path;
    Print(columns + (isItself ? name : Printable(path) + "/" + name) + "\n");
  }
}

}  // namespace nodal
