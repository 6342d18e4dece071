#include "common/xml_plist.h"

#include "common/libplist.h"
#include "common/plist_limits.h"
#include "support/testing.h"

namespace {

using namespace std::string_literals;
using Libplist::Node;

// Results for a block that ends where the list ends, so that a sanitizer sees every read past it.
bool IsSafe(const std::string& list, std::size_t max_depth = PlistLimits::kMaxDepth) {
  const std::vector<char> bytes(list.begin(), list.end());
  return XmlPlist::IsSafe(bytes.data(), bytes.size(), max_depth);
}

bool HasSlowTexts(const std::string& list) {
  const std::vector<char> bytes(list.begin(), list.end());
  return XmlPlist::HasSlowTexts(bytes.data(), bytes.size());
}

std::string DecodeSlowTexts(const std::string& list) {
  const std::vector<char> bytes(list.begin(), list.end());
  const XmlPlist::Copy copy = XmlPlist::DecodeSlowTexts(bytes.data(), bytes.size());
  return {copy.bytes.get(), copy.length};
}

Node Parse(const std::string& list) {
  return Node(Libplist::Parse(plist_from_xml, list.c_str(), static_cast<std::uint32_t>(list.size())));
}

// The tree that libplist makes of the list, as XML; "rejected" for none.
std::string Tree(const std::string& list) {
  const Node root = Parse(list);
  char* xml = nullptr;
  std::uint32_t length = 0;
  if (root != nullptr) plist_to_xml(root.get(), &xml, &length);
  const Libplist::Text owner(xml);
  return xml != nullptr ? std::string(xml, length) : "rejected";
}

std::string InString(const std::string& text) {
  return "<plist><array><string>" + text + "</string></array></plist>";
}

TEST(XmlPlist, NestingIsLimited) {
  const struct {
    const char* name;
    std::string list;
    bool safe;
  } cases[] = {
      {"512 levels", Times(512, "<array>") + Times(512, "</array>"), true},
      {"513 levels", Times(513, "<array>") + Times(513, "</array>"), false},
      {"600 on one level", "<array>" + Times(600, "<array/><dict /><array></array>") + "</array>", true},
      {"a deep second root", "<array></array>" + Times(600, "<array>"), true},
      {"a string as the root, then containers", "<string>text</string>" + Times(600, "<array>"), true},
      {"end tags in quotes", "<array>" + Times(600, "<array " + Times(250, " ") + "a=\"</array>\">"), false},
      {"end tags in comments", "<array>" + Times(600, "<array><!--</array>-->"), false},
      {"an empty root and what follows it", "<plist><array/>" + Times(512, "<array>"), false},
  };
  for (const auto& each : cases) EXPECT_EQ(IsSafe(each.list), each.safe) << each.name;
}

// Adds two levels, among tags that a scan less exact than libplist's would count.
constexpr char kOpen[] =
    "<!-- </array> --><!--></array>-->"                       // comments
    "<? </array> ?><? \"?></array>\" ?>"                      // processing instructions
    "<dict><key>k</key>"                                      // a level
    "<plist><array\n\ta=\">\" b='/' c=\"</array>\">"          // a level, with a tag in a quoted attribute
    "<string><![CDATA[</array>]]><!-- </string></array> -->"  // sections of a text
    "</string ><array a='/'></array><array/>"                 // containers that are closed again
    "<plist><true/></plist \"</array>\">"                     // a tag in a quoted part of an end tag
    "<key/><data>AAAA</data ><date a=\"</array>\"/>";         // leaves
constexpr char kClose[] = "</array a=\"<array>\"\n></plist></dict/>";

TEST(XmlPlist, NestingIsCountedWhateverTheTagsLookLike) {
  const std::string start = "<!DOCTYPE a [ \"]><array/>\"> ] > ]><plist><array>" + Times(255, kOpen);
  const std::string end = Times(255, kClose) + "</array></plist>";
  EXPECT_TRUE(IsSafe(start + "<array/>" + end));
  EXPECT_FALSE(IsSafe(start + "<array><array/></array>" + end));
}

TEST(XmlPlist, NulsAreRejectedInStringsAndKeysOnly) {
  const struct {
    const char* name;
    std::string list;
    bool safe;
  } cases[] = {
      {"string", InString("a\0b"s), false},
      {"CDATA section", InString("<![CDATA[a\0b]]>"s), false},
      {"second part of a string", InString("a<!-- -->\0"s), false},
      {"key", "<plist><dict><key>a\0b</key><true/></dict></plist>"s, false},
      {"comment", "<plist><!-- \0 --><array/></plist>"s, true},
      {"attribute", "<plist a=\"\0\"><array/></plist>"s, true},
      {"data", "<plist><array><data>AA\0AA</data></array></plist>"s, true},
      {"after the root", "<plist><array/></plist>\n\0text"s, true},
  };
  for (const auto& each : cases) EXPECT_EQ(IsSafe(each.list), each.safe) << each.name;
}

TEST(XmlPlist, OnlyManyEntitiesInLongTextsAreSlow) {
  const std::string words = Times(20, "words ");
  const struct {
    const char* name;
    std::string list;
    bool slow;
  } cases[] = {
      {"entities only", InString(Times(1000, "&amp;")), true},
      {"an entity in 900 bytes", InString(Times(100, "&lt;" + std::string(896, 'x'))), true},
      {"a few at the start of a long text", InString(Times(100, "&lt;") + std::string(100'000, 'x')), true},
      {"many short texts", Times(1000, InString("a&amp;b&lt;" + words)), false},
      {"many at the end", InString(std::string(100'000, 'x') + Times(100, "&quot;")), false},
  };
  for (const auto& each : cases) EXPECT_EQ(HasSlowTexts(each.list), each.slow) << each.name;
}

TEST(XmlPlist, DecodedTextsGiveTheSameTree) {
  const std::string filler(300, 'x');  // makes the text long enough to be decoded
  // What XML predefines; what must not be decoded twice; numbers; from "&#xD800;" on what some releases
  // reject; ends of sections, comments and sections between entities; bytes that are not UTF-8.
  const char* const texts[] = {"&amp;&lt;&gt;&quot;&apos;",
                               "&amp;lt;&#38;lt;&#x26;amp;",
                               "&#65;&#x41;&#9;&#127;&#128;",
                               "&#2047;&#65536;&#x10FFFF;",
                               "&#xD800;",
                               "&#0;",
                               "&#1114112;",
                               "&#;",
                               "&#x;",
                               "&#-1;",
                               "&#+65;",
                               "&# 65;",
                               "&#65a;",
                               "&;",
                               "&ampx;",
                               "&ltxyz;&amp;",
                               "&unknown;",
                               "&AMP;",
                               "&amp",
                               "& b;",
                               "&",
                               "&amp;&",
                               "]]>",
                               "&amp;]]>&lt;]]]>&amp;",
                               "&amp;]]&gt;",
                               "&amp;]&#93;>",
                               "]]&amp;>",
                               "<!-- &amp; -->&amp;",
                               "<![CDATA[&amp;]]>&amp;",
                               "&am<!-- -->p;",
                               "&amp;<![CDATA[>]]>",
                               "\xFF&amp;\xC3"};
  for (const std::string text : texts) {
    for (const std::string& list :
         {InString(text + filler), InString(filler + text), InString("&amp;" + filler + text),
          InString(Times(100, text)), InString(Times(100, text + "&amp;")),
          "<string>" + text + filler + "</string>",
          "<plist><dict><key>" + filler + text + "</key><string>" + text + "</string></dict></plist>"}) {
      EXPECT_EQ(Tree(DecodeSlowTexts(list)), Tree(list)) << text;
    }
  }
}

}  // namespace
