// Recursive filters, against responses worked out by hand.
#include <vector>

#include <gtest/gtest.h>

#include "lib/Filter.h"

namespace lirvox {
namespace {

using Values = std::vector<double>;

void expectNear(const Values& values, const Values& expected) {
  ASSERT_EQ(values.size(), expected.size());
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_NEAR(values[i], expected[i], 1e-14) << i;
}

TEST(Lfilter, LetsChangesThroughAndForgetsThemSlowly) {
  Values impulse = {1, 0, 0, 0};
  lfilter(impulse.data(), 4, impulse.data(), 1);
  expectNear(impulse, {1, -0.02, -0.0196, -0.019208});
  const Values step = {3, 3, 3};
  Values output(3);
  lfilter(step.data(), 3, output.data(), 1);
  expectNear(output, {3, 2.94, 2.8812});
}

TEST(Lfilter, FiltersSignalsSideBySideEachByItself) {
  // Two signals and a neighbour that is not filtered.
  Values work = {1, 3, 100, 0, 3, 200, 0, 3, 300};
  lfilter(work.data(), 3, work.data(), 3, 2);
  expectNear(work, {1, 3, 100, -0.02, 2.94, 200, -0.0196, 2.8812, 300});
}

TEST(DoFilt, NormalisesCoefficientsAndKeepsItsStateBetweenCalls) {
  Values b = {2, 1, 0.5};
  Values a = {2, -1, 0.5};
  Values state(2);
  const Values impulse = {1, 9, 0, 9, 0, 9, 0, 9, 0, 9};  // every other value is not the signal's
  Values output(5);
  do_filt(b.data(), a.data(), impulse.data(), output.data(), state.data(), 3, 2, 16, 8);
  expectNear(b, {1, 0.5, 0.25});
  expectNear(a, {1, -0.5, 0.25});
  do_filt(b.data(), a.data(), impulse.data() + 4, output.data() + 2, state.data(), 3, 3, 16, 8);
  expectNear(output, {1, 1, 0.5, 0, -0.125});
}

TEST(DoFilt, OnlyScalesWhenTheOrderIsOne) {
  Values b = {6};
  Values a = {4};
  const Values x = {1, -2, 3};
  Values y(3);
  do_filt(b.data(), a.data(), x.data(), y.data(), nullptr, 1, 3, 8, 8);
  expectNear(y, {1.5, -3, 4.5});
}

}  // namespace
}  // namespace lirvox
