// Files of user defaults that somebody else wrote.
#include "fuzz/Support.h"
#include "lib/platform/linux/JsonUserDefaults.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using lirvox::fuzz::require;
  static const lirvox::fuzz::QuietPlatform platform;
  static const std::string path = platform.folder.path("defaults.json");
  static const std::string aside = path + ".damaged";
  const std::string key = "LirvoxDtDbGenerated";
  const std::string_view content(reinterpret_cast<const char*>(data), size);
  lirvox::fuzz::overwrite(path, content);

  lirvox::platform::JsonUserDefaults defaults(path);
  const auto stamp = defaults.stringForKey(key);
  const bool isDamaged = !std::filesystem::exists(path);
  require(!isDamaged || (!stamp && lirvox::test::readFile(aside) == content), "damage is kept");
  defaults.setString("2026-05-04", key);
  require(defaults.synchronize(), "a value can be stored");
  require(lirvox::platform::JsonUserDefaults(path).stringForKey(key) == "2026-05-04",
          "a value that was stored is read");
  return 0;
}
