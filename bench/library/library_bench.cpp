// The checker on libraries in memory: KorvelModifyTable for every table, each with its own object, like the tool.
//
//   check/FAMILY/PROTOCOL/KIND/LOG/METAS/FIELDS    families: one (table), fields, metas; depth/.../LEVELS
//   threads/...                                    10,000 tables of 20 fields, distributed over 1 and 2 threads
//
// Counters: `check_ns` and `walk_ns` per entry pair (medians of alternating runs), `ratio` of the two, and `exponent` and
// `walk_exponent`, the growth exponents over the family's runs so far. A refused check ends its table, not the run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <optional>

#include "common/modify_table.h"
#include "library/lockstep.h"
#include "library/measure.h"
#include "library/shapes.h"
#include "qmx/qmx_metalib_kernel.h"

namespace bench {
namespace {

// The parameters of a family.
struct Question {
  std::string family;
  qmx::Protocol protocol;
  Kind kind;
  bool has_log;
};

// A category whose bounds reject every record.
LPVESKCATEGORYINST ClosedCategory() {
  static int min_priority = 0;
  static VESKCATEGORYINST category{nullptr, &min_priority};
  return &category;
}

int CreatedAs(const Question& question) { return question.protocol == qmx::Protocol::kTlv ? 2 : 1; }

// Checks every `step`-th table, starting with `first`; returns how many were refused.
int CheckTables(const Pair& pair, const Question& question, std::size_t first = 0, std::size_t step = 1) {
  const LPVESKCATEGORYINST log = question.has_log ? ClosedCategory() : nullptr;
  static const std::string none;
  int refused = 0;
  for (std::size_t i = first; i < pair.tables.size(); i += step) {
    ModifyTable checker;
    refused += checker.KorvelModifyTable(pair.old_lib.get(), pair.new_lib.get(), pair.tables[i].c_str(), 0, CreatedAs(question),
                                         log, none, none, 0) != 0;
  }
  return refused;
}

// Keeps the last pair: families that differ only in the log share it.
const Pair& PairOf(const Shape& shape, const Question& question) {
  struct Kept {
    Shape shape;
    Kind kind;
    qmx::Protocol protocol;
    Pair pair;
  };
  static std::optional<Kept> kept;
  if (!kept || kept->shape != shape || kept->kind != question.kind || kept->protocol != question.protocol) {
    kept.reset();
    kept = Kept{shape, question.kind, question.protocol, MakePair(shape, question.kind, question.protocol)};
  }
  return kept->pair;
}

Growth& TheGrowth() {
  static Growth growth;
  return growth;
}

void NoteGrowth(benchmark::State& state, const char* counter, const std::string& family, double size, double seconds) {
  TheGrowth().Record(family, size, seconds);
  if (const double exponent = TheGrowth().Exponent(family); exponent != 0) state.counters[counter] = exponent;
}

// Check and walk alternate, so that both run under the same conditions; short ones are repeated until the clock's resolution does
// not matter.
void Measure(benchmark::State& state, const Shape& shape, const Question& question, double size) {
  constexpr double kPairsATurn = 20000;
  const Pair& pair = PairOf(shape, question);
  const int repeats = std::max(1, static_cast<int>(kPairsATurn / pair.entry_pairs));
  const int expected_refusals = question.kind == Kind::kOneRefused ? 1 : 0;
  std::vector<double> checks;
  std::vector<double> walks;
  for (const auto& unused : state) {
    static_cast<void>(unused);
    int refused = 0;
    checks.push_back(Seconds(ThreadClock,
                             [&] {
                               for (int i = 0; i < repeats; ++i) refused += CheckTables(pair, question);
                             }) /
                     repeats);
    if (refused != expected_refusals * repeats) state.SkipWithError("another number of tables was refused than should be");
    walks.push_back(Seconds(ThreadClock,
                            [&] {
                              for (int i = 0; i < repeats; ++i)
                                benchmark::DoNotOptimize(Lockstep(pair.old_lib.get(), pair.new_lib.get()));
                            }) /
                    repeats);
    state.SetIterationTime(checks.back());
  }
  const double check = Median(checks);
  const double walk = Median(walks);
  state.SetComplexityN(static_cast<benchmark::IterationCount>(size));
  state.counters["check_ns"] = check * 1e9 / pair.entry_pairs;
  state.counters["walk_ns"] = walk * 1e9 / pair.entry_pairs;
  state.counters["ratio"] = check / walk;
  NoteGrowth(state, "exponent", question.family, size, check);
  NoteGrowth(state, "walk_exponent", question.family + "/walk", size, walk);
}

void RunTables(benchmark::State& state, const Question& question) {
  const Shape shape{static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), 0};
  Measure(state, shape, question, static_cast<double>(shape.metas) * shape.fields);
}

void RunTower(benchmark::State& state, const Question& question) {
  const auto levels = static_cast<int>(state.range(0));
  Measure(state, {1, 0, levels}, question, levels);
}

// Threads share only the libraries.
void RunThreads(benchmark::State& state, const Question& question) {
  static const Pair pair = MakePair({10000, 20, 0}, Kind::kIdentical, qmx::Protocol::kQmx);
  const auto first = static_cast<std::size_t>(state.thread_index());
  const auto step = static_cast<std::size_t>(state.threads());
  for (const auto& unused : state) {
    static_cast<void>(unused);
    if (CheckTables(pair, question, first, step) != 0) state.SkipWithError("a table was refused");
  }
  const auto share = static_cast<std::int64_t>((pair.tables.size() - first + step - 1) / step);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * share);
}

const char* NameOf(qmx::Protocol protocol) { return protocol == qmx::Protocol::kTlv ? "tlv" : "qmx"; }

const char* NameOf(Kind kind) {
  return kind == Kind::kIdentical ? "identical" : kind == Kind::kOneAdded ? "one_added" : "one_refused";
}

template <class Run>
benchmark::internal::Benchmark* Register(const std::string& family, Question question, Run run) {
  question.family =
      family + "/" + NameOf(question.protocol) + "/" + NameOf(question.kind) + (question.has_log ? "/closed_log" : "/no_log");
  const auto body = [question, run](benchmark::State& state) { run(state, question); };
  return benchmark::RegisterBenchmark(question.family.c_str(), body)->Unit(benchmark::kMicrosecond);
}

// As many as a median needs. With a minimum time, a single check of each run would count, and the benchmark would hardly end.
constexpr int kTurns = 25;

void RegisterChecks(const Question& question) {
  Register("check/one", question, RunTables)->Args({1, 20})->UseManualTime()->Iterations(kTurns);
  auto* fields = Register("check/fields", question, RunTables);
  for (const int n : {1000, 10000, 100000, 1000000}) fields->Args({1, n});
  auto* metas = Register("check/metas", question, RunTables);
  for (const int n : {100, 1000, 10000}) metas->Args({n, 100});
  auto* depth = Register("check/depth", question, RunTower);
  for (const int n : {20, 28, 60}) depth->Arg(n);
  for (auto* family : {fields, metas, depth}) family->UseManualTime()->Iterations(kTurns)->Complexity(benchmark::oN);
}

void RegisterAll() {
  for (const auto protocol : {qmx::Protocol::kQmx, qmx::Protocol::kTlv}) {
    for (const auto kind : {Kind::kIdentical, Kind::kOneAdded, Kind::kOneRefused}) {
      RegisterChecks({"", protocol, kind, false});
    }
    RegisterChecks({"", protocol, Kind::kIdentical, true});
  }
  Register("threads", {"", qmx::Protocol::kQmx, Kind::kIdentical, false}, RunThreads)->Threads(1)->Threads(2)->UseRealTime();
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  bench::RegisterAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
}
