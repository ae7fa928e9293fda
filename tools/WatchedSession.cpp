// An HTTP session that tells what becomes of its tasks.
#include "tools/WatchedSession.h"

#include <nlohmann/json.hpp>

#include "lib/LirvoxSettings.h"

namespace lirvox::tools {
namespace {

using platform::HttpResponse;
using Error = std::optional<LirvoxError>;

// Queries hold access keys, which do not belong on a screen.
std::string withoutQuery(const std::string& url) {
  return url.substr(0, url.find('?'));
}

void noteFailure(UpdateWatch& watch, const std::string& url, const HttpResponse& response,
                 const Error& error) {
  constexpr int kFirstErrorStatus = 400;
  if (error) {
    watch.note(withoutQuery(url) + ": " + error->localizedDescription);
  } else if (response.statusCode >= kFirstErrorStatus) {
    watch.note(withoutQuery(url) + ": status " + std::to_string(response.statusCode));
  }
}

// What a service says instead of "OK", such as that it does not know the key.
void noteRefusal(UpdateWatch& watch, const std::string& body) {
  constexpr bool kThrows = false;
  const auto reply = nlohmann::json::parse(body, nullptr, kThrows);
  const auto result = reply.is_object() ? reply.find("Result") : reply.end();
  if (result == reply.end() || !result->is_string() || *result == "OK") return;
  watch.note("the service answers \"" + result->get<std::string>() + '"');
}

}  // namespace

void WatchedSession::startDataTask(const std::string& url, DataCompletion completion) {
  watch_->taskBegan(false);
  session_->startDataTask(
      url, [watch = watch_, url, completion = std::move(completion)](
               const std::string& body, const HttpResponse& response, const Error& error) {
        noteFailure(*watch, url, response, error);
        if (!error) noteRefusal(*watch, body);
        completion(body, response, error);
        watch->taskEnded(withoutQuery(url) + " names no database");
      });
}

void WatchedSession::startDownloadTask(const std::string& url, DownloadCompletion completion) {
  watch_->taskBegan(true);
  session_->startDownloadTask(
      url, [watch = watch_, url, completion = std::move(completion)](
               const std::string& location, const HttpResponse& response, const Error& error) {
        noteFailure(*watch, url, response, error);
        completion(location, response, error);
        watch->taskEnded(withoutQuery(url) + " holds no database of \"" +
                         LirvoxSettings::serviceHostFolder() + '"');
      });
}

}  // namespace lirvox::tools
