// What live captures cost an application: processor time and wake-ups of the whole process.
//
//   lirvox_live_capture [CAPTURES]
//
// Looks up in the database that `lirvox install` installed. Hears the default input of the sound
// server for some captures of 5 s and prints, tab-separated, the milliseconds of processor time,
// the wake-ups a second and the track of each (0: none). bench/live.py provides the sound.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>

#include <lirvox/Lirvox.h>
#include <lirvox/LirvoxDatabase.h>
#include <lirvox/LirvoxSettings.h>
#include <lirvox/platform/Platform.h>
#include <sys/resource.h>

namespace {

using namespace lirvox;

class Listener : public LirvoxDelegate {
 public:
  void didRecognize(std::int32_t track, float, float) override { answer_.set_value(track); }
  void didNotRecognize() override { answer_.set_value(0); }
  std::int32_t track() { return answer_.get_future().get(); }

 private:
  std::promise<std::int32_t> answer_;
};

double milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) * 1e-3;
}

// Of all threads since the start.
rusage used() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage;
}

}  // namespace

int main(int argc, char** argv) {
  platform::install(platform::systemPlatform("lirvox"));
  const auto recognizer = Lirvox::sharedInstance();
  LirvoxError error;
  if (!recognizer->canRecognize(error)) {
    std::fprintf(stderr, "%s\n", error.localizedDescription.c_str());
    return 1;
  }
  recognizer->setDatabase(std::make_shared<LirvoxDatabase>(LirvoxSettings::databasePath()));
  const int captures = argc > 1 ? std::atoi(argv[1]) : 5;
  for (int i = 0; i < captures; ++i) {
    const auto listener = std::make_shared<Listener>();
    recognizer->setDelegate(listener);
    const rusage before = used();
    recognizer->startRecognize();
    const std::int32_t track = listener->track();
    const rusage after = used();
    const double processor = milliseconds(after.ru_utime) + milliseconds(after.ru_stime) -
                             milliseconds(before.ru_utime) - milliseconds(before.ru_stime);
    std::printf(
        "%.1f\t%.1f\t%d\n", processor,
        static_cast<double>(after.ru_nvcsw - before.ru_nvcsw) / LirvoxSettings::recordTime(),
        track);
    std::fflush(stdout);
  }
}
