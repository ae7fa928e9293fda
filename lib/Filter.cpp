// Linear recursive filters along time.
#include "lib/Filter.h"

#include <vector>

#include "lib/Lanes.h"

namespace lirvox {
namespace {

double* advance(double* p, std::size_t bytes) {
  return p + bytes / sizeof(double);
}
const double* advance(const double* p, std::size_t bytes) {
  return p + bytes / sizeof(double);
}

// One sample of one signal. `state` points to its first delay; its delays are `signals` apart.
double step(const double* b, const double* a, double x, double* state, int order,
            std::size_t signals) {
  if (order == 1) return b[0] * x;
  const double y = state[0] + b[0] * x;
  for (int i = 1; i < order - 1; ++i) {
    state[0] = state[signals] + b[i] * x - a[i] * y;
    state += signals;
  }
  state[0] = b[order - 1] * x - a[order - 1] * y;
  return y;
}

// The same with order 2, of as many signals as fill whole lanes. Returns how many.
std::size_t stepInLanes(const double* b, const double* a, const double* x, double* y, double* state,
                        std::size_t signals) {
  const double b0 = b[0];
  const double b1 = b[1];
  const double a1 = a[1];
  std::size_t k = 0;
  for (; k + kLanes <= signals; k += kLanes) {
    const auto in = load<Lanes>(x + k);
    const Lanes out = load<Lanes>(state + k) + b0 * in;
    store(b1 * in - a1 * out, state + k);
    store(out, y + k);
  }
  return k;
}

}  // namespace

void do_filt(double* b, double* a, const double* x, double* y, double* state, int order,
             std::size_t length, std::size_t xStride, std::size_t yStride, std::size_t signals) {
  const double scale = a[0];
  for (int i = 0; i < order; ++i) {
    b[i] /= scale;
    a[i] /= scale;
  }
  for (std::size_t n = 0; n < length; ++n, x = advance(x, xStride), y = advance(y, yStride)) {
    std::size_t k = order == 2 ? stepInLanes(b, a, x, y, state, signals) : 0;
    for (; k < signals; ++k) y[k] = step(b, a, x[k], state + k, order, signals);
  }
}

void lfilter(const double* signal, std::size_t length, double* output, std::size_t stride,
             std::size_t signals) {
  HighPass(signals).apply(signal, length, output, stride);
}

void HighPass::apply(const double* signal, std::size_t length, double* output, std::size_t stride) {
  double b[] = {1.0, -1.0};
  double a[] = {1.0, -0.98};
  const std::size_t strideInBytes = stride * sizeof(double);
  do_filt(b, a, signal, output, state_.data(), 2, length, strideInBytes, strideInBytes,
          state_.size());
}

}  // namespace lirvox
