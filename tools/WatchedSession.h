// An HTTP session that tells what becomes of its tasks.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "lib/platform/HttpSession.h"
#include "tools/UpdateWatch.h"

namespace lirvox::tools {

/// Hands everything to another session, and its completions to a watch as well.
class WatchedSession : public platform::HttpSession {
 public:
  WatchedSession(std::shared_ptr<platform::HttpSession> session, std::shared_ptr<UpdateWatch> watch)
      : session_(std::move(session)), watch_(std::move(watch)) {}

  void startDataTask(const std::string& url, DataCompletion completion) override;
  void startDownloadTask(const std::string& url, DownloadCompletion completion) override;

 private:
  const std::shared_ptr<platform::HttpSession> session_;
  const std::shared_ptr<UpdateWatch> watch_;
};

}  // namespace lirvox::tools
