// What is heard from when to when, out of one answer after the other.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

namespace lirvox::tools {

/// A part of a recording in which one track goes on, or in which nothing was recognised. All
/// times are in seconds from the beginning of the recording.
struct Stretch {
  double from = 0.0;
  double to = 0.0;
  bool recognized = false;
  std::int32_t trackId = 0;
  double position = 0.0;   ///< in the track at `from`, in seconds
  std::int32_t votes = 0;  ///< the most that a window of it got
  int windows = 0;         ///< that agree
};

/// Joins the answers of windows that follow each other.
class Stretches {
 public:
  /// What a window has of a track.
  struct Sighting {
    std::int32_t trackId;
    double origin;  ///< when the track would have begun
    std::int32_t votes;
    double from;  ///< of the sound that voted for it
    double to;
  };
  using Handler = std::function<void(const Stretch&)>;

  /// Calls `handler` with each stretch once it is over, and with what is between them if it
  /// is `shortestGap` seconds or more.
  Stretches(double shortestGap, Handler handler);

  /// When a track would have begun, by each stretch of it that a window from `from` on may
  /// go on with; the earliest stretch first.
  std::vector<double> originsToGoOnWith(std::int32_t trackId, double from) const;

  /// The next window, which starts no earlier than the one before.
  void add(double from, double to, const std::optional<Sighting>& sighting);
  /// There is no more: the recording ends at `end`.
  void finish(double end);

  bool recognizedAny() const { return recognizedAny_; }

 private:
  struct Open {
    Stretch stretch;
    double origin;  // by the latest window
    double windowsTo;
  };

  static bool mayGoOn(const Open& open, std::int32_t trackId, double from);
  bool extend(double from, double to, const Sighting& sighting);
  void tell(const Stretch& stretch);
  void tellGap(double to);

  const double shortestGap_;
  const Handler handler_;
  std::deque<Open> open_;  // in the order of their beginnings
  double toldTo_ = 0.0;
  bool toldAny_ = false;
  bool recognizedAny_ = false;
};

}  // namespace lirvox::tools
