#include "tools/nodal/capture/key_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/platkit/scratch.h"
#include "tests/support/process.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

class KeyFileTest : public testing::Test {
 protected:
  std::string PathOf(const std::string &content) const {
    const std::string path = scratch_.Write("key", content);
    EXPECT_EQ(chmod(path.c_str(), 0600), 0);
    return path;
  }
  std::string SecretOf(const std::string &content) const { return std::string(KeyFile(PathOf(content)).secret()); }

  // The message, without the path.
  static std::string FailureOf(const std::string &path) {
    try {
      const KeyFile file(path);
    } catch (const Failure &failure) {
      const std::string text = failure.what();
      return text.substr(text.find(": ") + 2);
    }
    return "";
  }

  Scratch scratch_;
};

TEST_F(KeyFileTest, OneNewlineAtTheEndIsIgnored) {
  EXPECT_EQ(SecretOf("secret"), "secret");
  EXPECT_EQ(SecretOf("secret\n"), "secret");
  EXPECT_EQ(SecretOf("secret\r\n"), "secret");
  EXPECT_EQ(SecretOf("secret\n\n"), "secret\n");
  EXPECT_EQ(SecretOf("secret\r"), "secret\r");
  EXPECT_EQ(SecretOf(std::string(" two\nlines\0 ", 12)), std::string(" two\nlines\0 ", 12));
}

TEST_F(KeyFileTest, Sizes) {
  EXPECT_EQ(FailureOf(PathOf("")), "the key is empty");
  EXPECT_EQ(FailureOf(PathOf("\n")), "the key is empty");
  EXPECT_EQ(FailureOf(PathOf("\r\n")), "the key is empty");
  const std::string longest(KeyFile::kMaxBytes, 'x');
  EXPECT_EQ(SecretOf(longest), longest);
  EXPECT_EQ(SecretOf(longest + "\r\n"), longest);
  EXPECT_EQ(FailureOf(PathOf(longest + "x")), "the key exceeds 1024 bytes");
  EXPECT_EQ(FailureOf(PathOf(longest + "x\r\n")), "the key exceeds 1024 bytes");
  EXPECT_EQ(FailureOf(PathOf(longest + longest)), "the key exceeds 1024 bytes");
}

TEST_F(KeyFileTest, OtherUsersHaveNoAccess) {
  const std::string path = PathOf("secret");
  for (const mode_t mode : {0604u, 0602u, 0640u, 0620u, 0610u}) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    EXPECT_EQ(FailureOf(path), "other users may access the key file (use chmod 600)") << mode;
  }
  ASSERT_EQ(chmod(path.c_str(), 0400), 0);
  EXPECT_EQ(KeyFile(path).secret(), "secret");
  EXPECT_EQ(FailureOf("/dev/zero"), "other users may access the key file (use chmod 600)");
}

TEST_F(KeyFileTest, OfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can create a file of another user";
  const std::string path = PathOf("secret");
  ASSERT_EQ(chown(path.c_str(), 65534, 65534), 0);
  EXPECT_EQ(FailureOf(path), "the key file belongs to another user");
}

TEST_F(KeyFileTest, Unreadable) {
  EXPECT_EQ(FailureOf(scratch_.Path("missing")), "No such file or directory");
  ASSERT_EQ(mkdir(scratch_.Path("folder").c_str(), 0700), 0);
  EXPECT_EQ(FailureOf(scratch_.Path("folder")), "Is a directory");
}

// Standard input, replaced while a test runs.
class StandardInput {
 public:
  explicit StandardInput(int fd) : saved_(dup(STDIN_FILENO)) { EXPECT_EQ(dup2(fd, STDIN_FILENO), STDIN_FILENO); }
  ~StandardInput() {
    if (saved_ >= 0) {
      dup2(saved_, STDIN_FILENO);
      close(saved_);
    } else {
      close(STDIN_FILENO);
    }
  }
  StandardInput(const StandardInput &) = delete;
  StandardInput &operator=(const StandardInput &) = delete;

 private:
  int saved_;
};

TEST_F(KeyFileTest, StandardInput) {
  const std::string path = PathOf("secret\n");
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const StandardInput input(file);
  EXPECT_EQ(KeyFile("-").secret(), "secret");
  EXPECT_EQ(FailureOf("-"), "the key is empty") << "the key was read already";
  close(file);
}

TEST_F(KeyFileTest, ATerminalWouldShowTheKey) {
  if (!testing_support::HasTerminals()) GTEST_SKIP() << "no pseudo-terminals here";
  const int main = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_EQ(grantpt(main), 0);
  ASSERT_EQ(unlockpt(main), 0);
  const int terminal = open(ptsname(main), O_RDWR | O_NOCTTY | O_CLOEXEC);
  {
    const StandardInput input(terminal);
    EXPECT_EQ(FailureOf("-"), "the key would be visible on the terminal; use a file or a pipe");
  }
  close(terminal);
  close(main);
}

}  // namespace
}  // namespace nodal
