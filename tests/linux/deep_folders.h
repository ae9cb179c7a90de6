// Folders nested so deeply that the path of the innermost is longer than the kernel accepts.
#ifndef TESTS_LINUX_DEEP_FOLDERS_H
#define TESTS_LINUX_DEEP_FOLDERS_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "platkit/linux/files/file_descriptor.h"

namespace platkit {

class DeepFolders {
 public:
  static constexpr int kDepth = 24;

  // Creates them in the folder `top`.
  explicit DeepFolders(std::string top) : top_(std::move(top)) {
    for (int depth = 0; depth < kDepth; ++depth)
      EXPECT_EQ(mkdirat(Open(depth).get(), kName.c_str(), 0755), 0);
  }

  // Removes them, which std::filesystem cannot do.
  ~DeepFolders() {
    for (int depth = kDepth; depth-- > 0;)
      EXPECT_EQ(unlinkat(Open(depth).get(), kName.c_str(), AT_REMOVEDIR), 0);
  }

  DeepFolders(const DeepFolders &) = delete;
  DeepFolders &operator=(const DeepFolders &) = delete;

 private:
  FileDescriptor Open(int depth) const {
    FileDescriptor folder(open(top_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (int i = 0; i < depth; ++i)
      folder = FileDescriptor(openat(folder.get(), kName.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return folder;
  }

  const std::string kName = std::string(250, 'd');
  std::string top_;
};

}  // namespace platkit

#endif  // TESTS_LINUX_DEEP_FOLDERS_H
