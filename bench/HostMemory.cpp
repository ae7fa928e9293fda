// What a recognition adds to the memory of a small application.
//
//   lirvox_host_memory
//
// Recognises five seconds of track 1 of the generated database (LIRVOX_BENCH_ROWS) a few
// times, and prints what that adds to the resident memory, as lines for bench/figures.py.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <malloc.h>
#include <unistd.h>

#include "bench/ChipTune.h"
#include "bench/GeneratedDatabase.h"
#include "bench/InstalledRecognizer.h"

namespace {

using namespace lirvox;

constexpr int kRecognitions = 5;
constexpr std::size_t kCaptureStart = 100 * 11025;
constexpr std::size_t kCaptureEnd = 106 * 11025;

class Listener : public LirvoxDelegate {
 public:
  void didRecognize(std::int32_t, float, float) override { answer_.set_value(true); }
  void didNotRecognize() override { answer_.set_value(false); }
  bool isRecognized() { return answer_.get_future().get(); }

 private:
  std::promise<bool> answer_;
};

// A line of the kernel's account of this process, in kB.
long statusInKilobytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long value = 0;
    if (word == name && status >> value) return value;
  }
  return 0;
}

void forgetHighest() {
  std::ofstream("/proc/self/clear_refs") << 5;
}

// Six seconds out of the middle of track 1.
platform::MemoryAudioUnit::Samples music() {
  std::vector<std::int32_t> words = bench::chipTune(1, kCaptureEnd);
  words.erase(words.begin(), words.begin() + kCaptureStart);
  return std::make_shared<const std::vector<std::int32_t>>(std::move(words));
}

bool recognize(Lirvox& lirvox) {
  const auto listener = std::make_shared<Listener>();
  lirvox.setDelegate(listener);
  lirvox.startRecognize();
  return listener->isRecognized();
}

}  // namespace

int main() {
  const auto lirvox = bench::installRecognizer(music());
  ::malloc_trim(0);
  forgetHighest();
  const long before = statusInKilobytes("VmRSS:");
  const bool isRecognized = recognize(*lirvox);
  for (int i = 1; i < kRecognitions; ++i) recognize(*lirvox);
  const long after = statusInKilobytes("VmRSS:");
  const long highest = statusInKilobytes("VmHWM:");
  const auto megabytes =
      std::filesystem::file_size(bench::GeneratedDatabase::shared().path()) / 1'000'000;
  if (!isRecognized) std::cerr << "not recognised\n";
  std::cout << std::fixed << std::setprecision(1) << "memory of a host, database " << megabytes
            << " MB\t+" << static_cast<double>(after - before) / 1000 << " MB\tbefore\t"
            << static_cast<double>(before) / 1000 << " MB\t\t+12 MB at 700 MB\n"
            << "the same, at the highest\t+" << static_cast<double>(highest - before) / 1000
            << " MB\n";
  return isRecognized ? EXIT_SUCCESS : EXIT_FAILURE;
}
