#include "platkit/catalogue/record_table.h"

#include <gtest/gtest.h>

#include <string>

#include "platkit/catalogue/records.h"
#include "tests/platkit/compiler.h"

namespace platkit {
namespace {

TEST(RecordTable, DescribesItsStruct) {
  const RecordLayout &layout = kRecordLayout<BuddyComprehensiveRecord>;
  EXPECT_EQ(layout.name, "BuddyComprehensiveRecord");
  EXPECT_EQ(layout.size, 236u);
  ASSERT_EQ(layout.fields.size(), 2u);
  EXPECT_EQ(layout.fields[0].name, "unread_0");
  EXPECT_EQ(layout.fields[0].type, FieldType::kGap);
  EXPECT_EQ(layout.fields[1].offset, 8u);
  EXPECT_EQ(layout.fields[1].size, 12u);
  EXPECT_EQ(layout.fields[1].count, 19u);
  EXPECT_EQ(layout.fields[1].entry, &kRecordLayout<BuddySizeRecord>);
}

// A description of `struct Pair { uint32_t first; uint64_t second; }`, packed.
std::string DescriptionOfAPair(const std::string &name, const std::string &fields) {
  return "#pragma pack(push, 1)\n"
         "struct " +
         name +
         " { uint32_t first; uint64_t second; };\n"
         "#pragma pack(pop)\n"
         "namespace platkit {\n"
         "template <> struct RecordTable<" +
         name +
         "> {\n"
         "  PLATKIT_TABLE_OF(" +
         name +
         ");\n"
         "  static constexpr Field kFields[] = {" +
         fields +
         "};\n"
         "};\n"
         "static_assert(kRecordLayout<" +
         name +
         ">.size == 12);\n"
         "}\n";
}

CompilerOutput CompileDescriptions(const std::string &descriptions) {
#if defined(__clang__)
  const std::string allErrors = " -ferror-limit=0";
#else
  const std::string allErrors;
#endif
  return Compile(PLATKIT_CXX_COMPILER, "-x c++ -std=c++20 -fsyntax-only -I\"$ROOT\"" + allErrors,
                 "#include \"platkit/catalogue/record_table.h\"\n" + descriptions);
}

const std::string kFirst = "PLATKIT_FIELD(0, uint32_t, first, KB, \"m\"), ";
const std::string kSecond = "PLATKIT_FIELD(4, uint64_t, second, KB, \"m\"), ";

TEST(RecordTable, ARightDescriptionCompiles) {
  if (!IsInstalled(PLATKIT_CXX_COMPILER)) GTEST_SKIP() << PLATKIT_CXX_COMPILER << " is not installed";
  const CompilerOutput output = CompileDescriptions(DescriptionOfAPair("Right", kFirst + kSecond));
  EXPECT_EQ(output.status, 0) << output.text;
}

TEST(RecordTable, AWrongDescriptionDoesNotCompile) {
  if (!IsInstalled(PLATKIT_CXX_COMPILER)) GTEST_SKIP() << PLATKIT_CXX_COMPILER << " is not installed";
  const CompilerOutput output = CompileDescriptions(
      DescriptionOfAPair("WrongName", kFirst + "PLATKIT_FIELD(4, uint64_t, secnod, KB, \"m\"), ") +
      DescriptionOfAPair("WrongOffset", kFirst + "PLATKIT_FIELD(8, uint64_t, second, KB, \"m\"), ") +
      DescriptionOfAPair("WrongType", kFirst + "PLATKIT_FIELD(4, int64_t, second, KB, \"m\"), ") +
      DescriptionOfAPair("WrongUnit", kFirst + "PLATKIT_FIELD(4, uint64_t, second, MILES, \"m\"), ") +
      DescriptionOfAPair("MissesFirst", kSecond) + DescriptionOfAPair("MissesSecond", kFirst));
  EXPECT_NE(output.status, 0);
  for (const char *part : {"secnod", "FieldIsAtAnotherOffset", "another type or size", "MILES",
                           "FieldsLeaveAGapOrOverlap", "FieldsEndBeforeTheRecord"})
    EXPECT_NE(output.text.find(part), std::string::npos) << part << " is not in:\n" << output.text;
}

}  // namespace
}  // namespace platkit
