// Lists the entries below a path of the tree, like a folder.
#ifndef NODAL_TREE_LISTING_H
#define NODAL_TREE_LISTING_H

#include <string>
#include <vector>

#include "tools/nodal/tree/tree.h"

namespace nodal {

struct ListingEntry {
  std::string name;
  bool hasChildren = false;
  // "record" or "list", or "-" if no node has this path.
  std::string kind = "-";
  std::string size = "-";  // bytes of a record or entries of a list; "?" if the node cannot be read
};

// Lists the host's entries below `path`. The path begins with a slash and does not end with one; "" is the whole tree.
// A node without children is listed itself, with its full path. Fixed names are sorted; instances are in the kernel's
// order. Throws a Failure if the path does not exist.
std::vector<ListingEntry> ListPath(Tree &tree, const std::string &path);

}  // namespace nodal

#endif  // NODAL_TREE_LISTING_H
