// Answers as the program prints them.
#include "tools/Report.h"

#include <iostream>

#include <nlohmann/json.hpp>

#include "tools/Console.h"

namespace lirvox::tools {
namespace {

using Json = nlohmann::ordered_json;

// File names and titles are bytes, and need not be UTF-8.
void print(const Json& json) {
  std::cout << json.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
}

// Adds the members that every answer has.
void describe(Json& json, const Answer& answer, const std::string& title) {
  const auto known = [&](const Json& value) { return answer.recognized ? value : Json(); };
  json["recognized"] = answer.recognized;
  json["track_id"] = known(answer.trackId);
  json["title"] = known(title);
  json["position"] = known(answer.positionInSeconds);
}

// The object for a file.
Json asJson(const std::string& file, const Answer& answer, const std::string& title,
            std::optional<std::int32_t> votes) {
  Json json = {{"file", file}};
  describe(json, answer, title);
  if (votes) json["votes"] = *votes;
  return json;
}

}  // namespace

Report::Report(const std::string& path, const std::string& format)
    : titles_(path), json_(format == "json") {}

void Report::file(const std::string& file, const Answer& answer,
                  std::optional<std::int32_t> votes) const {
  if (json_) {
    print(asJson(file, answer, titles_.of(answer.trackId), votes));
    return;
  }
  std::cout << file << ": ";
  if (answer.recognized) {
    std::cout << titles_.of(answer.trackId) << " at " << clockTime(answer.positionInSeconds);
    if (votes) std::cout << " (" << counted(*votes, "vote") << ')';
  } else {
    std::cout << "not recognized";
  }
  std::cout << std::endl;
}

void Report::failure(const std::string& file, const std::string& reason,
                     std::optional<std::int32_t> votes) const {
  complain(file + ": " + reason);
  if (!json_) return;
  Json json = asJson(file, {}, {}, votes);
  json["error"] = reason;
  print(json);
}

void Report::heard(const Answer& answer) const {
  if (json_) {
    Json json;
    describe(json, answer, titles_.of(answer.trackId));
    json["position_now"] = answer.recognized ? Json(answer.positionNowInSeconds) : Json();
    print(json);
  } else if (answer.recognized) {
    std::cout << titles_.of(answer.trackId) << " at " << clockTime(answer.positionNowInSeconds)
              << std::endl;
  } else {
    std::cout << "not recognized" << std::endl;
  }
}

}  // namespace lirvox::tools
