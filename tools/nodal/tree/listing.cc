#include "tools/nodal/tree/listing.h"

#include <algorithm>
#include <map>

#include "tools/nodal/support/output.h"
#include "tools/nodal/tree/instances.h"
#include "tools/nodal/tree/path_template.h"

namespace nodal {
namespace {

class Lister {
 public:
  Lister(Tree &tree, const std::string &path) : tree_(tree), path_(path), parts_(SplitPath(path)) {}

  std::vector<ListingEntry> Entries() {
    for (const PathTemplate &form : AllPathTemplates())
      AddTemplate(form);
    if (!hasChildren_ && entries_.empty()) throw Failure(path_.empty() ? "/" : path_, HVC_NOT_FOUND);
    if (hasChildren_) std::erase_if(entries_, [this](const ListingEntry &entry) { return entry.name == path_; });
    if (!areInstances_) std::ranges::sort(entries_, {}, &ListingEntry::name);
    return std::move(entries_);
  }

 private:
  void AddTemplate(const PathTemplate &form) {
    const std::vector<std::string_view> parts = SplitPath(form.path);
    Arguments arguments;
    if (parts.size() < parts_.size() || !Match(form, parts, arguments)) return;
    if (parts.size() == parts_.size()) {
      AddLeaf(form, arguments, path_);
      return;
    }
    hasChildren_ = true;
    const std::string_view next = parts[parts_.size()];
    const bool isLeaf = parts.size() == parts_.size() + 1;
    if (!IsPlaceholder(next)) {
      AddEntry(form, isLeaf, arguments, std::string(next));
      return;
    }
    areInstances_ = true;
    for (const Argument &instance : instances_.Of(*form.node, arguments)) {
      Arguments inner = arguments;
      inner.push_back(instance);
      AddEntry(form, isLeaf, inner, PathForm(instance));
    }
  }

  // Whether the listed path is a prefix of a path of this form. If so, sets `arguments` to the arguments in the listed
  // path.
  bool Match(const PathTemplate &form, const std::vector<std::string_view> &parts, Arguments &arguments) {
    for (size_t i = 0; i < parts_.size(); ++i) {
      if (!IsPlaceholder(parts[i])) {
        if (parts[i] != parts_[i]) return false;
        continue;
      }
      const Arguments &instances = instances_.Of(*form.node, arguments);
      const auto named = std::ranges::find(instances, parts_[i], PathForm);
      if (named == instances.end()) return false;
      arguments.push_back(*named);
    }
    return true;
  }

  ListingEntry &EntryNamed(const std::string &name) {
    const auto [place, isNew] = places_.emplace(name, entries_.size());
    if (isNew) entries_.push_back({.name = name});
    return entries_[place->second];
  }

  void AddEntry(const PathTemplate &form, bool isLeaf, const Arguments &arguments, const std::string &name) {
    if (isLeaf) {
      AddLeaf(form, arguments, name);
    } else {
      EntryNamed(name).hasChildren = true;
    }
  }

  // Omits a node that the host does not have, but not a node that cannot be read.
  void AddLeaf(const PathTemplate &form, const Arguments &arguments, const std::string &name) {
    HVC_ReturnStatus status;
    std::string size;
    if (form.asRecord) {
      std::vector<std::byte> record(form.node->record->size);
      status = tree_.Get(*form.node, arguments, record);
      size = std::to_string(record.size());
    } else {
      Arguments entries;
      status = tree_.List(*form.node, arguments, entries);
      size = std::to_string(entries.size());
    }
    if (status == HVC_NOT_FOUND) return;
    ListingEntry &entry = EntryNamed(name);
    entry.kind = form.asRecord ? "record" : "list";
    entry.size = status == HVC_OK ? size : "?";
  }

  Tree &tree_;
  std::string path_;
  std::vector<std::string_view> parts_;
  Instances instances_{tree_};
  bool hasChildren_ = false;
  bool areInstances_ = false;
  std::vector<ListingEntry> entries_;
  std::map<std::string, size_t> places_;
};

}  // namespace

std::vector<ListingEntry> ListPath(Tree &tree, const std::string &path) { return Lister(tree, path).Entries(); }

}  // namespace nodal
