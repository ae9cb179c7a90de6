// Tests a reader of a kernel file with the file in each possible state.
#ifndef TESTS_PLATKIT_LINUX_KERNEL_KERNEL_FILE_H
#define TESTS_PLATKIT_LINUX_KERNEL_KERNEL_FILE_H

#include <functional>
#include <string>
#include <vector>

#include "platkit/linux/kernel/figure.h"
#include "tests/linux/saved_host.h"

namespace platkit {

inline const Figure kAbsent;
inline const Figure kUnreadable = Figure::Unreadable();
inline const Figure kUnlimited = Figure::Unlimited();

// A root folder, and a HostFiles that reads it.
class KernelFiles {
 public:
  KernelFiles() : files_(host_.Path(""), Reach::kRootFolder) {}

  HostFiles &files() { return files_; }
  SavedHost &host() { return host_; }

  // Writes a file, and returns files().
  HostFiles &With(const std::string &path, std::string_view text) {
    host_.Write(path, text);
    return files_;
  }

 private:
  SavedHost host_;
  HostFiles files_;
};

using ReadFigure = std::function<Figure(HostFiles &)>;

struct FigureOfText {
  std::string text;
  Figure figure;
};

// Checks the figure that `read` returns: for each content of the file, if this user may not read the file, and if the
// file does not exist.
inline void ExpectFigures(const std::string &path, const ReadFigure &read, const std::vector<FigureOfText> &texts,
                          Figure ifForbidden, Figure ifMissing) {
  KernelFiles kernel;
  for (const FigureOfText &expected : texts)
    EXPECT_EQ(read(kernel.With(path, expected.text)), expected.figure) << path << ": " << expected.text;
  kernel.host().Forbid(path);
  {
    OrdinaryUser user;
    EXPECT_EQ(read(kernel.files()), ifForbidden) << path << " is forbidden";
  }
  kernel.host().Remove(path);
  EXPECT_EQ(read(kernel.files()), ifMissing) << path << " is missing";
}

}  // namespace platkit

#endif  // TESTS_PLATKIT_LINUX_KERNEL_KERNEL_FILE_H
