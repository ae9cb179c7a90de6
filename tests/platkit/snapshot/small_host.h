// A host with one entry for each type of value.
#ifndef TESTS_PLATKIT_SNAPSHOT_SMALL_HOST_H
#define TESTS_PLATKIT_SNAPSHOT_SMALL_HOST_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "platkit/path.h"
#include "platkit/snapshot/snapshot_source.h"
#include "platkit/snapshot/snapshot_writer.h"

namespace platkit::snapshot {

inline Header SmallHeader() {
  return {.definitions = OwnDefinitions(), .host = "small", .time = "2026-03-14T09:26:53Z"};
}

// All entries of a small host. Unreadable entries are empty.
struct SmallHost {
  std::optional<std::string> groupName;
  std::optional<uint32_t> numVMs;
  std::optional<std::vector<int64_t>> groups;
  std::optional<std::vector<std::string>> heaps;

  bool operator==(const SmallHost &) const = default;
};

inline const SmallHost kSmallHost = {
    .groupName = "host", .numVMs = 2, .groups = std::vector<int64_t>{1, -2, INT64_MAX}, .heaps = {{"main", "", "a/b"}}};

inline void AddSmallHost(SnapshotWriter &writer) {
  GroupNameRecord name = {};
  kSmallHost.groupName->copy(name.name, sizeof name.name);
  ASSERT_EQ(writer.AddRecord("/sched/groups/0/groupName", std::as_bytes(std::span(&name, 1))), HVC_OK);
  const NumVMsRecord vms = {.numVMs = *kSmallHost.numVMs};
  ASSERT_EQ(writer.AddRecord("/sched/globalStats/numVMs", std::as_bytes(std::span(&vms, 1))), HVC_OK);
  ASSERT_EQ(writer.AddIntegers("/sched/groups/0/members/groups", *kSmallHost.groups), HVC_OK);
  ASSERT_EQ(writer.AddTexts("/system/heaps", *kSmallHost.heaps), HVC_OK);
  ASSERT_EQ(writer.AddHeader(SmallHeader()), HVC_OK);
}

inline void WriteSmallHost(const std::string &path) {
  SnapshotWriter writer;
  AddSmallHost(writer);
  ASSERT_EQ(writer.Write(path), HVC_OK);
}

// One read of a source, by path.
class Reading {
 public:
  explicit Reading(std::string_view path) : target_(ParsePath(path)) {
    for (const PathTarget::Argument &argument : target_.arguments) {
      EXPECT_EQ(argument.kind == ParamKind::kInt ? arguments_->Add(argument.integer) : arguments_->Add(argument.text),
                HVC_OK);
    }
  }
  ~Reading() {
    arguments_->Destroy();
    list_->Destroy();
  }
  Reading(const Reading &) = delete;
  Reading &operator=(const Reading &) = delete;

  HVC_ReturnStatus Get(Source &source, void *record) {
    const std::span<std::byte> bytes(static_cast<std::byte *>(record), target_.node->record->size);
    return source.Get(*target_.node, arguments_->params(), bytes);
  }
  HVC_ReturnStatus List(Source &source) { return source.List(*target_.node, arguments_->params(), *list_); }
  Arguments list() const { return list_->params(); }

 private:
  PathTarget target_;
  ParamList *arguments_ = ParamList::Make();
  ParamList *list_ = ParamList::Make();
};

// Reads the four entries, and expects each read to return one of these statuses.
inline SmallHost ReadSmallHost(Source &source,
                               std::initializer_list<HVC_ReturnStatus> expected = {HVC_OK, HVC_NOT_FOUND}) {
  const auto good = [&](HVC_ReturnStatus status) {
    EXPECT_NE(std::ranges::find(expected, status), expected.end()) << std::hex << status;
    return status == HVC_OK;
  };
  SmallHost host;
  GroupNameRecord name;
  if (good(Reading("/sched/groups/0/groupName").Get(source, &name))) {
    host.groupName = std::string(name.name, strnlen(name.name, sizeof name.name));
  }
  NumVMsRecord vms;
  if (good(Reading("/sched/globalStats/numVMs").Get(source, &vms))) host.numVMs = vms.numVMs;
  Reading groups("/sched/groups/0/members/groups");
  if (good(groups.List(source))) {
    host.groups.emplace();
    for (const NODAL_Param &param : groups.list())
      host.groups->push_back(param.integer);
  }
  Reading heaps("/system/heaps");
  if (good(heaps.List(source))) {
    host.heaps.emplace();
    for (const NODAL_Param &param : heaps.list())
      host.heaps->emplace_back(param.text());
  }
  return host;
}

}  // namespace platkit::snapshot

#endif  // TESTS_PLATKIT_SNAPSHOT_SMALL_HOST_H
