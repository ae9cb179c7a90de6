// Rewrites the tables of docs/metrics.md:
//   metrics_page FILE
#include <cstdio>
#include <fstream>
#include <iterator>

#include "tools/nodal/metrics/metrics_page.h"

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fputs("usage: metrics_page FILE\n", stderr);
    return 2;
  }
  std::ifstream in(argv[1]);
  const std::string page{std::istreambuf_iterator<char>(in), {}};
  if (!in || page.empty()) {
    std::fprintf(stderr, "metrics_page: %s: the file cannot be read or is empty\n", argv[1]);
    return 1;
  }
  std::ofstream out(argv[1]);
  out << nodal::RegeneratedMetricsPage(page) << std::flush;
  if (!out) {
    std::fprintf(stderr, "metrics_page: %s: the file cannot be written\n", argv[1]);
    return 1;
  }
  return 0;
}
