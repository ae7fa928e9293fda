// The C interface to the recognizer.
#include "bindings/c/Handles.h"
#include "bindings/c/Inputs.h"

using namespace lirvox;
using namespace lirvox::c;

static_assert(LIRVOX_VERSION_NUMBER == LIRVOX_PROJECT_VERSION_NUMBER, "lirvox_c.h states another");

namespace {

class HostDelegate : public LirvoxDelegate {
 public:
  HostDelegate(lirvox_did_recognize did_recognize, lirvox_did_not_recognize did_not_recognize,
               Context context)
      : did_recognize_(did_recognize),
        did_not_recognize_(did_not_recognize),
        context_(std::move(context)) {}

  void didRecognize(std::int32_t trackId, float absolute, float relative) override {
    if (did_recognize_) did_recognize_(context_.get(), trackId, absolute, relative);
  }
  void didNotRecognize() override {
    if (did_not_recognize_) did_not_recognize_(context_.get());
  }

 private:
  const lirvox_did_recognize did_recognize_;
  const lirvox_did_not_recognize did_not_recognize_;
  const Context context_;
};

void requireDatabase(const Lirvox& recognizer) {
  LirvoxError error;
  if (recognizer.canRecognize(error)) return;
  throw Failure(LIRVOX_NO_DATABASE, error.localizedDescription);
}

}  // namespace

const char* lirvox_version(void) {
  return LIRVOX_PROJECT_VERSION;
}

uint32_t lirvox_version_number(void) {
  return LIRVOX_PROJECT_VERSION_NUMBER;
}

lirvox_recognizer* lirvox_shared_instance(void) {
  return guarded<lirvox_recognizer*>(nullptr, [] {
    // Never destroyed, as the recognizer itself.
    static auto* const shared = new lirvox_recognizer{Lirvox::sharedInstance()};
    return shared;
  });
}

lirvox_status lirvox_set_delegate(lirvox_recognizer* recognizer, lirvox_did_recognize did_recognize,
                                  lirvox_did_not_recognize did_not_recognize, void* context,
                                  lirvox_release release) {
  return guarded([&] {
    Context owned = makeContext(context, release);
    Lirvox& lirvox = recognizerOf(recognizer);
    const bool none = !did_recognize && !did_not_recognize;
    lirvox.setDelegate(
        none ? nullptr
             : std::make_shared<HostDelegate>(did_recognize, did_not_recognize, std::move(owned)));
  });
}

lirvox_status lirvox_set_recording_time(lirvox_recognizer* recognizer, double seconds) {
  return guarded([&] { recognizerOf(recognizer).setRecordingTime(seconds); });
}

double lirvox_recording_time(lirvox_recognizer* recognizer) {
  return guarded(0.0, [&] { return recognizerOf(recognizer).recordingTime(); });
}

lirvox_status lirvox_set_minimum_finded_cnt(lirvox_recognizer* recognizer, int32_t count) {
  return guarded([&] { recognizerOf(recognizer).setMinimumFindedCnt(count); });
}

int32_t lirvox_minimum_finded_cnt(lirvox_recognizer* recognizer) {
  return guarded(std::int32_t{0}, [&] { return recognizerOf(recognizer).minimumFindedCnt(); });
}

lirvox_status lirvox_can_recognize(lirvox_recognizer* recognizer) {
  return guarded([&] { requireDatabase(recognizerOf(recognizer)); });
}

lirvox_status lirvox_start_recognize(lirvox_recognizer* recognizer) {
  return guarded([&] {
    Lirvox& lirvox = recognizerOf(recognizer);
    if (lirvox.isRecording()) return;
    // A start without a database would be silent, and one without an input the process's end.
    requireDatabase(lirvox);
    requireInput();
    lirvox.startRecognize();
  });
}

lirvox_status lirvox_stop_recognize(lirvox_recognizer* recognizer) {
  return guarded([&] { recognizerOf(recognizer).stopRecognize(); });
}

lirvox_status lirvox_finish_recognize(lirvox_recognizer* recognizer) {
  return guarded([&] { recognizerOf(recognizer).setIsRecording(false); });
}

bool lirvox_is_recording(lirvox_recognizer* recognizer) {
  return guarded(false, [&] { return recognizerOf(recognizer).isRecording(); });
}

lirvox_status lirvox_start_recognize_from_file(lirvox_recognizer* recognizer) {
  return guarded([&] { recognizerOf(recognizer).startRecognizeFromFile(); });
}

lirvox_status lirvox_save_current_buffer_to_file(lirvox_recognizer* recognizer) {
  return guarded([&] { recognizerOf(recognizer).saveCurrentBufferToFile(); });
}
