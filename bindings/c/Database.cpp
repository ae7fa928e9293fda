// The C interface to databases, and to bringing them to the device.
#include <optional>

#include "bindings/c/Handles.h"
#include "lib/LirvoxSettings.h"

using namespace lirvox;
using namespace lirvox::c;

namespace {

char* ownedCopy(const std::optional<std::string>& text) {
  return text ? c::ownedCopy(*text) : nullptr;
}

}  // namespace

char* lirvox_installed_database_path(void) {
  return guarded<char*>(nullptr, [] { return c::ownedCopy(LirvoxSettings::databasePath()); });
}

lirvox_database* lirvox_database_new(const char* path) {
  return guarded<lirvox_database*>(nullptr, [&] {
    return new lirvox_database{
        std::make_shared<LirvoxDatabase>(path ? path : LirvoxSettings::databasePath())};
  });
}

void lirvox_database_free(lirvox_database* database) {
  delete database;
}

lirvox_status lirvox_set_database(lirvox_recognizer* recognizer, lirvox_database* database) {
  return guarded(
      [&] { recognizerOf(recognizer).setDatabase(database ? database->database : nullptr); });
}

char* lirvox_database_info(lirvox_recognizer* recognizer) {
  return guarded<char*>(nullptr,
                        [&] { return ownedCopy(recognizerOf(recognizer).databaseInfo()); });
}

lirvox_status lirvox_update_database_path(lirvox_recognizer* recognizer, const char* path) {
  return guarded([&] {
    if (recognizerOf(recognizer).updateDatabasePath(required(path, "path"))) return;
    throw Failure(LIRVOX_FAILED, std::string("no database was installed from ") + path);
  });
}

lirvox_status lirvox_set_user_api_key(lirvox_recognizer* recognizer, const char* key) {
  return guarded([&] { recognizerOf(recognizer).setUserApiKey(required(key, "key")); });
}

char* lirvox_user_api_key(lirvox_recognizer* recognizer) {
  return guarded<char*>(nullptr,
                        [&] { return c::ownedCopy(recognizerOf(recognizer).userApiKey()); });
}

lirvox_status lirvox_set_dt_db_generated(lirvox_recognizer* recognizer, const char* dt) {
  return guarded([&] { recognizerOf(recognizer).setDtDbGenerated(required(dt, "dt")); });
}

char* lirvox_dt_db_generated(lirvox_recognizer* recognizer) {
  return guarded<char*>(nullptr,
                        [&] { return ownedCopy(recognizerOf(recognizer).dtDbGenerated()); });
}

lirvox_status lirvox_download_database_if_needed(lirvox_recognizer* recognizer,
                                                 lirvox_update_completion completion, void* context,
                                                 lirvox_release release) {
  return guarded([&] {
    Context owned = makeContext(context, release);
    recognizerOf(recognizer)
        .downloadDatabaseIfNeeded([completion, owned = std::move(owned)](bool good) {
          if (completion) completion(owned.get(), good);
        });
  });
}

lirvox_status lirvox_cancel_download(lirvox_recognizer* recognizer) {
  return guarded([&] { recognizerOf(recognizer).setSession(nullptr); });
}
