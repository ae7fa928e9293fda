// Extraction: ordinary, odd and hostile archives, and what becomes of each.
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "lib/ZipArchive/ZipArchive.h"
#include "tests/ZipBytes.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

namespace lirvox::test {
namespace {

std::string nested(int levels) {
  std::string archive = zipBytes({{"core", "x"}});
  for (int i = 0; i < levels; ++i)
    archive = zipBytes({{"n" + std::to_string(i) + ".zip", archive}});
  return archive;
}

std::string many(int count) {
  std::vector<ZipBytesEntry> entries;
  for (int i = 0; i < count; ++i) entries.push_back({std::to_string(i), ""});
  return zipBytes(entries);
}

// An archive that is cut or has one byte replaced.
std::string damaged(std::size_t keep) {
  return zipBytes({{"a", std::string(1000, 'a'), true}, {"b", "b"}}).substr(0, keep);
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
  // What the destination, which starts as {"kept": "old"}, holds afterwards.
  Files files;
};

const std::string kZeros(1 << 20, '\0');
const Files kUntouched = {{"kept", "old"}};

// Limits here: 1 MiB and 100 entries for every archive, 2 levels of nesting.
const std::vector<Case>& cases() {
  static const std::string inner = zipBytes({{"in", "1"}});
  static const std::vector<Case> all = {
      {"stored and deflated",
       zipBytes({{"a", "A"}, {"b", "BBBB", true}}),
       "",
       {{"kept", "old"}, {"a", "A"}, {"b", "BBBB"}}},
      {"an existing file", zipBytes({{"kept", "new"}}), "", {{"kept", "new"}}},
      {"folders with and without entries",
       zipBytes({{"d/", ""}, {"e/f/g", "1"}}),
       "",
       {{"kept", "old"}, {"d/", ""}, {"e/", ""}, {"e/f/", ""}, {"e/f/g", "1"}}},
      {"a name with dots and double slashes",
       zipBytes({{"./x//./y", "1"}}),
       "",
       {{"kept", "old"}, {"x/", ""}, {"x/y", "1"}}},
      {"the destination itself",
       zipBytes({{"./", ""}, {"y", "1"}}),
       "",
       {{"kept", "old"}, {"y", "1"}}},
      {"an empty file", zipBytes({{"z", "", true}}), "", {{"kept", "old"}, {"z", ""}}},
      {"zip64 sizes",
       zipBytes({{.name = "a", .data = "A", .zip64 = true}}),
       "",
       {{"kept", "old"}, {"a", "A"}}},
      {"bytes before the archive", "#!/bin/sh\n" + inner, "", {{"kept", "old"}, {"in", "1"}}},
      {"a nested archive",
       zipBytes({{"d/n.ZIP", inner}, {"d/z", "2"}}),
       "",
       {{"kept", "old"}, {"d/", ""}, {"d/in", "1"}, {"d/z", "2"}}},
      {"a file that only has the name of an archive",
       zipBytes({{"n.zip", "none"}, {"b", "2"}}),
       "",
       {{"kept", "old"}, {"n.zip", "none"}, {"b", "2"}}},
      {"archives nested twice", nested(2), "", {{"kept", "old"}, {"core", "x"}}},
      {"a date that does not exist",
       zipBytes({{.name = "a", .data = "A", .dosDate = 0}}),
       "",
       {{"kept", "old"}, {"a", "A"}}},

      {"no archive", "PK\3\4 nothing", "failed to open zip file", kUntouched},
      {"an empty file as archive", "", "failed to open zip file", kUntouched},
      {"an archive without entries", "#!" + zipBytes({}), "failed to open first file", kUntouched},
      {"more entries announced than there are", zipBytes({{"a", "A"}}, 9), "damaged directory",
       kUntouched},
      {"cut in the directory", damaged(150), "failed to open zip file", kUntouched},
      {"cut at the start", inner.substr(40), "failed to open", kUntouched},
      {"an absolute name", zipBytes({{"a", "A"}, {"/tmp/lirvox-evil", "1"}}), "unsafe name",
       kUntouched},
      {"a name that climbs", zipBytes({{"../evil", "1"}}), "unsafe name", kUntouched},
      {"a name that climbs later", zipBytes({{"a", "A"}, {"d/../../evil", "1"}}), "unsafe name",
       kUntouched},
      {"a name with a backslash", zipBytes({{"..\\evil", "1"}}), "unsafe name", kUntouched},
      {"a name with a null byte", zipBytes({{std::string("a\0b", 3), "1"}}), "unsafe name",
       kUntouched},
      {"no name", zipBytes({{"", "1"}}), "unsafe name", kUntouched},
      {"a file named dot", zipBytes({{".", "1"}}), "unsafe name", kUntouched},
      {"a very long name", zipBytes({{std::string(5000, 'n'), "1"}}), "unsafe name", kUntouched},
      {"a very long component", zipBytes({{std::string(300, 'n'), "1"}}), "name too long",
       kUntouched},
      {"a thousand folders",
       zipBytes({{[] {
                    std::string name;
                    for (int i = 0; i < 500; ++i) name += "d/";
                    return name;
                  }(),
                  ""}}),
       "unsafe name", kUntouched},
      {"a link", zipBytes({{"a", "A"}, {.name = "l", .data = "/etc", .mode = S_IFLNK | 0777U}}),
       "neither file nor folder", kUntouched},
      {"a device", zipBytes({{.name = "d", .mode = S_IFCHR | 0666U}}), "neither file nor folder",
       kUntouched},
      {"the same name twice", zipBytes({{"a", "1"}, {"./a", "2"}}), "two files", kUntouched},
      {"an encrypted entry", zipBytes({{"a", "A"}, {.name = "e", .data = "1", .flags = 1}}),
       "encrypted", kUntouched},
      {"an unknown method", zipBytes({{.name = "a", .data = "A", .method = 99}}), "damaged entry",
       kUntouched},
      {"a wrong checksum", zipBytes({{.name = "kept", .data = "new", .crc = 1}}), "damaged entry",
       kUntouched},
      {"content that is no deflate stream",
       zipBytes({{.name = "kept", .data = "\xff\xff\xff\xff", .method = 8}}), "damaged entry",
       kUntouched},
      {"a flipped bit after a good entry",
       withByte(zipBytes({{"a", "A"}, {"b", "BBBBBBBB"}}), 65, 'X'),
       "damaged entry",
       {{"kept", "old"}, {"a", "A"}}},
      {"less content than announced",
       zipBytes({{.name = "kept", .data = "abc", .deflated = true, .size = 500}}), "damaged entry",
       kUntouched},
      {"a file where a folder is needed",
       zipBytes({{"a", "A"}, {"a/b", "B"}}),
       "Not a directory",
       {{"kept", "old"}, {"a", "A"}}},
      {"a folder where a file is needed",
       zipBytes({{"d/", ""}, {"d", "D"}}),
       "Is a directory",
       {{"kept", "old"}, {"d/", ""}}},
      {"a bomb", zipBytes({{"z", kZeros + kZeros, true}}), "expands too far", kUntouched},
      {"a bomb of many parts", zipBytes({{"y", kZeros, true}, {"z", "1"}}), "expands too far",
       kUntouched},
      {"a nested bomb",
       zipBytes({{"n.zip", zipBytes({{"y", kZeros, true}})}}),
       "expands too far",
       {{"kept", "old"}, {"n.zip", zipBytes({{"y", kZeros, true}})}}},
      {"too many entries", many(101), "too many entries", kUntouched},
      {"nesting without end",
       nested(5),
       "nested too deeply",
       {{"kept", "old"}, {"n4.zip", nested(4)}, {"n3.zip", nested(3)}, {"n2.zip", nested(2)}}},
      {"a nested archive that climbs",
       zipBytes({{"n.zip", zipBytes({{"../up", "1"}})}}),
       "unsafe name",
       {{"kept", "old"}, {"n.zip", zipBytes({{"../up", "1"}})}}},
  };
  return all;
}

class ZipArchiveTest : public testing::Test {
 protected:
  ZipArchiveTest() {
    limits_.bytes = 1 << 20;
    limits_.entries = 100;
    limits_.nesting = 2;
    writeFile(destination() / "kept", "old");
  }

  std::filesystem::path archive() const { return folder_.path("outside/archive.zip"); }
  std::filesystem::path destination() const { return folder_.path("outside/dest"); }
  bool extract(const std::string& bytes) {
    writeFile(archive(), bytes);
    return ZipArchive::unzipFileAtPath(archive(), destination(), error_, limits_);
  }

  TemporaryFolder folder_;
  ZipLimits limits_;
  LirvoxError error_;
  std::shared_ptr<RecordedLog> log_ = recordLog();
};

TEST_F(ZipArchiveTest, EveryArchiveEndsAsItShouldAndNothingLeavesTheDestination) {
  for (const Case& test : cases()) {
    SCOPED_TRACE(test.what);
    std::filesystem::remove_all(destination());
    writeFile(destination() / "kept", "old");
    error_ = {};
    const std::size_t logged = log_->lines().size();
    const bool fails = *test.reason != '\0';

    EXPECT_EQ(extract(test.archive), !fails);

    EXPECT_EQ(contents(destination()), test.files);
    Files outside = contents(archive().parent_path());
    std::erase_if(outside, [](const auto& file) { return file.first.rfind("dest/", 0) == 0; });
    EXPECT_EQ(outside, (Files{{"archive.zip", test.archive}}));
    if (fails) {
      EXPECT_NE(error_.localizedDescription.find(test.reason), std::string::npos)
          << error_.localizedDescription;
      ASSERT_GT(log_->lines().size(), logged);
      EXPECT_EQ(log_->lines().back(),
                "Extraction of archive.zip failed: " + error_.localizedDescription);
    }
  }
}

TEST_F(ZipArchiveTest, ErrorsCarryTheDomainAndTheirCodes) {
  extract("none");
  EXPECT_EQ(error_.domain, "SSZipArchiveErrorDomain");
  EXPECT_EQ(error_.code, -1);
  extract("#!" + zipBytes({}));
  EXPECT_EQ(error_.code, -2);
  EXPECT_EQ(error_.localizedDescription, "failed to open first file in zip file");
}

TEST_F(ZipArchiveTest, WhatIsNoRegularFileIsNoArchiveAndNobodyWaitsForIt) {
  const std::string pipe = folder_.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path :
       {pipe, std::string("/dev/zero"), std::string("/"), std::string(folder_.path("missing"))}) {
    EXPECT_FALSE(ZipArchive::unzipFileAtPath(path, destination(), error_)) << path;
    EXPECT_EQ(error_.code, -1) << path;
  }
}

TEST_F(ZipArchiveTest, LinksInTheDestinationAreNotFollowed) {
  const auto precious = folder_.path("outside/precious");
  writeFile(precious / "file", "precious");
  std::filesystem::create_symlink(precious, destination() / "link");
  std::filesystem::create_symlink(precious / "file", destination() / "a");

  EXPECT_FALSE(extract(zipBytes({{"link/file", "evil"}})));
  EXPECT_TRUE(extract(zipBytes({{"a", "A"}}))) << "the link itself is replaced";

  EXPECT_EQ(contents(precious), (Files{{"file", "precious"}}));
  EXPECT_EQ(readFile(destination() / "a"), "A");
  EXPECT_FALSE(std::filesystem::is_symlink(destination() / "a"));
}

TEST_F(ZipArchiveTest, DatesAndPermissionsAreRestored) {
  ASSERT_TRUE(extract(zipBytes({{.name = "d/", .mode = S_IFDIR | 0500U},
                                {.name = "d/f", .data = "1", .mode = S_IFREG | 04640U},
                                {.name = "plain", .data = "1"}})));
  struct stat file {};
  ASSERT_EQ(::stat((destination() / "d/f").c_str(), &file), 0);
  EXPECT_EQ(file.st_mode & 07777U, 0640U) << "but no set-user-id bit";
  std::tm expected{};
  expected.tm_year = 2026 - 1900;
  expected.tm_mon = 4;
  expected.tm_mday = 4;
  expected.tm_hour = 3;
  expected.tm_min = 2;
  expected.tm_sec = 2;
  expected.tm_isdst = -1;
  const std::time_t date = std::mktime(&expected);
  EXPECT_EQ(file.st_mtime, date);
  struct stat folder {};
  ASSERT_EQ(::stat((destination() / "d").c_str(), &folder), 0);
  EXPECT_EQ(folder.st_mode & 0777U, 0700U) << "its owner can still enter it";
  EXPECT_EQ(folder.st_mtime, date);
}

TEST_F(ZipArchiveTest, LogLinesAreThoseOperatorsKnow) {
  extract(zipBytes({{"d/n.zip", zipBytes({{"in", "1"}})}}));
  EXPECT_TRUE(log_->has("Unzipping nested .zip file: n.zip"));
  extract(zipBytes({{.name = "a", .dosDate = 0}}));
  EXPECT_TRUE(
      log_->has("[SSZipArchive] Failed to set attributes - whilst setting modification date"));
  extract(zipBytes({{"../line\nbreak", ""}}));
  EXPECT_TRUE(log_->has("unsafe name ../line?break"));
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
  for (const auto& [name, content] : contents(archive().parent_path())) {
    EXPECT_TRUE(name.rfind("dest/", 0) == 0 || name == "archive.zip") << name;
  }
}

// With the programs that people use, where they are installed.
TEST_F(ZipArchiveTest, ArchivesOfTheUsualProgramsWork) {
  const auto source = folder_.path("source");
  writeFile(source / "db1.sqlite", std::string(100000, 'x'));
  writeFile(source / "home/w\303\244rme.txt", "warm");
  Files expected = contents(source);
  const std::string into = "cd '" + source.string() + "' && ";
  const std::string name = "'" + archive().string() + "'";
  const std::vector<std::pair<std::string, std::string>> programs = {
      {"zip", "zip -qr " + name + " ."},
      {"zip", "zip -qr - . > " + name},  // sizes follow the data; zip64
      {"7z", "7z a -bd -tzip " + name + " . >/dev/null"},
      {"python3",
       "python3 -c \"import shutil,sys;shutil.make_archive(sys.argv[1][:-4],'zip')\" " + name}};
  int tried = 0;
  for (const auto& [program, command] : programs) {
    SCOPED_TRACE(command);
    if (std::system(("command -v " + program + " >/dev/null").c_str()) != 0) continue;
    std::filesystem::remove(archive());
    std::filesystem::remove_all(destination());
    ASSERT_EQ(std::system((into + command).c_str()), 0);
    EXPECT_TRUE(ZipArchive::unzipFileAtPath(archive(), destination())) << log_->lines().back();
    EXPECT_EQ(contents(destination()), expected);
    ++tried;
  }
  if (tried == 0) GTEST_SKIP() << "none of zip, 7z and python3 is installed";
}

}  // namespace
}  // namespace lirvox::test
