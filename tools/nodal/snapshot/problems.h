// Prints and counts the problems of a snapshot.
#ifndef NODAL_SNAPSHOT_PROBLEMS_H
#define NODAL_SNAPSHOT_PROBLEMS_H

#include <cstddef>
#include <string_view>

#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"

namespace nodal {

class Problems {
 public:
  void Report(std::string_view where, std::string_view what) {
    ++count_;
    Print(Printable(where) + ": " + Printable(what) + "\n");
  }
  size_t count() const { return count_; }

 private:
  size_t count_ = 0;
};

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_PROBLEMS_H
