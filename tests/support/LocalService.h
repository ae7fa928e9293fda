// A recognition service without a network.
#pragma once

#include "Faults.h"
#include "TemporaryFolder.h"
#include "lib/platform/HttpSession.h"
#include "lib/platform/TaskQueue.h"
#include "tests/ZipBytes.h"

namespace lirvox::test {

/// Where archives of a service that makes them at service.example have the database.
inline const std::string kInner = "home/service.example/www/tmp/db1.sqlite";

/// Such an archive.
inline std::string archiveOf(const std::string& database) {
  return zipBytes({{.name = kInner, .data = database, .deflated = true}});
}

/// Publishes one generation and its archive. Answers come on `queue`, each after `delay`.
class LocalService : public platform::HttpSession {
 public:
  LocalService(std::shared_ptr<platform::TaskQueue> queue, std::filesystem::path download,
               std::chrono::nanoseconds delay = {})
      : queue_(std::move(queue)), download_(std::move(download)), delay_(delay) {
    ::setenv("LIRVOX_SERVICE_HOST_FOLDER", "service.example", 1);
  }

  /// What the service does from now on; an empty `archive` stands for a failing download.
  void publish(const std::string& dt, const std::string& archive) {
    const std::lock_guard lock(mutex_);
    reply_ = R"({"Result": "OK", "dt": ")" + dt + R"(", "url": "archive"})";
    archive_ = archive;
  }

  void startDataTask(const std::string&, DataCompletion completion) override {
    queue_->after(delay_, [completion, body = read(reply_)] {
      faultIsDue() ? completion("", {}, kDown) : completion(body, {200}, {});
    });
  }
  void startDownloadTask(const std::string&, DownloadCompletion completion) override {
    queue_->after(delay_, [completion, archive = read(archive_), location = download_] {
      if (archive.empty() || faultIsDue()) return completion("", {}, kDown);
      {
        const FaultsPaused own;
        writeFile(location, archive);
      }
      completion(location, {200}, {});
      const FaultsPaused own;
      std::filesystem::remove(location);
    });
  }

 private:
  inline static const LirvoxError kDown{"network", 1, "down"};

  std::string read(const std::string& field) {
    const std::lock_guard lock(mutex_);
    return field;
  }

  const std::shared_ptr<platform::TaskQueue> queue_;
  const std::filesystem::path download_;
  const std::chrono::nanoseconds delay_;
  std::mutex mutex_;
  std::string reply_;    // guarded by mutex_
  std::string archive_;  // guarded by mutex_
};

}  // namespace lirvox::test
