// How much of known music is recognised, and how much answered falsely.
#include "tools/Evaluation.h"

#include <algorithm>
#include <random>
#include <utility>

#include "catalog/CatalogError.h"
#include "lib/LirvoxSettings.h"
#include "tools/AudioDecoder.h"
#include "tools/Console.h"

namespace lirvox::tools {
namespace {

// Echoes and codecs need to have begun before the excerpt does.
constexpr double kLeadInSeconds = 1.0;

std::size_t samplesIn(double seconds) {
  return static_cast<std::size_t>(seconds * LirvoxSettings::sampleRate());
}

// What is read for an excerpt: played faster, it must still be long enough.
double secondsToRead(double longest) {
  return kLeadInSeconds + longest * 1.02 + 0.5;
}

}  // namespace

Evaluation::Evaluation(const std::string& path, std::vector<catalog::ListedTrack> tracks,
                       const EvaluationSettings& settings)
    : settings_(settings),
      longest_(*std::max_element(settings.seconds.begin(), settings.seconds.end())),
      wanted_(samplesIn(secondsToRead(longest_))),
      tracks_(std::move(tracks)),
      database_(path) {
  std::erase_if(tracks_, [this](const catalog::ListedTrack& track) {
    return track.info.durationInSeconds < secondsToRead(longest_) + 1.0;
  });
  for (const double seconds : settings_.seconds) {
    for (const std::int32_t minimum : settings_.minimums) {
      for (const Degradation& way : degradations()) rows_.push_back({seconds, minimum, &way, {}});
    }
  }
  if (!tracks_.empty()) choosePlaces();
}

void Evaluation::choosePlaces() {
  std::mt19937 random(settings_.seed);
  for (int i = 0; i < settings_.excerpts; ++i) {
    const std::size_t track = random() % tracks_.size();
    const double room = tracks_[track].info.durationInSeconds - secondsToRead(longest_) - 0.5;
    const std::size_t start = random() % samplesIn(room);
    excerpts_.push_back({track, start, static_cast<unsigned>(random()), {}});
  }
  std::stable_sort(excerpts_.begin(), excerpts_.end(),
                   [](const Excerpt& a, const Excerpt& b) { return a.track < b.track; });
}

void Evaluation::run(const catalog::ProgressHandler& progress) {
  std::size_t done = 0;
  while (done < excerpts_.size()) {
    // All of one track at once, so that it is decoded once.
    std::vector<Excerpt*> excerpts;
    const std::size_t track = excerpts_[done].track;
    for (std::size_t i = done; i < excerpts_.size() && excerpts_[i].track == track; ++i) {
      excerpts.push_back(&excerpts_[i]);
    }
    read(excerpts);
    for (Excerpt* const excerpt : excerpts) {
      if (!excerpt->samples.empty()) judgeAll(*excerpt);
      excerpt->samples = {};
      progress(static_cast<double>(++done) / static_cast<double>(excerpts_.size()));
    }
  }
}

// Fills in the samples; none where there are fewer than wanted.
void Evaluation::read(const std::vector<Excerpt*>& excerpts) {
  const std::string& path = tracks_[excerpts.front()->track].info.path;
  std::size_t at = 0;
  std::string reason = "shorter than it was";
  try {
    readAudio(path, [&](const std::int32_t* words, std::size_t count) {
      bool more = false;
      for (Excerpt* const excerpt : excerpts) more = take(*excerpt, words, at, count) || more;
      at += count;
      return more;
    });
  } catch (const AudioError& error) {
    reason = error.what();
  }
  const int failedBefore = failed_;
  for (Excerpt* const excerpt : excerpts) {
    if (excerpt->samples.size() == wanted_) continue;
    excerpt->samples.clear();
    ++failed_;
  }
  if (failed_ > failedBefore) complain(path + ": " + reason);
}

// What the excerpt has of the `count` samples at `at`. Whether it lacks more.
bool Evaluation::take(Excerpt& excerpt, const std::int32_t* words, std::size_t at,
                      std::size_t count) const {
  std::vector<std::int32_t>& samples = excerpt.samples;
  const std::size_t next = excerpt.start + samples.size();
  const std::size_t first = std::clamp(next, at, at + count) - at;
  const std::size_t taken = std::min(count - first, wanted_ - samples.size());
  samples.insert(samples.end(), words + first, words + first + taken);
  return samples.size() < wanted_;
}

void Evaluation::judgeAll(const Excerpt& excerpt) {
  const Sound sound(excerpt.samples.begin(), excerpt.samples.end());
  const Truth truth{
      tracks_[excerpt.track].id,
      static_cast<double>(excerpt.start) / LirvoxSettings::sampleRate() + kLeadInSeconds};
  for (std::size_t i = 0; i < degradations().size(); ++i) {
    std::mt19937 random(excerpt.noise);
    judgeSound(degradations()[i].apply(sound, random), truth, i);
  }
}

void Evaluation::judgeSound(const Sound& sound, const Truth& truth, std::size_t degradation) {
  const std::vector<std::int32_t> words = wordsOf(sound);
  const auto begin = words.begin() + static_cast<std::ptrdiff_t>(samplesIn(kLeadInSeconds));
  std::size_t row = degradation;
  for (const double seconds : settings_.seconds) {
    const auto end = begin + static_cast<std::ptrdiff_t>(samplesIn(seconds));
    const std::vector<QueryHash> hashes = hashesOf({begin, end});
    const auto found = database_.selectFingerprints(hashes);
    if (!found) {
      throw catalog::CatalogError(database_.sqlitePath() + ": the database could not be read");
    }
    const PassHits pass = formHits(&*found, hashes);
    for (const std::int32_t minimum : settings_.minimums) {
      judge(pass, truth, minimum, rows_[row].rate);
      row += degradations().size();
    }
  }
}

}  // namespace lirvox::tools
