// A platform for tests.
#include "tests/support/TestPlatform.h"

#include <string>
#include <utility>

#include "lib/platform/linux/JsonUserDefaults.h"

namespace lirvox::test {
namespace {

// Folders below the test's own.
class FixedDirectories : public platform::Directories {
 public:
  explicit FixedDirectories(const TemporaryFolder& folder) : folder_(folder.path()) {}
  std::string cachesDirectory() const override { return folder_ / "caches"; }
  std::string configurationDirectory() const override { return folder_ / "configuration"; }
  std::string resourcesDirectory() const override { return folder_ / "resources"; }

 private:
  const std::filesystem::path folder_;
};

}  // namespace

TestPlatform::TestPlatform() : previous_(platform::current()) {
  platform::Platform services = platform::systemPlatform("lirvox-test");
  services.mainQueue = services.globalQueue = scheduler.queue();
  services.makeSerialQueue = [queue = scheduler.queue()](const std::string&) { return queue; };
  services.clock = scheduler.clock();
  services.log = log;
  services.audioSession = std::make_shared<platform::NullAudioSession>();
  services.directories = std::make_shared<FixedDirectories>(folder);
  services.userDefaults =
      std::make_shared<platform::JsonUserDefaults>(folder.path("configuration/defaults.json"));
  platform::install(std::move(services));
}

TestPlatform::~TestPlatform() {
  platform::install(*previous_);
}

void TestPlatform::change(const std::function<void(platform::Platform&)>& change) {
  platform::Platform services = *platform::current();
  change(services);
  platform::install(std::move(services));
}

}  // namespace lirvox::test
