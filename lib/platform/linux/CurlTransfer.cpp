// One HTTP request on its way.
#include "lib/platform/linux/CurlTransfer.h"

#include <new>
#include <utility>

#include <strings.h>
#include <sys/socket.h>

#include "lib/platform/RunTask.h"

namespace lirvox::platform {
namespace {

constexpr long kMostRedirects = 16;
constexpr long kBufferBytes = 256L << 10;
constexpr std::chrono::milliseconds kReportInterval{200};
constexpr const char* kErrorDomain = "LirvoxHttp";

// libcurl itself would let the connection into every program that the host executes.
curl_socket_t openSocket(void*, curlsocktype, curl_sockaddr* address) {
  return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

}  // namespace

CurlTransfer::CurlTransfer(const std::string& url, const HttpSessionConfiguration& configuration,
                           Sink sink, Finish finish)
    : url_(url),
      timeoutForRequest_(configuration.timeoutForRequest),
      sink_(std::move(sink)),
      finish_(std::move(finish)),
      handle_(curl_easy_init()) {
  if (!handle_) throw std::bad_alloc();
  set(CURLOPT_URL, url_.c_str());
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  set(CURLOPT_FOLLOWLOCATION, 1L);
  set(CURLOPT_MAXREDIRS, kMostRedirects);
  if (!configuration.certificateAuthorities.empty()) {
    set(CURLOPT_CAINFO, configuration.certificateAuthorities.c_str());
  }
  setHeaders(configuration);
  setLimits(configuration);
  setCallbacks();
}

void CurlTransfer::setHeaders(const HttpSessionConfiguration& configuration) {
  for (const auto& [name, value] : configuration.additionalHeaders) {
    // The returned list is the same one, or a new one when there was none.
    curl_slist* const list = curl_slist_append(headers_.get(), (name + ": " + value).c_str());
    if (!headers_) headers_.reset(list);
  }
  set(CURLOPT_HTTPHEADER, headers_.get());
}

void CurlTransfer::setLimits(const HttpSessionConfiguration& configuration) {
  set(CURLOPT_TIMEOUT_MS, static_cast<long>(configuration.timeoutForResource.count()));
  // The time-out of the request is kept by `onProgress`, for connecting as well.
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(configuration.timeoutForRequest.count()));
  set(CURLOPT_BUFFERSIZE, kBufferBytes);
  set(CURLOPT_NOSIGNAL, 1L);
  // A name server that does not answer must not hold up the end of the session.
  set(CURLOPT_QUICK_EXIT, 1L);
}

void CurlTransfer::setCallbacks() {
  set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
  set(CURLOPT_WRITEDATA, this);
  set(CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
  set(CURLOPT_HEADERDATA, this);
  set(CURLOPT_OPENSOCKETFUNCTION, &openSocket);
  set(CURLOPT_XFERINFOFUNCTION, &CurlTransfer::onProgress);
  set(CURLOPT_XFERINFODATA, this);
  set(CURLOPT_NOPROGRESS, 0L);
}

std::size_t CurlTransfer::onBody(char* data, std::size_t, std::size_t count, void* self) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  transfer.lastActivity_ = Clock::now();
  try {
    transfer.sinkError_ = transfer.sink_({data, count});
  } catch (...) {  // libcurl must not be thrown through
    logException();
    transfer.sinkError_ = std::make_error_code(std::errc::io_error);
  }
  return transfer.sinkError_ ? 0 : count;
}

std::size_t CurlTransfer::onHeader(char*, std::size_t, std::size_t count, void* self) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  transfer.lastActivity_ = Clock::now();
  transfer.refuseLeavingHttps();
  return count;
}

void CurlTransfer::refuseLeavingHttps() {
  const char* scheme = nullptr;
  curl_easy_getinfo(handle_.get(), CURLINFO_SCHEME, &scheme);
  if (scheme && ::strcasecmp(scheme, "https") == 0) set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
}

// libcurl calls this on every turn of the loop, except while the transfer waits for
// another one to give up its connection.
int CurlTransfer::onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  const auto now = Clock::now();
  if (!transfer.lastActivity_) transfer.lastActivity_ = now;
  transfer.timedOut_ = now - *transfer.lastActivity_ > transfer.timeoutForRequest_;
  if (transfer.observer_ && now - transfer.lastReport_ >= kReportInterval) {
    transfer.lastReport_ = now;
    runLogged([&] { transfer.observer_(transfer.report()); });
  }
  return transfer.timedOut_ ? 1 : 0;
}

HttpTaskReport CurlTransfer::report() const {
  HttpTaskReport report;
  report.url = url_;
  curl_off_t received = 0;
  curl_off_t expected = -1;
  long status = 0;
  curl_easy_getinfo(handle_.get(), CURLINFO_SIZE_DOWNLOAD_T, &received);
  curl_easy_getinfo(handle_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &expected);
  curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
  report.bytesReceived = received;
  report.bytesExpected = expected;
  report.statusCode = static_cast<int>(status);
  return report;
}

void CurlTransfer::finish(CURLcode result) {
  HttpTaskReport last = report();
  last.ended = true;
  if (result != CURLE_OK) last.error = errorOf(result);
  if (observer_) observer_(last);
  const Finish finish = std::move(finish_);
  finish({last.statusCode}, last.error);
}

LirvoxError CurlTransfer::errorOf(CURLcode result) const {
  if (sinkError_) return writingError(sinkError_);
  const CURLcode cause = timedOut_ ? CURLE_OPERATION_TIMEDOUT : result;
  return {kErrorDomain, static_cast<std::int32_t>(cause), curl_easy_strerror(cause)};
}

LirvoxError CurlTransfer::writingError(const std::error_code& reason) {
  return {kErrorDomain, static_cast<std::int32_t>(CURLE_WRITE_ERROR), reason.message()};
}

}  // namespace lirvox::platform
