// Who hears the outcome of a recognition.
#include "lib/LirvoxDelegate.h"

namespace lirvox {

void LirvoxDelegate::didRecognize(std::int32_t, float, float) {}

void LirvoxDelegate::didNotRecognize() {}

}  // namespace lirvox
