// The C interface to the platform's services: log, folders, sound.
#include "bindings/c/Handles.h"

using namespace lirvox;
using namespace lirvox::c;

namespace {

class HostLog : public platform::Log {
 public:
  HostLog(lirvox_log log, Context context) : log_(log), context_(std::move(context)) {}
  void write(std::string_view line) override { log_(context_.get(), std::string(line).c_str()); }

 private:
  const lirvox_log log_;
  const Context context_;
};

std::string folder(const char* chosen, const std::string& otherwise) {
  if (!chosen) return otherwise;
  std::string path = chosen;
  if (path.empty() || path.front() != '/') {
    throw Failure(LIRVOX_INVALID_ARGUMENT, "no absolute path: " + path);
  }
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

}  // namespace

lirvox_platform* lirvox_platform_new(const char* application_name) {
  return guarded<lirvox_platform*>(nullptr, [&] {
    return new lirvox_platform{platform::systemPlatform(application_name ? application_name : "")};
  });
}

void lirvox_platform_free(lirvox_platform* platform) {
  delete platform;
}

lirvox_status lirvox_platform_install(const lirvox_platform* platform) {
  return guarded([&] { platform::install(required(platform, "platform")->platform); });
}

lirvox_status lirvox_platform_set_log(lirvox_platform* platform, lirvox_log log, void* context,
                                      lirvox_release release) {
  return guarded([&] {
    Context owned = makeContext(context, release);
    platformOf(platform).log = std::make_shared<HostLog>(required(log, "log"), std::move(owned));
  });
}

lirvox_status lirvox_platform_set_directories(lirvox_platform* platform, const char* caches,
                                              const char* configuration, const char* resources) {
  return guarded([&] {
    platform::Platform& changed = platformOf(platform);
    const auto before = changed.directories;
    changed.directories = std::make_shared<platform::FixedDirectories>(
        folder(caches, before->cachesDirectory()),
        folder(configuration, before->configurationDirectory()),
        folder(resources, before->resourcesDirectory()));
  });
}

lirvox_status lirvox_platform_set_download_progress(lirvox_platform* platform,
                                                    lirvox_download_progress progress,
                                                    void* context, lirvox_release release) {
  return guarded([&] {
    Context owned = makeContext(context, release);
    platform::Platform& changed = platformOf(platform);
    changed.makeHttpSession =
        [make = changed.makeHttpSession, call = required(progress, "progress"),
         owned = std::move(owned)](platform::HttpSessionConfiguration configuration) {
          configuration.observer = [call, owned](const platform::HttpTaskReport& report) {
            call(owned.get(), report.bytesReceived, report.bytesExpected);
          };
          return make(configuration);
        };
  });
}

lirvox_status lirvox_platform_use_no_sound(lirvox_platform* platform) {
  return guarded([&] {
    platform::Platform& changed = platformOf(platform);
    changed.audioSession = std::make_shared<platform::NullAudioSession>();
    changed.makeInputUnit = nullptr;
  });
}
