// The part of the tree that a capture takes.
#ifndef NODAL_PART_H
#define NODAL_PART_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/nodal/shape.h"

namespace nodal {

// The paths that a part is named by, without a slash at the end. Throws a Failure if one does not look like a path.
std::vector<std::string> PathsOf(const std::vector<std::string> &named);

// What stands at and below some paths; without any, everything. The devices on the PCI bus are in it only if a path
// leads there: to read them takes long, and no report wants them of a saved host. Their registers never are: to read
// one can change the device.
class Part {
 public:
  // Takes the paths as PathsOf does.
  explicit Part(const std::vector<std::string> &paths) : paths_(PathsOf(paths)) {}

  // Whether nodes of that shape can be in it.
  bool MayContain(const Shape &shape) const;

  bool Contains(std::string_view path) const;

  // Without a slash at the end.
  const std::vector<std::string> &paths() const { return paths_; }

 private:
  std::vector<std::string> paths_;
};

// Whether `path` is `top`, or stands below it.
bool IsAtOrBelow(std::string_view path, std::string_view top);

}  // namespace nodal

#endif  // NODAL_PART_H
