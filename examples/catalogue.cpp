// Builds a catalogue on the device, and recognises against it at once.
//
// The tracks are tunes that the program makes up, and what is recognised is five seconds of one
// of them. To be built along with the library, which brings the catalogue as lirvox_catalog.
#include <algorithm>
#include <cmath>
#include <future>
#include <iostream>
#include <random>
#include <vector>

#include <lirvox/Lirvox.h>
#include <lirvox/LirvoxSettings.h>
#include <lirvox/platform/SampleFeed.h>

#include "catalog/Catalog.h"
#include "catalog/CatalogError.h"
#include "catalog/CatalogSummary.h"
#include "catalog/TrackFingerprinter.h"

namespace catalog = lirvox::catalog;

constexpr int kRate = 11025;  // the catalogue takes samples of this rate only
using Samples = std::vector<std::int32_t>;

// Random notes, each with a few harmonics.
Samples makeTune(unsigned seed, int seconds) {
  std::mt19937 random(seed);
  std::vector<double> mix(static_cast<std::size_t>(seconds * kRate));
  for (std::size_t start = 0; start < mix.size(); start += 600 + random() % 1800) {
    const double hertz = 110.0 * std::exp2(random() % 48 / 12.0);
    for (std::size_t i = start; i < std::min<std::size_t>(mix.size(), start + kRate); ++i) {
      const double t = static_cast<double>(i - start) / kRate;
      for (const int harmonic : {1, 2, 3}) {
        mix[i] += std::exp(-4 * t) / harmonic * std::sin(6.283185 * hertz * harmonic * t);
      }
    }
  }
  Samples samples;
  for (const double value : mix) samples.push_back(static_cast<std::int32_t>(value * 6000));
  return samples;
}

void buildCatalogue(const std::string& path, unsigned tracks) {
  catalog::Catalog catalogue(path, {});
  catalog::TrackFingerprinter fingerprinter(catalogue.rowRule());
  for (unsigned seed = 1; seed <= tracks; ++seed) {
    const Samples tune = makeTune(seed, 20);
    fingerprinter.add(tune.data(), tune.size());  // as often as there are more samples
    const std::string title = "tune " + std::to_string(seed);
    catalog::NewTrack track;
    track.info.title = title;
    track.info.path = title;  // tells tracks apart: one of the same path is replaced
    track.info.durationInSeconds = 20.0;
    track.rows = fingerprinter.finish();
    catalogue.add(std::move(track));
  }
  catalogue.commit();
}

struct Listener : lirvox::LirvoxDelegate {
  std::promise<void> answered;
  void didRecognize(std::int32_t id, float position, float) override {
    const auto titles = catalog::trackTitles(lirvox::LirvoxSettings::databasePath());
    std::cout << "recognized " << titles.at(id) << " at " << position << " s" << std::endl;
    answered.set_value();
  }
  void didNotRecognize() override {
    std::cout << "not recognized" << std::endl;
    answered.set_value();
  }
};

int main() try {
  auto platform = lirvox::platform::systemPlatform("lirvox-example");  // whose folders to use
  const auto feed = lirvox::platform::SampleFeed::replaceMicrophone(platform);
  lirvox::platform::install(std::move(platform));

  const std::string path = lirvox::LirvoxSettings::databasePath();
  buildCatalogue(path, 3);
  std::cout << catalog::summarize(path).tracks << " tracks in " << path << std::endl;

  const auto recognizer = lirvox::Lirvox::sharedInstance();
  recognizer->setDatabase(std::make_shared<lirvox::LirvoxDatabase>(path));
  const auto listener = std::make_shared<Listener>();
  recognizer->setDelegate(listener);
  const Samples tune = makeTune(3, 20);
  feed->put(tune.data() + 9 * kRate, 5 * kRate, lirvox::platform::interleavedPcm(kRate, 1, 32));
  recognizer->startRecognize();
  listener->answered.get_future().wait();
} catch (const catalog::CatalogError& error) {
  std::cerr << error.what() << std::endl;
  return 1;
}
