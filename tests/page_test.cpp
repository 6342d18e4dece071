// hostutil inspect --html FILE

#include <regex>

#include "support/manifests.h"

namespace {

struct Page {
  std::string html;
  std::string text;  // what is between the tags, with one space for each run of them
};

// Inspects the backup, which must end with `status`.
Page PageOf(const SampleBackup& backup, int status) {
  EXPECT_THAT(backup.Run("hostutil inspect . --html ../page.html"), FieldsAre(status, Not(""), ""));
  Page page{ReadFile(backup.folder.Path("page.html")), ""};
  page.text = std::regex_replace(page.html, std::regex("<wbr>"), "");
  page.text = std::regex_replace(page.text, std::regex("(<[^>]*>|\n)+"), " ");
  return page;
}

std::size_t Occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(Page, HoldsTheReportAndLoadsNothing) {
  for (const std::string& layout : kLayouts) {
    const SampleBackup backup(layout);
    const Page page = PageOf(backup, 0);
    for (const std::string fact :
         {" Sample device No problems: 40 files checked ", " listed 40 present 40 size ",
          " property lists read 8 missing 0 ", " mismatched id 0 wrong size 0 ",
          " Serial Number SAMPLE000001 ", " Months covered 2023-01 to 2023-02 ",
          " Extension Files txt 16 jpg 12 plist 8 sqlite 4 ", " Month Files 2023-02 9 2023-01 31 "}) {
      EXPECT_THAT(page.text, HasSubstr(fact));
    }
    EXPECT_THAT(page.text, HasSubstr(" Layout " + layout + ' '));
    EXPECT_THAT(page.html, HasSubstr("content=\"default-src 'none'; style-src 'unsafe-inline'; "));
    EXPECT_THAT(page.html, HasSubstr("<rect width=\"75.0%\" "));  // 12 of 16
    EXPECT_FALSE(
        std::regex_search(page.html, std::regex("<(script|link|img|iframe)|src=|url\\(|@import|//")));
    EXPECT_THAT(page.text, Not(HasSubstr("Identifier")));

    backup.Run("rm $note; hostutil inspect . --json --html ../page.html >../json");
    EXPECT_EQ(backup.Run("hostutil inspect . --json | cmp - ../json").out, "");
    EXPECT_THAT(PageOf(backup, 1).text, HasSubstr(" Identifier missing HomeDomain " + kNote + ' '));
  }
}

TEST(Page, EscapesEveryText) {
  const std::pair<std::string, std::string> texts[] = {
      {"</title><script>alert(1)</script>", "&lt;/title&gt;&lt;script&gt;alert(1)&lt;/script&gt;"},
      {"\" onload='x'", "&quot; onload=&#39;x&#39;"},
      {"a&lt;b", "a&amp;lt;b"},
      {"\xE2\x80\xAEtxt.exe", "\\u202etxt.exe"},
      {"\xE2\x81\xA6 \xE2\x80\x8F \xD8\x9C", "\\u2066 \\u200f \\u061c"},
      {"\x1b[2J\xC2\x9B", "\\x1b[2J\\u009b"},
      {"\x80\xC0\xAF\xED\xA0\x80", Times(6, "\xEF\xBF\xBD")},
      {std::string(3000, 'x'), std::string(500, 'x') + "\xE2\x80\xA6" + std::string(499, 'x')}};
  std::vector<Entry> entries;
  for (const auto& [text, escaped] : texts) entries.push_back(EntryOf(text, text));
  const BackupOf backup("two-level", entries);  // with mismatched identifiers, so that problems are shown
  backup.folder.Write("backup/Info.plist", "<plist><dict><key>Device Name</key><string><![CDATA[" +
                                               texts[0].first + "]]></string></dict></plist>");
  const std::string html = std::regex_replace(PageOf(backup, 1).html, std::regex("<wbr>"), "");
  for (const auto& [text, escaped] : texts) {
    EXPECT_THAT(html, Not(HasSubstr(text)));
    // The problem's domain and path, and the domain's total; the title, the heading and the device's name.
    EXPECT_EQ(Occurrences(html, escaped), text == texts[0].first ? 6U : 3U) << escaped;
  }
}

TEST(Page, ShowsTheFirstThousandProblemsAndTheLargestDomains) {
  const SampleBackup backup("two-level", 0);
  backup.Run(
      "for i in $(seq 20); do f=$(hostutil locate . d$i f.x$i --create | sed -n 's/^Stored at *//p'); "
      "printf %0${i}d 0 >$f; done",
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<1234)"
      "INSERT INTO Files SELECT i,'d'||i,'f.x'||i,2-(i<21),null FROM n");
  const Page page = PageOf(backup, 1);
  EXPECT_EQ(Occurrences(page.html, "<tr><td>mismatched id</td>"), 1000U);
  for (const std::string fact :
       {" 1,234 problems ", " mismatched id d1000 f.x1000 1000 and 234 more; ", " size 210 B 210 bytes ",
        " Files Size d20 1 20 B d19 1 19 B ", " d9 1 9 B 8 other domains 8 36 B ", " Files x1 1 x10 1 x11 1 ",
        " 8 other extensions 8 "}) {
    EXPECT_THAT(page.text, HasSubstr(fact));
  }
}

TEST(Page, IsWrittenAsAWholeOrNotAtAll) {
  const SampleBackup backup("flat");
  const std::string longest(255, 'n');
  backup.Run("mkdir ../to ../to/folder; mkfifo ../to/pipe; ln -s old ../to/link; echo old >../to/old");
  const std::string names = "cd ../to; find . | sort; cat old";
  const std::string before = backup.Run(names).out;
  using Failure = std::tuple<std::string, std::string, std::string>;
  const Failure failures[] = {
      Failure("", "none/page", "No such file or directory"), Failure("", "folder", "is not a regular file"),
      Failure("", "pipe", "is not a regular file"),          Failure("", "link", "is not a regular file"),
      Failure("", longest + 'n', "File name too long"),      Failure("ulimit -f 4;", "old", "File too large"),
      Failure("ulimit -f 4;", "new", "File too large")};
  for (const auto& [setup, file, reason] : failures) {
    EXPECT_THAT(backup.Run(setup + "hostutil inspect . --html ../to/" + file),
                FieldsAre(2, "", "hostutil: ../to/" + file + ": " + reason + '\n'));
    EXPECT_EQ(backup.Run(names).out, before) << file;
  }
  for (const std::string& file : {std::string("old"), longest}) {
    EXPECT_EQ(backup.Run("umask 027; hostutil inspect . --html ../to/" + file + " >/dev/null").err, "");
    EXPECT_THAT(backup.Run("cd ../to; stat -c %a " + file + "; head -1 " + file).out,
                "640\n<!DOCTYPE html>\n");
  }
  // The only folder that has to be writable.
  EXPECT_EQ(backup.Run("chmod 555 ..; plain inspect . --html ../to/old >/dev/null; chmod 755 ..").err, "");
  EXPECT_EQ(backup.Run("ls -A ../to | wc -l").out, "5\n");
}

}  // namespace
