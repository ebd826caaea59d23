// Runs a question over and over and remembers what it took.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace bench {

// Processor time of this thread so far, in seconds: the wall clock would count what else the machine does.
double ThreadSeconds();

// Seconds that `work` takes.
template <class Work>
double Seconds(Work work) {
  const double begin = ThreadSeconds();
  work();
  return ThreadSeconds() - begin;
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
