// The C interface to how loud it is.
#include "bindings/c/Handles.h"

using namespace lirvox;
using namespace lirvox::c;

namespace {

constexpr double kFullScale = 2147483648.0;

}  // namespace

lirvox_meter* lirvox_platform_use_meter(lirvox_platform* platform) {
  return guarded<lirvox_meter*>(nullptr, [&] {
    auto meter = std::make_unique<lirvox_meter>();
    meter->level = platform::MeteredUnit::meterInput(platformOf(platform));
    return meter.release();
  });
}

void lirvox_meter_free(lirvox_meter* meter) {
  delete meter;
}

double lirvox_meter_take_peak(lirvox_meter* meter) {
  return guarded(0.0,
                 [&] { return required(meter, "meter")->level->peak.exchange(0) / kFullScale; });
}

uint64_t lirvox_meter_frames(const lirvox_meter* meter) {
  return guarded(std::uint64_t{0}, [&] { return required(meter, "meter")->level->frames.load(); });
}
