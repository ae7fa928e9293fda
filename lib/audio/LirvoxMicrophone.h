#pragma once
#include <cstdint>
#include <memory>
namespace lirvox {
class LirvoxMicrophone;
class LirvoxMicrophoneDelegate {
 public:
  virtual ~LirvoxMicrophoneDelegate() = default;
  virtual void hasAudioReceived(LirvoxMicrophone&, float**, std::uint32_t, std::uint32_t) {}
};
class LirvoxMicrophone {
 public:
  static std::shared_ptr<LirvoxMicrophone> microphoneWithDelegate(
      std::weak_ptr<LirvoxMicrophoneDelegate>) {
    return nullptr;
  }
  void startFetchingAudio() {}
  void stopFetchingAudio() {}
};
}  // namespace lirvox
