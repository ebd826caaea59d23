// Runs a question over and over and remembers what it took.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace bench {

// Clocks, in seconds. That of this thread's processor time does not count what else the machine does; nor what other processes do
// for this one, which only the wall clock counts.
double ThreadClock();
double WallClock();

// Seconds that `work` takes by a clock.
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
  // Notes one run; a later one of the same size replaces it.
  void Note(const std::string& family, double size, double seconds);

  // Of what was noted of the family so far; 0 with fewer than two sizes.
  double Exponent(const std::string& family) const;

 private:
  std::map<std::string, std::map<double, double>> families_;
};

}  // namespace bench
