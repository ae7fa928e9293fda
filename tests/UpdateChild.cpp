// A process that runs one update and may be killed at any moment. Without arguments over
// the network, else from the archive named. Exits with 0 if the database was installed
// or is current, 1 if not, 2 if nobody answered.
#include <chrono>
#include <future>
#include <memory>

#include "lib/DatabaseInstallation.h"
#include "lib/LirvoxWeb.h"
#include "lib/platform/Platform.h"

int main(int argc, char** argv) {
  using namespace lirvox;
  if (argc > 1) return installLocalArchive(argv[1]) ? 0 : 1;
  auto session = platform::current()->makeHttpSession(LirvoxWeb::sessionConfiguration());
  auto answer = std::make_shared<std::promise<bool>>();
  LirvoxWeb::downloadDatabaseIfNeeded(session, "key",
                                      [answer](bool good) { answer->set_value(good); });
  auto future = answer->get_future();
  if (future.wait_for(std::chrono::seconds(20)) != std::future_status::ready) return 2;
  return future.get() ? 0 : 1;
}
