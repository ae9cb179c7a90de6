#include "src/status/status.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(Status, KnownStatusesHaveTheirTexts) {
  EXPECT_STREQ(HVC_ReturnStatusToString(HVC_OK), "Success");
  EXPECT_STREQ(HVC_ReturnStatusToString(HVC_FAILURE), "Failure");
  EXPECT_STREQ(HVC_ReturnStatusToString(0x0bad0003), "Not found");
  EXPECT_STREQ(HVC_ReturnStatusToString(0x0bad0007), "Bad parameter");
  EXPECT_STREQ(HVC_ReturnStatusToString(0x0bad0014), "Out of memory");
  EXPECT_STREQ(HVC_ReturnStatusToString(0x0bad0017), "Out of resources");
  EXPECT_STREQ(HVC_ReturnStatusToString(0x0bad0031), "Not initialized");
  EXPECT_STREQ(HVC_ReturnStatusToString(0x0bad0161), "Invalid error code");
  EXPECT_STREQ(HVC_ReturnStatusToString(0x0bad0162), "Generic service console error");
}

TEST(Status, TheTableBeginsInItsFixedOrder) {
  const char *const texts[] = {
      "Success",        "Failure",        "Would block",   "Not found",           "Busy",
      "Already exists", "Limit exceeded", "Bad parameter", "Metadata read error", "Metadata write error",
      "I/O error",      "Read error",     "Write error",
  };
  for (size_t i = 0; i < std::size(texts); ++i)
    EXPECT_STREQ(returnStatusStrs[i], texts[i]);
}

TEST(Status, ABareIndexSelectsTheSameText) {
  for (HVC_ReturnStatus index = 1; index < kestrel::kStatusTextCount; ++index) {
    EXPECT_EQ(HVC_ReturnStatusToString(index), returnStatusStrs[index]);
    EXPECT_EQ(HVC_ReturnStatusToString(HVC_STATUS_BASE + index), returnStatusStrs[index]);
  }
}

TEST(Status, TheBaseItselfIsNoStatus) { EXPECT_STREQ(HVC_ReturnStatusToString(0x0bad0000), "Unknown status"); }

TEST(Status, WhatLiesBetweenTheTableAndTheConsoleSpaceIsUnknown) {
  for (const HVC_ReturnStatus status : {355u, 0x0000ffffu, 0x0bacffffu, 0x0bad0163u, 0x0badffffu, 0x2bacffffu}) {
    EXPECT_STREQ(HVC_ReturnStatusToString(status), "Unknown status") << std::hex << status;
  }
}

TEST(Status, TheConsoleSpaceIsNotInterpreted) {
  for (const HVC_ReturnStatus status : {0x2bad0000u, 0x2bad0001u, 0x80000000u, 0xffffffffu}) {
    EXPECT_STREQ(HVC_ReturnStatusToString(status), "Opaque service console status") << std::hex << status;
  }
}

TEST(Status, EveryTextIsOneShortLineOfItsOwn) {
  std::set<std::string> seen;
  for (const char *text : returnStatusStrs) {
    const std::string line = text;
    EXPECT_FALSE(line.empty());
    EXPECT_LE(line.size(), 60u) << line;
    EXPECT_EQ(line.find_first_of("\n\r\t"), std::string::npos) << line;
    EXPECT_NE(line.back(), '.') << line;
    EXPECT_TRUE(seen.insert(line).second) << "twice: " << line;
  }
}

}  // namespace
