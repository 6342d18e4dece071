// hostutil plist FILE [--json]

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "support/program.h"

namespace {

using namespace std::string_literals;
using testing::AllOf;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::Not;

std::string PlistAsJson(const SampleBackup& backup, const std::string& list) {
  backup.folder.Write("backup/list", list);
  const auto [status, out, err] = backup.Run("hostutil plist list --json");
  return status == 0 && err.empty() ? out : std::to_string(status) + ' ' + err;
}

// A binary list of at most 255 bytes whose objects begin at `objects`, the root first.
std::string Binary(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00", table;
  for (const std::string& object : objects) {
    table += static_cast<char>(bytes.size());
    bytes += object;
  }
  const auto number = [](std::size_t value) { return std::string(7, '\0') + static_cast<char>(value); };
  return bytes + table + std::string(6, '\0') + "\1\1" + number(objects.size()) + number(0) +
         number(bytes.size());
}

TEST(PlistCommand, PrintsWhatLibplistReadsBackAndNothingElse) {
  const SampleBackup backup("flat");
  EXPECT_THAT(backup.Look("hostutil plist $xml | cmp - $xml"), FieldsAre(0, "", ""));
  const std::string json = backup.Run("hostutil plist $binary --json").out;
  EXPECT_THAT(json, HasSubstr(R"x("Account":"(None)","Launches":0,)x"));
  EXPECT_EQ(PlistAsJson(backup, backup.Run("hostutil plist $binary").out), json);
}

TEST(PlistCommand, WritesEveryValueOfXmlAsJson) {
  const std::pair<std::string, std::string> values[] = {
      {"<integer>-1</integer>", "-1"},
      {"<integer>-9223372036854775808</integer>", "-9223372036854775808"},
      {"<integer>9223372036854775808</integer>", "9223372036854775808"},
      {"<integer>18446744073709551615</integer>", "18446744073709551615"},
      {"<real>0.5</real>", "0.5"},
      {"<true/>", "true"},
      {"<false/>", "false"},
      {"<date>2023-11-14T12:00:00Z</date>", R"("2023-11-14T12:00:00Z")"},
      {"<date>1904-02-29T01:02:03Z</date>", R"("1904-02-29T01:02:03Z")"},
      {"<date>0001-01-01T00:00:00Z</date>", R"("0001-01-01T00:00:00Z")"},
      {"<date>9999-12-31T23:59:59Z</date>", R"("9999-12-31T23:59:59Z")"},
      {"<data></data>", R"("")"},
      {"<data>\n\tAAEC\n\tAwQ=\n\t</data>", R"("AAECAwQ=")"},
      {"<string/>", R"("")"},
      {"<string>&lt;\"\xE2\x80\xAE</string>", R"("<\"\u202e")"},
      {"<array/>", "[]"},
      {"<dict><key>&amp;</key><dict/><key>a</key><true/><key>&amp;</key><array><string>x</string></array></"
       "dict>",
       R"({"&":["x"],"a":true})"}};
  const SampleBackup backup("flat", 0);
  for (const auto& [xml, json] : values) {
    EXPECT_EQ(PlistAsJson(backup, "<plist>" + xml + "</plist>"), json + '\n') << xml;
  }
}

TEST(PlistCommand, WritesWhatOnlyBinaryListsHoldAsJson) {
  const auto date = [](const std::string& first_bytes) {
    return "\x33" + first_bytes + std::string(6, '\0');
  };
  const std::pair<std::vector<std::string>, std::string> lists[] = {
      {{"\x81\1\2"s}, R"({"CF$UID":258})"},
      {{"\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE"}, "-2"},
      {{"\x23\x7F\xF8\0\0\0\0\0\0"s}, "null"},  // not a number
      {{"\x23\xFF\xF0\0\0\0\0\0\0"s}, "null"},  // minus infinity
      {{date("\x7F\xF0")}, "null"},             // infinity
      {{date("\x7E\x37")}, "null"},             // 1e300 seconds
      {{date("\xC1\xCE")}, R"("1969-02-07T03:44:00Z")"},
      {{"\x53"
        "a\xFF"
        "b"},
       R"("a\ufffdb")"},
      {{"\xD2\1\1\2\3", "Q\xFF", "\x10\1", "\x10\2"}, R"({"\ufffd":2})"}};  // the same key twice
  const SampleBackup backup("flat", 0);
  for (const auto& [objects, json] : lists) {
    EXPECT_EQ(PlistAsJson(backup, Binary(objects)), json + '\n') << testing::PrintToString(objects);
  }
}

TEST(PlistCommand, WritesTheDeepestListOnASmallStack) {
  const SampleBackup backup("flat", 0);
  backup.folder.Write("backup/deep",
                      "<plist>" + Times(511, "<array>") + "<array/>" + Times(511, "</array>") + "</plist>");
  EXPECT_EQ(backup.Run("ulimit -s 2048; hostutil plist deep --json").out,
            std::string(512, '[') + std::string(512, ']') + '\n');
}

TEST(PlistCommand, EscapesControlCharactersOnATerminalOnly) {
  const SampleBackup backup("flat", 0);
  backup.folder.Write("backup/list", "<plist><string>\x1b[2J\xE2\x80\xAE</string></plist>");
  EXPECT_THAT(backup.Run("hostutil plist list").out, HasSubstr("\n<string>\x1b[2J\xE2\x80\xAE</string>\n"));

  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_TRUE(::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
  backup.Run(std::string("hostutil plist list >") + ::ptsname(terminal));
  char text[1024] = "";
  EXPECT_GT(::read(terminal, text, sizeof text - 1), 0);
  ::close(terminal);
  EXPECT_THAT(text, AllOf(HasSubstr("\n<string>\\x1b[2J\\u202e</string>\r\n"), Not(HasSubstr("\x1b"))));
}

TEST(PlistCommand, NoticesThatJsonIsLost) {
  const SampleBackup backup("flat", 0);
  EXPECT_THAT(backup.Run("hostutil plist Info.plist --json >/dev/full"),
              FieldsAre(2, "", "hostutil: standard output: No space left on device\n"));
  EXPECT_THAT(backup.Run("hostutil plist . --json"), FieldsAre(2, "", "hostutil: .: is a folder\n"));
}

}  // namespace
