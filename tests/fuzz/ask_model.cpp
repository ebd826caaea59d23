// Holds the checker to its plain model: fuzz_check does with pairs of its own, fuzz_image with what the verifier accepted.
#include "fuzz/ask_model.h"

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

// Ways into a structure and the structures in it, as many as kMaxShownPaths.
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
  std::uint64_t most = 0;
  for (int i = 0; i < qmx_get_meta_num(library); ++i) {
    most = std::max(most, PathsIn(library, qmx_get_meta_by_index(library, i), known));
  }
  return most < kMaxShownPaths;
}

}  // namespace

void RequireModel(const model::Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library,
                  const std::vector<model::Answer>& answers) {
  if (!IsSimple(old_library) || !IsSimple(new_library)) return;
  const model::Answers again = model::Ask(scenario, old_library, new_library);
  Require(again.checker == answers, "the same questions have the same answers");
  if (again.model == answers) return;
  std::fputs((model::Print(scenario) + model::PrintDifference(again)).c_str(), stderr);
  Require(false, "the model gives the same answers");
}

std::vector<model::Question> EveryQuestion(LPQMXMETALIB old_library) {
  std::vector<model::Question> questions;
  if (qmx_get_meta_num(old_library) == 0) return questions;
  const std::string table = qmx_get_meta_name(qmx_get_meta_by_index(old_library, 0));
  for (int i = 0; i < static_cast<int>(model::Operation::kEnd); ++i) {
    questions.push_back({.operation = static_cast<model::Operation>(i), .old_table = table, .new_table = table});
    questions.back().server = "3.29.0";
  }
  return questions;
}

}  // namespace fuzz
