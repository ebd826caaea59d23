// Measures repeated runs.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace bench {

// Clocks, in seconds. ThreadClock counts only the processor time of this thread: not what other programs use, and not what other
// processes do for it, which only WallClock includes.
double ThreadClock();
double WallClock();

// Seconds that `work` takes according to a clock.
template <class Work>
double Seconds(double (*clock)(), Work work) {
  const double begin = clock();
  work();
  return clock() - begin;
}

// REQUIRES: `values` is not empty.
double Median(std::vector<double> values);

// The growth exponent of a family of runs: the slope of log time over log size, by least squares.
class Growth {
 public:
  // Records one run; a later one with the same size replaces it.
  void Record(const std::string& family, double size, double seconds);

  // Over the runs of the family so far; 0 for fewer than two sizes.
  double Exponent(const std::string& family) const;

 private:
  std::map<std::string, std::map<double, double>> families_;
};

}  // namespace bench
