// A daemon of libvirt that does not behave. The client is libvirt's own.
#include "tools/guests/libvirt.h"

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "tests/platkit/scratch.h"
#include "tests/tools/guests/fake_qmp.h"
#include "tools/guests/sample.h"

namespace guests {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing_support::FakeQmp;
using testing_support::QmpResults;

constexpr milliseconds kDeadline{800};

class Libvirt : public testing::Test {
 protected:
  std::string Uri() const { return "qemu:///system?socket=" + scratch_.Path("libvirt"); }

  // The failure of a daemon that sends this text first, and `answer` for each line that it receives. Expects that the
  // deadline holds, and that the figures of another guest are there.
  std::string FailureOf(const std::string &text, const std::string &answer = "") {
    const FakeQmp daemon(scratch_.Path("libvirt"), text, [&](const std::string &) { return answer; });
    const FakeQmp other(scratch_.Path("qmp"), QmpResults());
    const auto start = steady_clock::now();
    const Sample sample = TakeSample({.libvirt = Uri(), .qmp = {scratch_.Path("qmp")}}, kDeadline);
    for (const char *name : {"libvirt", "qmp"})
      std::filesystem::remove(scratch_.Path(name));
    EXPECT_LT(steady_clock::now() - start, kDeadline + milliseconds(3000));
    EXPECT_FALSE(sample.isEmpty);
    EXPECT_EQ(sample.guests.size(), 1u);
    if (!sample.guests.empty()) {
      EXPECT_EQ(sample.guests[0].name, "web");
      EXPECT_EQ(sample.guests[0].figures[GuestFigure::kBalloon], Figure(131072));
    }
    EXPECT_EQ(sample.failures.size(), 1u);
    std::string failure = sample.failures.empty() ? "" : sample.failures[0];
    EXPECT_TRUE(failure.starts_with(Uri() + ": ")) << failure;
    return failure.substr(std::min(failure.size(), Uri().size() + 2));
  }

  // A message of libvirt's protocol: its size, and the bytes after the size.
  static std::string Message(uint32_t size, const std::string &bytes) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
      text += static_cast<char>(size >> shift);
    return text + bytes;
  }

  Scratch scratch_;
};

TEST_F(Libvirt, ADaemonThatNeverAnswers) { EXPECT_EQ(FailureOf(""), "no answer"); }

TEST_F(Libvirt, ADaemonThatStopsWithinAMessage) {
  EXPECT_EQ(FailureOf(Message(1000, std::string(10, '\0'))), "no answer");
}

TEST_F(Libvirt, Garbage) {
  EXPECT_NE(FailureOf("SSH-2.0\r\n"), "");
  std::string noise;
  for (uint32_t number = 1; noise.size() < 100'000; number = number * 1'664'525 + 1'013'904'223)
    noise += static_cast<char>(number >> 24);
  EXPECT_NE(FailureOf(noise), "");
  EXPECT_NE(FailureOf(Message(28, std::string(24, '\xff'))), "");
  EXPECT_NE(FailureOf(std::string(10'000'000, '\0')), "");
}

// Answers to calls that nobody made.
TEST_F(Libvirt, EndlessMessages) {
  std::string replies;
  const std::string reply = Message(
      28, Message(0x20008086, "") + Message(1, "") + Message(1, "") + Message(1, "") + Message(7, "") + Message(0, ""));
  while (replies.size() < 4'000'000)
    replies += reply;
  EXPECT_NE(FailureOf(replies), "");
}

TEST_F(Libvirt, ASocketWithoutADaemon) {
  const FakeQmp other(scratch_.Path("qmp"), QmpResults());
  const Sample sample = TakeSample({.libvirt = Uri(), .qmp = {scratch_.Path("qmp")}}, kDeadline);
  EXPECT_EQ(sample.guests.size(), 1u);
  ASSERT_EQ(sample.failures.size(), 1u);
  EXPECT_NE(sample.failures[0].find("No such file or directory"), std::string::npos) << sample.failures[0];
}

}  // namespace
}  // namespace guests
