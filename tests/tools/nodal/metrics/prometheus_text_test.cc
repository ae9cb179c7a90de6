#include "tools/nodal/metrics/prometheus_text.h"

#include <gtest/gtest.h>

namespace nodal {
namespace {

TEST(PrometheusText, Numbers) {
  EXPECT_EQ(NumberText(0), "0");
  EXPECT_EQ(NumberText(-5), "-5");
  EXPECT_EQ(NumberText(68719476736.0), "68719476736");
  EXPECT_EQ(NumberText(0.42), "0.42");
  EXPECT_EQ(NumberText(0.000007), "0.000007");
  EXPECT_EQ(NumberText(4503599627370496.0 * 1024), "4611686018427387904");
  EXPECT_EQ(NumberText(18446744073709549568.0 * 2097152), "38685626227668129295630336");
}

TEST(PrometheusText, LabelValues) {
  EXPECT_EQ(LabelValue("web-01"), "web-01");
  EXPECT_EQ(LabelValue("a\"b\\c\nd"), "a\\\"b\\\\c\\nd");
  EXPECT_EQ(LabelValue("caf\xc3\xa9 \xf0\x9f\x98\x80"), "caf\xc3\xa9 \xf0\x9f\x98\x80");
  EXPECT_EQ(LabelValue("\xff\x1b[m\x7f\xc3"), "\\\\xff\\\\x1b[m\\\\x7f\\\\xc3");
  EXPECT_EQ(LabelValue("\xc2\x9b"
                       "31m\xc2\xa0"),
            "\\\\xc2\\\\x9b31m\xc2\xa0")
      << "a terminal may obey the first";
  EXPECT_EQ(LabelValue("a\u202eb\u2066c"), "a\\\\xe2\\\\x80\\\\xaeb\\\\xe2\\\\x81\\\\xa6c")
      << "they change the direction";
  EXPECT_EQ(Labels().Add("a", "1").Add("b", "").Add("c", "x").text(), "a=\"1\",c=\"x\"");
}

}  // namespace
}  // namespace nodal
