// nodal ls: the entries below a path.
#include <cstdio>
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/listing.h"
#include "tools/nodal/tree/path_filter.h"

namespace nodal {
namespace {

struct LsOptions {
  std::string path = "/";
  bool isLong = false;
};

std::string LongLine(const ListingEntry &entry, const std::string &name, const std::string &path) {
  char columns[64];
  std::snprintf(columns, sizeof columns, "%-6s %6s  ", entry.kind.c_str(), entry.size.c_str());
  const bool isPathItself = entry.name == path;
  return columns + (isPathItself ? name : Printable(path) + "/" + name);
}

void List(const LsOptions &options) {
  const std::string path = WithoutEndingSlash(options.path);
  HostTree host;
  for (const ListingEntry &entry : ListPath(host, path)) {
    const std::string name = Printable(entry.name) + (entry.hasChildren ? "/" : "");
    Print((options.isLong ? LongLine(entry, name, path) : name) + "\n");
  }
}

}  // namespace

Run DeclareLs(OptionSet &options, const SourceOptions &source) {
  const auto values = std::make_shared<LsOptions>();
  options.Add("path", values->path, "The path (default: /)");
  options.AddFlag("-l,--long", values->isLong, "Show kind, size (bytes or entries) and full path");
  return [values, &source] {
    UseSource(source);
    List(*values);
    return kSuccess;
  };
}

}  // namespace nodal
