#include <signal.h>
#include <sys/stat.h>

#include <sstream>

#include "host/destination.h"
#include "support/manifests.h"

namespace {

Entry File(const std::string& domain, const std::string& path) {
  return EntryOf(domain, path);
}
Entry Folder(const std::string& domain, const std::string& path) {
  return EntryOf(domain, path, EntryKind::Directory);
}

// Extracts to the folder dest next to the backup. The status, how many files, folders and links, and then
// each problem.
std::string Extract(const SampleBackup& backup, const std::string& arguments = "") {
  const auto [status, out, err] = backup.Look("hostutil extract . ../dest --json " + arguments);
  if (status == 2) return err;
  const Json json = Json::parse(out);
  std::string text = err + std::to_string(status);
  for (const char* key : {"files", "folders", "links"}) text += ' ' + json[key].dump();
  for (const std::string& problem : ProblemsOf(json)) text += ", " + problem.substr(0, 32);
  return text;
}

// Expects every file in dest to have the contents and time of a listed one. Returns how many there are.
int ExpectWhole(const SampleBackup& backup) {
  int files = 0;
  std::istringstream lines(backup.Run("hostutil list . --json").out);
  for (std::string line; std::getline(lines, line);) {
    const Json entry = Json::parse(line);
    const std::string place = backup.folder.Path("dest/" + entry["domain"].get<std::string>() + '/' +
                                                 entry["path"].get<std::string>());
    struct stat status {};
    if (entry["kind"] != "file" || ::stat(place.c_str(), &status) != 0) continue;
    ++files;
    EXPECT_EQ(ReadFile(place), ReadFile(backup.folder.Path("backup/" + entry["stored"].get<std::string>())));
    EXPECT_EQ(entry["modified"], Utils::ConvertUtcToLocalDate(status.st_mtime)) << place;
  }
  EXPECT_EQ(backup.Run("find ../dest ! -type d | wc -l").out, std::to_string(files) + '\n');
  return files;
}

TEST(Extract, CopiesFilesWithTheirNamesContentsAndTimes) {
  for (const std::string& layout : kLayouts) {
    const SampleBackup backup(layout);
    backup.Run("head -c 300000 /dev/urandom >../large; cat ../large >$note");  // too large to be read at once
    const std::string expected = "1 40 20 1, wrong-size " + kNote;
    EXPECT_EQ(Extract(backup, "--dry-run"), expected);
    EXPECT_FALSE(std::filesystem::exists(backup.folder.Path("dest")));
    EXPECT_EQ(Extract(backup), expected);

    EXPECT_EQ(ExpectWhole(backup), 40);
    EXPECT_EQ(backup.Run("ls -d ../dest/*/Library/Preferences | wc -l").out, "5\n");
  }
}

TEST(Extract, CopiesWhatWasSelected) {
  const SampleBackup backup("flat");
  EXPECT_EQ(Extract(backup, "--dry-run --domain HomeDomain --match 'Documents/note-[0-9]\\.txt'"), "0 1 0 0");
  EXPECT_EQ(Extract(backup, "--match 'Library/.*'"), "0 12 5 1");
  EXPECT_THAT(backup.Run("hostutil extract . ../new --dry-run").out,
              MatchesRegex("No problems\n\nWould be extracted\nFrom  .*Files  .*40 \\(15 KiB\\)\n(.*\n)*"));
  EXPECT_THAT(backup.Look("hostutil extract . ../new --match '('"), IsFailure("--match \\(: "));
  EXPECT_EQ(Extract(SampleBackup("flat", 1), "--domain HomeDomain --match '(.*)*\\1x'"),
            "hostutil: left out 3 paths that --match takes too long for\n1 0 0 0");
}

TEST(Extract, KeepsToTheDestinationWhateverTheNames) {
  const std::string deep =
      Times(25, std::string(200, 'p') + '/') + "f";  // longer than the system takes at once
  const std::string long_name(300, 'n');
  const std::pair<const char*, std::vector<Entry>> cases[] = {
      {"", {File("D", "a/b")}},
      // The same file, a file where a folder is needed, and a folder where a file is and the reverse.
      {"conflict", {File("D", "a/b"), File("D", "a/b/c"), Folder("D", "a/b"), File("D", "a")}},
      {"", {Folder("D", "a"), Folder("D", "a"), Folder("D", "")}},
      {"unsafe-path", {File("D", ""), File("", "x"), File(".", "x"), File("..", "x"), Folder("..", "")}},
      {"unsafe-path",
       {File("D/E", "x"), File("/D", "x"), File("D", "/x"), File("D", "x/"), File("D", "x//y")}},
      {"unsafe-path", {File("D", "./x"), Folder("D", "x/."), File("D", "../../x"), Folder("D", "x/..")}},
      {"unsafe-path", {File("D", "x/../y"), File("D", long_name), File(long_name, "x")}},
      {"unsafe-path", {File("D", std::string(5000, 'n') + "/x")}},
      {"damaged-record", {File("D", std::string("n\0l", 3)), EntryOf("D", "x", EntryKind::File, ~0ULL)}},
      {"", {EntryOf("..", "../x", EntryKind::Link), File("D", "..x/..."), File("D", "\\..\\x\n\x1b")}},
      {"", {File("D", "\xFF\xC0\xAF"), File("D", deep), File("E", "after")}}};
  std::vector<Entry> entries;
  std::string problems;
  for (const auto& [problem, named] : cases) {
    entries.insert(entries.end(), named.begin(), named.end());
    for (const Entry& entry : named)
      if (*problem != '\0') problems += ", " + (std::string(problem) + ' ' + entry.path).substr(0, 32);
  }
  for (const std::string& layout : kLayouts) {
    const BackupOf backup(layout, entries);
    const std::string around = "cd ..; find . -path ./dest -prune -o ! -name out ! -name err -print | sort";
    const std::string before = backup.Run(around).out;
    const std::string rehearsed = Extract(backup, "--dry-run");
    EXPECT_EQ(backup.Run("ulimit -n 100; hostutil extract . ../dest").status, 1);
    EXPECT_EQ(backup.Run("find ../dest -type f -exec printf x \\;; rm -r ../dest").out, "xxxxxx");
    EXPECT_EQ(Extract(backup), rehearsed);
    EXPECT_EQ(rehearsed, "1 6 3 1" + problems);
    EXPECT_EQ(backup.Run(around).out, before);
  }
}

TEST(Extract, RefusesADestinationThatIsNotNewOrEmptyOrIsInsideTheBackup) {
  const SampleBackup backup("flat", 1);
  backup.Run(
      "mkdir ../empty ../full empty; echo >../full/x; echo >../file; ln -s backup ../link; "
      "ln -s nothing ../dangling; ln -s ../full ../full/link; ln -s empty ../good");
  const std::pair<const char*, std::vector<std::string>> refused[] = {
      {"name is empty", {"''"}},
      {"inside the backup", {".", "new", "empty", "empty/../new", "../link/new", "../full/../backup/empty"}},
      {"is not empty", {"../full", "../full/link/", "/"}},
      {"Not a directory", {"../file", "../file/new"}},
      {"No such file", {"../dangling", "../no/parent"}}};
  for (const auto& [reason, destinations] : refused)
    for (const std::string& destination : destinations)
      for (const std::string option : {"", " --dry-run"})
        EXPECT_THAT(backup.Look("hostutil extract . " + destination + option), IsFailure(reason))
            << destination;
  EXPECT_EQ(backup.Run("ls -A ../full ../empty; test -e ../no").out, "../empty:\n\n../full:\nlink\nx\n");
  EXPECT_THAT(backup.Run("mkdir ../shut; chmod 555 ../shut; plain extract . ../shut"),
              IsFailure("Permission denied"));
  for (const std::string destination : {"../new", "../newer/", "../good", "$PWD/../last"}) {
    EXPECT_EQ(backup.Look("hostutil extract . " + destination).status, 0) << destination;
    EXPECT_EQ(backup.Run("find " + destination + "/ -type f | wc -l").out, "1\n");
  }
}

TEST(Extract, FollowsNoLinkThatIsPlantedBelowTheDestination) {
  const TemporaryFolder folder;
  folder.Write("backup/x", "");
  folder.Write("outside/x", "kept");
  const std::string dest = folder.Path("dest");
  const auto destination = OpenDestination(dest, folder.Path("backup"), false);
  using Result = Destination::Result;
  EXPECT_EQ(destination->MakeFolder("D/known"), Result::Made);
  for (const char* const name : {"E", "D/link", "D/file"}) {
    std::filesystem::create_symlink(folder.Path("outside"), dest + '/' + name);
  }
  std::filesystem::create_symlink(folder.Path("outside/new"), dest + "/D/dangling");
  for (const char* const name : {"E/new", "E/new/x", "D/link/new", "D/file", "D/dangling"}) {
    NewFile file;
    EXPECT_EQ(destination->MakeFile(name, file), Result::Conflict) << name;
  }
  EXPECT_EQ(destination->MakeFolder("E"), Result::Conflict);
  std::filesystem::rename(dest + "/D", folder.Path("moved"));
  std::filesystem::create_symlink(folder.Path("outside"), dest + "/D");
  NewFile file;
  EXPECT_EQ(destination->MakeFile("D/known/x", file),
            Result::Made);  // in the folder that was made, moved or not
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path("outside")), {}), 1);
  EXPECT_EQ(ReadFile(folder.Path("outside/x")), "kept");
}

TEST(Extract, KeepsWholeFilesOnlyWhenWritingFails) {
  // A limit in blocks of 512 bytes: between the sizes of the sample's files, and between those of one file
  // that is copied within the system and all others.
  for (const auto& [large, blocks] : {std::pair("1", "2"), {"1000000", "1000"}}) {
    const SampleBackup backup("two-level");
    backup.Run(std::string("head -c ") + large + " /dev/zero >$note");
    EXPECT_THAT(backup.Look(std::string("ulimit -f ") + blocks + "; hostutil extract . ../dest"),
                IsFailure("/dest/[^:]*: File too large"));
    EXPECT_GT(ExpectWhole(backup), 0);
  }
}

TEST(Extract, EndsByTheSignalAndLeavesNoPartialFile) {
  const std::string large = "../dest/HomeDomain/" + kNote;
  for (const int signal : {SIGINT, SIGTERM}) {
    const SampleBackup backup("flat", 1000);
    // The shell lets what runs in the background ignore interrupts; env restores their effect.
    const std::string line = "truncate -s 512M $note; env --default-signal " HOSTUTIL_PROGRAM
                             " extract . ../dest & i=0; until [ -e " +
                             large + " ] || [ $((i += 1)) = 999999 ]; do :; done; kill -" +
                             std::to_string(signal) +
                             " $!; wait $! 2>/dev/null";  // the shell would say how it ended
    EXPECT_THAT(backup.Run(line), FieldsAre(128 + signal, "", ""));
    // A file system that shares blocks has the large file whole before the signal arrives.
    EXPECT_EQ(backup.Run("find ../dest -size 0; find ../dest -name note-7.txt ! -size 1048576").out, "");
    EXPECT_LT(std::stoi(backup.Run("find ../dest -type f | wc -l").out), 1000);
  }
}

TEST(Extract, ShowsProgressInBytesOnATerminal) {
  const Terminal terminal;
  EXPECT_EQ(SampleBackup("two-level").Run("hostutil extract . ../dest 2>" + terminal.Name()).status, 0);
  EXPECT_THAT(terminal.Read(), MatchesRegex("\r[0-9.]+ K?i?B of 15 KiB.*\r\x1b\\[K"));
}

TEST(Encryption, IsNamedWhereItPreventsReading) {
  const std::string list = "<plist><dict><key>IsEncrypted</key>";
  const std::string encrypted = "hostutil: .: the backup is encrypted\n";
  for (const std::string& layout : kLayouts) {
    // Not encrypted; not a boolean; damaged; a link; encrypted.
    for (const auto& [value, line, expected] :
         {std::tuple("<false/></dict></plist>", "", ""),
          {"<integer>1</integer></dict></plist>", "", ""},
          {"<true/", "", ""},
          {"<true/></dict></plist>", "mv Manifest.plist x; ln -s x Manifest.plist", ""},
          {"<true/></dict></plist>", "", encrypted.c_str()}}) {
      SCOPED_TRACE(value + std::string(line));
      const SampleBackup backup(layout, 1);
      backup.folder.Write("backup/Manifest.plist", list + value);
      backup.Run(line);
      EXPECT_EQ(backup.Look("hostutil inspect .").err, expected);
      EXPECT_EQ(backup.Look("hostutil extract . ../dest --dry-run").err, expected);
      EXPECT_EQ(backup.Look("hostutil list . && hostutil diff . .").status, 0);
      backup.Run("echo noise >$(echo Manifest.[dm]*b)");
      for (const std::string command : {"list .", "diff . ."})
        EXPECT_EQ(backup.Look("hostutil " + command).err == encrypted, *expected != '\0') << command;
    }
  }
}

}  // namespace
