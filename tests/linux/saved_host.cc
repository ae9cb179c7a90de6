#include "tests/linux/saved_host.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/linux/archive.h"

namespace platkit {
namespace {

namespace fs = std::filesystem;

struct ListCloser {
  void operator()(ParamList *list) const { list->Destroy(); }
};
using OwnedList = std::unique_ptr<ParamList, ListCloser>;

OwnedList ListOf(const std::vector<Argument> &arguments) {
  OwnedList list(ParamList::Make());
  for (const Argument &argument : arguments)
    EXPECT_EQ(argument.isText ? list->Add(argument.text) : list->Add(argument.integer), HVC_OK);
  return list;
}

}  // namespace

HVC_ReturnStatus Asker::GetBytes(const Node &node, const std::vector<Argument> &arguments,
                                 std::span<std::byte> record) {
  return source_.Get(node, ListOf(arguments)->params(), record);
}

HVC_ReturnStatus Asker::Status(const Node &node, const std::vector<Argument> &arguments) {
  std::vector<std::byte> record(node.record->size);
  return GetBytes(node, arguments, record);
}

HVC_ReturnStatus Asker::List(const Node &node, const std::vector<Argument> &arguments,
                             std::vector<int64_t> &instances) {
  const OwnedList list(ParamList::Make());
  const HVC_ReturnStatus status = source_.List(node, ListOf(arguments)->params(), *list);
  instances.clear();
  for (const NODAL_Param &param : list->params())
    instances.push_back(param.integer);
  return status;
}

HVC_ReturnStatus Asker::Set(const Node &node, const std::vector<Argument> &arguments,
                            const std::vector<Argument> &input) {
  return source_.Set(node, ListOf(arguments)->params(), ListOf(input)->params());
}

HVC_ReturnStatus Asker::List(const Node &node, const std::vector<Argument> &arguments,
                             std::vector<std::string> &instances) {
  const OwnedList list(ParamList::Make());
  const HVC_ReturnStatus status = source_.List(node, ListOf(arguments)->params(), *list);
  instances.clear();
  for (const NODAL_Param &param : list->params())
    instances.emplace_back(param.text());
  return status;
}

std::vector<std::string> Asker::Names(const Node &node, const std::vector<Argument> &arguments) {
  std::vector<std::string> names;
  EXPECT_EQ(List(node, arguments, names), HVC_OK) << node.name;
  return names;
}

std::vector<int64_t> Asker::Members(int64_t group) {
  std::vector<int64_t> members;
  EXPECT_EQ(List(nodes::sched_groups_members_groups, {group}, members), HVC_OK) << group;
  return members;
}

std::string Asker::Name(int64_t group) {
  GroupNameRecord record;
  EXPECT_EQ(Get(nodes::sched_groups_groupName, {group}, record), HVC_OK) << group;
  EXPECT_EQ(record.name[sizeof record.name - 1], '\0');
  return record.name;
}

std::string Asker::Tag(int64_t group) {
  GroupTagRecord record;
  EXPECT_EQ(Get(nodes::sched_groups_groupTag, {group}, record), HVC_OK) << group;
  return std::string(record.tag, strnlen(record.tag, sizeof record.tag));
}

int64_t Asker::Parent(int64_t group) {
  ParentGroupIDRecord record = {};
  EXPECT_EQ(Get(nodes::sched_groups_parentGroupID, {group}, record), HVC_OK) << group;
  return record.parentGroupID;
}

uint32_t Asker::Flags(int64_t group) {
  GroupFlagsRecord record = {};
  EXPECT_EQ(Get(nodes::sched_groups_groupFlags, {group}, record), HVC_OK) << group;
  return record.flags;
}

const GroupMemoryStatsRecord &Asker::Stats(int64_t group) {
  stats_ = {};
  EXPECT_EQ(Get(nodes::sched_groups_stats_memoryStats, {group}, stats_), HVC_OK) << group;
  return stats_;
}

const GroupAllocRecord &Asker::Alloc(int64_t group) {
  alloc_ = {};
  EXPECT_EQ(Get(nodes::sched_groups_memAllocationInKB, {group}, alloc_), HVC_OK) << group;
  return alloc_;
}

const GroupCapacityRecord &Asker::Capacity(int64_t group) {
  capacity_ = {};
  EXPECT_EQ(Get(nodes::sched_groups_stats_capacity, {group}, capacity_), HVC_OK) << group;
  return capacity_;
}

SavedHost::SavedHost(Writes writes) {
  std::string pattern = fs::temp_directory_path() / "saved-host-XXXXXX";
  root_ = mkdtemp(pattern.data());
  chmod(root_.c_str(), 0755);  // tests also read it as an ordinary user
  HostFiles files(root_, Reach::kRootFolder, writes);
  files.ObserveOpens([this](std::string_view path, Access access) {
    opened_.emplace_back(path);
    if (access == Access::kWrite) openedForWriting_.emplace_back(path);
  });
  files.UseClock(Clock([this] { return now_; }));
  source_ = OpenLinuxHost(std::move(files));
}

SavedHost::SavedHost(const std::string &archive, Writes writes) : SavedHost(writes) {
  Unpack(std::string(SAVED_HOSTS) + "/" + archive);
}

SavedHost::~SavedHost() {
  // Restores the permissions first, because an ordinary user cannot remove the contents of an unreadable folder.
  std::error_code ignored;
  for (const std::string &path : forbidden_)
    fs::permissions(path, fs::perms::owner_all, ignored);
  fs::remove_all(root_);
}

void SavedHost::Unpack(const std::string &archive) {
  std::ifstream in(archive);
  ASSERT_TRUE(in) << archive;
  for (const ArchiveEntry &entry : ReadArchive(in)) {
    switch (entry.kind) {
      case ArchiveEntry::Kind::kFile: Write(entry.path, entry.content); break;
      case ArchiveEntry::Kind::kFolder: MakeFolder(entry.path); break;
      case ArchiveEntry::Kind::kLink: MakeLink(entry.path, entry.content); break;
    }
  }
}

void SavedHost::Write(const std::string &path, std::string_view text) {
  Age();
  fs::create_directories(fs::path(Path(path)).parent_path());
  std::ofstream(Path(path), std::ios::binary) << text;
}

std::string SavedHost::Read(const std::string &path) const {
  std::ifstream in(Path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void SavedHost::MakeFolder(const std::string &path) {
  Age();
  fs::create_directories(Path(path));
}

void SavedHost::MakeLink(const std::string &path, const std::string &target) {
  Age();
  fs::create_directories(fs::path(Path(path)).parent_path());
  fs::create_symlink(target, Path(path));
}

void SavedHost::Remove(const std::string &path) {
  Age();
  fs::remove_all(Path(path));
}

void SavedHost::Forbid(const std::string &path) {
  Age();
  // The target of a link could be a file of this machine, whose permissions must not change.
  ASSERT_FALSE(fs::is_symlink(Path(path))) << path;
  fs::permissions(Path(path), fs::perms::none);
  forbidden_.push_back(Path(path));
}

int64_t SavedHost::ControlGroup(const std::string &folder) const {
  struct stat about = {};
  EXPECT_EQ(stat(Path(folder).c_str(), &about), 0) << folder;
  return 10'000'000 + static_cast<int64_t>(about.st_ino % 10'000'000);
}

int64_t SavedHost::Opens(std::string_view path) const { return std::count(opened_.begin(), opened_.end(), path); }

OrdinaryUser::OrdinaryUser() : isRoot_(geteuid() == 0) {
  if (isRoot_) {
    EXPECT_EQ(seteuid(65534), 0);
  }
}

OrdinaryUser::~OrdinaryUser() {
  if (isRoot_) {
    EXPECT_EQ(seteuid(0), 0);
  }
}

}  // namespace platkit
