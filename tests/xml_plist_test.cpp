#include "common/xml_plist.h"

#include "common/plist_limits.h"
#include "support/plists.h"

namespace {

using namespace std::string_literals;

// A block that ends where the list ends, so that a sanitizer sees every read past it.
std::vector<char> Exact(const std::string& list) {
  return {list.begin(), list.end()};
}

std::string DecodeSlowTexts(const std::string& list) {
  const XmlPlist::Copy copy = XmlPlist::DecodeSlowTexts(Exact(list).data(), list.size());
  return {copy.bytes.get(), copy.length};
}

// The tree that libplist makes of the list, as XML; empty for none.
std::string Tree(const std::string& list) {
  const auto length = static_cast<std::uint32_t>(list.size());
  return Libplist::Encoded(Libplist::Node(Libplist::Parse(plist_from_xml, list.c_str(), length)).get());
}

std::string InString(const std::string& text) {
  return "<plist><array><string>" + text + "</string></array></plist>";
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

TEST(XmlPlist, DeepNestingAndNulsInTextsAreRejected) {
  const std::string start = "<!DOCTYPE a [ \"]><array/>\"> ] > ]><plist><array>" + Times(255, kOpen);
  const std::string end = Times(255, kClose) + "</array></plist>";
  const std::tuple<const char*, std::string, bool> cases[] = {
      {"512 levels", Times(512, "<array>") + Times(512, "</array>"), true},
      {"513 levels", Times(513, "<array>") + Times(513, "</array>"), false},
      {"512 levels among other tags", start + "<array/>" + end, true},
      {"513 levels among other tags", start + "<array><array/></array>" + end, false},
      {"2 levels", "<array>" + Times(600, "<array/><dict /><array></array><dict></dict>") + "</array>", true},
      {"a deep second root", "<array></array>" + Times(600, "<array>"), true},
      {"a root without children, then containers", "<string>a</string>" + Times(600, "<array>"), true},
      {"an empty root, which holds what follows", "<plist><array/>" + Times(512, "<array>"), false},
      {"end tags in comments", "<array>" + Times(600, "<array><!--</array>-->"), false}};
  for (const auto& [name, list, safe] : cases)
    EXPECT_EQ(XmlPlist::IsSafe(Exact(list).data(), list.size(), PlistLimits::kMaxDepth), safe) << name;
  // NULs in a string, in a CDATA section, after a comment, in a key.
  for (const std::string& list : {InString("a\0b"s), InString("<![CDATA[a\0b]]>"s), InString("a<!-- -->\0"s),
                                  "<plist><dict><key>a\0b</key><true/></dict></plist>"s})
    EXPECT_FALSE(XmlPlist::IsSafe(Exact(list).data(), list.size(), PlistLimits::kMaxDepth));
  // NULs in a comment, in data, after the root, at the end only.
  for (const std::string& list :
       {InString("a<!-- \0 -->b"s), "<plist><array><data>AA\0AA</data></array></plist>"s,
        "<plist><array/></plist>\n\0text"s, "<plist><array/></plist>\0\0"s})
    EXPECT_TRUE(XmlPlist::IsSafe(Exact(list).data(), list.size(), PlistLimits::kMaxDepth));
}

TEST(XmlPlist, ManyEntitiesInLongTextsAreSlowUntilDecoded) {
  const std::tuple<const char*, std::string, bool> cases[] = {
      {"entities only", InString(Times(1000, "&lt;")), true},
      {"an entity in 900 bytes", InString(Times(100, "&lt;" + std::string(896, 'x'))), true},
      {"a few at the start of a long text", InString(Times(100, "&lt;") + std::string(100'000, 'x')), true},
      {"many short texts", Times(1000, InString("a&amp;b&lt;" + Times(20, "words "))), false},
      {"many at the end", InString(std::string(100'000, 'x') + Times(100, "&quot;")), false},
      {"a short text", InString("&lt;a href=&quot;b&quot;&gt;"), false},
  };
  for (const auto& [name, list, slow] : cases) {
    EXPECT_EQ(XmlPlist::HasSlowTexts(Exact(list).data(), list.size()), slow) << name;
    EXPECT_TRUE(!slow || DecodeSlowTexts(list).find("&lt;") == list.npos) << name;
  }
}

TEST(XmlPlist, DecodedTextsGiveTheSameTree) {
  const std::string texts[] = {
      "&amp;&lt;&gt;&quot;&apos;&amp;lt;&#38;lt;&#x26;amp;&#60;",  // to be decoded, and once only
      "&#9;&#65;&#x41;&#127;&#128;&#2047;&#2048;&#xD7FF;&#xE000;&#xFFFF;&#65536;&#x10FFFF;&#x000041;",
      "&amp;]]>&lt;]]]>&amp;]]&gt;&amp;]&#93;>",  // what a CDATA section must not contain
      "<!-- &amp; -->&amp;<![CDATA[&amp;]]>&amp;<![CDATA[>]]>",
      // Rejected, or read in libplist's own way.
      "&#X41;", "&#xD800;", "&#0;", "&#1114112;", "&#12345678;", "&#;", "&#-1;", "&#65a;", "&ampx;",
      "&unknown;", "&AMP;", "&amp", "&", "&am<!-- -->p;", "\xFF&amp;\xC3"};
  for (const std::string& text : texts) {
    const std::string filler(300, 'x');  // makes the text long enough to be decoded
    for (const std::string& list :
         {InString(text + filler), InString("&amp;" + filler + text), InString(Times(100, text + "&amp;")),
          "<plist><dict><key>" + filler + text + "</key><string>" + text + "</string></dict></plist>"}) {
      EXPECT_EQ(Tree(DecodeSlowTexts(list)), Tree(list)) << text;
    }
  }
}

}  // namespace
