// Compares the checker with its plain model: fuzz_check for its own pairs, fuzz_image for images that the verifier accepted.
#include "fuzz/compare_model.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>

#include "fuzz/require.h"
#include "qmx/qmx_metalib_kernel.h"

namespace fuzz {
namespace {

using Paths = std::map<LPQMXMETA, std::uint64_t>;

constexpr std::uint64_t kMaxShownPaths = 2000;

// The number of paths from a structure to itself and to the structures inside it, at most kMaxShownPaths.
std::uint64_t PathsIn(LPQMXMETALIB library, LPQMXMETA meta, Paths& known) {
  if (meta == nullptr) return 0;
  if (const auto found = known.find(meta); found != known.end()) return found->second;
  std::uint64_t paths = 1;
  for (int i = 0; i < qmx_get_entry_num(meta); ++i) {
    paths += PathsIn(library, qmx_get_entry_type_meta(library, qmx_get_entry_by_index(meta, i)), known);
  }
  return known[meta] = std::min(paths, kMaxShownPaths);
}

bool IsSimple(LPQMXMETALIB library) {
  Paths known;
  std::uint64_t paths = 0;
  for (int i = 0; i < qmx_get_meta_num(library); ++i) {
    paths = std::max(paths, PathsIn(library, qmx_get_meta_by_index(library, i), known));
  }
  return paths < kMaxShownPaths;
}

}  // namespace

void RequireModel(const model::Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library,
                  const std::vector<model::CallResult>& results) {
  if (!IsSimple(old_library) || !IsSimple(new_library)) return;
  const model::Results again = model::RunBoth(scenario, old_library, new_library);
  Require(again.checker == results, "repeated calls give the same results");
  if (again.model == results) return;
  std::fputs((model::Print(scenario) + model::PrintDifference(again)).c_str(), stderr);
  Require(false, "the model gives the same results");
}

std::vector<model::Call> EveryCall(LPQMXMETALIB old_library) {
  std::vector<model::Call> calls;
  if (qmx_get_meta_num(old_library) == 0) return calls;
  const std::string table = qmx_get_meta_name(qmx_get_meta_by_index(old_library, 0));
  for (int i = 0; i < static_cast<int>(model::Operation::kEnd); ++i) {
    calls.push_back({.operation = static_cast<model::Operation>(i), .old_table = table, .new_table = table});
    calls.back().server = "3.29.0";
  }
  return calls;
}

}  // namespace fuzz
