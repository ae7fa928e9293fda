// An HTTP server for tests that answers as badly as it is told to.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace lirvox::test {

/// One connection of a client. Used on the thread that serves it.
class Connection {
 public:
  Connection(int socket, const std::atomic<bool>& stopping)
      : socket_(socket), stopping_(stopping) {}

  /// False once the client has gone.
  bool send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return !stopping_;
  }
  void reply(int status, const std::string& body, const std::string& headers = "") const {
    send("HTTP/1.1 " + std::to_string(status) + " X\r\nConnection: close\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n" + headers + "\r\n" + body);
  }
  void waitUntilClosed() const {
    char byte = 0;
    while (::recv(socket_, &byte, 1, 0) > 0) {
    }
  }

 private:
  const int socket_;
  const std::atomic<bool>& stopping_;
};

/// Serves every connection on a thread of its own, one request each.
class LoopbackServer {
 public:
  /// `target` is what the client asked for ("/path?query").
  using Handler = std::function<void(const std::string& target, const Connection& connection)>;

  explicit LoopbackServer(Handler handler) : handler_(std::move(handler)) {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    ::listen(listener_, 64);
    socklen_t length = sizeof address;
    ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { accept(); });
  }

  ~LoopbackServer() {
    stopping_ = true;
    ::shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    {
      const std::lock_guard lock(mutex_);
      for (const int socket : open_) ::shutdown(socket, SHUT_RDWR);
    }
    for (std::thread& thread : threads_) thread.join();
    ::close(listener_);
  }

  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  std::string url(const std::string& target = "") const {
    return "http://127.0.0.1:" + std::to_string(port_) + target;
  }
  /// The heads of all requests so far.
  std::vector<std::string> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

 private:
  void accept() {
    for (;;) {
      const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (socket < 0) return;
      const std::lock_guard lock(mutex_);
      open_.push_back(socket);
      threads_.emplace_back([this, socket] { serve(socket); });
    }
  }

  void serve(int socket) {
    std::string head;
    for (char byte = 0; head.find("\r\n\r\n") == std::string::npos;) {
      if (::recv(socket, &byte, 1, 0) <= 0) break;
      head += byte;
    }
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(head);
    }
    const std::size_t begin = head.find(' ') + 1;
    handler_(head.substr(begin, head.find(' ', begin) - begin), Connection(socket, stopping_));
    const std::lock_guard lock(mutex_);
    open_.erase(std::find(open_.begin(), open_.end(), socket));
    ::close(socket);
  }

  const Handler handler_;
  int listener_ = -1;
  int port_ = 0;
  std::atomic<bool> stopping_{false};
  mutable std::mutex mutex_;
  std::vector<int> open_;              // guarded by mutex_
  std::vector<std::string> requests_;  // guarded by mutex_
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

/// Waits for something that another thread does.
class Event {
 public:
  void set() {
    const std::lock_guard lock(mutex_);
    set_ = true;
    changed_.notify_all();
  }
  bool waitFor(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, time, [this] { return set_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool set_ = false;  // guarded by mutex_
};

}  // namespace lirvox::test
