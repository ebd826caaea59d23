// Clocks, medians and growth exponents.
#include "library/measure.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace bench {

namespace {

double Now(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace

double ThreadClock() { return Now(CLOCK_THREAD_CPUTIME_ID); }
double WallClock() { return Now(CLOCK_MONOTONIC); }

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void Growth::Record(const std::string& family, double size, double seconds) { families_[family][size] = seconds; }

double Growth::Exponent(const std::string& family) const {
  const auto found = families_.find(family);
  if (found == families_.end() || found->second.size() < 2) return 0;
  const auto n = static_cast<double>(found->second.size());
  double sum_x = 0;
  double sum_y = 0;
  double sum_xx = 0;
  double sum_xy = 0;
  for (const auto& [size, seconds] : found->second) {
    const double x = std::log(size);
    const double y = std::log(seconds);
    sum_x += x;
    sum_y += y;
    sum_xx += x * x;
    sum_xy += x * y;
  }
  return (n * sum_xy - sum_x * sum_y) / (n * sum_xx - sum_x * sum_x);
}

}  // namespace bench
