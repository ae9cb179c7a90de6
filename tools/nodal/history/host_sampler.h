// Takes samples of a host: the entries that a capture at the same time would save.
#ifndef NODAL_HISTORY_HOST_SAMPLER_H
#define NODAL_HISTORY_HOST_SAMPLER_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platkit/history/sample.h"
#include "platkit/source.h"
#include "tools/nodal/tree/instances.h"
#include "tools/nodal/tree/path_filter.h"

namespace nodal {

// Walks the tree in the order of the keys, so that a sample need not be sorted. After the first samples, it allocates
// little, because it keeps its memory.
//
// Unlike a capture, it does not search for instances that vanished during the sample. Its source reads each file at
// most once per sample, so it lists only instances that it has read.
class HostSampler {
 public:
  // The filter must outlive the sampler. Configuration registers of PCI devices are never read.
  HostSampler(platkit::Source &source, const PathFilter &filter);
  ~HostSampler();
  HostSampler(const HostSampler &) = delete;
  HostSampler &operator=(const HostSampler &) = delete;

  // Adds the entries of the host to `sample`. REQUIRES: `sample` is empty. Throws std::bad_alloc if memory runs out.
  void AddTo(platkit::history::Sample &sample);

  // The number of groups in the last sample.
  size_t groups() const { return groups_.size(); }

 private:
  // A component of the paths, with the components below it. If the component is an instance, `part` is its kind.
  struct Branch {
    std::string_view part;
    bool isInstance = false;
    const Node *list = nullptr;  // the nodes whose path ends here
    const Node *record = nullptr;
    const Node *below = nullptr;  // for an instance: a node that takes it as an argument
    std::vector<Branch> branches = {};
  };

  // Reports a list that cannot be read as not found, so that the walk continues without it.
  class ReadableLists : public SourceTree {
   public:
    using SourceTree::SourceTree;

    HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) override {
      return SourceTree::List(node, arguments, entries) == HVC_OK ? HVC_OK : HVC_NOT_FOUND;
    }
  };

  // The text of an integer in a path, and the integer.
  using Number = std::pair<std::string, int64_t>;

  void AddForm(const PathTemplate &form);
  void Sort(Branch &branch);
  void FindGroups();
  void FindClients();
  void Visit(const Branch &branch);
  void VisitInstances(const Branch &branch);
  void VisitNumbers(const Branch &branch, const std::vector<Number> &numbers);
  void VisitInstance(const Branch &branch, std::string_view text, const Argument &instance);
  void AddRecord(const Node &node);
  void AddList(const Node &node);
  bool IsWanted() const { return !isFiltered_ || filter_.Contains(path_); }
  void AddFailure(HVC_ReturnStatus status);
  bool ListOf(const Node &node, int64_t argument);
  template <typename Record>
  bool Get(platkit::NodeRef<Record> node, int64_t argument, Record &record);

  platkit::Source &source_;
  const PathFilter &filter_;
  bool isFiltered_;
  std::vector<PathTemplate> forms_ = AllPathTemplates();  // own the texts to which the branches refer
  Branch root_;

  // State for the sample that is being taken.
  platkit::history::Sample *sample_ = nullptr;
  ReadableLists tree_;
  std::optional<Instances> instances_;  // the instances of all kinds except groups and clients
  std::vector<Number> groups_, clients_;
  std::string path_;
  Arguments arguments_;
  std::vector<NODAL_Param> params_;
  std::vector<std::pair<std::string, HVC_ReturnStatus>> failures_;
  std::vector<std::byte> record_;
  std::vector<std::byte> payload_;
  platkit::OwnedParamList list_;
};

}  // namespace nodal

#endif  // NODAL_HISTORY_HOST_SAMPLER_H
