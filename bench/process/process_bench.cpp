// Measures korvelcheck as a process and compares it with minimal programs. bench/README.md describes the figures.
//
//   korvel_process_bench [--all] [--only TEXT] DIRECTORY
//
// Writes schema files to the directory and removes them again; writes process.json there; prints the tables on standard output.
// Exits with 1 if a program could not be run, whatever the figures are.
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "process/cases.h"
#include "process/report.h"
#include "process/run.h"
#include "process/schema_files.h"

namespace bench {
namespace {

struct Wanted {
  bool all = false;
  std::string only;  // part of the names of the cases to run; empty = all
  std::string directory;
};

Wanted ParseArguments(const std::vector<std::string>& arguments) {
  Wanted wanted;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--all") {
      wanted.all = true;
    } else if (arguments[i] == "--only" && i + 1 < arguments.size()) {
      wanted.only = arguments[++i];
    } else if (wanted.directory.empty() && arguments[i].substr(0, 1) != "-") {
      wanted.directory = arguments[i];
    } else {
      throw std::runtime_error("unexpected argument: " + arguments[i]);
    }
  }
  if (wanted.directory.empty()) throw std::runtime_error("usage: korvel_process_bench [--all] [--only TEXT] DIRECTORY");
  return wanted;
}

// The files of a case. Removed at the end of the case.
class Files {
 public:
  Files(const std::string& directory, const Case& measured) {
    for (const bool is_new : {false, true}) {
      paths_.push_back(directory + (is_new ? "/new.xml" : "/old.xml"));
      if (!WriteSchema(paths_.back(), measured.shape, measured.kind, measured.protocol, is_new))
        throw std::runtime_error("cannot write " + paths_.back());
      if (measured.form == Form::kImage) Compile(paths_.back());
    }
  }
  Files(const Files&) = delete;
  Files& operator=(const Files&) = delete;
  ~Files() {
    std::error_code ignored;
    for (const std::string& path : paths_) std::filesystem::remove(path, ignored);
  }

  const std::vector<std::string>& Paths() const { return paths_; }

  double Megabytes() const {
    double bytes = 0;
    for (const std::string& path : paths_) bytes += static_cast<double>(std::filesystem::file_size(path));
    return bytes / 1e6;
  }

 private:
  // Replaces a schema file by its image.
  static void Compile(std::string& path) {
    const std::string image = std::filesystem::path(path).replace_extension(".qmb").string();
    Run({"compile", {KORVELCHECK_PATH, "compile", path, "-o", image}});
    std::filesystem::remove(path);
    path = image;
  }

  std::vector<std::string> paths_;
};

Program OnFiles(const std::string& name, std::vector<std::string> command, const Files& files, int status = 0) {
  command.insert(command.end(), files.Paths().begin(), files.Paths().end());
  return {name, command, status};
}

Result Measure(const Case& measured, const std::string& directory) {
  const Files files(directory, measured);
  const int verdict = measured.kind == Kind::kOneRefused || measured.kind == Kind::kTenthRefused ? 1 : 0;
  const char* const reader = measured.form == Form::kXml ? BOUND_READ_PATH : BOUND_SUM_PATH;
  Result result;
  result.measured = measured;
  result.files_mb = files.Megabytes();
  const std::vector<Cost> costs = Medians({OnFiles("korvelcheck", {KORVELCHECK_PATH, "check"}, files, verdict),
                                           OnFiles("reading", {reader}, files),
                                           {"nothing, shared", {BOUND_SHARED_PATH}},
                                           {"nothing, static", {BOUND_STATIC_PATH}}},
                                          result.rounds);
  result.tool = costs[0];
  result.read = costs[1];
  result.nothing_shared = costs[2];
  result.nothing_static = costs[3];
  return result;
}

void RunAll(const Wanted& wanted) {
  std::vector<Result> results;
  for (const Case& measured : Cases(wanted.all)) {
    const std::string name = NameOf(measured);
    if (name.find(wanted.only) == std::string::npos) continue;
    if (::isatty(STDERR_FILENO) == 1) std::fprintf(stderr, "%s\n", name.c_str());
    results.push_back(Measure(measured, wanted.directory));
  }
  if (results.empty()) throw std::runtime_error("no case has '" + wanted.only + "' in its name");
  std::fputs(Markdown(results).c_str(), stdout);
  std::ofstream json(wanted.directory + "/process.json");
  json << Json(results);
  if (!json.flush()) throw std::runtime_error("cannot write process.json");
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  try {
    bench::RunAll(bench::ParseArguments({argv + 1, argv + argc}));
  } catch (const std::exception& fault) {
    std::fprintf(stderr, "korvel_process_bench: %s\n", fault.what());
    return 1;
  }
}
