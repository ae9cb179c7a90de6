#include "platkit/snapshot/format.h"

#include <cdb.h>
#include <gtest/gtest.h>

#include <string>

namespace platkit::snapshot {
namespace {

TEST(Hash, IsTheHashOfTheDatabase) {
  const std::string key = "/sched/groups/4/groupName\xc3\xa4";
  for (size_t i = 0; i <= key.size(); ++i) {
    const uint32_t start = Hash(std::string_view(key).substr(0, i));
    EXPECT_EQ(start, cdb_hash(key.data(), static_cast<unsigned>(i)));
    EXPECT_EQ(Hash(std::string_view(key).substr(i), start), cdb_hash(key.data(), static_cast<unsigned>(key.size())));
  }
}

}  // namespace
}  // namespace platkit::snapshot
