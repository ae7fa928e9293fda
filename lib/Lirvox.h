// The recognizer: the one object through which a host uses the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LirvoxDatabase.h"
#include "LirvoxDelegate.h"
#include "LirvoxError.h"
#include "LirvoxExport.h"
#include "audio/LirvoxMicrophone.h"
#include "platform/Clock.h"

namespace lirvox {

namespace platform {
class HttpSession;
}

class Capture;
class LirvoxAudioFFT;
class ProcessingPass;
enum class PassState;
struct HistoryInfo;

/// Listens for `recordingTime()` seconds, fingerprints what it hears, looks it up in
/// `database()` and tells `delegate()` the outcome.
///
/// IMPORTANT: a new process starts without a database object, and a network update
/// brings only the file. Before the first recognition, and again after an update, set
/// one on the installed file, or nothing will ever be recognised:
///
///     auto lirvox = Lirvox::sharedInstance();
///     lirvox->setDatabase(std::make_shared<LirvoxDatabase>(LirvoxSettings::databasePath()));
///     lirvox->setDelegate(myDelegate);
///     lirvox->startRecognize();
///
/// There is one recognizer per process; it lives until the process ends. All
/// operations may be called from any thread, from the delegate too. None blocks for
/// long unless it says so. Delegate calls arrive on the platform's main queue.
class LIRVOX_EXPORT Lirvox : public LirvoxMicrophoneAudioDelegate,
                             public std::enable_shared_from_this<Lirvox> {
 public:
  /// The one instance. The first call prepares the audio session.
  static std::shared_ptr<Lirvox> sharedInstance();

  /// Sets the platform's audio session up for recording. Called by the first
  /// `sharedInstance`; failures are logged.
  static void audioSessionInit();

  ~Lirvox() override;
  Lirvox(const Lirvox&) = delete;
  Lirvox& operator=(const Lirvox&) = delete;

  // --- Recognition ---

  /// Starts a capture from the microphone. Does nothing while one runs, or when no
  /// database file is installed (`canRecognize` tells). A capture that has reached its
  /// length no longer runs: a new one may start while its outcome is still on its way,
  /// and both are answered.
  void startRecognize();

  /// Cancels a running capture: the delegate hears nothing of it. A capture that has
  /// reached its length can no longer be cancelled. Returns when the microphone has
  /// stopped.
  void stopRecognize();

  /// Recognises the recording "soundLirvox.dat" among the application's resources, as
  /// if it had been heard, for 4 seconds, and starts a live recognition 2 seconds after.
  /// Without such a recording the outcome is that nothing was recognised. A live capture
  /// that runs ends here, with a lookup of what it heard. After `stopRecognize` nothing is
  /// delivered for the recording, until a `startRecognize`: that is meant.
  void startRecognizeFromFile();

  /// Writes the capture so far to "soundLirvox.dat" in the caches directory, in the place
  /// of an earlier one; nothing when there is none. Failures are not reported. Put among
  /// the application's resources, the file is what `startRecognizeFromFile` replays.
  void saveCurrentBufferToFile() const;

  /// Whether a database file is installed at `LirvoxSettings::databasePath()`; when
  /// not, `error` is set to domain "Lirvox", code 201.
  bool canRecognize(LirvoxError& error) const;

  /// `LirvoxDatabase::databaseInfo` of `database()`; none without a database. Blocks
  /// while the file is read.
  std::optional<std::string> databaseInfo() const;

  // --- Bringing the database to the device ---

  /// Asks the recognition service for the current database and installs it when its stamp
  /// is not the stored one, or no database is there. Returns at once.
  ///
  /// IMPORTANT: most failures call no completion at all, as is meant: a host needs a
  /// time-out of its own. The completion runs on the session's queue. True means that
  /// the new database opens, or that the old one is current and there. `database()` stays as
  /// it was: set a new one.
  void downloadDatabaseIfNeeded(std::function<void(bool)> completionBlock);

  /// Installs the database of a zip archive that holds "db1.sqlite" at its top level, and
  /// sets `database()` to it. False when there is none, with the reason in the log.
  /// Blocks while it unpacks. The archive stays.
  bool updateDatabasePath(const std::string& path);

  /// The generation of the database whose download was begun last; none before the first.
  std::optional<std::string> dtDbGenerated() const;
  void setDtDbGenerated(const std::string& dt);

  /// The host's access key for the service.
  std::string userApiKey() const;
  void setUserApiKey(std::string key);

  /// The HTTP session of updates, made at first use.
  std::shared_ptr<platform::HttpSession> session() const;
  void setSession(std::shared_ptr<platform::HttpSession> session);

  /// "db.sqlite" in the caches directory unless set. Nothing reads it: the database that
  /// is opened is the one at `LirvoxSettings::databasePath()`. That is meant.
  std::string databasePath() const;
  void setDatabasePath(std::string path);

  // --- Settings of the host ---

  /// Receiver of the outcomes. Held strongly, as is meant: set null to release it.
  std::shared_ptr<LirvoxDelegate> delegate() const;
  void setDelegate(std::shared_ptr<LirvoxDelegate> delegate);

  /// The store in which recognitions look things up; null finds nothing.
  std::shared_ptr<LirvoxDatabase> database() const;
  void setDatabase(std::shared_ptr<LirvoxDatabase> database);

  /// Length of a capture in seconds; 0 stands for the default of 5.
  double recordingTime() const;
  void setRecordingTime(double seconds);

  /// The vote count that a result must exceed; 0 stands for the default of 30.
  std::int32_t minimumFindedCnt() const;
  void setMinimumFindedCnt(std::int32_t count);

  // --- State ---

  /// True from a start until the capture has its length or is cancelled. Setting it
  /// false ends a capture early, with a lookup.
  bool isRecording() const;
  void setIsRecording(bool recording);

  /// True once a capture was cancelled, until the next start.
  bool stopNow() const;
  void setStopNow(bool stop);

  /// Set false at every start; for hosts, the recognizer does not read it.
  bool shouldStop() const;
  void setShouldStop(bool stop);

  /// Set 0 at every start; otherwise unused.
  std::uint32_t bufferSizeMax() const;
  void setBufferSizeMax(std::uint32_t size);
  std::uint32_t bufferSizeEnoughForMiniSpectogram() const;
  void setBufferSizeEnoughForMiniSpectogram(std::uint32_t size);

  /// When the last `startRecognize` was; none before the first.
  std::optional<platform::Clock::Date> timeStartListening() const;
  void setTimeStartListening(std::optional<platform::Clock::Date> date);

  /// The capture source of the last start; null before it and after a cancellation.
  std::shared_ptr<LirvoxMicrophone> microphone() const;
  void setMicrophone(std::shared_ptr<LirvoxMicrophone> microphone);

  /// The FFT engine and the spectral history. A pass keeps those it started with.
  std::shared_ptr<LirvoxAudioFFT> fft() const;
  void setFft(std::shared_ptr<LirvoxAudioFFT> fft);
  std::shared_ptr<HistoryInfo> historyInfo() const;
  void setHistoryInfo(std::shared_ptr<HistoryInfo> historyInfo);

  /// A copy of the capture so far: 32-bit native samples, mono, 11025 Hz. None when no
  /// samples are held.
  std::optional<std::vector<std::byte>> bufferAudioData() const;
  /// A copy of the blocks that are analysed already; always the beginning of the
  /// capture and a multiple of 10240 bytes. None before the first.
  std::optional<std::vector<std::byte>> processedBuffer() const;

  // --- For the microphone and the pass ---

  /// Appends a delivery of `bufferSize` samples (buffers[0] holds 32-bit signed
  /// integers, whatever its type says) to the capture, and ends the capture when it
  /// has its length. Called on the audio thread, by one thread at a time.
  void hasAudioReceived(LirvoxMicrophone& microphone, float** buffers, std::uint32_t bufferSize,
                        std::uint32_t numberOfChannels) override;

  /// Stops a microphone that was started while no capture runs, as the end of an
  /// interruption does: nobody would stop it later.
  void changedPlayingState(LirvoxMicrophone& microphone, bool isPlaying) override;

  /// Whether a complete block waits to be analysed.
  bool shouldProcessBuffer() const;

 private:
  struct State;

  Lirvox();
  static void answerNothing();
  void endCapture(const std::weak_ptr<Capture>& capture);
  void endReplay(const std::weak_ptr<Capture>& capture);
  void stopIdleMicrophone();
  void finishPass(ProcessingPass& pass, PassState state);
  std::size_t limitInBytes() const;

  const std::unique_ptr<State> state_;
};

}  // namespace lirvox
