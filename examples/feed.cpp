// A program with samples of its own: 16-bit stereo at 44100 Hz from standard input.
//
//   ffmpeg -v error -ss 60 -t 5 -i song.ogg -f s16le -ar 44100 -ac 2 - | example_feed
#include <cstdio>
#include <future>
#include <iostream>
#include <vector>

#include <lirvox/Lirvox.h>
#include <lirvox/LirvoxSettings.h>
#include <lirvox/platform/SampleFeed.h>

struct Printer : lirvox::LirvoxDelegate {
  std::promise<void> answered;
  void didRecognize(std::int32_t id, float position, float) override {
    std::cout << "track " << id << " at " << position << " s" << std::endl;
    answered.set_value();
  }
  void didNotRecognize() override {
    std::cout << "not recognized" << std::endl;
    answered.set_value();
  }
};

std::vector<std::int16_t> readStandardInput() {
  std::vector<std::int16_t> samples;
  std::int16_t part[4096];
  while (const std::size_t count = std::fread(part, sizeof *part, std::size(part), stdin)) {
    samples.insert(samples.end(), part, part + count);
  }
  return samples;
}

int main() {
  auto platform = lirvox::platform::systemPlatform("lirvox");  // whose folders to use
  const auto feed = lirvox::platform::SampleFeed::replaceMicrophone(platform);
  lirvox::platform::install(std::move(platform));

  const auto recognizer = lirvox::Lirvox::sharedInstance();
  lirvox::LirvoxError error;
  if (!recognizer->canRecognize(error)) {
    std::cerr << error.localizedDescription << std::endl;
    return 1;
  }
  recognizer->setDatabase(
      std::make_shared<lirvox::LirvoxDatabase>(lirvox::LirvoxSettings::databasePath()));
  const auto printer = std::make_shared<Printer>();
  recognizer->setDelegate(printer);

  const std::vector<std::int16_t> samples = readStandardInput();
  const auto format = lirvox::platform::interleavedPcm(44100, 2, 16);
  if (feed->put(samples.data(), samples.size() / 2, format) != lirvox::platform::audioNoError) {
    std::cerr << "no samples" << std::endl;
    return 1;
  }
  recognizer->setRecordingTime(feed->seconds());  // a capture ends with the samples
  recognizer->startRecognize();
  printer->answered.get_future().wait();
}
