// One HTTP request on its way.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include <curl/curl.h>

#include "../HttpSession.h"

namespace lirvox::platform {

/// A request with its time-outs, its redirects and where its body goes. Used by the
/// loop's thread once it was handed over.
class CurlTransfer {
 public:
  using Sink = std::function<std::error_code(std::string_view)>;
  using Finish = std::function<void(HttpResponse, std::optional<LirvoxError>)>;

  CurlTransfer(const std::string& url, const HttpSessionConfiguration& configuration, Sink sink,
               Finish finish);

  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;

  CURL* handle() const { return handle_.get(); }
  void observe(std::function<void(HttpTaskReport)> observer) { observer_ = std::move(observer); }

  /// Tells the outcome. Called once.
  void finish(CURLcode result);

  static LirvoxError writingError(const std::error_code& reason);

 private:
  using Clock = std::chrono::steady_clock;

  template <typename Value>
  void set(CURLoption option, Value value) {
    curl_easy_setopt(handle_.get(), option, value);
  }
  void setLimits(const HttpSessionConfiguration& configuration);
  void setCallbacks();
  void setHeaders(const HttpSessionConfiguration& configuration);

  static std::size_t onBody(char* data, std::size_t, std::size_t count, void* self);
  static std::size_t onHeader(char* data, std::size_t, std::size_t count, void* self);
  static int onProgress(void* self, curl_off_t expected, curl_off_t received, curl_off_t,
                        curl_off_t);
  void refuseLeavingHttps();
  LirvoxError errorOf(CURLcode result) const;
  HttpTaskReport report() const;

  struct FreeHandle {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  };
  struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  const std::string url_;
  const std::chrono::milliseconds timeoutForRequest_;
  const Sink sink_;
  Finish finish_;
  std::function<void(HttpTaskReport)> observer_;
  std::unique_ptr<curl_slist, FreeList> headers_;
  std::unique_ptr<CURL, FreeHandle> handle_;

  std::optional<Clock::time_point> lastActivity_;  // none: waits for a connection
  Clock::time_point lastReport_{};
  bool timedOut_ = false;
  std::error_code sinkError_;
};

}  // namespace lirvox::platform
