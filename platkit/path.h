// The path of a node with its arguments, for example /sched/groups/4/memAllocationInKB. Snapshots use paths as keys,
// and nodal reads and prints them.
//
// Integers are decimal, without leading zeros. In texts, '/', '%' and control characters are percent-encoded, with two
// upper-case hexadecimal digits.
#ifndef PLATKIT_PATH_H
#define PLATKIT_PATH_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/catalogue.h"
#include "platkit/param_list.h"

namespace platkit {

// Writes a path into a buffer of fixed size. Drops text that does not fit; ok() is then false.
class PathWriter {
 public:
  PathWriter &Literal(std::string_view text);
  PathWriter &Integer(int64_t value);
  PathWriter &Text(std::string_view text);

  bool ok() const { return ok_; }
  std::string_view view() const { return {bytes_, size_}; }

 private:
  static constexpr size_t kMaxBytes = 4096;

  bool ok_ = true;
  size_t size_ = 0;
  char bytes_[kMaxBytes];
};

// Writes the path of a node. The number of arguments determines whether it is the path of a record or of a list.
void WritePath(const Node &node, Arguments arguments, PathWriter &path);

// The node that a path names, as a record or as a list, and its arguments.
struct PathTarget {
  struct Argument {
    ParamKind kind;
    int64_t integer = 0;
    std::string text;

    // clang-tidy mistakes the comparison with 0 in the generated code for one with a null pointer.
    auto operator<=>(const Argument &) const = default;  // NOLINT(modernize-use-nullptr)
  };

  const Node *node = nullptr;  // null: not the path of a node
  bool asRecord = false;
  std::vector<Argument> arguments;
};

// Parses a path. Accepts only the form that WritePath writes, so that a node has one path.
PathTarget ParsePath(std::string_view path);

}  // namespace platkit

#endif  // PLATKIT_PATH_H
