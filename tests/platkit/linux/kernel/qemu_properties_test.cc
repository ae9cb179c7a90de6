#include "platkit/linux/kernel/qemu_properties.h"

#include <gtest/gtest.h>

namespace platkit {
namespace {

std::string Value(std::string_view text, std::string_view key) {
  return std::string(QemuProperties(text, "first").ValueOf(key));
}

TEST(QemuProperties, Commas) {
  EXPECT_EQ(Value("a,b=1,c=2", "first"), "a");
  EXPECT_EQ(Value("a,b=1,c=2", "c"), "2");
  EXPECT_EQ(Value("first=x,b=1", "first"), "x");
  EXPECT_EQ(Value("a,,b,c=d,,e", "first"), "a,b");
  EXPECT_EQ(Value("a,,b,c=d,,e", "c"), "d,e");
  EXPECT_EQ(Value("b=1,b=2", "b"), "2") << "the last one counts";
  EXPECT_EQ(Value("b=1,plain", "first"), "") << "only the first property may lack its key";
  EXPECT_EQ(Value("b=c=d", "b"), "c=d");
  for (const char *none : {"", ",", "=", "b", "b=", "bb=1", ",,"})
    EXPECT_EQ(Value(none, "b"), "") << none;
}

TEST(QemuProperties, Json) {
  EXPECT_EQ(Value(R"({"first":"a","size":4294967296,"on":true})", "first"), "a");
  EXPECT_EQ(Value(R"({"first":"a","size":4294967296,"on":true})", "size"), "4294967296");
  EXPECT_EQ(Value(R"({"first":"a","size":4294967296,"on":true})", "on"), "true");
  EXPECT_EQ(Value("{ \"a\" :\t1 ,\n\"b\":\r 2 }", "b"), "2");
  EXPECT_EQ(Value(R"({"a":[0,{"b":"]}"},[]],"b":7})", "b"), "7");
  EXPECT_EQ(Value(R"({"a":[0],"b":7})", "a"), "");
  EXPECT_EQ(Value(R"({"b":"\"\\\/\n\u0041x"})", "b"), "\"\\/??x");
  EXPECT_EQ(Value(R"({"b":"1","b":"2"})", "b"), "2");
}

TEST(QemuProperties, MalformedJsonHasNoProperties) {
  const std::string whole = R"({"b":7,"a":["x",{"c":1}],"d":"e\u0041"})";
  EXPECT_EQ(Value(whole, "b"), "7");
  for (size_t length = 1; length < whole.size(); ++length)
    EXPECT_EQ(Value(whole.substr(0, length), "b"), "") << whole.substr(0, length);
  for (const char *bad : {"{}", R"({"b" 7})", R"({"b":})", R"({"b":7,})", R"({b:7})", R"({"b":7]})", R"({"b":"7)",
                          R"({"b":"\)", R"({"b":"\u00)", R"({"b":7;"a":8})"}) {
    EXPECT_EQ(Value(bad, "b"), "") << bad;
  }
  EXPECT_EQ(Value(R"({"b":7,"a":)" + std::string(100000, '['), "b"), "") << "deep nesting";
}

TEST(QemuProperties, Switches) {
  for (const char *on : {"x,share=on", "x,share=yes", "x,share=y", "x,share=true", R"({"share":true})"})
    EXPECT_TRUE(QemuProperties(on, "first").IsOn("share")) << on;
  for (const char *off : {"x", "x,share=off", "x,share=no", "x,share=", R"({"share":false})", "x,shared=on"})
    EXPECT_FALSE(QemuProperties(off, "first").IsOn("share")) << off;
}

}  // namespace
}  // namespace platkit
