// Runs processes with posix_spawn and wait4: no shell, and the kernel's own accounting of each process.
#include "process/run.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "library/measure.h"

namespace bench {
namespace {

constexpr int kMinRounds = 5;
constexpr int kMaxRounds = 201;
constexpr double kSeconds = 4;  // for all rounds of a case; no round begins after that time

double Milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

pid_t Start(const Program& program) {
  std::vector<char*> arguments;
  for (const std::string& argument : program.command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int error = ::posix_spawn(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot start " + program.command.front() + ": " + std::strerror(error));
  return child;
}

double MedianOf(const std::vector<Cost>& costs, double Cost::*figure) {
  std::vector<double> values(costs.size());
  std::transform(costs.begin(), costs.end(), values.begin(), [&](const Cost& cost) { return cost.*figure; });
  return Median(values);
}

}  // namespace

Cost Run(const Program& program) {
  Cost cost;
  rusage usage{};
  int status = 0;
  pid_t child = 0;
  cost.wall_ms = 1e3 * Seconds(WallClock, [&] {
                   child = Start(program);
                   ::wait4(child, &status, 0, &usage);
                 });
  cost.cpu_ms = Milliseconds(usage.ru_utime) + Milliseconds(usage.ru_stime);
  cost.peak_mb = static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
  if (WIFEXITED(status) && WEXITSTATUS(status) == program.status) return cost;
  const std::string end = WIFEXITED(status) ? "status " + std::to_string(WEXITSTATUS(status)) : "a signal";
  throw std::runtime_error(program.name + " ended with " + end + " instead of status " + std::to_string(program.status));
}

std::vector<Cost> Medians(const std::vector<Program>& programs, int& rounds) {
  for (const Program& program : programs) Run(program);
  std::vector<std::vector<Cost>> costs(programs.size());
  double seconds = 0;
  for (rounds = 0; rounds < kMaxRounds && (rounds < kMinRounds || seconds < kSeconds); ++rounds) {
    seconds += Seconds(WallClock, [&] {
      for (std::size_t i = 0; i < programs.size(); ++i) costs[i].push_back(Run(programs[i]));
    });
  }
  std::vector<Cost> medians;
  medians.reserve(costs.size());
  for (const std::vector<Cost>& runs : costs) {
    medians.push_back({MedianOf(runs, &Cost::wall_ms), MedianOf(runs, &Cost::cpu_ms), MedianOf(runs, &Cost::peak_mb)});
  }
  return medians;
}

}  // namespace bench
