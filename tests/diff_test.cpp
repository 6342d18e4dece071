#include "support/manifests.h"

namespace {

constexpr auto kFolder = EntryKind::Directory;
constexpr auto kLink = EntryKind::Link;

// Compares backups with these entries.
ProgramResult Diff(const std::string& old_layout, const std::vector<Entry>& before,
                   const std::string& new_layout, const std::vector<Entry>& after,
                   const std::string& arguments = "", const std::string& sql_before = "") {
  const BackupOf old_backup(old_layout, before);
  const BackupOf new_backup(new_layout, after);
  if (!sql_before.empty()) old_backup.Run("", sql_before);
  return new_backup.Run("hostutil diff '" + old_backup.folder.Path("backup") + "' . " + arguments);
}

std::vector<Entry> Files(const std::vector<std::string>& paths) {
  std::vector<Entry> files;
  for (const std::string& path : paths) files.push_back(EntryOf("D", path));
  return files;
}

TEST(Diff, NamesEachDifferenceInTheOrderOfBytes) {
  std::vector<Entry> before = Files({"same", "twice", "twice", "size", "time", "kind"});
  std::vector<Entry> after = Files({"\xFF", "a/b", "a!", "B", "twice", "same"});
  for (const Entry& entry : {EntryOf("D", "folder", kFolder, 1, 1), EntryOf("D", "link", kLink),
                             EntryOf("D-x", "removed"), EntryOf("D", "z", kLink, 1)})
    before.push_back(entry);
  for (const Entry& entry :
       {EntryOf("E", "a"), EntryOf("D", "folder", kFolder, 2, 2), EntryOf("D", "size", EntryKind::File, 2),
        EntryOf("D", "kind", kFolder), EntryOf("D", "time", EntryKind::File, 1, 1700000001),
        EntryOf("D", "z", kLink, 2), EntryOf("", "no domain")})
    after.push_back(entry);
  const std::string expected =
      "A  file         no domain\nA  file       D  B\nA  file       D  a!\nA  file       D  a/b\n"
      "D  file       D  kind\nA  directory  D  kind\nD  link       D  link\nM  file       D  size\n"
      "M  file       D  time\nD  file       D  twice\nA  file       D  \xEF\xBF\xBD\n"
      "D  file       D-x  removed\nA  file       E  a\n";
  for (const std::string& old_layout : kLayouts) {
    for (const std::string& new_layout : kLayouts) {
      EXPECT_THAT(Diff(old_layout, before, new_layout, after), FieldsAre(1, expected, ""));
      EXPECT_THAT(Diff(old_layout, before, new_layout, before), FieldsAre(0, "", ""));
    }
  }
  EXPECT_THAT(Diff("flat", before, "flat", after, "--domain D --match '[a-s]+'"),
              FieldsAre(1, "D  file       D  kind\nA  directory  D  kind\nD  link       D  link\n", ""));
}

TEST(Diff, WritesJsonWithNullWhereThereIsNothing) {
  const std::vector<Entry> before = {EntryOf("D", "changed", EntryKind::File, 7),
                                     EntryOf("D", "removed", EntryKind::File, 8)};
  const std::vector<Entry> after = {EntryOf("D", "added"), EntryOf("D", "changed", EntryKind::File, 9)};
  const std::string date = '"' + Utils::ConvertUtcToLocalDate(1700000000) + '"';
  const auto line = [](const std::string& change, const std::string& size, const std::string& modified) {
    return R"({"change":")" + change + R"(","domain":"D","path":")" + change + R"(","kind":"file","size":[)" +
           size + R"(],"modified":[)" + modified + "]}\n";
  };
  EXPECT_EQ(Diff("flat", before, "two-level", after, "--json").out,
            line("added", "null,1", "null," + date) + line("changed", "7,9", date + ',' + date) +
                line("removed", "8,null", date + ",null"));
}

TEST(Diff, ComparesOnlyWhatBothRecordAndCountsDamagedRecords) {
  const std::vector<Entry> entries = {EntryOf("D", "a"), EntryOf("D", "b")};
  const std::vector<Entry> others = {EntryOf("D", "a", EntryKind::File, 2), EntryOf("D", "b")};
  EXPECT_THAT(Diff("two-level", entries, "flat", others, "", "UPDATE Files SET file=null"),
              FieldsAre(0, "", ""));
  const std::string damage = "INSERT INTO Files VALUES (8,'D','c',9,null), (9,'D','d',1,x'00')";
  EXPECT_THAT(Diff("two-level", entries, "two-level", entries, "", damage),
              FieldsAre(1, "", "hostutil: left out 2 damaged records\n"));
  EXPECT_THAT(Diff("two-level", entries, "flat", others, "", damage),
              FieldsAre(1, "M  file       D  a\n", "hostutil: left out 2 damaged records\n"));
  EXPECT_THAT(Diff("two-level", entries, "flat", entries, "", "DROP TABLE Files"),
              FieldsAre(2, "", HasSubstr("has no table Files\n")));
  EXPECT_THAT(BackupOf("flat", entries).Run("hostutil diff . no"),
              FieldsAre(2, "", MatchesRegex("hostutil: no: No such file[^\n]*\n")));
}

}  // namespace
