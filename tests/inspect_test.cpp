// hostutil inspect on several threads, and on files that cannot be read.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/program.h"

namespace {

using Json = nlohmann::ordered_json;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

const std::string kLayouts[] = {"two-level", "flat"};

// Root may read everything, unless the program starts without the capabilities for that.
const std::string kUnprivileged =
    "drop() { [ $(id -u) != 0 ] || set -- setpriv --bounding-set=-dac_override,-dac_read_search \"$@\"; "
    "\"$@\"; }; drop " HOSTUTIL_PROGRAM " inspect . --json";

Json WithoutTime(const ProgramResult& result) {
  Json json = Json::parse(result.out);
  json.erase("elapsed");
  return json;
}

std::vector<std::string> ProblemsOf(const Json& json) {
  std::vector<std::string> problems;
  for (const Json& problem : json["problems"])
    problems.push_back(problem["kind"].get<std::string>() + ' ' + problem["path"].get<std::string>());
  return problems;
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

TEST(Inspect, ReportsTheSameWithAnyNumberOfThreads) {
  for (const std::string& layout : kLayouts) {
    const SampleBackup backup(layout, 1000);  // some twenty batches of records
    Damage(backup, layout);
    const Json expected = WithoutTime(backup.Run("hostutil inspect . --json --jobs 1"));
    EXPECT_GT(expected["problems"].size(), 100U);
    EXPECT_GT(expected["months"].size(), 1U);
    for (const std::string jobs : {"", "--jobs 2", "--jobs 2", "--jobs 3", "--jobs 16", "--jobs 256"}) {
      EXPECT_EQ(WithoutTime(backup.Look("hostutil inspect . --json " + jobs)), expected) << layout << jobs;
    }
  }
}

TEST(Inspect, TakesOneTo256Threads) {
  const SampleBackup backup("flat", 3);
  for (const std::string jobs : {"0", "257", "-1", "x", "''", "1.5"}) {
    EXPECT_THAT(backup.Run("hostutil inspect . --jobs " + jobs),
                FieldsAre(2, "", MatchesRegex("hostutil: --jobs: [^\n]+\n")))
        << jobs;
  }
}

TEST(Inspect, GoesOnAfterAFileThatCannotBeRead) {
  const struct {
    std::string line;
    std::string problem;
    int present;
    int lists_read;
  } rows[] = {
      {"chmod 0 $note", "unreadable " + kNote, 39, 8},
      {"chmod 0 $binary", "unreadable " + kBinaryList, 39, 7},
      {"chmod 0 $xml", "unreadable " + kXmlList, 39, 7},
      {"chmod 0 Info.plist", "unreadable Info.plist", 40, 8},
  };
  for (const std::string& layout : kLayouts) {
    for (const auto& [line, problem, present, lists_read] : rows) {
      const SampleBackup backup(layout);
      backup.Run(line);
      const ProgramResult result = backup.Run(kUnprivileged);
      EXPECT_EQ(result.status, 1) << line;
      const Json json = Json::parse(result.out);
      EXPECT_THAT(ProblemsOf(json), ElementsAre(problem));
      EXPECT_EQ(json["files"]["listed"], 40) << line;
      EXPECT_EQ(json["files"]["present"], present) << line;
      EXPECT_EQ(json["files"]["missing"], 0) << line;
      EXPECT_EQ(json["property_lists"]["read"], lists_read) << line;
      EXPECT_EQ(json["property_lists"]["damaged"], 0) << line;
    }
  }
}

TEST(Inspect, CannotLookIntoAFolderWithoutPermission) {
  const SampleBackup backup("two-level");
  const std::string folder = "d=$(dirname $note); ";
  backup.Run(folder + "chmod 0 $d");
  const Json json = Json::parse(backup.Run(kUnprivileged).out);
  EXPECT_THAT(ProblemsOf(json), testing::Contains("unreadable " + kNote));
  EXPECT_EQ(json["files"]["missing"], 0);

  backup.Run("chmod 0111 ??");  // files can be opened, the folders not listed
  EXPECT_THAT(ProblemsOf(Json::parse(backup.Run(kUnprivileged).out)), IsEmpty());
  backup.Run("chmod 755 ??");
}

TEST(Inspect, NeedsTheManifestAndTheRoot) {
  for (const std::string& layout : kLayouts) {
    const SampleBackup backup(layout, 3);
    for (const std::string name : {"Manifest.*b*", "."}) {
      backup.Run("chmod 0 " + name);
      EXPECT_THAT(backup.Run(kUnprivileged),
                  FieldsAre(2, "", MatchesRegex("hostutil: \\.[^\n]*: Permission denied\n")))
          << name;
      backup.Run("chmod 755 " + name);
    }
  }
}

}  // namespace
