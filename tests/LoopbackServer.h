// An HTTP server for tests that answers as badly as it is told to.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/support/Test.h"

namespace lirvox::test {

/// One connection of a client. Used on the thread that serves it.
class Connection {
 public:
  explicit Connection(int socket) : socket_(socket) {}

  /// False once the client or the server has gone.
  bool send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }
  void reply(int status, const std::string& body, const std::string& headers = "") const {
    send("HTTP/1.1 " + std::to_string(status) + " X\r\nConnection: close\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n" + headers + "\r\n" + body);
  }
  void waitUntilClosed() const {
    char byte = 0;
    while (::recv(socket_, &byte, 1, 0) > 0) continue;
  }

 private:
  const int socket_;
};

/// Serves every connection on a thread of its own, one request each.
class LoopbackServer {
 public:
  /// `target` is what the client asked for ("/path?query").
  using Handler = std::function<void(const std::string& target, const Connection& connection)>;

  explicit LoopbackServer(Handler handler) : handler_(std::move(handler)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ::bind(listener_, reinterpret_cast<sockaddr*>(&address), length);
    ::listen(listener_, 64);
    ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    url_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    acceptor_ = std::thread([this] { accept(); });
  }

  ~LoopbackServer() {
    ::shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
    for (std::thread& thread : threads_) thread.join();
    for (const int socket : sockets_) ::close(socket);
    ::close(listener_);
  }

  /// Answers like this from now on.
  void setHandler(Handler handler) {
    const std::lock_guard lock(mutex_);
    handler_ = std::move(handler);
  }
  std::string url(const std::string& target = "") const { return url_ + target; }
  /// The heads of all requests so far.
  std::vector<std::string> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

 private:
  void accept() {
    for (int socket = 0; (socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
      sockets_.push_back(socket);
      threads_.emplace_back([this, socket] { serve(socket); });
    }
  }

  void serve(int socket) {
    std::string head;
    for (char byte = 0; head.find("\r\n\r\n") == std::string::npos; head += byte) {
      if (::recv(socket, &byte, 1, 0) <= 0) break;
    }
    Handler handler;
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(head);
      handler = handler_;
    }
    const std::size_t begin = head.find(' ') + 1;
    handler(head.substr(begin, head.find(' ', begin) - begin), Connection(socket));
    ::shutdown(socket, SHUT_RDWR);
  }

  const int listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::string url_;
  mutable std::mutex mutex_;
  Handler handler_;                    // guarded by mutex_
  std::vector<std::string> requests_;  // guarded by mutex_
  std::vector<int> sockets_;  // of all connections ever; the acceptor's, then the destructor's
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

/// Waits, not for ever, for something that another thread does.
class Event {
 public:
  void set() {
    const std::lock_guard lock(mutex_);
    set_ = true;
    changed_.notify_all();
  }
  bool wait() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(20), [this] { return set_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool set_ = false;  // guarded by mutex_
};

}  // namespace lirvox::test
