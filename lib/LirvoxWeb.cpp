// Fetching the fingerprint database from the recognition service.
#include "lib/LirvoxWeb.h"

#include <filesystem>
#include <utility>

#include "lib/DatabaseInstallation.h"
#include "lib/GenerationReply.h"
#include "lib/LirvoxSettings.h"
#include "lib/platform/Platform.h"

namespace lirvox {
namespace {

using Session = std::shared_ptr<platform::HttpSession>;

constexpr const char* kStampKey = "LirvoxDtDbGenerated";

bool isCurrent(const std::string& dt) {
  std::error_code ignored;
  return LirvoxWeb::dtDbGenerated() == dt &&
         std::filesystem::is_regular_file(LirvoxSettings::databasePath(), ignored);
}

void handleReply(const Session& session, const std::string& apiKey, const std::string& body,
                 const LirvoxWeb::Completion& completionBlock) {
  const auto reply = GenerationReply::parse(body);
  if (!reply) return;
  if (isCurrent(reply->dt)) {
    if (completionBlock) completionBlock(true);
  } else if (reply->url && session) {
    LirvoxWeb::downloadAndUnzipDB(session, apiKey, *reply->url, completionBlock);
    // Before the download has ended, as is meant.
    LirvoxWeb::setDtDbGenerated(reply->dt);
  }
}

}  // namespace

void LirvoxWeb::downloadDatabaseIfNeeded(const Session& session, const std::string& apiKey,
                                         Completion completionBlock) {
  if (!session) return;
  // The key goes in as it is: who hands keys out may rely on it.
  const std::string url =
      LirvoxSettings::apiUrl() + "/api/last_db_generation.php?api_key=" + apiKey;
  session->startDataTask(url, [weakSession = std::weak_ptr(session), apiKey,
                               completionBlock = std::move(completionBlock)](
                                  const std::string& body, const platform::HttpResponse&,
                                  const std::optional<LirvoxError>& error) {
    if (!error) handleReply(weakSession.lock(), apiKey, body, completionBlock);
  });
}

void LirvoxWeb::downloadAndUnzipDB(const Session& session, const std::string&,
                                   const std::string& fileURL, Completion completionBlock) {
  if (!session) return;
  session->startDownloadTask(
      fileURL, [completionBlock = std::move(completionBlock)](const std::string& location,
                                                              const platform::HttpResponse&,
                                                              const std::optional<LirvoxError>&) {
        // Neither error nor status are looked at: without a file there is nothing to
        // copy, and a page that explains an error is no archive.
        if (!location.empty()) installDownloadedArchive(location, completionBlock);
      });
}

std::optional<std::string> LirvoxWeb::dtDbGenerated() {
  return platform::current()->userDefaults->stringForKey(kStampKey);
}

void LirvoxWeb::setDtDbGenerated(const std::string& dt) {
  const auto userDefaults = platform::current()->userDefaults;
  userDefaults->setString(dt, kStampKey);
  userDefaults->synchronize();
}

platform::HttpSessionConfiguration LirvoxWeb::sessionConfiguration() {
  platform::HttpSessionConfiguration configuration;
  configuration.allowsCellularAccess = true;
  configuration.additionalHeaders = {{"Accept", "application/json"}};
  configuration.timeoutForRequest = std::chrono::seconds(30);
  configuration.timeoutForResource = std::chrono::seconds(60);
  configuration.maximumConnectionsPerHost = 1;
  return configuration;
}

}  // namespace lirvox
