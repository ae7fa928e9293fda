// User defaults in a JSON file.
#pragma once

#include <map>
#include <string>

#include "../Mutex.h"
#include "../UserDefaults.h"

namespace lirvox::platform {

/// One object of strings, replaced as a whole: the file is complete at every moment.
///
/// Values are read from the file when they are asked for, so that processes see each
/// other's changes. A damaged file counts as empty, is logged and renamed to
/// "NAME.damaged".
class JsonUserDefaults : public UserDefaults {
 public:
  explicit JsonUserDefaults(std::string path) : path_(std::move(path)) {}

  std::optional<std::string> stringForKey(const std::string& key) const override;
  void setString(const std::string& value, const std::string& key) override;
  bool synchronize() override;

 private:
  const std::string path_;
  mutable Mutex mutex_;
  std::map<std::string, std::string> unsaved_ LIRVOX_GUARDED_BY(mutex_);
};

}  // namespace lirvox::platform
