// The thread that moves the transfers of one session forward.
#include "lib/platform/linux/CurlLoop.h"

#include <chrono>
#include <new>
#include <utility>

#include <curl/curl.h>
#include <pthread.h>

#include "lib/platform/BlockedSignals.h"
#include "lib/platform/RunTask.h"
#include "lib/platform/linux/CurlLoops.h"
#include "lib/platform/linux/CurlTransfer.h"

namespace lirvox::platform {
namespace {

// Time-outs are noticed this late at most.
constexpr int kTickInMilliseconds = 100;
// So is a new transfer, or the end of the session, when libcurl cannot be woken: for want of
// descriptors or memory.
constexpr int kIdleInMilliseconds = 1000;

CURLM* makeMulti() {
  CurlLoops::prepare();
  CURLM* const multi = curl_multi_init();
  return multi ? multi : throw std::bad_alloc();
}

template <typename Function>
std::thread startWithoutSignals(Function function) {
  const BlockedSignals quiet;
  std::thread thread(std::move(function));
  pthread_setname_np(thread.native_handle(), "lirvox-http");
  return thread;
}

}  // namespace

CurlLoop::CurlLoop(int maximumConnectionsPerHost) : multi_(makeMulti()) {
  curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS,
                    static_cast<long>(maximumConnectionsPerHost));
}

CurlLoop::~CurlLoop() {
  curl_multi_cleanup(multi_);
}

void CurlLoop::add(const std::shared_ptr<CurlLoop>& loop, std::unique_ptr<CurlTransfer> transfer) {
  if (!loop->accept(loop, transfer)) transfer->finish(CURLE_FAILED_INIT);
}

bool CurlLoop::accept(const std::shared_ptr<CurlLoop>& self,
                      std::unique_ptr<CurlTransfer>& transfer) {
  const MutexLock lock(mutex_);
  if (stopping_.load()) return false;
  if (!thread_.joinable()) {
    if (!CurlLoops::enter(self)) return false;
    thread_ = startWithoutSignals([self] { self->run(); });
    isOver_ = false;
  }
  added_.push_back(std::move(transfer));
  curl_multi_wakeup(multi_);
  return true;
}

void CurlLoop::askToStop() {
  const MutexLock lock(mutex_);
  stopping_.store(true);
  curl_multi_wakeup(multi_);
}

void CurlLoop::stop() {
  askToStop();
  std::thread thread;
  {
    const MutexLock lock(mutex_);
    thread.swap(thread_);
  }
  if (!thread.joinable()) return;
  // What a dropped transfer held may have been the session's last owner; the thread
  // then ends by itself, and keeps this object until it does.
  if (thread.get_id() == std::this_thread::get_id()) {
    thread.detach();
  } else {
    thread.join();
  }
}

void CurlLoop::stopBy(std::chrono::steady_clock::time_point deadline) {
  std::thread thread;
  bool isOver = false;
  {
    const MutexLock lock(mutex_);
    // It was this thread that has ended the process: it does not come back to libcurl.
    if (thread_.get_id() == std::this_thread::get_id()) return;
    while (!isOver_ && over_.waitUntil(mutex_, deadline)) continue;
    isOver = isOver_;
    thread.swap(thread_);
  }
  if (!thread.joinable()) return;
  // Joined, if it can be: its very last act is to free what the library for https keeps for it.
  if (isOver) {
    thread.join();
  } else {
    thread.detach();
  }
}

void CurlLoop::run() {
  while (!stopping_.load()) {
    runLogged([this] { takeAdded(); });
    int running = 0;
    curl_multi_perform(multi_, &running);
    runLogged([this] { finishDone(); });
    const int wait = running_.empty() ? kIdleInMilliseconds : kTickInMilliseconds;
    if (curl_multi_poll(multi_, nullptr, 0, wait, nullptr) != CURLM_OK) {
      std::this_thread::sleep_for(std::chrono::milliseconds(kTickInMilliseconds));
    }
  }
  dropAll();
  const MutexLock lock(mutex_);
  isOver_ = true;
  over_.notifyAll();
}

void CurlLoop::dropAll() {
  for (auto& [handle, transfer] : running_) curl_multi_remove_handle(multi_, handle);
  running_.clear();
  decltype(added_) dropped;
  const MutexLock lock(mutex_);
  dropped.swap(added_);
  curl_multi_cleanup(multi_);  // with its connections, which may be secure ones
  multi_ = nullptr;
}

void CurlLoop::takeAdded() {
  decltype(added_) added;
  {
    const MutexLock lock(mutex_);
    added.swap(added_);
  }
  for (auto& transfer : added) {
    void* const handle = transfer->handle();
    const auto& running = running_.emplace(handle, std::move(transfer)).first->second;
    if (curl_multi_add_handle(multi_, handle) == CURLM_OK) continue;
    runLogged([&] { running->finish(CURLE_OUT_OF_MEMORY); });
    running_.erase(handle);
  }
}

void CurlLoop::finishDone() {
  int left = 0;
  while (const CURLMsg* const message = curl_multi_info_read(multi_, &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    CURL* const handle = message->easy_handle;
    const CURLcode result = message->data.result;
    curl_multi_remove_handle(multi_, handle);
    const auto transfer = running_.extract(handle);
    transfer.mapped()->finish(result);
  }
}

}  // namespace lirvox::platform
