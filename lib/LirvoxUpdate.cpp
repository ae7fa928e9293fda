// The recognizer's side of bringing the database to the device.
#include <utility>

#include "lib/DatabaseInstallation.h"
#include "lib/Lirvox.h"
#include "lib/LirvoxSettings.h"
#include "lib/LirvoxState.h"
#include "lib/LirvoxWeb.h"
#include "lib/platform/Platform.h"
#include "lib/platform/RunTask.h"

namespace lirvox {

void Lirvox::downloadDatabaseIfNeeded(std::function<void(bool)> completionBlock) {
  if (refusesForkedChild()) return;
  // What the system refuses ends the update as any other failure does.
  platform::runLogged([&] {
    LirvoxWeb::downloadDatabaseIfNeeded(session(), userApiKey(), std::move(completionBlock));
  });
}

bool Lirvox::updateDatabasePath(const std::string& path) {
  if (refusesForkedChild()) return false;
  bool installed = false;
  platform::runLogged([&] {
    if (!installLocalArchive(path)) return;
    setDatabase(std::make_shared<LirvoxDatabase>(LirvoxSettings::databasePath()));
    installed = true;
  });
  return installed;
}

std::optional<std::string> Lirvox::dtDbGenerated() const {
  return LirvoxWeb::dtDbGenerated();
}

void Lirvox::setDtDbGenerated(const std::string& dt) {
  LirvoxWeb::setDtDbGenerated(dt);
}

std::string Lirvox::userApiKey() const {
  return state_->read(&State::userApiKey);
}

void Lirvox::setUserApiKey(std::string key) {
  state_->write(&State::userApiKey, std::move(key));
}

std::shared_ptr<platform::HttpSession> Lirvox::session() const {
  if (auto session = state_->read(&State::session)) return session;
  // Made without the lock: a host that makes sessions itself may ask this object for things.
  auto made = platform::current()->makeHttpSession(LirvoxWeb::sessionConfiguration());
  const platform::MutexLock lock(state_->fields);
  if (!state_->session) state_->session = std::move(made);
  return state_->session;
}

void Lirvox::setSession(std::shared_ptr<platform::HttpSession> session) {
  state_->write(&State::session, std::move(session));
}

std::string Lirvox::databasePath() const {
  const std::string path = state_->read(&State::databasePath);
  return path.empty() ? platform::current()->directories->cachesDirectory() + "/db.sqlite" : path;
}

void Lirvox::setDatabasePath(std::string path) {
  state_->write(&State::databasePath, std::move(path));
}

}  // namespace lirvox
