// What happens to music on its way to a microphone.
#include "tools/Degradation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "lib/LirvoxSettings.h"
#include "tools/LossyCoding.h"

namespace lirvox::tools {
namespace {

double sampleRate() {
  return LirvoxSettings::sampleRate();
}

// Pink noise by the sum of first-order filters of Paul Kellet.
class PinkNoise {
 public:
  explicit PinkNoise(std::mt19937& random) : random_(random) {}

  double next() {
    static constexpr double kPole[] = {0.99886, 0.99332, 0.96900, 0.86650, 0.55000, -0.76160};
    static constexpr double kGain[] = {0.0555179, 0.0750759, 0.1538520,
                                       0.3104856, 0.5329522, -0.0168980};
    const double white = normal_(random_);
    double sum = white * 0.5362 + last_;
    for (std::size_t i = 0; i < 6; ++i) {
      state_[i] = kPole[i] * state_[i] + white * kGain[i];
      sum += state_[i];
    }
    last_ = white * 0.115926;
    return sum;
  }

 private:
  std::mt19937& random_;
  std::normal_distribution<double> normal_;
  double state_[6] = {};
  double last_ = 0.0;
};

double rootMeanSquare(const Sound& sound) {
  double sum = 0.0;
  for (const double value : sound) sum += value * value;
  return std::sqrt(sum / static_cast<double>(sound.size()));
}

// A Butterworth filter of second order by the bilinear transform.
void filter(Sound& sound, double frequency, bool high) {
  const double c = high ? std::tan(M_PI * frequency / sampleRate())
                        : 1.0 / std::tan(M_PI * frequency / sampleRate());
  const double gain = 1.0 / (1.0 + M_SQRT2 * c + c * c);
  const double sign = high ? -1.0 : 1.0;
  const double back1 = 2.0 * sign * (1.0 - c * c) * gain;
  const double back2 = (1.0 - M_SQRT2 * c + c * c) * gain;
  double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
  for (double& sample : sound) {
    const double y = gain * (sample + 2.0 * sign * x1 + x2) - back1 * y1 - back2 * y2;
    x2 = x1;
    x1 = sample;
    y2 = y1;
    sample = y1 = y;
  }
}

// 300 to 3400 Hz, with 24 dB an octave beyond.
Sound throughTelephone(Sound sound) {
  for (int i = 0; i < 2; ++i) {
    filter(sound, 300.0, true);
    filter(sound, 3400.0, false);
  }
  return sound;
}

// Reflections at random times that die away, together as loud as the direct sound.
Sound inRoom(const Sound& sound, std::mt19937& random) {
  constexpr double kSecondsTo60Decibels = 0.6;
  constexpr double kReflections = 600.0;
  const double length = kSecondsTo60Decibels * sampleRate();
  Sound room = sound;
  // The sum of the squares of all gains is 1.
  const double first = std::sqrt(std::log(1e6) / kReflections);
  for (double i = 0.0; i < kReflections; ++i) {
    const double share = static_cast<double>(random()) / 4294967296.0;
    const double sign = random() % 2 == 0 ? 1.0 : -1.0;
    const double time = (i + share) / kReflections;
    const double gain = sign * first * std::pow(10.0, -3.0 * time);
    const auto delay = static_cast<std::size_t>(time * length) + 1;
    for (std::size_t at = delay; at < room.size(); ++at) room[at] += gain * sound[at - delay];
  }
  return room;
}

// Interpolated with a windowed sinc.
Sound atSpeed(const Sound& sound, double speed) {
  constexpr std::ptrdiff_t kReach = 16;
  Sound played(static_cast<std::size_t>(static_cast<double>(sound.size()) / speed));
  for (std::size_t i = 0; i < played.size(); ++i) {
    const double place = static_cast<double>(i) * speed;
    const auto middle = static_cast<std::ptrdiff_t>(place);
    const auto from = std::max<std::ptrdiff_t>(middle - kReach + 1, 0);
    const auto to = std::min(middle + kReach, static_cast<std::ptrdiff_t>(sound.size()) - 1);
    for (std::ptrdiff_t at = from; at <= to; ++at) {
      const double x = M_PI * (place - static_cast<double>(at));
      const double weight = 0.5 + 0.5 * std::cos(x / static_cast<double>(kReach));
      const double sinc = std::abs(x) < 1e-9 ? 1.0 : std::sin(x) / x;
      played[i] += sound[static_cast<std::size_t>(at)] * sinc * weight;
    }
  }
  return played;
}

Degradation noise(int decibels) {
  const std::string text = std::to_string(decibels);
  return {"noise-" + text, "noise, " + text + " dB", decibels,
          [decibels](const Sound& sound, std::mt19937& random) {
            return withPinkNoise(sound, decibels, random);
          }};
}

// One without chance in it.
Degradation fixed(const std::string& name, const std::string& label,
                  const std::function<Sound(const Sound&)>& apply) {
  return {name, label, {}, [apply](const Sound& sound, std::mt19937&) { return apply(sound); }};
}

}  // namespace

std::vector<std::int32_t> wordsOf(const Sound& sound) {
  std::vector<std::int32_t> words(sound.size());
  std::transform(sound.begin(), sound.end(), words.begin(), [](double sample) {
    return static_cast<std::int32_t>(std::clamp(sample, -2147483648.0, 2147483647.0));
  });
  return words;
}

Sound withPinkNoise(const Sound& sound, double decibels, std::mt19937& random) {
  PinkNoise pink(random);
  Sound mixed(sound.size());
  std::generate(mixed.begin(), mixed.end(), [&] { return pink.next(); });
  const double gain =
      rootMeanSquare(sound) / rootMeanSquare(mixed) * std::pow(10.0, -decibels / 20.0);
  std::transform(sound.begin(), sound.end(), mixed.begin(), mixed.begin(),
                 [gain](double music, double added) { return music + gain * added; });
  return mixed;
}

const std::vector<Degradation>& degradations() {
  static const std::vector<Degradation> all = {
      fixed("clean", "clean", [](const Sound& sound) { return sound; }),
      noise(20),
      noise(15),
      noise(10),
      noise(5),
      noise(0),
      fixed("telephone", "telephone", throughTelephone),
      fixed("coding", "AAC, 16 kbit/s",
            [](const Sound& sound) { return codedAndDecoded(sound, 16'000); }),
      {"room", "room, 0.6 s", {}, inRoom},
      fixed("slower", "1 % slower", [](const Sound& sound) { return atSpeed(sound, 0.99); }),
      fixed("faster", "1 % faster", [](const Sound& sound) { return atSpeed(sound, 1.01); })};
  return all;
}

}  // namespace lirvox::tools
