// hostutil inspect and list on several threads, and inspect on files that cannot be read.

#include "support/program.h"

namespace {

Json WithoutTime(const ProgramResult& result) {
  Json json = Json::parse(result.out);
  json.erase("elapsed");
  return json;
}

// Puts faults of every kind all over a backup.
void Damage(const SampleBackup& backup, const std::string& layout) {
  backup.Run("rm $(find . -name '*?????????0'); for f in $(find . -name '*????????1'); do echo >$f; done");
  if (layout == "flat") {
    backup.Run("head -c -10 Manifest.mbdb >../m; mv ../m Manifest.mbdb");  // inside the last record
  } else {
    backup.Run(
        "", "UPDATE Files SET fileID='x'||rowid WHERE rowid%9=0; UPDATE Files SET file=x'' WHERE rowid%7=0");
  }
}

TEST(Jobs, DoNotChangeAReportOrAList) {
  for (const std::string& layout : kLayouts) {
    const SampleBackup backup(layout, 2000);  // some ten batches of records
    Damage(backup, layout);
    const Json expected = WithoutTime(backup.Run("hostutil inspect . --json --jobs 1"));
    const std::string listed = backup.Run("hostutil list . --jobs 1").out;
    EXPECT_GT(std::count(listed.begin(), listed.end(), '\n'), 1500) << "one thread lists the first 1000";
    EXPECT_GT(expected["problems"].size(), 100U);
    EXPECT_GT(expected["months"].size(), 1U);
    for (const std::string jobs : {"", "--jobs 2", "--jobs 2", "--jobs 3", "--jobs 16", "--jobs 256"}) {
      EXPECT_EQ(WithoutTime(backup.Look("hostutil inspect . --json " + jobs)), expected) << layout << jobs;
      EXPECT_EQ(backup.Run("hostutil list . " + jobs).out, listed) << layout << jobs;
    }
    // The reader goes while all threads are at work: none waits for its turn forever.
    const std::string line = "{ hostutil list . --json --jobs 16; echo $? >&2; } | head -c 300000 >/dev/null";
    EXPECT_EQ(backup.Run("trap '' PIPE; " + line).err, "2\n");
  }
}

TEST(Inspect, NeedsTheManifestAndTheRoot) {
  for (const std::string& layout : kLayouts)
    for (const std::string name : {"Manifest.*b*", "."})
      EXPECT_THAT(
          SampleBackup(layout, 3).Run("chmod 0 " + name + "; plain inspect .; s=$?; chmod 755 .; exit $s"),
          IsFailure(": Permission denied"));
}

TEST(Inspect, CannotLookIntoAFolderWithoutPermission) {
  const SampleBackup backup("two-level");
  const Json json = Json::parse(backup.Run("chmod 0 $(dirname $note); plain inspect . --json").out);
  EXPECT_THAT(ProblemsOf(json), testing::Contains("unreadable " + kNote));
  EXPECT_EQ(json["files"]["missing"], 0);
  // Files can be opened, the folders not listed.
  EXPECT_EQ(backup.Run("chmod 0111 ??; plain inspect .; s=$?; chmod 755 ??; exit $s").status, 0);
}

}  // namespace
