#include "src/table/flags.h"

#include <gtest/gtest.h>

#include "src/groups/group_flags.h"

namespace kestrel {
namespace {

struct Parsed {
  HVC_ReturnStatus status;
  uint32_t mask;
  std::string warning;
};

Parsed Parse(const char *text, FilterKind kind = FilterKind::kInclusion) {
  std::string copy = text == nullptr ? "" : text;
  Parsed parsed = {.status = HVC_OK, .mask = 0xdead, .warning = {}};
  testing::internal::CaptureStderr();
  parsed.status = FlagsParseFilter(text == nullptr ? nullptr : copy.data(), GroupFlagNames, parsed.mask, kind);
  parsed.warning = testing::internal::GetCapturedStderr();
  return parsed;
}

TEST(Flags, NoFilterIncludesAllAndExcludesNothing) {
  EXPECT_EQ(Parse(nullptr, FilterKind::kInclusion).mask, UINT32_MAX);
  EXPECT_EQ(Parse(nullptr, FilterKind::kExclusion).mask, 0u);
}

TEST(Flags, NamesInAnyCase) {
  EXPECT_EQ(Parse("vm:UW").mask, 0xcu);
  EXPECT_EQ(Parse("::Vmm::usr:").mask, 0x6000u);
  EXPECT_EQ(Parse("vm:vm").mask, 0x4u);
}

TEST(Flags, AFilterWithoutNamesIsEmpty) {
  for (const FilterKind kind : {FilterKind::kInclusion, FilterKind::kExclusion}) {
    for (const char *text : {"", ":", ":::"}) {
      const Parsed parsed = Parse(text, kind);
      EXPECT_EQ(parsed.status, HVC_OK);
      EXPECT_EQ(parsed.mask, 0u);
    }
  }
}

TEST(Flags, AnUnknownNameIsNamed) {
  const Parsed parsed = Parse("vm:xx:yy");
  EXPECT_EQ(parsed.status, HVC_BAD_PARAM);
  EXPECT_EQ(parsed.mask, 0u);
  EXPECT_EQ(parsed.warning, "Invalid flag (xx) in filter\n");
  EXPECT_EQ(Parse("v").warning, "Invalid flag (v) in filter\n");
}

TEST(Flags, Describe) {
  EXPECT_STREQ(FlagsDescribe(0, GroupFlagNames).Text(), "(none)");
  EXPECT_STREQ(FlagsDescribe(UINT32_MAX, GroupFlagNames).Text(), "(all)");
  EXPECT_STREQ(FlagsDescribe(0x7fff, GroupFlagNames).Text(), "(all)");
  EXPECT_STREQ(FlagsDescribe(0x3fff, GroupFlagNames).Text(), "pre:lf:vm:uw:sys:tw:pr:sd:np:ke:ug:co:sc:vmm");
  EXPECT_STREQ(FlagsDescribe(0x8000, GroupFlagNames).Text(), "(none)");
}

// If the list has an entry without bits, the text is never "(all)".
TEST(Flags, AnEntryWithoutBits) {
  const FlagName names[] = {{0x0, "noFlags"}, {0x1, "allocated"}, {0x8, "readOnly"}};
  EXPECT_STREQ(FlagsDescribe(0, names).Text(), "(none)");
  EXPECT_STREQ(FlagsDescribe(0x9, names).Text(), "allocated:readOnly");
}

}  // namespace
}  // namespace kestrel
