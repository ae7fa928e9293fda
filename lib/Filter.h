// Linear recursive filters along time.
#pragma once

#include <cstddef>
#include <vector>

namespace lirvox {

/// The direct-form-II-transposed filter with coefficients b and a, `order` of each
/// (Oppenheim and Schafer, "Discrete-Time Signal Processing"): divides all by a[0],
/// then turns `length` samples of x into as many of y.
///
/// `signals` independent signals lie side by side in x and y and are filtered
/// abreast, successive samples of each `xStride` and `yStride` bytes apart. `state`
/// holds (order - 1) * signals values, the delays of all signals one delay after the
/// other, and is updated. x and y may be the same. Allocates nothing.
void do_filt(double* b, double* a, const double* x, double* y, double* state, int order,
             std::size_t length, std::size_t xStride, std::size_t yStride, std::size_t signals = 1);

/// The high-pass y[n] = x[n] - x[n-1] + 0.98 y[n-1] from a zero state, over
/// `length` samples of each of `signals` signals that lie side by side; successive
/// samples are `stride` doubles apart. `signal` and `output` may be the same.
void lfilter(const double* signal, std::size_t length, double* output, std::size_t stride,
             std::size_t signals = 1);

/// The high-pass of `lfilter`, over signals that come in parts.
class HighPass {
 public:
  explicit HighPass(std::size_t signals) : state_(signals) {}

  /// Filters the next `length` samples of each signal, laid out as for `lfilter`.
  void apply(const double* signal, std::size_t length, double* output, std::size_t stride);

 private:
  std::vector<double> state_;
};

}  // namespace lirvox
