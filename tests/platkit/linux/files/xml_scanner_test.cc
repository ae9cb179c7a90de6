#include "platkit/linux/files/xml_scanner.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace platkit {
namespace {

using Texts = std::vector<std::string>;

Texts Paths(std::string_view text) {
  Texts paths;
  XmlScanner xml(text);
  while (xml.Next())
    paths.emplace_back(xml.path());
  EXPECT_FALSE(xml.Next()) << "the end is final";
  return paths;
}

TEST(XmlScanner, VisitsElements) {
  EXPECT_EQ(Paths(""), Texts{});
  EXPECT_EQ(Paths("no element"), Texts{});
  EXPECT_EQ(Paths("<a><b/><c>text<d></d></c></a>"), (Texts{"/a", "/a/b", "/a/c", "/a/c/d"}));
  EXPECT_EQ(Paths("<a\n x='1'\n/><b />"), (Texts{"/a", "/b"}));
  EXPECT_EQ(Paths("<a></a ><b></b\n>"), (Texts{"/a", "/b"}));
}

TEST(XmlScanner, SkipsEverythingElse) {
  EXPECT_EQ(Paths("<?xml version='1.0'?><!-- <x> --><a><![CDATA[<y></a>]]><b/></a>"), (Texts{"/a", "/a/b"}));
  EXPECT_EQ(Paths("<a x='<y>' z=\"/>'\"><b/></a>"), (Texts{"/a", "/a/b"})) << "tags inside quotes";
}

TEST(XmlScanner, StopsAtMalformedText) {
  EXPECT_EQ(Paths("<a></b><c/>"), Texts{"/a"});
  EXPECT_EQ(Paths("</a><c/>"), Texts{});
  EXPECT_EQ(Paths("<a><b"), Texts{"/a"});
  EXPECT_EQ(Paths("<a><b x='></a>"), Texts{"/a"});
  EXPECT_EQ(Paths("<a></"), Texts{"/a"});
  EXPECT_EQ(Paths("<a><><b/>"), Texts{"/a"});
  EXPECT_EQ(Paths("<a><!-- <b/>"), Texts{"/a"});
  EXPECT_EQ(Paths("<a><![CDATA[ <b/>"), Texts{"/a"});
  EXPECT_EQ(Paths("<!DOCTYPE a [<!ENTITY b 'c'>]><a/>"), Texts{});
}

TEST(XmlScanner, BoundsTheDepth) {
  std::string text;
  for (int i = 0; i < 100000; ++i)
    text += "<a>";
  EXPECT_EQ(Paths(text).size(), 512u);
  EXPECT_EQ(Paths("<" + std::string(5000, 'x') + ">"), Texts{});
}

TEST(XmlScanner, Attributes) {
  XmlScanner xml("<a one='1' two = \"2 '>'\"\n three=''/>");
  ASSERT_TRUE(xml.Next());
  EXPECT_EQ(xml.Attribute("one"), "1");
  EXPECT_EQ(xml.Attribute("two"), "2 '>'");
  EXPECT_EQ(xml.Attribute("three"), "");
  EXPECT_EQ(xml.Attribute("four"), "");
  EXPECT_EQ(xml.Attribute("ne"), "");
  for (const char *text : {"<a x>", "<a x=>", "<a x=1>", "<a x y='1'>", "<a ='1'>", "<a>"}) {
    XmlScanner malformed(text);
    ASSERT_TRUE(malformed.Next()) << text;
    EXPECT_EQ(malformed.Attribute("x"), "") << text;
  }
}

TEST(XmlScanner, Text) {
  XmlScanner xml("<a>one<b>two</b>three</a>");
  ASSERT_TRUE(xml.Next());
  EXPECT_EQ(xml.text(), "one");
  ASSERT_TRUE(xml.Next());
  EXPECT_EQ(xml.text(), "two");
}

}  // namespace
}  // namespace platkit
