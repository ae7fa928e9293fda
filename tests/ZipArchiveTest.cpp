// Extraction: ordinary, odd and hostile archives, and what becomes of each.
#include <ctime>

#include <sys/stat.h>

#include "lib/ZipArchive/ZipArchive.h"
#include "tests/ZipBytes.h"
#include "tests/support/Command.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::test {
namespace {

using Entry = ZipBytesEntry;

std::string nested(int levels) {
  std::string archive = zipBytes({{"core", "x"}});
  for (int i = 0; i < levels; ++i)
    archive = zipBytes({{"n" + std::to_string(i) + ".zip", archive}});
  return archive;
}

std::string withByte(std::string bytes, std::size_t position, char value) {
  bytes[position] = value;
  return bytes;
}

struct Case {
  const char* what;
  std::string archive;
  // Part of the reason; empty: the extraction succeeds.
  const char* reason;
  // What the destination holds afterwards besides {"kept": "old"}, or instead.
  Files files{};
};

const char* const kDone = "";
const char* const kNoArchive = "failed to open zip file";
const char* const kNoEntry = "failed to open first file in zip file";

// Limits here: 1 MiB and 100 entries for every archive, 2 levels of nesting.
std::vector<Case> cases() {
  const std::string inner = zipBytes({{"in", "1"}});
  const std::string bomb = zipBytes({{"y", std::string(1 << 20, '\0'), true}});
  const std::string climbing = zipBytes({{"../up", "1"}});
  std::string deep;
  for (int i = 0; i < 500; ++i) deep += "d/";
  return {
      {"deflated", zipBytes({{"a", "A"}, {"b", "B", true}}), kDone, {{"a", "A"}, {"b", "B"}}},
      {"an existing file", zipBytes({{"kept", "new"}}), kDone, {{"kept", "new"}}},
      {"a folder", zipBytes({{"d/"}}), kDone, {{"d/", ""}}},
      {"no folder", zipBytes({{"e/f/g", "1"}}), kDone, {{"e/", ""}, {"e/f/", ""}, {"e/f/g", "1"}}},
      {"dots and double slashes", zipBytes({{"./x//./y", "1"}}), kDone, {{"x/", ""}, {"x/y", "1"}}},
      {"the destination itself", zipBytes({{"./"}, {"y", "1"}}), kDone, {{"y", "1"}}},
      {"an empty file", zipBytes({{"z", "", true}}), kDone, {{"z", ""}}},
      {"zip64 sizes", zipBytes({{.name = "a", .data = "A", .zip64 = true}}), kDone, {{"a", "A"}}},
      {"bytes before the archive", "#!/bin/sh\n" + inner, kDone, {{"in", "1"}}},
      {"a nested archive", zipBytes({{"d/n.ZIP", inner}}), kDone, {{"d/", ""}, {"d/in", "1"}}},
      {"what follows one", zipBytes({{"n.zip", inner}, {"z"}}), kDone, {{"in", "1"}, {"z", ""}}},
      {"the name of an archive only", zipBytes({{"n.zip", "none"}}), kDone, {{"n.zip", "none"}}},
      {"archives nested twice", nested(2), kDone, {{"core", "x"}}},
      {"no such date", zipBytes({{.name = "a", .data = "A", .dosDate = 0}}), kDone, {{"a", "A"}}},

      {"no archive", "PK\3\4 nothing", kNoArchive},
      {"an empty file as archive", "", kNoArchive},
      {"an archive without entries", "#!" + zipBytes({}), kNoEntry},
      {"cut at the start", inner.substr(40), kNoArchive},
      {"cut in the directory", inner.substr(0, inner.size() - 30), kNoArchive},
      {"entries announced that are not there", zipBytes({{"a", "A"}}, 9), "damaged directory"},
      {"an absolute name", zipBytes({{"a", "A"}, {"/tmp/lirvox-evil", "1"}}), "unsafe name"},
      {"a name that climbs", zipBytes({{"a", "A"}, {"../evil", "1"}}), "unsafe name"},
      {"a name that climbs later", zipBytes({{"d/../../evil", "1"}}), "unsafe name"},
      {"a backslash", zipBytes({{"..\\evil", "1"}}), "unsafe name"},
      {"a journal", zipBytes({{"a", "A"}, {"d/db1.sqlite-journal", "1"}}), "unsafe name"},
      {"a folder named as a journal", zipBytes({{"a", "A"}, {"db1.sqlite-wal/x"}}), "unsafe name"},
      {"a folder named as a database", zipBytes({{"a", "A"}, {"db1.sqlite/"}}), "unsafe name"},
      {"a null byte", zipBytes({{std::string("a\0b", 3), "1"}}), "unsafe name"},
      {"no name", zipBytes({{"", "1"}}), "unsafe name"},
      {"a file named dot", zipBytes({{".", "1"}}), "unsafe name"},
      {"a line break, not in the log", zipBytes({{"../line\nbreak"}}), "unsafe name ../line?break"},
      {"a very long name", zipBytes({{std::string(5000, 'n'), "1"}}), "unsafe name"},
      {"a very long component", zipBytes({{std::string(300, 'n'), "1"}}), "name too long"},
      {"500 folders deep", zipBytes({{deep}}), "unsafe name"},
      {"a link", zipBytes({{"a", "A"}, {.name = "l", .data = "/etc", .mode = S_IFLNK | 0777U}}),
       "neither file nor folder"},
      {"a device", zipBytes({{.name = "d", .mode = S_IFCHR | 0666U}}), "neither file nor folder"},
      {"a name twice", zipBytes({{"a", "1"}, {"./a", "2"}}), "two files with the name ./a"},
      {"an encrypted entry", zipBytes({{"a"}, {.name = "e", .flags = 1}}), "encrypted entry e"},
      {"an unknown method", zipBytes({{.name = "a", .data = "A", .method = 99}}), "damaged entry"},
      {"a wrong checksum", zipBytes({{.name = "kept", .data = "new", .crc = 1}}), "damaged entry"},
      {"no deflate stream", zipBytes({{.name = "kept", .data = "\xff\xff\xff", .method = 8}}),
       "damaged entry"},
      {"less content than announced",
       zipBytes({{.name = "kept", .data = "abc", .deflated = true, .size = 500}}), "damaged entry"},
      {"more content than announced",
       zipBytes({{.name = "kept", .data = "abc", .deflated = true, .size = 2}}), "damaged entry"},
      {"a flipped bit", withByte(zipBytes({{"b", "BBBBBB"}}), 33, 'X'), "damaged entry b"},
      {"a file as folder", zipBytes({{"a", "A"}, {"a/b", "B"}}), "Not a directory", {{"a", "A"}}},
      {"a folder as file", zipBytes({{"d/"}, {"d", "D"}}), "Is a directory", {{"d/", ""}}},
      {"a bomb", zipBytes({{"z", std::string(2 << 20, '\0'), true}}), "expands too far"},
      {"a bomb of many parts", zipBytes({{"y", std::string(1 << 20, '\0'), true}, {"z", "1"}}),
       "expands too far"},
      {"a nested bomb", zipBytes({{"n.zip", bomb}}), "expands too far", {{"n.zip", bomb}}},
      {"entries that share their bytes",
       zipBytes({{"a", std::string(500, 'x')},
                 {.name = "b", .data = std::string(500, 'x'), .overlaps = true}}),
       "entries overlap"},
      {"too many entries", zipBytes(std::vector<Entry>(101, Entry{"a/"})), "too many entries"},
      {"nesting without end",
       nested(5),
       "nested too deeply",
       {{"n4.zip", nested(4)}, {"n3.zip", nested(3)}, {"n2.zip", nested(2)}}},
      {"a nested archive that climbs",
       zipBytes({{"n.zip", climbing}}),
       "unsafe name",
       {{"n.zip", climbing}}},
  };
}

struct ZipArchiveTest : testing::Test {
  ZipArchiveTest() {
    limits_.bytes = 1 << 20;
    limits_.entries = 100;
    limits_.nesting = 2;
  }

  std::filesystem::path archive() const { return folder_.path("outside/archive.zip"); }
  std::filesystem::path destination() const { return folder_.path("outside/dest"); }
  bool extract(const std::string& bytes) {
    writeFile(archive(), bytes);
    return ZipArchive::unzipFileAtPath(archive(), destination(), error_, limits_);
  }
  // The names beside the destination.
  Files outside() const {
    Files files = contents(archive().parent_path());
    std::erase_if(files, [](const auto& file) { return file.first.rfind("dest/", 0) == 0; });
    return files;
  }

  TestPlatform platform_;
  const TemporaryFolder& folder_ = platform_.folder;
  ZipLimits limits_;
  LirvoxError error_;
};

TEST_F(ZipArchiveTest, EveryArchiveEndsAsItShouldAndNothingLeavesTheDestination) {
  for (const Case& test : cases()) {
    SCOPED_TRACE(test.what);
    std::filesystem::remove_all(destination());
    writeFile(destination() / "kept", "old");
    error_ = {};
    EXPECT_EQ(extract(test.archive), test.reason == kDone);

    Files expected = test.files;
    expected.insert({"kept", "old"});
    EXPECT_EQ(contents(destination()), expected);
    EXPECT_EQ(outside(), (Files{{"archive.zip", test.archive}}));
    EXPECT_EQ(error_.code == 0, test.reason == kDone);
    if (test.reason == kDone) continue;
    EXPECT_NE(error_.localizedDescription.find(test.reason), std::string::npos)
        << error_.localizedDescription;
    EXPECT_EQ(error_.domain, "SSZipArchiveErrorDomain");
    EXPECT_EQ(error_.code, test.reason == kNoArchive ? -1 : test.reason == kNoEntry ? -2 : -3);
    EXPECT_EQ(platform_.log->lines().back(),
              "Extraction of archive.zip failed: " + error_.localizedDescription);
  }
  EXPECT_TRUE(platform_.log->has("Unzipping nested .zip file: n.ZIP"));
  EXPECT_TRUE(platform_.log->has(
      "[SSZipArchive] Failed to set attributes - whilst setting modification date"));
}

TEST_F(ZipArchiveTest, WhatIsNoRegularFileIsNoArchiveAndNobodyWaitsForIt) {
  const std::string pipe = folder_.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path :
       {pipe, std::string("/dev/zero"), std::string("/"), folder_.path("missing").string()}) {
    EXPECT_FALSE(ZipArchive::unzipFileAtPath(path, destination(), error_)) << path;
    EXPECT_EQ(error_.code, -1) << path;
  }
}

TEST_F(ZipArchiveTest, LinksInTheDestinationAreNotFollowed) {
  const auto precious = folder_.path("precious");
  writeFile(precious / "file", "precious");
  std::filesystem::create_directories(destination());
  std::filesystem::create_symlink(precious, destination() / "link");
  std::filesystem::create_symlink(precious / "file", destination() / "a");

  EXPECT_FALSE(extract(zipBytes({{"link/file", "evil"}})));
  EXPECT_TRUE(extract(zipBytes({{"a", "A"}}))) << "the link itself is replaced";

  EXPECT_EQ(contents(precious), (Files{{"file", "precious"}}));
  EXPECT_EQ(contents(destination()), (Files{{"a", "A"}, {"link@", precious}}));
}

TEST_F(ZipArchiveTest, DatesAndPermissionsAreRestored) {
  ASSERT_TRUE(extract(zipBytes({{.name = "d/", .mode = S_IFDIR | 0500U},
                                {.name = "d/f", .data = "1", .mode = S_IFREG | 04640U}})));
  std::tm expected{};
  ASSERT_NE(::strptime("2026-05-04 03:02:02", "%Y-%m-%d %H:%M:%S", &expected), nullptr);
  expected.tm_isdst = -1;
  const std::time_t date = std::mktime(&expected);
  struct stat file {};
  ASSERT_EQ(::stat((destination() / "d/f").c_str(), &file), 0);
  EXPECT_EQ(file.st_mode & 07777U, 0640U) << "but no set-user-id bit";
  EXPECT_EQ(file.st_mtime, date);
  struct stat folder {};
  ASSERT_EQ(::stat((destination() / "d").c_str(), &folder), 0);
  EXPECT_EQ(folder.st_mode & 0777U, 0700U) << "its owner can still enter it";
  EXPECT_EQ(folder.st_mtime, date);
}

// Bytes replaced and cuts all along: an answer, no crash, nothing outside.
TEST_F(ZipArchiveTest, AnyDamageEndsInAnAnswer) {
  const std::string good =
      zipBytes({{"d/a", std::string(300, 'a'), true},
                {.name = "n.zip", .data = zipBytes({{"b", "b"}}), .zip64 = true}});
  for (std::size_t i = 0; i < good.size(); i += 3) {
    extract(good.substr(0, i));
    extract(withByte(good, i, static_cast<char>(good[i] ^ 0x55)));
  }
  EXPECT_EQ(outside().size(), 1U);
}

// With the programs that people use, where they are installed.
TEST_F(ZipArchiveTest, ArchivesOfTheUsualProgramsWork) {
  writeFile(folder_.path("source/db1.sqlite"), std::string(100000, 'x'));
  writeFile(folder_.path("source/home/w\303\244rme.txt"), "warm");
  const std::string name = "'" + archive().string() + "'";
  const std::pair<std::string, std::string> programs[] = {
      {"zip", "zip -qr " + name + " ."},
      {"zip", "zip -qr - . > " + name},  // sizes follow the data; zip64
      {"7z", "7z a -bd -tzip " + name + " ."},
      {"python3", "python3 -m zipfile -c " + name + " *"}};
  int tried = 0;
  for (const auto& [program, command] : programs) {
    SCOPED_TRACE(command);
    if (runCommand("command -v " + program).status != 0) continue;
    std::filesystem::remove_all(archive().parent_path());
    std::filesystem::create_directories(destination());
    ASSERT_EQ(runCommand("cd '" + folder_.path("source").string() + "' && " + command).status, 0);
    EXPECT_TRUE(ZipArchive::unzipFileAtPath(archive(), destination()))
        << platform_.log->lines().back();
    EXPECT_EQ(contents(destination()), contents(folder_.path("source")));
    ++tried;
  }
  if (tried == 0) GTEST_SKIP() << "none of zip, 7z and python3 is installed";
}

}  // namespace
}  // namespace lirvox::test
