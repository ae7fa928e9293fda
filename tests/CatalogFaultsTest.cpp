// Building and publishing databases while operations on files fail, one after the other.
#include "catalog/Catalog.h"
#include "catalog/CatalogError.h"
#include "catalog/CatalogFile.h"
#include "catalog/CatalogSummary.h"
#include "catalog/Publish.h"
#include "tests/support/Faults.h"
#include "tests/support/TemporaryFolder.h"

namespace lirvox::catalog {
namespace {

namespace fs = std::filesystem;

struct CatalogFaults : testing::TestWithParam<test::Failing> {
  std::string path(const std::string& name) const { return folder_.path(name); }

  void index(const std::string& title) const {
    Catalog catalog(path("music.db"), {});
    NewTrack track;
    track.info = {title, "", title, 1.0};
    for (int i = 0; i < 300; ++i) track.rows.push_back({i, 7 * i});
    catalog.add(std::move(track));
    catalog.commit();
  }
  // An operation fails with the one kind of exception that is promised, and leaves only whole
  // files: `check` hears whether it got through.
  int failEach(const std::function<void()>& operation, const std::function<void(bool)>& check) {
    bool done = false;
    return test::failEach(
        GetParam(),
        [&] {
          done = false;
          try {
            operation();
            done = true;
          } catch (const CatalogError&) {
            done = false;
          }
        },
        [&] { check(done); });
  }

  const test::TemporaryFolder folder_;
};

TEST_P(CatalogFaults, ACommitIsWholeOrHasNotBeen) {
  index("one");
  fs::rename(path("music.db"), path("one.db"));
  for (const int before : {0, 1}) {  // tracks
    const auto prepare = [&] {
      fs::remove(path("music.db"));
      fs::remove(path("music.db-journal"));
      if (before > 0) fs::copy_file(path("one.db"), path("music.db"));
    };
    prepare();
    EXPECT_GT(
        failEach([this] { index("two"); },
                 [&](bool done) {
                   const bool exists = fs::exists(path("music.db"));
                   if (exists) expectWritableCatalog(path("music.db"));  // undoes what is half done
                   const auto found = exists ? summarize(path("music.db")) : CatalogSummary();
                   EXPECT_TRUE(found.tracks == before + 1 || (found.tracks == before && !done));
                   EXPECT_EQ(found.rows, 300 * found.tracks);
                   EXPECT_EQ(exists, found.tracks > 0);
                   prepare();
                 }),
        20);
  }
}

TEST_P(CatalogFaults, PublishedArchivesAndRepliesAreWholeOrNotThere) {
  index("one");
  publish(path("music.db"), path("whole"), {"http://a.example", ""});
  const auto sizes = [this](const std::string& folder) {
    std::map<std::string, std::size_t> all;
    for (const auto& [name, content] : test::contents(path(folder))) {
      if (name.find(".lirvox-") == std::string::npos) all[name] = content.size();
    }
    return all;
  };
  const auto whole = sizes("whole");
  EXPECT_GT(failEach(
                [this] {
                  publish(path("music.db"), path("www"), {"http://a.example", ""});
                },
                [&](bool done) {
                  EXPECT_TRUE(!done || sizes("www") == whole);
                  for (const auto& [name, bytes] : fs::exists(path("www")) ? sizes("www") : whole) {
                    EXPECT_EQ(bytes, whole.at(name)) << name;
                  }
                  fs::remove_all(path("www"));
                }),
            20);
}

INSTANTIATE_TEST_SUITE_P(Failing, CatalogFaults,
                         testing::Values(test::Failing::once, test::Failing::onwards));

}  // namespace
}  // namespace lirvox::catalog
