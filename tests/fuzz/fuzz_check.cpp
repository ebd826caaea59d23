// The checker on pairs of libraries. Inputs are mutated like schemas: one more field, another key, an older library (mutate.h).
//
// Requires that the plain model gives the same results, that a check changes nothing, and that images of the libraries give the
// same results as the libraries.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/result_codes.h"
#include "fuzz/compare_model.h"
#include "fuzz/mutate.h"
#include "fuzz/require.h"
#include "fuzz/rules_reached.h"
#include "fuzz/scenario_bytes.h"
#include "qmx/image_reading.h"
#include "qmx/qmx_image.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

namespace {

using Results = std::vector<model::CallResult>;

constexpr std::size_t kMaxCalls = 8;

void RequireValidResults(const Results& results) {
  for (const model::CallResult& result : results) {
    fuzz::Require(ResultCodeName(result.code) != nullptr, "a code is a known result code");
    fuzz::Require(result.state.buffer.size() < 1024, "the error text is terminated");
  }
  fuzz::CountRules(results);
}

void RequireSameForImages(const model::Scenario& scenario, const std::string& old_image, const std::string& new_image,
                          const Results& results) {
  const qmx::ImageResult old_library = image::Load(old_image);
  const qmx::ImageResult new_library = image::Load(new_image);
  if (!old_library.metalib || !new_library.metalib) return;  // an invalid state that no image may have
  const auto of_images = model::RunChecker(scenario, old_library.metalib->get(), new_library.metalib->get());
  fuzz::Require(of_images == results, "the image of a library gives the same results as the library");
}

void Check(const model::Scenario& scenario, const qmx::Metalib& old_library, const qmx::Metalib& new_library) {
  const std::string old_image = qmx::WriteImage(old_library);
  const std::string new_image = qmx::WriteImage(new_library);
  const Results results = model::RunChecker(scenario, old_library.get(), new_library.get());
  RequireValidResults(results);
  fuzz::Require(qmx::WriteImage(old_library) == old_image && qmx::WriteImage(new_library) == new_image,
                "a check changes nothing");
  RequireSameForImages(scenario, old_image, new_image, results);
  fuzz::RequireModel(scenario, old_library.get(), new_library.get(), results);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  model::Scenario scenario = fuzz::ScenarioOf(data, size);
  if (scenario.calls.size() > kMaxCalls) scenario.calls.resize(kMaxCalls);
  const auto old_library = model::Build(scenario.old_library);
  const auto new_library = model::Build(scenario.new_library);
  if (old_library && new_library) Check(scenario, *old_library, *new_library);
  return 0;
}

#ifdef KORVEL_FUZZ
// Pairs of inputs are never crossed: without that, runs reached more.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size, unsigned seed) {
  model::Random random(seed);
  if (random.OneIn(8)) return LLVMFuzzerMutate(data, size, max_size);  // changes that no edit of a schema makes
  model::Scenario scenario = fuzz::ScenarioOf(data, size);
  fuzz::Mutate(scenario, random);
  // Cuts off the end of the new library if the result is too long.
  return fuzz::BytesOf(scenario).copy(reinterpret_cast<char*>(data), max_size);
}
#endif
