// Fetching the fingerprint database from the recognition service.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "LirvoxExport.h"
#include "platform/HttpSession.h"

namespace lirvox {

/// Speaks to the service. Operations return at once and may be called from any thread.
///
/// IMPORTANT: most failures call no completion at all, as is meant. A host that waits
/// for an update needs a time-out of its own. Completions run on the session's queue.
/// Who calls sees to it that no recognition runs while a database is installed; the
/// database object of a recognizer is left alone.
class LIRVOX_EXPORT LirvoxWeb {
 public:
  /// Told whether a good database is installed.
  using Completion = std::function<void(bool)>;

  LirvoxWeb() = delete;

  /// Asks for the current generation and downloads it unless it is the stored one and
  /// the database file exists. Calls `completionBlock` at most once: with true if there
  /// is nothing to do, else like `downloadAndUnzipDB`. The new stamp is stored when the
  /// download begins: after one that fails, a file of the old generation counts as
  /// current until the service has another. A session that is destroyed meanwhile ends
  /// the operation.
  static void downloadDatabaseIfNeeded(const std::shared_ptr<platform::HttpSession>& session,
                                       const std::string& apiKey, Completion completionBlock);

  /// Downloads the archive at `fileURL`, installs the database in it and calls
  /// `completionBlock` with whether it opens. The access key is not used. The folder
  /// of the live database must exist, or be made by the archive.
  static void downloadAndUnzipDB(const std::shared_ptr<platform::HttpSession>& session,
                                 const std::string& apiKey, const std::string& fileURL,
                                 Completion completionBlock);

  /// The stored stamp of the last generation whose download began.
  static std::optional<std::string> dtDbGenerated();
  static void setDtDbGenerated(const std::string& dt);

  /// The session that the service wants: JSON, one connection, 30 s without data, 60 s
  /// in all.
  static platform::HttpSessionConfiguration sessionConfiguration();
};

}  // namespace lirvox
