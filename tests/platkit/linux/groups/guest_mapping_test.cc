#include "platkit/linux/groups/guest_mapping.h"

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

constexpr DeviceNumber kHugePages = DeviceNumber{0} << 32 | 50;

GuestMappings Parse(std::string_view maps) {
  SavedHost host;
  host.Write("proc/7/maps", maps);
  HostFiles files(host.Path(""), Reach::kRootFolder);
  const DeviceNumber devices[] = {kHugePages};
  return ReadGuestMappings(files, 7, devices);
}

Figure Largest(std::string_view maps) { return Parse(maps).largest; }

TEST(GuestMapping, MappingsOfMemory) {
  for (const char *line : {
           "100000-200000 rw-p 00000000 00:00 0 ",
           "100000-200000 rw-p 00000000 00:00 0",
           "100000-200000 rw-p 00000000 00:00 0                          [anon:guest]",
           "100000-200000 rw-s 00000000 00:01 1025                       /memfd:memory-backend-memfd (deleted)",
           "100000-200000 rw-s 00000000 00:01 1025                       /dev/zero (deleted)",
           "100000-200000 rw-p 00000000 00:0f 31                         /anon_hugepage (deleted)",
           "100000-200000 rw-s 00000000 00:32 31                         /somewhere/ram of a guest",
       }) {
    EXPECT_EQ(Largest(line), Figure(1024)) << line;
  }
}

TEST(GuestMapping, OtherMappings) {
  for (const char *line : {
           "100000-200000 r--p 00000000 00:00 0 ",
           "100000-200000 ---p 00000000 00:00 0 ",
           "100000-200000 rwxp 00000000 00:00 0 ",
           "100000-200000 rw-s 00000000 00:01 9                          /memfd:tcg-jit (deleted)",
           "100000-200000 rw-p 00000000 00:00 0                          [heap]",
           "100000-200000 rw-p 00000000 00:00 0                          [stack]",
           "100000-200000 rw-s 00000000 00:0f 9                          anon_inode:[vfio-device]",
           "100000-200000 rw-p 00000000 fe:00 12                         /usr/lib/library.so",
           "100000-200000 rw-s 00000000 00:06 300                        /dev/vfio/12",
           "200000-100000 rw-p 00000000 00:00 0 ",
           "100000-100000 rw-p 00000000 00:00 0 ",
           "100000-200000 rw-p 00000000 00:00",
           "100000-200000 rw-p 00000000 00 0 ",
           "100000-200000 rw",
           "100000-200000rw-p 00000000 00:00 0 ",
           "g00000-200000 rw-p 00000000 00:00 0 ",
           "100000-fffffffffffffffff rw-p 00000000 00:00 0 ",
           "-",
           "",
       }) {
    EXPECT_EQ(Largest(line), Figure()) << line;
  }
}

TEST(GuestMapping, AdjacentPiecesCountAsOne) {
  EXPECT_EQ(Largest("100000-200000 rw-p 00000000 00:00 0 \n200000-300000 rw-p 00000000 00:00 0 \n"), Figure(2048));
  EXPECT_EQ(Largest("100000-200000 rw-s 00000000 00:32 5 /a\n200000-300000 rw-s 00000000 00:32 6 /b\n"), Figure(1024))
      << "of two files";
  EXPECT_EQ(Largest("100000-200000 rw-p 00000000 00:00 0 \n200000-300000 ---p 00000000 00:00 0 \n"
                    "300000-480000 rw-p 00000000 00:00 0 \n"),
            Figure(1536))
      << "with a guard between them";
}

TEST(GuestMapping, BlocksOfGuestMemory) {
  const auto blocks = [](std::string_view maps) { return Parse(maps).blocks; };
  constexpr uint64_t kMBInKB = 1024;
  EXPECT_EQ(blocks("7f0000000000-7f0008000000 rw-p 00000000 00:00 0 \n"), Figure(128 * kMBInKB));
  EXPECT_EQ(blocks("7f0000000000-7f0008000000 rw-p 00000000 00:00 0 \n7f0008000000-7f0008001000 ---p 0 00:00 0 \n"
                   "7f00081ff000-7f00181ff000 rw-s 00000000 00:01 5 /memfd:memory-backend-memfd (deleted)\n"),
            Figure((128 + 256) * kMBInKB))
      << "the machine's, and a memory device's";
  EXPECT_EQ(blocks("7f0000000000-7f0004000000 rw-p 0 00:00 0 \n7f0004000000-7f0008000000 rw-p 0 00:00 0 \n"),
            Figure(128 * kMBInKB))
      << "in two pieces";
  for (const char *other :
       {"7f0000000000-7f0007e00000 rw-p 00000000 00:00 0 \n", "7f0000001000-7f0008201000 rw-p 00000000 00:00 0 \n",
        "7f0000000000-7f0008001000 rw-p 00000000 00:00 0 \n", ""}) {
    EXPECT_EQ(blocks(other), Figure()) << other;
  }
}

TEST(GuestMapping, AFileThatCannotBeRead) {
  SavedHost host;
  HostFiles files(host.Path(""), Reach::kRootFolder);
  EXPECT_EQ(ReadGuestMappings(files, 7, {}).largest, Figure());
  host.Write("proc/7/maps", "100000-200000 rw-p 00000000 00:00 0 \n");
  host.Forbid("proc/7/maps");
  OrdinaryUser user;
  EXPECT_EQ(ReadGuestMappings(files, 7, {}).largest, Figure());
}

}  // namespace
}  // namespace platkit
