#include "tools/nodal/metrics/metrics_page.h"

#include "tests/support/scratch.h"
#include "tests/tools/nodal/program.h"

namespace nodal {
namespace {

TEST(MetricsPage, IsUpToDate) {
  const std::string page = Contents(METRICS_PAGE);
  EXPECT_EQ(page, RegeneratedMetricsPage(page)) << "to update it: scripts/build release update_metrics_page";
}

TEST(MetricsPage, KeepsTheIntroduction) {
  const std::string page = RegeneratedMetricsPage("# Metrics\n\nWords.\n\n## old\n\nRows.\n");
  EXPECT_TRUE(page.starts_with("# Metrics\n\nWords.\n\n## host\n")) << page;
  EXPECT_EQ(page.find("Rows."), std::string::npos);
}

TEST(MetricsPage, HasARowForEachMetric) {
  const std::string page = RegeneratedMetricsPage("");
  for (const char *row :
       {"\n## world\n\n", "\n\nLabels: `group`, `name`. Shown only with `--only world`.\n\n| metric |",
        "\n| `kestrel_buddy_free_buffers` | gauge | Free buffers of the size in the label buffer_bytes. | "
        "`/system/buddy/{buddy:text}/comprehensive` sizes.free |\n",
        "\n| `kestrel_reading_info` | gauge | Always 1. Labels: `version`, `definitions`. | |\n",
        "| `kestrel_heap_allocations_total` | counter | "})
    EXPECT_NE(page.find(row), std::string::npos) << row;
}

}  // namespace
}  // namespace nodal
