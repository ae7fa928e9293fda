// What an update does, seen through the services that it uses.
#include "tools/UpdateWatch.h"

#include <iomanip>
#include <sstream>
#include <utility>

#include "tools/TerminalLine.h"
#include "tools/WatchedSession.h"

namespace lirvox::tools {
namespace {

using platform::HttpSessionConfiguration;
using platform::HttpTaskReport;

class WatchedLog : public platform::Log {
 public:
  explicit WatchedLog(std::shared_ptr<UpdateWatch> watch) : watch_(std::move(watch)) {}
  void write(std::string_view line) override { watch_->note(std::string(line)); }

 private:
  const std::shared_ptr<UpdateWatch> watch_;
};

void show(TerminalLine& line, const HttpTaskReport& report) {
  constexpr double kMegabyte = 1e6;
  std::ostringstream text;
  text << std::fixed << std::setprecision(1) << "received "
       << static_cast<double>(report.bytesReceived) / kMegabyte;
  if (report.bytesExpected > 0) {
    text << " of " << static_cast<double>(report.bytesExpected) / kMegabyte;
  }
  report.ended ? line.hide() : line.show(text.str() + " MB");
}

}  // namespace

void UpdateWatch::attachTo(platform::Platform& platform) {
  platform.log = std::make_shared<WatchedLog>(shared_from_this());
  platform.makeHttpSession = [watch = shared_from_this(), make = platform.makeHttpSession](
                                 HttpSessionConfiguration configuration) {
    configuration.observer = [line = std::make_shared<TerminalLine>()](
                                 const HttpTaskReport& report) { show(*line, report); };
    return std::make_shared<WatchedSession>(make(configuration), watch);
  };
}

void UpdateWatch::note(const std::string& text) {
  const platform::MutexLock lock(mutex_);
  outcome_.notes.push_back(text);
}

void UpdateWatch::answer(bool good) {
  const platform::MutexLock lock(mutex_);
  answered_ = true;
  outcome_.good = good;
}

void UpdateWatch::taskBegan(bool isDownload) {
  const platform::MutexLock lock(mutex_);
  ++running_;
  outcome_.downloaded = outcome_.downloaded || isDownload;
}

void UpdateWatch::taskEnded(const std::string& otherwise) {
  const platform::MutexLock lock(mutex_);
  --running_;
  if (running_ > 0) return;
  if (!answered_ && outcome_.notes.empty()) outcome_.notes.push_back(otherwise);
  ended_.notifyAll();
}

UpdateOutcome UpdateWatch::wait(std::chrono::duration<double> timeout) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::ceil<Clock::duration>(timeout);
  const platform::MutexLock lock(mutex_);
  while (running_ > 0 && ended_.waitUntil(mutex_, deadline)) continue;
  if (running_ > 0) outcome_.notes.emplace_back("no end within the time-out");
  return outcome_;
}

}  // namespace lirvox::tools
