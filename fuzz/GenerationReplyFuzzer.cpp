// Answers of the service that are no answers.
#include "fuzz/Support.h"
#include "lib/GenerationReply.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using lirvox::fuzz::require;
  const std::string body(reinterpret_cast<const char*>(data), size);
  const auto reply = lirvox::GenerationReply::parse(body);
  require(!reply || body.find("OK") != std::string::npos || body.find('\\') != std::string::npos,
          "a good answer says OK");
  return 0;
}
