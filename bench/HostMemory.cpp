// What a recognition adds to the memory of a small application.
//
//   lirvox_host_memory
//
// Recognises five seconds of track 1 of the generated database (LIRVOX_BENCH_ROWS) a few
// times, and prints what that adds to the resident memory, as lines for bench/figures.py.
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/ChipTune.h"
#include "bench/GeneratedDatabase.h"
#include "bench/InstalledRecognizer.h"

namespace {

using namespace lirvox;

constexpr int kRecognitions = 5;
constexpr std::chrono::milliseconds kUntilPassesHaveEnded{500};  // the answer comes before that
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

// A line of the kernel's account of this process, which counts in KiB.
double statusInMegabytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long value = 0;
    if (word == name && status >> value) return static_cast<double>(value) * 1024 / 1e6;
  }
  return 0;
}

void forgetHighest() {
  std::ofstream("/proc/self/clear_refs") << 5;
}

// Six seconds out of the middle of track 1; nothing when that failed. Another process makes them
// and the database: what that takes, and what it teaches the memory allocator, is not the host's.
platform::MemoryAudioUnit::Samples prepare() {
  constexpr std::size_t kCapture = kCaptureEnd - kCaptureStart;
  constexpr std::size_t kBytes = kCapture * sizeof(std::int32_t);
  void* const shared =
      ::mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) return nullptr;
  const pid_t child = ::fork();
  if (child == 0) {
    bench::GeneratedDatabase::file();
    std::memcpy(shared, bench::chipTune(1, kCaptureEnd).data() + kCaptureStart, kBytes);
    ::_exit(EXIT_SUCCESS);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0) return nullptr;
  const auto* const words = static_cast<const std::int32_t*>(shared);
  auto samples = std::make_shared<const std::vector<std::int32_t>>(words, words + kCapture);
  ::munmap(shared, kBytes);
  return samples;
}

bool recognize(Lirvox& lirvox) {
  const auto listener = std::make_shared<Listener>();
  lirvox.setDelegate(listener);
  lirvox.startRecognize();
  return listener->isRecognized();
}

}  // namespace

int main() {
  const auto samples = prepare();
  if (!samples) return EXIT_FAILURE;
  const auto lirvox = bench::installRecognizer(samples);
  forgetHighest();
  const double before = statusInMegabytes("VmRSS:");
  const bool isRecognized = recognize(*lirvox);
  for (int i = 1; i < kRecognitions; ++i) recognize(*lirvox);
  std::this_thread::sleep_for(kUntilPassesHaveEnded);
  const double after = statusInMegabytes("VmRSS:");
  const double highest = statusInMegabytes("VmHWM:");
  const auto megabytes = std::filesystem::file_size(bench::GeneratedDatabase::file()) / 1'000'000;
  if (!isRecognized) std::cerr << "not recognised\n";
  std::cout << std::fixed << std::setprecision(1) << "memory of a host, database " << megabytes
            << " MB\t+" << after - before << " MB\tbefore\t" << before
            << " MB\t\t+12 MB at 700 MB\n"
            << "the same, at the highest\t+" << highest - before << " MB\n";
  return isRecognized ? EXIT_SUCCESS : EXIT_FAILURE;
}
