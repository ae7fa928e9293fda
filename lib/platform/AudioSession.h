// The audio session: what the application shares with others that use sound.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "../LirvoxError.h"
#include "../LirvoxExport.h"

namespace lirvox::platform {

/// What an application does with sound.
enum class AudioSessionCategory { playback, record, playAndRecord };

/// One of the places from which an input port can take its sound, such as the
/// front or the back microphone.
struct AudioSessionDataSource {
  std::string identifier;  ///< unique within its port
  std::string name;        ///< for people
};

/// A source of sound.
struct AudioSessionPort {
  std::string uniqueIdentifier;                     ///< stays the same as long as the port is there
  std::string name;                                 ///< for people
  bool isMonitor = false;                           ///< hears what an output plays, not a room
  std::vector<AudioSessionDataSource> dataSources;  ///< from which it can take its sound
};

/// The ports that sound takes at this moment.
struct AudioSessionRoute {
  std::vector<AudioSessionPort> inputs;  ///< in use
};

/// The input in use, as far as there is one.
struct AudioSessionInput {
  std::optional<AudioSessionPort> port;              ///< none without a device
  std::optional<AudioSessionDataSource> dataSource;  ///< none when the port has but one
};

/// Sound was taken from the application, or may be used again.
struct AudioSessionInterruption {
  /// Its two ends.
  enum class Type : std::uint32_t { ended = 0, began = 1 };
  /// Bit of `options`: what the interruption stopped should be started again.
  static constexpr std::uint32_t shouldResume = 1;

  Type type = Type::began;    ///< which of the two
  std::uint32_t options = 0;  ///< meaningful when an interruption ends
};

/// Hears of interruptions and route changes. Notifications arrive one at a time
/// and in order, on a thread of the session's choice that is never an audio
/// thread; the observer may start and stop audio units and call the session.
class LIRVOX_EXPORT AudioSessionObserver {
 public:
  virtual ~AudioSessionObserver() = default;
  /// Sound was taken from the application, or may be used again.
  virtual void audioSessionWasInterrupted(const AudioSessionInterruption& interruption) = 0;
  /// Other ports are in use, or are there.
  virtual void audioSessionRouteChanged() = 0;
};

/// The shared session. All operations may be called from any thread but an audio
/// thread and may block for a short time. Those that can fail return false and
/// fill the error.
class LIRVOX_EXPORT AudioSession {
 public:
  AudioSession();
  virtual ~AudioSession() = default;
  AudioSession(const AudioSession&) = delete;
  AudioSession& operator=(const AudioSession&) = delete;

  /// What the application is going to do with sound.
  virtual bool setCategory(AudioSessionCategory category, LirvoxError& error) = 0;
  /// Connects to the sound of the system, or lets go of it.
  virtual bool setActive(bool active, LirvoxError& error) = 0;

  /// The ports in use; without any, an empty route.
  virtual AudioSessionRoute currentRoute() = 0;
  /// All input ports, in use or not.
  virtual std::vector<AudioSessionPort> availableInputs() = 0;
  /// The data source of the input port in use.
  virtual std::optional<AudioSessionDataSource> inputDataSource() = 0;
  /// The first input of the route and its data source: for sessions to which both are one
  /// question. Others need not say how.
  virtual AudioSessionInput currentInput();

  /// Asks for a port; none leaves the choice to the system.
  virtual bool setPreferredInput(const std::optional<AudioSessionPort>& port,
                                 LirvoxError& error) = 0;
  /// Asks for a data source of the input port in use.
  virtual bool setInputDataSource(const AudioSessionDataSource& dataSource, LirvoxError& error) = 0;

  /// Registers an observer, which is not kept alive and is never called again
  /// once it is gone or was removed (a call that is under way may finish).
  void addObserver(std::weak_ptr<AudioSessionObserver> observer);
  void removeObserver(const AudioSessionObserver* observer);

  /// For implementations (and for tests): tell the observers, on this thread.
  void postInterruption(const AudioSessionInterruption& interruption);
  void postRouteChange();

 private:
  struct Observers;

  const std::shared_ptr<Observers> observers_;
};

/// A session without devices, on which every operation succeeds: for hosts that
/// have no sound, or that bring samples of their own.
class LIRVOX_EXPORT NullAudioSession : public AudioSession {
 public:
  /// As in `AudioSession`.
  bool setCategory(AudioSessionCategory, LirvoxError&) override { return true; }
  bool setActive(bool, LirvoxError&) override { return true; }
  AudioSessionRoute currentRoute() override { return {}; }
  std::vector<AudioSessionPort> availableInputs() override { return {}; }
  std::optional<AudioSessionDataSource> inputDataSource() override { return std::nullopt; }
  bool setPreferredInput(const std::optional<AudioSessionPort>&, LirvoxError&) override {
    return true;
  }
  bool setInputDataSource(const AudioSessionDataSource&, LirvoxError&) override { return true; }
};

}  // namespace lirvox::platform
