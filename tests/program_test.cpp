#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <sstream>

#include "common/utils.h"
#include "support/program.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char* const kLayouts[] = {"two-level", "flat"};
constexpr char kNote[] = "Documents/note-7.txt";
constexpr char kBinaryList[] = "Library/Preferences/com.example.app0.plist";
constexpr char kXmlList[] = "Library/Preferences/com.example.app5.plist";

// The domain that the sample gives each of the three above.
constexpr char kDomain[] = "HomeDomain";

std::size_t LinesOf(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

void Append(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
}

void Overwrite(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string BigEndian(std::uint64_t number, int bytes) {
  std::string text;
  for (int shift = 8 * bytes - 8; shift >= 0; shift -= 8) {
    text += static_cast<char>(static_cast<unsigned char>(number >> shift));
  }
  return text;
}

// A record of the flat generation with one property.
std::string Record(const std::string& domain, const std::string& path, unsigned mode) {
  const auto text = [](const std::string& t) { return BigEndian(t.size(), 2) + t; };
  const std::string none = "\xFF\xFF";
  return text(domain) + text(path) + none + none + none + BigEndian(mode, 2) + BigEndian(1, 8) +
         BigEndian(501, 4) + BigEndian(501, 4) + BigEndian(1700000000, 4) + BigEndian(1, 4) +
         BigEndian(2, 4) + BigEndian(1, 8) + BigEndian(3, 1) + BigEndian(1, 1) + text("name") + none;
}

const std::string kRecordFile("mbdb\x05\0", 6);

// What an inspection says, in the shape of the table below.
struct Found {
  std::vector<int> files;  // listed, present, missing, mismatched, wrong size
  std::vector<int> lists;  // read, damaged
  std::vector<std::string> problems;
  bool operator==(const Found&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Found& found) {
  return stream << testing::PrintToString(found.files) << testing::PrintToString(found.lists)
                << testing::PrintToString(found.problems);
}

Found ReadReport(const std::string& text) {
  const Json json = Json::parse(text);
  const auto& files = json["files"];
  Found found{
      {files["listed"], files["present"], files["missing"], files["mismatched_id"], files["wrong_size"]},
      {json["property_lists"]["read"], json["property_lists"]["damaged"]},
      {}};
  for (const auto& problem : json["problems"]) {
    found.problems.push_back(problem["kind"].get<std::string>() + ' ' + problem["path"].get<std::string>());
  }
  return found;
}

TEST(Program, InspectsASampleOfEitherGeneration) {
  for (const std::string layout : kLayouts) {
    const SampleBackup backup(layout);
    const auto before = backup.Snapshot();
    const ProgramResult result = RunHostUtil({"inspect", backup.Root(), "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(LinesOf(result.out), 1u);
    EXPECT_EQ(backup.Snapshot(), before);

    std::uint64_t bytes = 0;
    for (const auto& [path, contents] : before) {
      const std::string name = Utils::GetFileName(path.c_str());
      if (name.find('.') == std::string::npos) bytes += contents.size();
    }
    const Json json = Json::parse(result.out);
    std::vector<std::string> keys;
    for (const auto& [key, value] : json.items()) keys.push_back(key);
    EXPECT_THAT(keys, ElementsAre("root", "layout", "device", "files", "property_lists", "domains",
                                  "extensions", "months", "problems", "elapsed"));
    EXPECT_EQ(json["root"], backup.Root());
    EXPECT_EQ(json["layout"], layout);
    EXPECT_EQ(json["device"]["Serial Number"], "SAMPLE000001");
    EXPECT_EQ(json["device"]["Last Backup Date"], Utils::ConvertUtcToLocalDate(1699963200));
    EXPECT_EQ(json["files"]["bytes"], bytes);
    EXPECT_EQ(json["extensions"], Json::parse(R"({"jpg":12,"plist":8,"sqlite":4,"txt":16})"));
    EXPECT_EQ(json["months"], Json::parse(R"({"2023-01":31,"2023-02":9})"));
    EXPECT_EQ(json["elapsed"].get<std::string>().substr(0, 6), "00:00:");
    std::uint64_t domain_bytes = 0;
    for (const auto& [name, total] : json["domains"].items())
      domain_bytes += total["bytes"].get<std::uint64_t>();
    EXPECT_EQ(domain_bytes, bytes);
    EXPECT_EQ(ReadReport(result.out), (Found{{40, 40, 0, 0, 0}, {8, 0}, {}}));

    const SampleBackup again(layout);
    const std::string manifest = layout == "flat" ? "Manifest.mbdb" : "Manifest.db";
    EXPECT_EQ(ReadFile(again.Path(manifest)), ReadFile(backup.Path(manifest)));
  }
}

struct Fault {
  std::string layout;
  const char* name;
  std::function<void(const SampleBackup&)> plant;
  Found expected;
};

std::vector<Fault> FaultsOfStoredFiles() {
  const std::string note = kNote;
  const std::string binary = kBinaryList;
  const std::string xml = kXmlList;
  const Found missing{{40, 39, 1, 0, 0}, {8, 0}, {"missing " + note}};
  std::vector<Fault> faults;
  for (const std::string layout : kLayouts) {
    const auto add = [&](const char* name, std::function<void(const SampleBackup&)> plant,
                         const Found& found) {
      faults.push_back({layout, name, std::move(plant), found});
    };
    add(
        "a file is gone", [=](const auto& b) { fs::remove(b.Stored(kDomain, note)); }, missing);
    add(
        "a file is a link",
        [=](const auto& b) {
          fs::rename(b.Stored(kDomain, note), b.Path() + "../outside");
          fs::create_symlink(b.Path() + "../outside", b.Stored(kDomain, note));
        },
        missing);
    add(
        "a file is a pipe",
        [=](const auto& b) {
          fs::remove(b.Stored(kDomain, note));
          ASSERT_EQ(::mkfifo(b.Stored(kDomain, note).c_str(), 0600), 0);
        },
        missing);
    add("a file has grown", [=](const auto& b) { Append(b.Stored(kDomain, note), "x"); },
        {{40, 40, 0, 0, 1}, {8, 0}, {"wrong-size " + note}});
    add("property lists are damaged",
        [=](const auto& b) {
          const std::string path = b.Stored(kDomain, binary);
          Overwrite(path, "bplist00" + std::string(fs::file_size(path) - 8, 'x'));
          Overwrite(b.Stored(kDomain, xml), "");
        },
        {{40, 40, 0, 0, 1},
         {6, 2},
         {"damaged-property-list " + binary, "wrong-size " + xml, "damaged-property-list " + xml}});
    add("the device is gone", [](const auto& b) { fs::remove(b.Path("Info.plist")); },
        {{40, 40, 0, 0, 0}, {8, 0}, {}});
    for (const std::string bytes : {"", "no list", "<plist><array>"}) {
      add("the device is damaged", [=](const auto& b) { b.Write("Info.plist", bytes); },
          {{40, 40, 0, 0, 0}, {8, 1}, {"damaged-property-list Info.plist"}});
    }
  }
  faults.push_back({"two-level", "a folder is a link",
                    [=](const auto& b) {
                      const fs::path folder = fs::path(b.Stored(kDomain, note)).parent_path();
                      fs::rename(folder, b.Path() + "../outside");
                      fs::create_symlink(b.Path() + "../outside", folder);
                    },
                    missing});
  return faults;
}

Fault SqlFault(const char* name, const std::string& sql, const Found& expected) {
  return {"two-level", name, [sql](const SampleBackup& backup) { backup.Sql(sql); }, expected};
}

std::vector<Fault> FaultsOfDatabases() {
  const auto row = [](const std::string& values) {
    return std::string("INSERT INTO Files VALUES(").append(values).append(");");
  };
  const auto damaged = [](std::vector<std::string> paths) {
    for (std::string& path : paths) path = "damaged-record " + path;
    return Found{{40, 40, 0, 0, 0}, {8, 0}, paths};
  };
  const std::string note = kNote;
  const std::string where = " WHERE relativePath='" + note + "'";
  return {
      SqlFault("identifiers", "UPDATE Files SET fileID='../../outside'" + where,
               {{40, 40, 0, 1, 0}, {8, 0}, {"mismatched-id " + note}}),
      SqlFault("a short identifier", "UPDATE Files SET fileID='a'" + where,
               {{40, 40, 0, 1, 0}, {8, 0}, {"mismatched-id " + note}}),
      SqlFault("a directory's identifier", row("'/etc', 'd', 'p', 2, null"),
               {{40, 40, 0, 1, 0}, {8, 0}, {"mismatched-id p"}}),
      SqlFault("no size recorded", "UPDATE Files SET file=null" + where, {{40, 40, 0, 0, 0}, {8, 0}, {}}),
      SqlFault("blobs",
               row("'1', 'd', '1', 1, x''") + row("'2', 'd', '2', 1, x'62706c6973743030ff'") +
                   row("'3', 'd', '3', 2, zeroblob(2000000)") + row("'4', 'd', '4', 4, 'text'"),
               damaged({"1", "2", "3", "4"})),
      SqlFault(
          "flags",
          row("'1', 'd', '1', 3, null") + row("'2', 'd', '2', null, null") + row("'3', 'd', '3', 1.5, null"),
          damaged({"1", "2", "3"})),
      SqlFault(
          "types",
          row("null, 'd', '1', 1, null") + row("'2', x'00', '2', 1, null") + row("'3', 'd', null, 1, null"),
          damaged({"1", "2", ""})),
      SqlFault("a NUL", row("'1', 'd'||char(0), '1', 1, null"), damaged({"1"})),
      SqlFault("a value too long to read ends the reading",
               row("hex(zeroblob(9000000)), 'd', '1', 1, null") + row("'2', 'd', '2', 7, null"),
               damaged({""})),
  };
}

std::vector<Fault> FaultsOfRecordFiles() {
  const std::string whole = kRecordFile + Record("d", "p", 0x41ED);
  const std::string last = Record("d", "q", 0xA1ED);
  const auto write = [](const char* name, const std::string& bytes,
                        const std::vector<std::string>& problems) {
    return Fault{"flat", name, [bytes](const SampleBackup& backup) { backup.Write("Manifest.mbdb", bytes); },
                 Found{{0, 0, 0, 0, 0}, {0, 0}, problems}};
  };
  std::vector<Fault> faults = {
      write("no records", kRecordFile, {}),
      write("cut between two records", whole, {}),
      write("a kind of its own", kRecordFile + Record("d", "p", 0x1000) + last, {"damaged-record p"}),
      write("a NUL", kRecordFile + Record(std::string("d\0", 2), "p", 0x81A4) + last, {"damaged-record p"}),
      write("a length past the end",
            whole + std::string("\xFF\xFE"
                                "abc"),
            {"damaged-record "}),
  };
  for (std::size_t length = 1; length < last.size(); ++length) {
    const bool path_known = length >= 6;
    faults.push_back(write("cut in a record", whole + last.substr(0, length),
                           {path_known ? "damaged-record q" : "damaged-record "}));
  }
  return faults;
}

TEST(Program, FindsEachPlantedFaultAndChangesNothing) {
  for (const auto& faults : {FaultsOfStoredFiles(), FaultsOfDatabases(), FaultsOfRecordFiles()}) {
    for (const Fault& fault : faults) {
      SCOPED_TRACE(fault.layout + ": " + fault.name);
      const SampleBackup backup(fault.layout);
      fault.plant(backup);
      const auto before = backup.Snapshot();
      const ProgramResult result = RunHostUtil({"inspect", backup.Root(), "--json"});
      EXPECT_EQ(result.err, "");
      ASSERT_EQ(result.status, fault.expected.problems.empty() ? 0 : 1);
      EXPECT_EQ(ReadReport(result.out), fault.expected);
      EXPECT_TRUE(backup.Snapshot() == before);
    }
  }
}

// The status and the one line of a failure.
void ExpectFailure(const std::vector<std::string>& arguments, const std::string& reason) {
  const ProgramResult result = RunHostUtil(arguments);
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(LinesOf(result.err), 1u) << result.err;
  EXPECT_THAT(result.err, StartsWith("hostutil: "));
  EXPECT_THAT(result.err, HasSubstr(reason));
}

struct Unreadable {
  const char* layout;
  const char* reason;
  std::function<void(const SampleBackup&)> plant;
};

// What a database looks like whose writer was stopped: `sql` is run and the files are taken from under it.
void StopWriter(const SampleBackup& backup, const std::string& sql,
                const std::vector<std::string>& companions) {
  const std::string database = backup.Path("Manifest.db");
  sqlite3* writer = nullptr;
  ASSERT_EQ(sqlite3_open(database.c_str(), &writer), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(writer, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
      << sqlite3_errmsg(writer);
  const TemporaryFolder copies;
  for (const std::string& companion : companions)
    fs::copy_file(database + companion, copies.Path("db" + companion));
  sqlite3_close(writer);
  for (const std::string end : {"", "-journal", "-wal", "-shm"}) fs::remove(database + end);
  for (const std::string& companion : companions)
    fs::copy_file(copies.Path("db" + companion), database + companion);
}

std::vector<Unreadable> UnreadableBackups() {
  const auto sql = [](const std::string& statements) {
    return [statements](const SampleBackup& backup) { backup.Sql(statements); };
  };
  const auto write = [](const std::string& name, const std::string& bytes) {
    return [name, bytes](const SampleBackup& backup) { backup.Write(name, bytes); };
  };
  const auto pipe = [](const std::string& name) {
    return [name](const SampleBackup& backup) {
      fs::remove(backup.Path(name));
      ASSERT_EQ(::mkfifo(backup.Path(name).c_str(), 0600), 0);
    };
  };
  return {
      {"flat", "No such file", [](const auto& b) { fs::remove_all(b.Root()); }},
      {"flat", "holds no backup", [](const auto& b) { fs::remove(b.Path("Manifest.mbdb")); }},
      {"flat", "Manifest.mbdb: is empty", write("Manifest.mbdb", "")},
      {"flat", "is no record file", write("Manifest.mbdb", "mbdb")},
      {"flat", "is no record file", write("Manifest.mbdb", "mbdb\x06" + std::string(60, '\0'))},
      {"flat", "is not a regular file", pipe("Manifest.mbdb")},
      {"flat", "Manifest.db: is no database", write("Manifest.db", std::string(500, 'x'))},
      {"two-level", "is empty", write("Manifest.db", "")},
      {"two-level", "is not a regular file", pipe("Manifest.db")},
      {"two-level", "-journal: is not a regular file", pipe("Manifest.db-journal")},
      {"two-level", "-wal: is not a regular file", pipe("Manifest.db-wal")},
      {"two-level", "symbolic link",
       [](const auto& b) {
         fs::rename(b.Path("Manifest.db"), b.Path("other"));
         fs::create_symlink("other", b.Path("Manifest.db"));
       }},
      {"two-level", "damaged database", [](const auto& b) { fs::resize_file(b.Path("Manifest.db"), 5000); }},
      {"two-level", "no table Files", sql("DROP TABLE Files")},
      {"two-level", "column flags", sql("ALTER TABLE Files DROP COLUMN flags")},
      {"two-level", "no table Files",
       sql("ALTER TABLE Files RENAME TO F; CREATE VIEW Files AS SELECT * FROM F")},
      {"two-level", "Files",
       sql("DROP TABLE Files; CREATE VIRTUAL TABLE Files USING rtree(fileID, domain, file)")},
      {"two-level", "unfinished transaction",
       [](const auto& b) {
         StopWriter(b, "PRAGMA cache_size=1; BEGIN; UPDATE Files SET file=zeroblob(9000)", {"", "-journal"});
       }},
  };
}

TEST(Program, NamesWhatItCannotReadAndLeavesItAsItIs) {
  for (const Unreadable& unreadable : UnreadableBackups()) {
    SCOPED_TRACE(unreadable.reason);
    const SampleBackup backup(unreadable.layout, 3);
    unreadable.plant(backup);
    const bool stands = fs::exists(backup.Root());
    const auto before = stands ? backup.Snapshot() : std::map<std::string, std::string>();
    ExpectFailure({"inspect", backup.Root(), "--json"}, unreadable.reason);
    ExpectFailure({"list", backup.Root()}, unreadable.reason);
    EXPECT_TRUE(!stands || backup.Snapshot() == before);
  }
}

TEST(Program, NamesALockedDatabase) {
  const SampleBackup backup("two-level", 3);
  sqlite3* writer = nullptr;
  ASSERT_EQ(sqlite3_open(backup.Path("Manifest.db").c_str(), &writer), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(writer, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  ExpectFailure({"inspect", backup.Root()}, "is locked");
  sqlite3_close(writer);
  EXPECT_EQ(RunHostUtil({"inspect", backup.Root()}).status, 0);
}

TEST(Program, ReadsWhatAWriterAtWorkHasCommitted) {
  const SampleBackup backup("two-level", 3);
  sqlite3* writer = nullptr;
  ASSERT_EQ(sqlite3_open(backup.Path("Manifest.db").c_str(), &writer), SQLITE_OK);
  constexpr char kSql[] =
      "PRAGMA journal_mode=WAL; DELETE FROM Files WHERE flags=1; BEGIN IMMEDIATE; DELETE FROM Files";
  ASSERT_EQ(sqlite3_exec(writer, kSql, nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(LinesOf(RunHostUtil({"list", backup.Root()}).out), 21u);
  EXPECT_EQ(sqlite3_exec(writer, "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(LinesOf(RunHostUtil({"list", backup.Root()}).out), 0u);
  sqlite3_close(writer);
}

TEST(Program, ReadsAWriteAheadLogWithoutLeavingATrace) {
  const std::string sql = "PRAGMA journal_mode=WAL; DELETE FROM Files WHERE flags=1";
  const std::vector<std::vector<std::string>> cases = {{"", "-wal", "-shm"}, {"", "-wal"}, {""}};
  for (const auto& companions : cases) {
    const SampleBackup backup("two-level", 3);
    StopWriter(backup, sql, companions);
    const auto before = backup.Snapshot();
    const ProgramResult result = RunHostUtil({"inspect", backup.Root(), "--json"});
    EXPECT_EQ(result.status, 0) << result.err;
    const int listed = companions.size() == 1 ? 3 : 0;  // without its log the deletion is lost
    EXPECT_EQ(ReadReport(result.out).files[0], listed);
    EXPECT_TRUE(backup.Snapshot() == before);
  }
}

TEST(Program, ListsWhatWasAskedFor) {
  for (const std::string layout : kLayouts) {
    const SampleBackup backup(layout);
    const ProgramResult one = RunHostUtil(
        {"list", backup.Root(), "--json", "--match", "Documents/note-7\\..*", "--domain", kDomain});
    EXPECT_EQ(one.status, 0);
    const Json expected = {{"id", Utils::CalcFileID(kDomain, kNote)},
                           {"domain", kDomain},
                           {"path", kNote},
                           {"kind", "file"},
                           {"size", 27},
                           {"modified", Utils::ConvertUtcToLocalDate(1672574400 + 7 * 86400)},
                           {"stored", backup.Stored(kDomain, kNote)}};
    EXPECT_EQ(one.out, expected.dump() + '\n');

    const std::pair<std::vector<std::string>, std::size_t> counts[] = {
        {{}, 61}, {{"--domain", "nowhere"}, 0}, {{"--match", "note-7"}, 0}, {{"--match", ".*\\.plist"}, 8}};
    for (const auto& [options, lines] : counts) {
      std::vector<std::string> arguments = {"list", backup.Root()};
      arguments.insert(arguments.end(), options.begin(), options.end());
      const ProgramResult result = RunHostUtil(arguments);
      EXPECT_EQ(result.status, 0);
      EXPECT_EQ(LinesOf(result.out), lines);
      EXPECT_EQ(result.err, "");
    }
    std::istringstream lines(RunHostUtil({"list", backup.Root(), "--match", ".+"}).out);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_NE(line.at(71), ' ') << line;  // behind the widest domain, every path begins in one column
      EXPECT_EQ(line.at(70), ' ') << line;
    }
  }
}

TEST(Program, ShowsHostileTextsHarmlessly) {
  const SampleBackup backup("two-level", 3);
  backup.Sql(
      "INSERT INTO Files VALUES('i'||char(27)||'[2J', 'd'||char(10,155), "
      "'p'||char(13,127)||'.pl\"'||char(9), 1, null);"
      "INSERT INTO Files VALUES('j', CAST(x'80' AS TEXT), CAST(x'63c0af' AS TEXT), 1, null);"
      "INSERT INTO Files VALUES('k', 'd', 'bad', 8, null)");
  for (const std::string command : {"inspect", "list"}) {
    for (const bool json : {false, true}) {
      std::vector<std::string> arguments = {command, backup.Root()};
      if (json) arguments.emplace_back("--json");
      const ProgramResult result = RunHostUtil(arguments);
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(LinesOf(result.err), command == "list" ? 1u : 0u) << result.err;
      for (const char* const raw : {"\x1b", "\r", "\t", "\x7f", "\x80", "\xC0", "\xC2\x9B"}) {
        const bool c1 = std::string(raw) == "\x80";
        if (!c1 || json) {
          EXPECT_THAT(result.out, Not(HasSubstr(raw)));
        }
      }
      EXPECT_THAT(result.out, HasSubstr(json ? "c\\ufffd\\ufffd" : "c\xEF\xBF\xBD\xEF\xBF\xBD"));
      EXPECT_THAT(result.out, HasSubstr(json ? "p\\r\\u007f.pl\\\"\\t" : "p\\r\\x7f.pl\"\\t"));
      std::istringstream lines(result.out);
      for (std::string line; json && std::getline(lines, line);) EXPECT_TRUE(Json::accept(line)) << line;
    }
  }
}

TEST(Program, ShowsTheFirstProblemsAndCountsTheRest) {
  const SampleBackup backup("flat");
  for (const auto& file : fs::directory_iterator(backup.Root())) {
    if (!file.path().has_extension()) fs::remove(file.path());
  }
  const ProgramResult result = RunHostUtil({"inspect", backup.Root()});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, StartsWith("40 problems\n  missing: 40\n"));
  EXPECT_THAT(result.out, HasSubstr("  and 20 more"));
  EXPECT_EQ(ReadReport(RunHostUtil({"inspect", backup.Root(), "--json"}).out).problems.size(), 40u);
}

TEST(Program, LocatesFiles) {
  for (const std::string layout : kLayouts) {
    const SampleBackup backup(layout);
    const ProgramResult result = RunHostUtil({"locate", backup.Root(), kDomain, kNote, "--layout", layout});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr(Utils::CalcFileID(kDomain, kNote) + '\n'));
    EXPECT_THAT(result.out, HasSubstr(' ' + backup.Stored(kDomain, kNote) + '\n'));
  }
  const TemporaryFolder folder;
  const std::string root = folder.Path("new/root");
  const std::string id = Utils::CalcFileID("d", "");
  EXPECT_EQ(RunHostUtil({"locate", root, "d", ""}).status, 0);
  EXPECT_FALSE(fs::exists(root));
  EXPECT_EQ(RunHostUtil({"locate", root, "d", "", "--create"}).status, 0);
  EXPECT_TRUE(fs::is_directory(root + '/' + id.substr(0, 2)));
  folder.Write("file", "");
  ExpectFailure({"locate", folder.Path("file"), "d", "p", "--create"}, "cannot be created");
}

TEST(Program, PrintsPropertyListsOfEitherEncoding) {
  const SampleBackup backup("flat");
  for (const char* const list : {kBinaryList, kXmlList}) {
    const ProgramResult result = RunHostUtil({"plist", backup.Stored(kDomain, list)});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("<key>Account</key>\n\t<string>(None)</string>"));
  }
  ExpectFailure({"plist", backup.Stored(kDomain, kNote)}, "is no property list");
  ExpectFailure({"plist", backup.Root()}, "is a folder");
  ExpectFailure({"plist", backup.Path("nothing\n")}, "nothing\\n: No such file");
}

TEST(Program, RefusesBadUsage) {
  const SampleBackup backup("flat", 1);
  const std::vector<std::string> cases[] = {{},
                                            {"nothing"},
                                            {"inspect"},
                                            {"inspect", ""},
                                            {"inspect", backup.Root(), "--nothing"},
                                            {"inspect", backup.Root(), "second"},
                                            {"list", backup.Root(), "--match", "("},
                                            {"locate", backup.Root(), "d"},
                                            {"locate", backup.Root(), "d", "p", "--layout", "round"},
                                            {"sample", backup.Root()},
                                            {"sample", backup.Path("new"), "--files", "-1"},
                                            {"sample", backup.Path("no/parent")}};
  for (const auto& arguments : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    ExpectFailure(arguments, "");
  }
  EXPECT_THAT(RunHostUtil({"--version"}).out, testing::MatchesRegex("hostutil [0-9.]+\n"));
  for (const std::string command : {"plist", "locate", "list", "inspect", "sample"}) {
    EXPECT_THAT(RunHostUtil({command, "--help"}).out, HasSubstr("Example:\n  hostutil " + command));
  }
}

TEST(Program, NoticesThatOutputIsLost) {
  const SampleBackup backup("flat", 3);
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"inspect", backup.Root()},
                                                    {"list", backup.Root()},
                                                    {"plist", backup.Path("Info.plist")},
                                                    {"--help"}}) {
    if (fs::exists("/dev/full")) {
      const ProgramResult full = RunHostUtil(arguments, {"/dev/full", false, false});
      EXPECT_EQ(full.status, 2);
      EXPECT_EQ(LinesOf(full.err), 1u) << full.err;
    }
    const ProgramResult closed = RunHostUtil(arguments, {"", true, false});
    EXPECT_EQ(closed.status, 2);
    EXPECT_EQ(closed.err, "");
  }
}

TEST(Program, ShowsProgressOnATerminalOnly) {
  const SampleBackup backup("two-level", 60);
  const ProgramResult result = RunHostUtil({"inspect", backup.Root(), "--json"}, {"", false, true});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(Json::accept(result.out));
  EXPECT_THAT(result.err, HasSubstr(" entries, "));
  EXPECT_THAT(result.err, HasSubstr(" %, "));
  EXPECT_THAT(result.err, EndsWith("\r\x1b[K"));
}

}  // namespace
