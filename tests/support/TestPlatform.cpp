// A platform for tests.
#include "tests/support/TestPlatform.h"

#include "lib/platform/linux/JsonUserDefaults.h"

namespace lirvox::test {

void drain(platform::TaskQueue& queue) {
  std::promise<void> reached;
  queue.async([&] { reached.set_value(); });
  reached.get_future().wait();
}

TestPlatform::TestPlatform() : previous_(platform::current()) {
  platform::Platform services = platform::systemPlatform("lirvox-test");
  services.mainQueue = services.globalQueue = scheduler.queue();
  services.makeSerialQueue = [queue = scheduler.queue()](const std::string&) { return queue; };
  services.clock = scheduler.clock();
  services.log = log;
  services.audioSession = std::make_shared<platform::NullAudioSession>();
  services.directories = std::make_shared<platform::FixedDirectories>(
      folder.path("caches"), folder.path("configuration"), folder.path("resources"));
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

void TestPlatform::useRealQueues() {
  change([system = platform::systemPlatform()](platform::Platform& services) {
    services.mainQueue = system.mainQueue;
    services.globalQueue = system.globalQueue;
  });
}

}  // namespace lirvox::test
