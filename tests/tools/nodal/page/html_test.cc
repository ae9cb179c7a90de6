#include "tools/nodal/page/html.h"

#include <gtest/gtest.h>

namespace nodal {
namespace {

TEST(HtmlText, LeavesNoMarkup) {
  EXPECT_EQ(HtmlText("</script><a b=\"c\" d='e'>&amp;"),
            "&lt;/script&gt;&lt;a b=&quot;c&quot; d=&#39;e&#39;&gt;&amp;amp;");
  EXPECT_EQ(HtmlText("web-01"), "web-01");
}

TEST(AmountText, HasThreeDigits) {
  EXPECT_EQ(AmountText(0), "0 KB");
  EXPECT_EQ(AmountText(999), "999 KB");
  EXPECT_EQ(AmountText(1000), "0.98 MB");
  EXPECT_EQ(AmountText(1024), "1.00 MB");
  EXPECT_EQ(AmountText(10240), "10.0 MB");
  EXPECT_EQ(AmountText(102400), "100 MB");
  EXPECT_EQ(AmountText(4194304), "4.00 GB");
  EXPECT_EQ(AmountText(UINT64_MAX - 1), "16777216 PB");
  EXPECT_EQ(AmountText(std::nullopt), "n/a");
}

TEST(Available, AllOnesAreNone) {
  EXPECT_EQ(Available(UINT64_MAX), std::nullopt);
  EXPECT_EQ(Available(0), 0u);
}

TEST(Filled, ReplacesOnce) {
  const auto value = [](std::string_view name) {
    return name == "a" ? std::string("{{b}}") : "<" + std::string(name) + ">";
  };
  EXPECT_EQ(Filled("x{{a}}y{{b}}z", value), "x{{b}}y<b>z");
  EXPECT_EQ(Filled("no names", value), "no names");
}

TEST(HtmlTable, MarksRowHeaders) {
  EXPECT_EQ(HtmlTable("A & B", {"name", "size"}, {{"x", "1"}}),
            "<table><caption>A &amp; B</caption><thead><tr><th scope=\"col\">name</th><th "
            "scope=\"col\">size</th></tr></thead>\n"
            "<tbody><tr><th scope=\"row\">x</th><td>1</td></tr>\n</tbody></table>");
}

}  // namespace
}  // namespace nodal
