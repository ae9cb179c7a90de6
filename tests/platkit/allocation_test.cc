// Programs make millions of reads, so a read with one argument must not allocate memory each time.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <new>

#include "platkit/nodal.h"
#include "platkit/records.h"
#include "platkit/snapshot/snapshot_writer.h"

namespace {

int allocations = 0;

}  // namespace

// The linker redirects malloc, realloc and operator new of this program's objects, including the library's, to these
// functions. The linker option --wrap determines their names.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void *__real_malloc(size_t size);
void *__real_realloc(void *memory, size_t size);
void *__real__Znwm(size_t size);
void *__real__ZnwmRKSt9nothrow_t(size_t size, const std::nothrow_t &tag);

void *__wrap_malloc(size_t size) {
  ++allocations;
  return __real_malloc(size);
}

void *__wrap_realloc(void *memory, size_t size) {
  ++allocations;
  return __real_realloc(memory, size);
}

void *__wrap__Znwm(size_t size) {
  ++allocations;
  return __real__Znwm(size);
}

void *__wrap__ZnwmRKSt9nothrow_t(size_t size, const std::nothrow_t &tag) {
  ++allocations;
  return __real__ZnwmRKSt9nothrow_t(size, tag);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace platkit {
namespace {

void ReadOnce() {
  NODAL_ParamList *args = NODAL_ParamListCreate(NODAL_LIST_INSTANCES, 2);
  GroupNameRecord name;
  if (NODAL_ParamListAddInt(args, 4) != HVC_OK ||
      NODAL_Get(NODAL_NODE_sched_groups_groupName, args, &name, sizeof name) != HVC_OK) {
    std::abort();
  }
  NODAL_ParamListRemoveLastParam(args);
  NODAL_ParamListDestroy(args);
}

TEST(Allocation, AReadWithOneArgumentAllocatesNothingAfterTheFirst) {
  const std::string path = testing::TempDir() + "allocation_test.nodal";
  snapshot::SnapshotWriter writer;
  const GroupNameRecord name = {};
  ASSERT_EQ(writer.AddHeader({.definitions = OwnDefinitions(), .host = {}, .time = {}}), HVC_OK);
  ASSERT_EQ(writer.AddRecord("/sched/groups/4/groupName", std::as_bytes(std::span(&name, 1))), HVC_OK);
  ASSERT_EQ(writer.Write(path), HVC_OK);
  ASSERT_EQ(NODAL_UseCache(path.c_str(), NODAL_CACHE_SNAPSHOT), HVC_OK);
  std::filesystem::remove(path);

  ReadOnce();
  const int before = allocations;
  EXPECT_GT(before, 0) << "allocations are counted";
  for (int i = 0; i < 1000; ++i)
    ReadOnce();
  EXPECT_EQ(allocations, before);
}

}  // namespace
}  // namespace platkit
