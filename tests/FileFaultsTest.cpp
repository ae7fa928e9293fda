// Recordings, settings, updates and lookups while operations on files fail, and requests for
// memory, one after the other.
#include "lib/platform/RunTask.h"
#include "lib/platform/linux/JsonUserDefaults.h"
#include "tests/support/ControllerTest.h"
#include "tests/support/Faults.h"
#include "tests/support/FingerprintFile.h"
#include "tests/support/LocalService.h"

namespace lirvox::test {
namespace {

struct FileFaults : ControllerTest, testing::WithParamInterface<Failing> {
  std::filesystem::path caches() const { return platform_.folder.path("caches"); }
  int failEach(const std::function<void()>& operation, const std::function<void()>& check) {
    return test::failEach(GetParam(), operation, check);
  }
  // The files of the caches folder, those excepted that the next operation removes.
  Files lastingFiles() const {
    Files files = contents(caches());
    std::erase_if(
        files, [](const auto& file) { return file.first.find(".lirvox-") != std::string::npos; });
    return files;
  }
};

TEST_P(FileFaults, ARecordingIsTheOldOrTheNewOne) {
  install();
  start();
  deliver(song_.data(), 5000);
  const std::string whole(reinterpret_cast<const char*>(song_.data()), 20000);
  writeFile(caches() / "soundLirvox.dat", "old");
  writeFile(caches() / ".lirvox-of-a-killed-save", "part");
  EXPECT_GT(failEach([this] { lirvox_->saveCurrentBufferToFile(); },
                     [&] {
                       const std::string saved = readFile(caches() / "soundLirvox.dat");
                       EXPECT_TRUE(saved == "old" || saved == whole);
                     }),
            5);
  EXPECT_EQ(readFile(caches() / "soundLirvox.dat"), whole);
  EXPECT_FALSE(std::filesystem::exists(caches() / ".lirvox-of-a-killed-save"));
}

TEST_P(FileFaults, SettingsAreNeverLost) {
  const std::string path = platform_.folder.path("configuration/defaults.json");
  const std::string before = R"({"mine": "kept", "stamp": "old"})";
  writeFile(path, before);
  std::optional<platform::JsonUserDefaults> defaults;
  bool isSet = false;
  bool stored = false;
  EXPECT_GT(failEach(
                [&] {
                  stored = false;
                  isSet = platform::runLogged([&] {
                    defaults.emplace(path);
                    defaults->setString("new", "stamp");
                  });
                  if (isSet) platform::runLogged([&] { stored = defaults->synchronize(); });
                },
                [&] {
                  if (!isSet) return;
                  EXPECT_EQ(defaults->stringForKey("stamp"), "new");
                  const platform::JsonUserDefaults others(path);
                  EXPECT_EQ(others.stringForKey("mine"), "kept");
                  EXPECT_TRUE(!stored || others.stringForKey("stamp") == "new");
                  EXPECT_TRUE(defaults->synchronize());
                  EXPECT_EQ(others.stringForKey("stamp"), "new");
                  writeFile(path, before);
                }),
            5);
  // Without any memory nothing can be said either.
  const bool isSaid = platform_.log->has("could not be stored");
  EXPECT_TRUE(isSaid || GetParam() == Failing::onwards);
  EXPECT_FALSE(std::filesystem::exists(path + ".damaged"));
}

TEST_P(FileFaults, AnUpdateLeavesAWholeDatabaseOrNoneAndTheNextOneHeals) {
  const std::string whole(5000, 'n');
  const auto service = std::make_shared<LocalService>(platform_.scheduler.queue(),
                                                      platform_.folder.path("download"));
  service->publish("g", archiveOf(whole));
  lirvox_->setSession(service);
  std::vector<bool> answers;
  const auto update = [&] {
    lirvox_->downloadDatabaseIfNeeded([&](bool good) {
      const FaultsPaused own;
      answers.push_back(good);
    });
    platform_.scheduler.run();
  };
  const auto prepare = [&] {
    writeFile(databasePath_, "old");
    lirvox_->setDtDbGenerated("");
    answers.clear();
  };
  prepare();
  EXPECT_GT(
      failEach(update,
               [&] {
                 const std::string found = readFile(databasePath_);
                 EXPECT_TRUE(found == "old" || found == whole || found.empty());
                 EXPECT_EQ(found.empty(), !std::filesystem::exists(databasePath_));
                 EXPECT_TRUE(answers.empty() || found == whole);
                 lirvox_->setDtDbGenerated("");
                 update();
                 EXPECT_EQ(lastingFiles(), (Files{{"lirvox/", ""}, {"lirvox/db1.sqlite", whole}}));
                 prepare();
               }),
      20);
  lirvox_->setSession(nullptr);
}

TEST_P(FileFaults, ALocalArchiveReplacesTheDatabaseWholeOrNot) {
  const std::string archive = platform_.folder.path("local.zip");
  writeFile(archive, zipBytes({{"db1.sqlite", "new"}}));
  writeFile(databasePath_, "old");
  bool installed = false;
  EXPECT_GT(failEach([&] { installed = lirvox_->updateDatabasePath(archive); },
                     [&] {
                       const std::string found = readFile(databasePath_);
                       EXPECT_TRUE(installed ? found == "new" : found == "new" || found == "old");
                       writeFile(databasePath_, "old");
                     }),
            10);
  EXPECT_TRUE(installed);
}

TEST_P(FileFaults, ALookupGivesWhatCouldBeReadAndTheNextOneAll) {
  const std::string path = platform_.folder.path("store.sqlite");
  writeFingerprintFile(path, std::vector<FingerprintRow>(3000, {1, 2, 3}));
  LirvoxDatabase store(path);
  std::optional<LirvoxRowMap> map;
  std::optional<std::string> info;
  EXPECT_GT(failEach(
                [&] {
                  map.reset();
                  info.reset();
                  platform::runLogged([&] {
                    map = store.selectFingerprints({{0, 3}});
                    info = store.databaseInfo();
                  });
                },
                [&] {
                  EXPECT_FALSE(map && map->rowCount() > 3000);
                  EXPECT_EQ(store.selectFingerprints({{0, 3}})->rowCount(), 3000U);
                  EXPECT_FALSE(store.databaseInfo()->ends_with(": "));
                }),
            10);
  EXPECT_TRUE(map && info);
}

TEST_P(FileFaults, FoldersThatAreReadOnlyOrVanishHurtNothing) {
  install();
  start();
  deliver(song_.data(), song_.size() - 1);
  std::filesystem::remove(databasePath_);
  EXPECT_EQ(outcomeAfter({0}).size(), 1U);
  EXPECT_EQ(lastingFiles(), (Files{{"lirvox/", ""}})) << "no empty database is made";
  std::filesystem::remove_all(caches());
  install();
  start();
  deliver(song_);
  std::filesystem::remove_all(caches());
  lirvox_->saveCurrentBufferToFile();
  EXPECT_EQ(readFile(caches() / "soundLirvox.dat").size(), 4 * song_.size());
  platform_.scheduler.run();

  const auto usual = platform::current()->directories;
  writeFile(platform_.folder.path("local.zip"), zipBytes({{"db1.sqlite", "new"}}));
  platform_.change([unwritable = "/proc/lirvox"](platform::Platform& services) {  // for anyone
    services.directories =
        std::make_shared<platform::FixedDirectories>(unwritable, unwritable, unwritable);
  });
  lirvox_->setStopNow(false);
  lirvox_->startRecognizeFromFile();
  lirvox_->saveCurrentBufferToFile();
  EXPECT_FALSE(lirvox_->updateDatabasePath(platform_.folder.path("local.zip")));
  platform_.scheduler.advance(std::chrono::seconds(7));
  EXPECT_EQ(delegate_->takeCalls().size(), 2U);
  platform_.change([&](platform::Platform& p) { p.directories = usual; });
  install();
  EXPECT_EQ(outcomeOf(song_), Calls{foundSong_});
}

INSTANTIATE_TEST_SUITE_P(Failing, FileFaults, testing::Values(Failing::once, Failing::onwards));

}  // namespace
}  // namespace lirvox::test
