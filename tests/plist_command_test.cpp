// hostutil plist FILE [--json]

#include "support/plists.h"
#include "support/program.h"

namespace {

using namespace std::string_literals;

std::string PlistAsJson(const SampleBackup& backup, const std::string& list) {
  backup.folder.Write("backup/list", list);
  const auto [status, out, err] = backup.Run("hostutil plist list --json");
  return status == 0 && out.ends_with('\n') ? out.substr(0, out.size() - 1)
                                            : std::to_string(status) + ' ' + err;
}

TEST(PlistCommand, PrintsWhatLibplistReadsBackAndNothingElse) {
  const SampleBackup backup("flat");
  EXPECT_THAT(backup.Look("hostutil plist $xml | cmp - $xml"), FieldsAre(0, "", ""));
  const std::string json = backup.Run("hostutil plist $binary --json").out;
  EXPECT_THAT(json, HasSubstr(R"x("Account":"(None)","Launches":0,)x"));
  EXPECT_EQ(PlistAsJson(backup, backup.Run("hostutil plist $binary").out) + '\n', json);
}

TEST(PlistCommand, WritesEveryValueAsJson) {
  const SampleBackup backup("flat", 0);
  EXPECT_EQ(PlistAsJson(backup,
                        "<plist><array><integer>-1</integer><integer>-9223372036854775808</integer>"
                        "<integer>9223372036854775808</integer><integer>18446744073709551615</integer>"
                        "<real>0.5</real><true/><false/><data></data><data>\n\tAAEC\n\tAwQ=</data>"
                        "<string/><string>&lt;\"\xE2\x80\xAE</string><array/></array></plist>"),
            R"([-1,-9223372036854775808,9223372036854775808,18446744073709551615,)"
            R"(0.5,true,false,"","AAECAwQ=","","<\"\u202e",[]])");
  EXPECT_EQ(PlistAsJson(backup,
                        "<plist><array><date>2023-11-14T12:00:00Z</date><date>1904-02-29T01:02:03Z</date>"
                        "<date>0001-01-01T00:00:00Z</date><date>9999-12-31T23:59:59Z</date></array></plist>"),
            R"(["2023-11-14T12:00:00Z","1904-02-29T01:02:03Z",)"
            R"("0001-01-01T00:00:00Z","9999-12-31T23:59:59Z"])");
  EXPECT_EQ(PlistAsJson(backup,
                        "<plist><dict><key>&amp;</key><dict/><key>a</key><true/><key>&amp;</key><array>"
                        "<string>x</string></array></dict></plist>"),
            R"({"&":["x"],"a":true})");
}

TEST(PlistCommand, WritesWhatOnlyBinaryListsHoldAsJson) {
  const SampleBackup backup("flat", 0);
  const std::string zeros(6, '\0');
  // A UID; an integer; not a number, and minus infinity; as dates infinity, 1e300 seconds, and one of 1969;
  // a text that is not UTF-8.
  EXPECT_EQ(PlistAsJson(backup, BinaryList({"\xA8\1\2\3\4\5\6\7\x8", "\x81\1\2"s,
                                            "\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE", "\x23\x7F\xF8" + zeros,
                                            "\x23\xFF\xF0" + zeros, "\x33\x7F\xF0" + zeros,
                                            "\x33\x7E\x37" + zeros, "\x33\xC1\xCE" + zeros,
                                            "\x53"
                                            "a\xFF"
                                            "b"})),
            R"([{"CF$UID":258},-2,null,null,null,null,"1969-02-07T03:44:00Z","a\ufffdb"])");
  EXPECT_EQ(PlistAsJson(backup, BinaryList({"\xD2\1\1\2\3", "Q\xFF", "\x10\1", "\x10\2"})),
            R"({"\ufffd":2})");
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

  const Terminal terminal;
  backup.Run("hostutil plist list >" + terminal.Name());
  EXPECT_THAT(terminal.Read(),
              AllOf(HasSubstr("\n<string>\\x1b[2J\\u202e</string>\r\n"), Not(HasSubstr("\x1b"))));
}

}  // namespace
