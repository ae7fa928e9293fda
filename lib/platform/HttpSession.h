// HTTP requests.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "../LirvoxError.h"
#include "../LirvoxExport.h"

namespace lirvox::platform {

/// How far a task of a session has come, for whoever shows progress.
struct HttpTaskReport {
  std::string url;                 ///< that was asked for
  std::int64_t bytesReceived = 0;  ///< of the body
  /// Of the body; -1 while unknown.
  std::int64_t bytesExpected = -1;
  /// Set in the last report of a task, with the outcome.
  bool ended = false;
  int statusCode = 0;
  std::optional<LirvoxError> error;
};

/// What all requests of a session have in common.
struct HttpSessionConfiguration {
  /// May requests use a metered link? For platforms that can tell.
  bool allowsCellularAccess = true;
  /// Sent with every request.
  std::map<std::string, std::string> additionalHeaders;
  /// How long a request may wait for its next byte once it has a connection to work on.
  std::chrono::milliseconds timeoutForRequest{60'000};
  /// How long a task may take in all.
  std::chrono::milliseconds timeoutForResource{7 * 24 * 3'600'000LL};
  /// Further tasks wait.
  int maximumConnectionsPerHost = 6;
  /// Of the body of a download: a longer one is an error. A body that gathers in memory has
  /// a limit of its own.
  std::uint64_t largestDownloadInBytes = std::uint64_t{64} << 30;

  /// Called on the session's queue a few times a second while a task runs, and once
  /// when it has ended. Not needed by the library; a host that wants to show progress
  /// wraps `Platform::makeHttpSession` and sets it there.
  std::function<void(const HttpTaskReport&)> observer;
  /// Certificate authorities to trust, as a PEM file; empty stands for the system's.
  std::string certificateAuthorities;
};

/// What a server has said, apart from the body.
struct HttpResponse {
  /// 0 when no response came.
  int statusCode = 0;
};

/// Runs GET requests in the background.
///
/// Operations may be called from any thread and return at once. Every completion is
/// called once, on the session's own serial queue, never on the caller's thread, and
/// may be the session's last owner. Any status code counts as a response. Redirects
/// are followed, but not from https to http; certificates are checked. Destroying the
/// session cancels what runs: completions that are not due yet are not called.
class LIRVOX_EXPORT HttpSession {
 public:
  /// Gets the whole body, or an error.
  using DataCompletion = std::function<void(const std::string& body, const HttpResponse& response,
                                            const std::optional<LirvoxError>& error)>;
  /// `location` is a temporary file that the completion may remove or move away, and that
  /// is removed when the completion returns; empty
  /// when there is an error.
  using DownloadCompletion =
      std::function<void(const std::string& location, const HttpResponse& response,
                         const std::optional<LirvoxError>& error)>;

  virtual ~HttpSession() = default;

  /// Fetches into memory; a body of more than 16 MiB is an error.
  virtual void startDataTask(const std::string& url, DataCompletion completion) = 0;
  /// Fetches into a file; memory use does not depend on the size. A body of more than
  /// `largestDownloadInBytes` is an error.
  virtual void startDownloadTask(const std::string& url, DownloadCompletion completion) = 0;
};

}  // namespace lirvox::platform
