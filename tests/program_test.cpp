#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "support/program.h"

namespace {

using Json = nlohmann::ordered_json;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

const std::string kLayouts[] = {"two-level", "flat"};

auto LinesOf(const std::string& text) {
  return std::count(text.begin(), text.end(), '\n');
}

// The status of an inspection, how many files are listed, present, missing, of another identifier and of
// another size, how many property lists were read and are damaged, and then each problem.
std::string Inspect(const SampleBackup& backup) {
  const auto [status, out, err] = backup.Look("hostutil inspect . --json");
  if (status == 2) return err;
  const Json json = Json::parse(out);
  std::string text = err + std::to_string(status);
  for (const char* key : {"listed", "present", "missing", "mismatched_id", "wrong_size"}) {
    text += ' ' + json["files"][key].dump();
  }
  for (const Json& count : json["property_lists"]) text += ' ' + count.dump();
  for (const Json& problem : json["problems"]) {
    text += ", " + problem["kind"].get<std::string>() + ' ' + problem["path"].get<std::string>();
  }
  return text;
}

// A failure whose one line holds `reason`, a regular expression.
auto IsFailure(const std::string& reason) {
  return FieldsAre(2, "", MatchesRegex("hostutil: [^\n]*" + reason + "[^\n]*\n"));
}

TEST(Program, InspectsASampleOfEitherGeneration) {
  const std::string find = "find . ! -name '*.*' -type f -exec ";
  for (const std::string& layout : kLayouts) {
    const SampleBackup backup(layout);
    EXPECT_EQ(Inspect(backup), "0 40 40 0 0 0 8 0");
    const std::string bytes = backup.Run("printf %d $(" + find + "cat {} + | wc -c)").out;
    const Json json = Json::parse(backup.Run("hostutil inspect . --json").out);
    EXPECT_EQ(
        json["layout"].dump() + json["files"]["bytes"].dump() + json["extensions"].dump() +
            json["months"].dump(),
        '"' + layout + '"' + bytes + R"({"jpg":12,"plist":8,"sqlite":4,"txt":16}{"2023-01":31,"2023-02":9})");
    EXPECT_EQ(json["device"]["Last Backup Date"], Utils::ConvertUtcToLocalDate(1699963200));
    EXPECT_THAT(json["elapsed"].get<std::string>(), MatchesRegex("00:00:[0-9]+"));
    const std::string manifest = "cat Manifest.[dm]*";
    EXPECT_EQ(SampleBackup(layout).Run(manifest).out, backup.Run(manifest).out);
    EXPECT_THAT(backup.Run(find + "rm {} +; hostutil inspect .").out,
                MatchesRegex("40 problems\n  missing: 40\n.*\n  and 20 more.*"));
    EXPECT_THAT(Inspect(backup), MatchesRegex("1 40 0 40 0 0 0 0(, missing [^,]+){40}"));
  }
}

TEST(Program, FindsEachFaultOfAFile) {
  const std::string missing = "1 40 39 1 0 0 8 0, missing " + kNote;
  const std::pair<std::string, std::string> faults[] = {
      {"", missing},
      {"mkfifo $note", missing},
      {"echo >../outside; ln -s $PWD/../outside $note", missing},
      {"echo >$note; rm Info.plist", "1 40 40 0 0 1 8 0, wrong-size " + kNote},
      {"n=$(wc -c <$binary); printf bplist00%0$((n - 8))d 0 >$binary; : >$xml; "
       "echo '<plist><array>' >Info.plist",
       "1 40 39 1 0 1 6 3, damaged-property-list Info.plist, damaged-property-list " + kBinaryList +
           ", wrong-size " + kXmlList + ", damaged-property-list " + kXmlList + ", missing " + kNote}};
  for (const std::string& layout : kLayouts) {
    for (const auto& [line, expected] : faults) {
      const SampleBackup backup(layout);
      EXPECT_EQ(backup.Run("rm $note; " + line).err, "");
      EXPECT_EQ(Inspect(backup), expected) << line;
    }
  }
  const SampleBackup backup("two-level");
  backup.Run("d=$(dirname $note); mv $d ../outside; ln -s $PWD/../outside $d");
  EXPECT_EQ(Inspect(backup), missing);
}

TEST(Program, FindsEachFaultOfADatabase) {
  const SampleBackup backup("two-level");
  // The last but one is too long to be read and ends the reading.
  backup.Run("",
             R"(UPDATE Files SET file=null;
      INSERT INTO Files VALUES ('../../x','d','a',2,null), ('a','d','b',2,null),
      ('/etc','d','c',2,null), (1,'d','d',1,x''), (2,'d','e',1,x'62706c6973743030ff'), (3,'d','f',4,'text'),
      (4,'d','g',2,zeroblob(2000000)), (5,'d','h',3,null), (6,'d','i',null,null), (7,'d','j',1.5,null),
      (null,'d','k',1,null), (8,x'00','l',1,null), (9,'d'||char(0),'m',1,null), (10,'d',null,1,null),
      (hex(zeroblob(9000000)),'d','n',1,null), (11,'d','o',7,null))");
  std::string expected = "1 40 40 0 3 0 8 0, mismatched-id a, mismatched-id b, mismatched-id c";
  for (const char path : std::string("defghijklm")) expected += std::string(", damaged-record ") + path;
  EXPECT_EQ(Inspect(backup), expected + ", damaged-record , damaged-record ");

  // Every row with the same long text: more bytes than the file holds.
  const SampleBackup swollen("two-level");
  swollen.Run("", "ALTER TABLE Files DROP COLUMN domain; ALTER TABLE Files ADD COLUMN domain DEFAULT '" +
                      std::string(60000, 'd') + '\'');
  EXPECT_THAT(swollen.Run("hostutil inspect .").out, HasSubstr("problems, and the rest of the manifest"));
  EXPECT_EQ(swollen.Run("hostutil list .").err, "hostutil: could not read the rest of the manifest\n");
}

// A record of the flat generation with one property, its texts being of one byte each.
std::string Record(const std::string& path, const std::string& mode) {
  const std::string one("\0\1", 2);
  return one + 'd' + one + path + std::string(6, '\xFF') + mode + std::string(37, '\0') + '\1' + one +
         "n\xFF\xFF";
}

TEST(Program, FindsEachFaultOfARecordFile) {
  const std::string start("mbdb\5\0", 6);
  const std::string first = start + Record("p", "\x41\xED");
  const std::string last = Record("q", "\xA1\xED");
  const std::string whole = "0 0 0 0 0 0 0 0";
  const std::string damaged = "1 0 0 0 0 0 0 0, damaged-record ";
  std::vector<std::pair<std::string, std::string>> faults = {
      {start, whole},
      {first, whole},
      {start + Record("p", std::string("\x10\0", 2)) + last, damaged + "p"},
      {start + Record("p", "\x81\xA4" + std::string(29, '\xFF')).erase(43, 29) + last, damaged + "p"},
      {start + std::string("\0\2d\0", 4) + Record("p", "\x81\xA4").substr(3) + last, damaged + "p"},
      {first + "\xFF\xFE***", damaged}};
  for (std::size_t length = 1; length < last.size(); ++length) {
    faults.emplace_back(first + last.substr(0, length), damaged + (length < 6 ? "" : "q"));
  }
  const SampleBackup backup("flat");
  for (const auto& [bytes, expected] : faults) {
    backup.folder.Write("backup/Manifest.mbdb", bytes);
    EXPECT_EQ(Inspect(backup), expected) << testing::PrintToString(bytes);
  }
}

TEST(Program, NamesWhatItCannotReadAndLeavesItAsItIs) {
  const auto expect_failure = [](const std::string& layout, const std::string& line, const std::string& sql) {
    const SampleBackup backup(layout, 3);
    EXPECT_EQ(backup.Run("m=$(echo Manifest.[dm]*); " + line, sql).err, "");
    for (const std::string command : {"inspect . --json", "list ."}) {
      EXPECT_THAT(backup.Look("hostutil " + command), IsFailure("(holds no backup|/Manifest[^:]*: .+)"))
          << line << sql;
    }
  };
  for (const std::string line :
       {"rm $m", ": >$m", "rm $m; mkfifo $m", "mv $m x; ln -s x $m", "printf mbdb >$m",
        "printf 'mbdb\\6%060d' 0 >$m", "printf %0500d 0 >Manifest.db"}) {
    for (const std::string& layout : kLayouts) expect_failure(layout, line, "");
  }
  for (const auto& [line, sql] :
       {std::pair("mkfifo $m-journal", ""),
        {"mkfifo $m-wal", ""},
        {"head -c 5000 $m >x; mv x $m", ""},
        {"", "ALTER TABLE Files DROP COLUMN flags"},
        {"", "DROP TABLE Files; CREATE VIEW Files AS SELECT 1"},
        {"", "ALTER TABLE Files ADD COLUMN twice AS (flags+flags)"},
        {"", "DROP TABLE Files; CREATE VIRTUAL TABLE Files USING rtree(a, b, c)"}}) {
    expect_failure("two-level", line, sql);
  }
}

TEST(Program, ReadsBesideAWriterAndAfterAStoppedOne) {
  const SampleBackup backup("two-level", 3);
  EXPECT_THAT(backup.Run("hostutil inspect .", "BEGIN EXCLUSIVE"), IsFailure("is locked"));
  const std::string wal =
      "PRAGMA journal_mode=WAL; DELETE FROM Files WHERE flags=1; BEGIN; DELETE FROM Files";
  EXPECT_EQ(LinesOf(backup.Run("hostutil list .", wal).out), 21);

  // Without its log the deletion is lost.
  const std::string journal = "PRAGMA cache_size=1; BEGIN; UPDATE Files SET file=zeroblob(9000)";
  for (const auto& [sql, lost, expected] : {std::tuple(wal, "-no", "0 0 0 0 0 0 0 0"),
                                            {wal, "-shm", "0 0 0 0 0 0 0 0"},
                                            {wal, "-*", "0 3 3 0 0 0 1 0"},
                                            {journal, "-no", "unfinished transaction"}}) {
    const SampleBackup stopped("two-level", 3);
    stopped.Run("mkdir ../kept; cp Manifest.db* ../kept", sql);
    stopped.Run(std::string("rm Manifest.db*; cp ../kept/* .; rm -f Manifest.db") + lost);
    EXPECT_THAT(Inspect(stopped), HasSubstr(expected));
  }
}

TEST(Program, ListsAndLocatesWhatWasAskedFor) {
  for (const std::string& layout : kLayouts) {
    const SampleBackup backup(layout);
    const std::string id = Utils::CalcFileID("HomeDomain", kNote.c_str());
    const std::string stored = "./" + (layout == "flat" ? id : id.substr(0, 2) + '/' + id);
    EXPECT_EQ(backup.Run("hostutil list . --json --match 'Documents/note-7\\..*' --domain HomeDomain").out,
              R"({"id":")" + id +
                  R"(","domain":"HomeDomain","path":"Documents/note-7.txt","kind":"file","size":27,)" +
                  R"("modified":")" + Utils::ConvertUtcToLocalDate(1673179200) + R"(","stored":")" + stored +
                  "\"}\n");
    for (const auto& [options, lines] :
         {std::pair("", 61), {"--domain nowhere", 0}, {"--match note-7", 0}, {"--match '.*\\.plist'", 8}}) {
      EXPECT_THAT(backup.Run(std::string("hostutil list . ") + options),
                  FieldsAre(0, testing::ResultOf(LinesOf, lines), ""));
    }
    // Behind the widest domain, every path begins in one column.
    EXPECT_EQ(backup.Run("hostutil list . --match .+ | grep -v '^.\\{70\\} [^ ]'").out, "");
    EXPECT_EQ(backup.Run("hostutil locate . HomeDomain Documents/note-7.txt --layout " + layout).out,
              "Identifier  " + id + "\nStored at   " + stored + '\n');
  }
  const SampleBackup backup("flat", 1);
  EXPECT_EQ(backup.Look("hostutil locate new/root d ''").status, 0);
  EXPECT_EQ(backup.Run("hostutil locate new/root d '' --create >../x && ls new/root").out,
            Utils::CalcFileID("d", "").substr(0, 2) + '\n');
}

TEST(Program, ShowsHostileTextsHarmlessly) {
  const SampleBackup backup("two-level", 3);
  backup.Run("",
             R"(INSERT INTO Files VALUES
      ('i'||char(27)||'[2J', 'd'||char(10,155), 'p'||char(13,127)||'.pl"'||char(9), 1, null),
      ('j', CAST(x'80' AS TEXT), CAST(x'63c0af' AS TEXT), 1, null), ('k', 'd', 'bad', 8, null))");
  for (const std::string line : {"inspect .", "list .", "inspect . --json", "list . --json"}) {
    const auto [status, out, err] = backup.Run("hostutil " + line);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(LinesOf(err), line.front() == 'l' ? 1 : 0) << err;
    EXPECT_EQ(out.find_first_of("\x1b\r\t\x7f\xC0\x9B"), std::string::npos);
    const bool json = line.back() == 'n';
    EXPECT_THAT(out, HasSubstr(json ? "c\\ufffd\\ufffd" : "c\xEF\xBF\xBD\xEF\xBF\xBD"));
    EXPECT_THAT(out, HasSubstr(json ? "p\\r\\u007f.pl\\\"\\t" : "p\\r\\x7f.pl\"\\t"));
    std::istringstream lines(out);
    for (std::string text; json && std::getline(lines, text);) EXPECT_TRUE(Json::accept(text)) << text;
  }
}

TEST(Program, PrintsPropertyListsAndRefusesBadUsage) {
  const SampleBackup backup("flat");
  for (const std::string list : {"$binary", "$xml"}) {
    EXPECT_THAT(backup.Run("hostutil plist " + list).out,
                HasSubstr("<key>Account</key>\n\t<string>(None)</string>"));
  }
  EXPECT_THAT(backup.Look("hostutil plist $note"), IsFailure("is not a property list"));
  EXPECT_THAT(backup.Look("hostutil inspect 'no\n'"), IsFailure("no\\\\n: No such file"));
  for (const std::string arguments :
       {"", "nothing", "inspect", "inspect ''", "inspect . --nothing", "inspect . second",
        "list . --match '('", "locate . d", "locate '' d p", "locate . d p --layout round", "sample .",
        "plist .", "locate Info.plist d p --create", "sample new --files -1", "sample no/parent"}) {
    EXPECT_THAT(backup.Look("hostutil " + arguments), IsFailure("")) << arguments;
  }
  EXPECT_THAT(backup.Run("hostutil --version").out, MatchesRegex("hostutil [0-9.]+\n"));
}

TEST(Program, HelpListsEveryCommandAndTheOptionsOfEach) {
  const SampleBackup backup("flat", 0);
  const ProgramResult help = backup.Run("hostutil --help");
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.err, "");
  for (const auto& [command, usage, option] : {std::tuple("inspect", "ROOT", "--json"),
                                               {"list", "ROOT", "--match REGEX"},
                                               {"locate", "ROOT DOMAIN PATH", "--layout LAYOUT"},
                                               {"plist", "FILE", "-h, --help"},
                                               {"sample", "DIR", "--files N"}}) {
    const std::string name = command;
    EXPECT_THAT(help.out, HasSubstr("\n  " + name + ' '));
    const std::string own = backup.Run("hostutil " + name + " --help").out;
    EXPECT_THAT(own, HasSubstr("Usage: hostutil " + name + " [OPTIONS] " + usage + '\n'));
    EXPECT_THAT(own, HasSubstr(std::string("\n  ") + option + ' '));
    EXPECT_THAT(own, HasSubstr("Example:\n  $ hostutil " + name));
  }
}

TEST(Program, SuggestsTheNearestCommand) {
  const SampleBackup backup("flat", 0);
  EXPECT_EQ(backup.Run("hostutil inspct").err,
            "hostutil: no command 'inspct'; did you mean 'inspect'? hostutil --help lists them\n");
  EXPECT_THAT(backup.Run("hostutil lits .").err, HasSubstr("'list'?"));
  EXPECT_EQ(backup.Run("hostutil frobnicate").err,
            "hostutil: no command 'frobnicate'; hostutil --help lists them\n");
}

TEST(Program, NoticesThatOutputIsLost) {
  const SampleBackup backup("flat", 3);
  backup.Run("mkfifo ../pipe");
  for (const std::string arguments : {"inspect .", "list .", "plist Info.plist", "--help"}) {
    // A pipe that nobody reads any more, with the signal for that ignored.
    const std::string closed = "trap '' PIPE; exec 3<>../pipe 4>../pipe 3>&-; hostutil " + arguments + " >&4";
    EXPECT_THAT(backup.Run(closed), FieldsAre(2, "", ""));
    EXPECT_THAT(backup.Run("hostutil " + arguments + " >/dev/full"), IsFailure(""));
  }
}

TEST(Program, ShowsProgressOnATerminalOnly) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_TRUE(::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
  const std::string line = std::string("hostutil inspect . --json 2>") + ::ptsname(terminal);
  EXPECT_TRUE(Json::accept(SampleBackup("two-level", 60).Run(line).out));
  char text[4096] = "";
  EXPECT_GT(::read(terminal, text, sizeof text - 1), 0);
  ::close(terminal);
  EXPECT_THAT(text, MatchesRegex(".* entries, .* %, .*\r\x1b\\[K"));
}

}  // namespace
