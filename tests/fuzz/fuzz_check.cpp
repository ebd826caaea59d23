// The checker on pairs of libraries. A try is changed as a schema is: a field more, another key, an older library (mutate.h).
//
// The plain model must give the same answers, asking changes nothing, and the image of a library is answered about as the
// library.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/result_codes.h"
#include "fuzz/ask_model.h"
#include "fuzz/mutate.h"
#include "fuzz/require.h"
#include "fuzz/rules_reached.h"
#include "fuzz/scenario_bytes.h"
#include "qmx/image_reading.h"
#include "qmx/qmx_image.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

namespace {

using Answers = std::vector<model::Answer>;

constexpr std::size_t kMostQuestions = 8;

void RequireAnswers(const Answers& answers) {
  for (const model::Answer& answer : answers) {
    fuzz::Require(ResultCodeName(answer.code) != nullptr, "a code is one of the list");
    fuzz::Require(answer.state.buffer.size() < 1024, "a text has an end");
  }
  fuzz::CountRules(answers);
}

void RequireSameOfImages(const model::Scenario& scenario, const std::string& old_image, const std::string& new_image,
                         const Answers& answers) {
  const qmx::ImageResult old_library = image::Load(old_image);
  const qmx::ImageResult new_library = image::Load(new_image);
  if (!old_library.metalib || !new_library.metalib) return;  // an odd state, which no image may have
  const auto of_images = model::AskChecker(scenario, old_library.metalib->get(), new_library.metalib->get());
  fuzz::Require(of_images == answers, "the image of a library is answered about as the library");
}

void Check(const model::Scenario& scenario, const qmx::Metalib& old_library, const qmx::Metalib& new_library) {
  const std::string old_image = qmx::WriteImage(old_library);
  const std::string new_image = qmx::WriteImage(new_library);
  const Answers answers = model::AskChecker(scenario, old_library.get(), new_library.get());
  RequireAnswers(answers);
  fuzz::Require(qmx::WriteImage(old_library) == old_image && qmx::WriteImage(new_library) == new_image, "asking changes nothing");
  RequireSameOfImages(scenario, old_image, new_image, answers);
  fuzz::RequireModel(scenario, old_library.get(), new_library.get(), answers);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  model::Scenario scenario = fuzz::ScenarioOf(data, size);
  if (scenario.questions.size() > kMostQuestions) scenario.questions.resize(kMostQuestions);
  const auto old_library = model::Build(scenario.old_library);
  const auto new_library = model::Build(scenario.new_library);
  if (old_library && new_library) Check(scenario, *old_library, *new_library);
  return 0;
}

#ifdef KORVEL_FUZZ
// Two pairs are never crossed: tries went further without.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size, unsigned seed) {
  model::Random random(seed);
  if (random.OneIn(8)) return LLVMFuzzerMutate(data, size, max_size);  // what no change of a schema brings about
  model::Scenario scenario = fuzz::ScenarioOf(data, size);
  fuzz::Mutate(scenario, random);
  // What does not fit is the end of the new library.
  return fuzz::BytesOf(scenario).copy(reinterpret_cast<char*>(data), max_size);
}
#endif
