// HTTP requests with libcurl.
#pragma once

#include <memory>
#include <string>
#include <thread>

#include "../HttpSession.h"
#include "../TaskQueue.h"

namespace lirvox::platform {

class CurlLoop;
class CurlTransfer;

/// Runs its transfers on one thread of its own, which starts with the first task.
class CurlHttpSession : public HttpSession {
 public:
  /// Completions run on `queue`, which must be serial. Downloads gather in
  /// `temporaryFolder`, which is made when missing.
  CurlHttpSession(HttpSessionConfiguration configuration, std::shared_ptr<TaskQueue> queue,
                  std::string temporaryFolder);
  ~CurlHttpSession() override;

  void startDataTask(const std::string& url, DataCompletion completion) override;
  void startDownloadTask(const std::string& url, DownloadCompletion completion) override;

 private:
  void start(std::unique_ptr<CurlTransfer> transfer);

  const HttpSessionConfiguration configuration_;
  const std::shared_ptr<TaskQueue> queue_;
  const std::string temporaryFolder_;
  const std::shared_ptr<CurlLoop> loop_;
};

}  // namespace lirvox::platform
