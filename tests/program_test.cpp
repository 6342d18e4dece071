#include <sys/ioctl.h>

#include <sstream>

#include "support/program.h"

namespace {

auto LinesOf(const std::string& text) {
  return std::count(text.begin(), text.end(), '\n');
}

// What an inspection finds, by the names of its JSON object. A problem is a kind and a path.
struct Inspection {
  int listed = 40, present = 40, read = 8;
  std::vector<std::string> problems = {};
};

void ExpectInspection(const SampleBackup& backup, const Inspection& expected) {
  const auto [status, out, err] = backup.Look("plain inspect . --json");
  EXPECT_EQ(status, expected.problems.empty() ? 0 : 1);
  EXPECT_EQ(err, "");
  const Json json = Json::parse(out);
  std::map<std::string, int> counts;
  for (const Json& problem : json["problems"]) ++counts[problem["kind"].get<std::string>()];
  EXPECT_EQ(ProblemsOf(json), expected.problems);
  EXPECT_EQ(json["files"]["listed"], expected.listed);
  EXPECT_EQ(json["files"]["present"], expected.present);
  EXPECT_EQ(json["files"]["missing"], counts["missing"]);
  EXPECT_EQ(json["files"]["mismatched_id"], counts["mismatched-id"]);
  EXPECT_EQ(json["files"]["wrong_size"], counts["wrong-size"]);
  EXPECT_EQ(json["property_lists"]["read"], expected.read);
  EXPECT_EQ(json["property_lists"]["damaged"], counts["damaged-property-list"]);
}

TEST(Program, InspectsASampleOfEitherGeneration) {
  const std::string find = "find . ! -name '*.*' -type f -exec ";
  for (const std::string& layout : kLayouts) {
    const SampleBackup backup(layout);
    ExpectInspection(backup, {});
    const Json json = Json::parse(backup.Run("hostutil inspect . --json").out);
    EXPECT_EQ(json["layout"], layout);
    EXPECT_EQ(json["files"]["bytes"].dump(), backup.Run("printf %d $(" + find + "cat {} + | wc -c)").out);
    EXPECT_EQ(json["domains"]["HomeDomain"].dump(), R"({"files":11,"bytes":4568})");
    EXPECT_EQ(json["extensions"].dump(), R"({"jpg":12,"plist":8,"sqlite":4,"txt":16})");
    EXPECT_EQ(json["months"].dump(), R"({"2023-01":31,"2023-02":9})");
    EXPECT_EQ(json["device"]["Last Backup Date"], Utils::ConvertUtcToLocalDate(1699963200));
    EXPECT_THAT(json["elapsed"].get<std::string>(), MatchesRegex("00:00:[0-9]+"));
    const std::string manifest = "cat Manifest.[dm]*";
    EXPECT_EQ(SampleBackup(layout).Run(manifest).out, backup.Run(manifest).out);
    EXPECT_THAT(backup.Run(find + "rm {} +; hostutil inspect .").out,
                MatchesRegex("40 problems\n  missing: 40\n(    [^\n]*\n){20}  and 20 more.*"));
  }
}

TEST(Program, FindsEachFaultOfAFile) {
  const struct {
    const char* line;
    Inspection found;
  } faults[] = {
      {"rm $note", {.present = 39, .problems = {"missing " + kNote}}},
      // In the file's place: a pipe, which must not be opened, and a link to a file outside the backup.
      {"rm $note; mkfifo $note", {.present = 39, .problems = {"missing " + kNote}}},
      {"mv $note ../outside; ln -s $PWD/../outside $note", {.present = 39, .problems = {"missing " + kNote}}},
      // No permission for a file, for lists of both encodings, and for the one about the device.
      {"chmod 0 $note", {.present = 39, .problems = {"unreadable " + kNote}}},
      {"chmod 0 $xml", {.present = 39, .read = 7, .problems = {"unreadable " + kXmlListPath}}},
      {"chmod 0 $binary", {.present = 39, .read = 7, .problems = {"unreadable " + kBinaryListPath}}},
      {"chmod 0 Info.plist", {.problems = {"unreadable Info.plist"}}},
      // One byte, and no list about the device, which is not needed.
      {"echo >$note; rm Info.plist", {.problems = {"wrong-size " + kNote}}},
      // Not well-formed: about the device; binary, of the right size; empty.
      {"echo '<plist><array>' >Info.plist", {.problems = {"damaged-property-list Info.plist"}}},
      {"n=$(wc -c <$binary); printf bplist00%0$((n - 8))d 0 >$binary",
       {.read = 7, .problems = {"damaged-property-list " + kBinaryListPath}}},
      {": >$xml",
       {.read = 7, .problems = {"wrong-size " + kXmlListPath, "damaged-property-list " + kXmlListPath}}}};
  for (const std::string& layout : kLayouts) {
    for (const auto& [line, found] : faults) {
      SCOPED_TRACE(line);
      const SampleBackup backup(layout);
      EXPECT_EQ(backup.Run(line).err, "");
      ExpectInspection(backup, found);
      // Extraction reports the same files, unless it is their contents that are wrong.
      std::vector<std::string> problems = found.problems;
      std::erase_if(problems, [](const std::string& problem) {
        return problem.starts_with("damaged") || problem.ends_with("Info.plist");
      });
      const Json json = Json::parse(backup.Run("plain extract . ../dest --json").out);
      EXPECT_EQ(ProblemsOf(json), problems);
      EXPECT_EQ(json["files"], found.present);
    }
  }
  // The file's folder is a link to one outside the backup.
  const SampleBackup backup("two-level");
  backup.Run("d=$(dirname $note); mv $d ../outside; ln -s $PWD/../outside $d");
  ExpectInspection(backup, {.present = 39, .problems = {"missing " + kNote}});
}

TEST(Program, FindsEachFaultOfADatabase) {
  // Rows with the paths a, b, c and so on.
  const char* const sql = R"(UPDATE Files SET file=null; INSERT INTO Files VALUES
    -- identifiers that leave the folder, are shorter than their folder's name, or are an absolute path
    ('../../x','d','a',2,null), ('a','d','b',2,null), ('/etc','d','c',2,null),
    -- lists that are empty, lack the trailer, are a text, or are beyond the limit
    (1,'d','d',1,x''), (2,'d','e',1,x'62706c6973743030ff'), (3,'d','f',4,'text'),
    (4,'d','g',2,zeroblob(2000000)),
    -- kinds that are unknown, missing, or no integer
    (5,'d','h',3,null), (6,'d','i',null,null), (7,'d','j',1.5,null),
    -- no identifier, a domain that is no text, one with a NUL, no path
    (null,'d','k',1,null), (8,x'00','l',1,null), (9,'d'||char(0),'m',1,null), (10,'d',null,1,null),
    -- an identifier too long to be read, which ends the reading
    (hex(zeroblob(9000000)),'d','n',1,null), (11,'d','o',7,null))";
  Inspection expected{.problems = {"mismatched-id a", "mismatched-id b", "mismatched-id c"}};
  for (const char path : std::string("defghijklm"))
    expected.problems.push_back(std::string("damaged-record ") + path);
  expected.problems.insert(expected.problems.end(), 2, "damaged-record ");
  const SampleBackup backup("two-level");
  backup.Run("", sql);
  ExpectInspection(backup, expected);

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
  const std::string file = Record("p", "\x81\xA4" + std::string(29, '\xFF')).erase(43, 29);
  std::vector<std::pair<std::string, std::vector<std::string>>> faults = {
      {start, {}},
      {first, {}},
      // A pipe; a size beyond 63 bits; a NUL in the domain; a length past the end of the file.
      {start + Record("p", std::string("\x10\0", 2)) + last, {"damaged-record p"}},
      {start + file + last, {"damaged-record p"}},
      {start + std::string("\0\2d\0", 4) + Record("p", "\x81\xA4").substr(3) + last, {"damaged-record p"}},
      {first + "\xFF\xFE***", {"damaged-record "}}};
  for (std::size_t length = 1; length < last.size(); ++length)
    faults.push_back({first + last.substr(0, length), {length < 6 ? "damaged-record " : "damaged-record q"}});
  const SampleBackup backup("flat");
  for (const auto& [bytes, problems] : faults) {
    SCOPED_TRACE(testing::PrintToString(bytes));
    backup.folder.Write("backup/Manifest.mbdb", bytes);
    ExpectInspection(backup, {.listed = 0, .present = 0, .read = 0, .problems = problems});
  }
}

TEST(Program, NamesWhatItCannotReadAndLeavesItAsItIs) {
  const auto expect_failure = [](const std::string& layout, const std::string& change) {
    SCOPED_TRACE(layout + ": " + change);
    const SampleBackup backup(layout, 3);
    const std::string sql = change[0] == '#' ? change.substr(1) : "";
    EXPECT_EQ(backup.Run("m=$(echo Manifest.[dm]*); " + change, sql).err, "");
    for (const std::string command : {"inspect . --json", "list ."})
      EXPECT_THAT(backup.Look("hostutil " + command), IsFailure("(is not a backup|/Manifest[^:]*: .+)"));
  };
  // No manifest, an empty one, a pipe, a link, a record file that is truncated or of another version, and a
  // file that is no database.
  for (const std::string& layout : kLayouts)
    for (const char* const change :
         {"rm $m", ": >$m", "rm $m; mkfifo $m", "mv $m x; ln -s x $m", "printf mbdb >$m",
          "printf 'mbdb\\6%060d' 0 >$m", "printf %0500d 0 >Manifest.db"})
      expect_failure(layout, change);
  // Pipes as the journal and the log, fewer pages than the header says, a column too few; and what could
  // compute forever: a view, a computed column, a virtual table. What follows "#" is SQL.
  for (const char* const change :
       {"mkfifo $m-journal", "mkfifo $m-wal", "head -c 5000 $m >x; mv x $m",
        "#ALTER TABLE Files DROP COLUMN flags", "#DROP TABLE Files; CREATE VIEW Files AS SELECT 1",
        "#ALTER TABLE Files ADD COLUMN twice AS (flags+flags)",
        "#DROP TABLE Files; CREATE VIRTUAL TABLE Files USING rtree(a, b, c)"})
    expect_failure("two-level", change);
}

TEST(Program, ReadsDuringAWriteAndAfterAnInterruptedOne) {
  const SampleBackup backup("two-level", 3);
  EXPECT_THAT(backup.Run("hostutil inspect .", "BEGIN EXCLUSIVE"), IsFailure("is locked"));
  const std::string wal =
      "PRAGMA journal_mode=WAL; DELETE FROM Files WHERE flags=1; BEGIN; DELETE FROM Files";
  EXPECT_EQ(LinesOf(backup.Run("hostutil list .", wal).out), 21);

  // Without its log the deletion is lost; without its index only time.
  const std::string journal = "PRAGMA cache_size=1; BEGIN; UPDATE Files SET file=zeroblob(9000)";
  for (const auto& [sql, lost, files] :
       {std::tuple(wal, "-no", 0), {wal, "-shm", 0}, {wal, "-*", 3}, {journal, "-no", -1}}) {
    const SampleBackup stopped("two-level", 3);
    stopped.Run("mkdir ../kept; cp Manifest.db* ../kept", sql);
    stopped.Run(std::string("rm Manifest.db*; cp ../kept/* .; rm -f Manifest.db") + lost);
    if (files >= 0) {
      ExpectInspection(stopped, {.listed = files, .present = files, .read = files / 3});
    } else {
      EXPECT_THAT(stopped.Look("hostutil inspect ."), IsFailure("unfinished transaction"));
    }
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
    // After the widest domain, every path begins in one column.
    EXPECT_EQ(backup.Run("hostutil list . --match .+ | grep -v '^.\\{70\\} [^ ]'").out, "");
    EXPECT_EQ(backup.Run("hostutil locate . HomeDomain Documents/note-7.txt --layout " + layout).out,
              "Identifier  " + id + "\nStored at   " + stored + '\n');
  }
  const SampleBackup backup("flat", 1);
  EXPECT_EQ(backup.Look("hostutil locate n/root d ''").status, 0);
  EXPECT_EQ(backup.Run("hostutil locate n/root d '' --create >../x && ls n/root").out,
            Utils::CalcFileID("d", "").substr(0, 2) + '\n');
}

TEST(Program, ShowsTheTimesOfTheTimeZone) {
  const SampleBackup backup("flat");  // a file a day
  // Clocks that change between midnight and noon of a day, and zones a day ahead and behind.
  for (const char* const zone : {"EST5EDT,M1.2.3/3,M2.1.0/4", "WST-14", "XST11:30"}) {
    ::setenv("TZ", zone, 1);
    const std::string list = backup.Run("hostutil list .").out;
    for (long noon = 1672574400; noon < 1672574400 + 40 * 86400; noon += 86400)
      EXPECT_THAT(list, HasSubstr(Utils::ConvertUtcToLocalDate(noon))) << zone;
  }
}

TEST(Program, ShowsHostileTextsHarmlessly) {
  const SampleBackup backup("two-level", 3);
  backup.Run("",
             R"(INSERT INTO Files VALUES
      ('i'||char(27)||'[2J', 'd'||char(10,155), 'p'||char(13,127)||'.pl"'||char(9), 1, null),
      ('j', CAST(x'80' AS TEXT), CAST(x'63c0af' AS TEXT), 1, null), ('k', 'd', 'bad', 8, null),
      (replace(hex(zeroblob(25)), '0', 'é'), 'd', 'long', 1, null))");
  EXPECT_THAT(backup.Run("hostutil inspect .").out, HasSubstr(' ' + Times(39, "é") + "…  "));
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

TEST(Program, RefusesBadUsage) {
  const SampleBackup backup("flat");
  backup.Run(": >empty; mkfifo pipe");
  for (const auto& [arguments, reason] : {std::pair("plist $note", "is not a property list"),
                                          {"plist empty", "empty: is empty"},
                                          {"plist pipe", "pipe: is not a regular file"},
                                          {"plist .", "is a folder"},
                                          {"plist none", "none: No such file"},
                                          {"inspect 'no\n'", "no\\\\n: No such file"}})
    EXPECT_THAT(backup.Look(std::string("hostutil ") + arguments), IsFailure(reason));
  for (const std::string arguments :
       {"", "--", "nothing", "inspect", "inspect ''", "inspect . --nothing", "inspect . second",
        "inspect . --jobs 0", "inspect . --jobs 257", "inspect . --jobs x", "list . --match '('",
        "locate . d", "locate '' d p", "locate . d p --layout round", "sample .",
        "locate Info.plist d p --create", "sample new --files -1", "sample no/parent"}) {
    EXPECT_THAT(backup.Look("hostutil " + arguments), IsFailure("")) << arguments;
  }
  EXPECT_THAT(backup.Run("hostutil --version").out, MatchesRegex("hostutil [0-9.]+\n"));
}

TEST(Program, HelpListsEveryCommandAndTheOptionsOfEach) {
  const SampleBackup backup("flat", 0);
  const ProgramResult help = backup.Run("hostutil --help");
  EXPECT_THAT(help, FieldsAre(0, testing::_, ""));
  for (const std::string name : {"inspect", "list", "extract", "diff", "locate", "plist", "sample"}) {
    EXPECT_THAT(help.out, HasSubstr("\n  " + name + ' '));
    EXPECT_THAT(backup.Run("hostutil " + name + " --help").out,
                MatchesRegex("Usage: hostutil " + name +
                             " \\[OPTIONS\\] [A-Z]+(.*\n)*  -h, --help  (.*\n)*"
                             "Example:\n  \\$ hostutil " +
                             name + " .*\n"));
  }
  for (const auto& [name, hint] : {std::pair("inspct", "; did you mean 'inspect'?"),
                                   {"locote", "; did you mean 'locate'?"},
                                   {"samplers", "; did you mean 'sample'?"},
                                   {"l\xC3\xAF", ";"}})
    EXPECT_EQ(
        backup.Run(std::string("hostutil ") + name).err,
        std::string("hostutil: no command '") + name + '\'' + hint + " hostutil --help lists the commands\n");
}

TEST(Program, NoticesThatOutputIsLost) {
  const SampleBackup backup("flat", 3);
  backup.Run("mkfifo ../pipe");
  for (const std::string arguments :
       {"inspect .", "list .", "plist Info.plist", "plist Info.plist --json", "--help"}) {
    // A pipe that nobody reads any more, with the signal for that ignored.
    const std::string closed = "trap '' PIPE; exec 3<>../pipe 4>../pipe 3>&-; hostutil " + arguments + " >&4";
    EXPECT_THAT(backup.Run(closed), FieldsAre(2, "", ""));
    EXPECT_THAT(backup.Run("hostutil " + arguments + " >/dev/full"), IsFailure(""));
  }
  for (const std::string& layout : kLayouts)
    EXPECT_THAT(backup.Run("ulimit -f 2; hostutil sample ../" + layout + " --layout " + layout),
                IsFailure("File too large"));
}

TEST(Program, ShowsProgressOnATerminalOnlyAndFitsTheReportIntoIt) {
  const Terminal progress, report;
  const SampleBackup backup("two-level", 60);
  EXPECT_TRUE(Json::accept(backup.Run("hostutil inspect . --json 2>" + progress.Name()).out));
  EXPECT_THAT(progress.Read(), MatchesRegex(".* entries, .* %, .*\r\x1b\\[K"));

  const winsize size{24, 50, 0, 0};
  EXPECT_EQ(::ioctl(report.descriptor(), TIOCSWINSZ, &size), 0);
  EXPECT_EQ(backup.Run("rm $note; NO_COLOR=1 hostutil inspect . >" + report.Name()).status, 1);
  const std::string shown = report.Read();
  for (const std::string line :
       {"    15fc2ced247331a73b58c5483ca9ffd310c3271d  Hom…\r\n", "Present           59 (31 KiB)\r\n",
        "Months covered    2023-01 to 2023-03\r\n", "  HomeDomain                  16 files     8.4 KiB\r\n",
        "  AppDomain-c…mple.notes       9 files     5.1 KiB\r\n", "  txt                         23\r\n"})
    EXPECT_THAT(shown, HasSubstr("\n" + line));
}

}  // namespace
