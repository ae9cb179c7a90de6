// Parses paths of nodes. An accepted path has only one spelling, and any text argument survives being written to a path
// and parsed.
#include "platkit/path.h"

#include "platkit/node_ref.h"
#include "tests/fuzz/target.h"
#include "tools/nodal/tree/arguments.h"

namespace {

using platkit::PathTarget;

size_t ArgumentsOf(const PathTarget &target) {
  return target.asRecord ? target.node->recordArguments() : target.node->listArguments();
}

void CheckPath(std::string_view path) {
  const PathTarget target = platkit::ParsePath(path);
  if (target.node == nullptr) return;
  REQUIRE(target.arguments.size() == ArgumentsOf(target));
  platkit::PathWriter written;
  platkit::WritePath(*target.node, nodal::ParamsOf(target.arguments), written);
  constexpr size_t kMostPathBytes = 4096;
  REQUIRE(written.ok() == (path.size() <= kMostPathBytes));
  if (written.ok()) REQUIRE(written.view() == path);
}

void CheckText(std::string_view text) {
  const platkit::Node &heap = platkit::nodes::system_heaps_stats;
  platkit::PathWriter path;
  platkit::WritePath(heap, nodal::ParamsOf({nodal::TextArgument(text)}), path);
  if (!path.ok()) return;
  const PathTarget target = platkit::ParsePath(path.view());
  const bool isText = text.find('\0') == std::string_view::npos;
  REQUIRE((target.node == &heap) == isText);
  if (isText) REQUIRE(target.arguments.at(0).text == text);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view text = fuzz::Text(data, size);
  CheckPath(text);
  CheckText(text);
  return 0;
}
