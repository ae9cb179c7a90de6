// A saved host: a folder that replaces the root folder of a Linux host, and a source that reads it.
#ifndef TESTS_LINUX_SAVED_HOST_H
#define TESTS_LINUX_SAVED_HOST_H

#include <gtest/gtest.h>

#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platkit/linux/files/fresh.h"
#include "platkit/linux/linux_source.h"
#include "platkit/node_ref.h"
#include "platkit/records.h"

// Compares a field of a record by value: fields may be unaligned, so references to them are not allowed.
#define EXPECT_CELL(cell, expected) EXPECT_EQ(static_cast<uint64_t>(cell), static_cast<uint64_t>(expected))

namespace platkit {

// The values of figures that are not available.
inline constexpr uint64_t kNoFigure = HVC_KB_NONE;
inline constexpr uint32_t kNoFigure32 = UINT32_MAX;

// The identifier of the group of the first virtual machine.
inline constexpr int64_t kFirstVm = 20'000'000;

// Folders of a saved host: the root of the control groups, and the control group of a service.
inline const std::string kTop = "sys/fs/cgroup/";
inline const std::string kWeb = kTop + "system.slice/web.service";

// An instance argument: an integer or a text.
struct Argument {
  Argument(std::integral auto number) : integer(static_cast<int64_t>(number)) {}
  Argument(const char *characters) : isText(true), text(characters) {}
  Argument(std::string characters) : isText(true), text(std::move(characters)) {}

  bool isText = false;
  int64_t integer = 0;
  std::string text;
};

inline std::vector<Argument> Given(const std::vector<int64_t> &ids) { return {ids.begin(), ids.end()}; }

// Reads nodes of a source. Functions that return no status expect success.
class Asker {
 public:
  explicit Asker(Source &source) : source_(source) {}

  template <typename RecordType>
  HVC_ReturnStatus Get(NodeRef<RecordType> node, const std::vector<Argument> &arguments,
                       std::type_identity_t<RecordType> &record) {
    return GetBytes(node, arguments, std::as_writable_bytes(std::span(&record, 1)));
  }
  HVC_ReturnStatus Set(const Node &node, const std::vector<Argument> &arguments, const std::vector<Argument> &input);
  HVC_ReturnStatus List(const Node &node, const std::vector<Argument> &arguments, std::vector<int64_t> &instances);
  HVC_ReturnStatus List(const Node &node, const std::vector<Argument> &arguments, std::vector<std::string> &instances);

  // The status of Get(), for tests that ignore the record.
  HVC_ReturnStatus Status(const Node &node, const std::vector<Argument> &arguments = {});

  template <typename RecordType>
  RecordType Record(NodeRef<RecordType> node, const std::vector<Argument> &arguments = {}) {
    RecordType record = {};
    EXPECT_EQ(Get(node, arguments, record), HVC_OK) << node->name;
    return record;
  }
  std::vector<std::string> Names(const Node &node, const std::vector<Argument> &arguments = {});

  std::vector<int64_t> Members(int64_t group);
  std::string Name(int64_t group);
  std::string Tag(int64_t group);
  int64_t Parent(int64_t group);
  uint32_t Flags(int64_t group);

  // Valid until the next call of the same function.
  const GroupMemoryStatsRecord &Stats(int64_t group);
  const GroupAllocRecord &Alloc(int64_t group);
  const GroupCapacityRecord &Capacity(int64_t group);

 private:
  HVC_ReturnStatus GetBytes(const Node &node, const std::vector<Argument> &arguments, std::span<std::byte> record);

  Source &source_;
  GroupMemoryStatsRecord stats_ = {};
  GroupAllocRecord alloc_ = {};
  GroupCapacityRecord capacity_ = {};
};

class SavedHost {
 public:
  // Creates an empty root folder, or unpacks the archive of this name in hosts/.
  //
  // The source's clock stands still until Age() advances it. Each change of the host through this class also advances
  // the clock, far enough that cached values expire.
  explicit SavedHost(Writes writes = Writes::kRefused);
  explicit SavedHost(const std::string &archive, Writes writes = Writes::kRefused);
  ~SavedHost();
  SavedHost(const SavedHost &) = delete;
  SavedHost &operator=(const SavedHost &) = delete;

  std::string Path(const std::string &below) const { return root_ + "/" + below; }
  void Write(const std::string &path, std::string_view text);
  std::string Read(const std::string &path) const;
  void MakeFolder(const std::string &path);
  void MakeLink(const std::string &path, const std::string &target);
  void Remove(const std::string &path);
  void Forbid(const std::string &path);

  // Advances the source's clock.
  void Age(std::chrono::nanoseconds by = kFreshTime) { now_ += by; }

  // The group identifier of the control group in a folder.
  int64_t ControlGroup(const std::string &folder) const;

  // The number of times that a file was opened so far.
  int64_t Opens(std::string_view path) const;
  const std::vector<std::string> &opened() const { return opened_; }

  // The files that were opened for writing so far.
  const std::vector<std::string> &openedForWriting() const { return openedForWriting_; }

  Source &source() { return *source_; }
  Asker ask() { return Asker(*source_); }

 private:
  void Unpack(const std::string &archive);

  std::string root_;
  Clock::Time now_;
  std::vector<std::string> opened_;
  std::vector<std::string> openedForWriting_;
  std::vector<std::string> forbidden_;
  std::unique_ptr<Source> source_;
};

// While this object exists, the test runs as an ordinary user, who is subject to file permissions.
class OrdinaryUser {
 public:
  OrdinaryUser();
  ~OrdinaryUser();

 private:
  bool isRoot_;
};

}  // namespace platkit

#endif  // TESTS_LINUX_SAVED_HOST_H
