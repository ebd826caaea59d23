// Every schema of the cases and examples gives the same results as an image, and can be restored from its image.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "tool_test.h"

namespace tool_test {
namespace {

namespace fs = std::filesystem;

struct SchemaPair {
  fs::path old_file;
  fs::path new_file;
};

constexpr std::size_t kStep = KORVEL_SANITIZED ? 4 : 1;  // every pair takes three minutes under the sanitizers

// Each case, and each two consecutive schemas of an example, ordered by name; or every kStep-th of them.
std::vector<SchemaPair> Pairs() {
  std::map<fs::path, std::vector<fs::path>> folders;
  for (const char* top : {"tests/cases", "examples"}) {
    for (const auto& file : fs::recursive_directory_iterator(fs::path(KORVEL_SOURCE_DIR) / top)) {
      if (file.path().extension() == ".xml") folders[file.path().parent_path()].push_back(file.path());
    }
  }
  std::vector<SchemaPair> pairs;
  for (auto& [folder, files] : folders) {
    std::ranges::sort(files);
    if (fs::exists(folder / "old.xml")) {
      pairs.push_back({folder / "old.xml", folder / "new.xml"});
    } else {
      for (std::size_t i = 1; i < files.size(); ++i) pairs.push_back({files[i - 1], files[i]});
    }
  }
  std::vector<SchemaPair> chosen;
  for (std::size_t i = 0; i < pairs.size(); i += kStep) chosen.push_back(pairs[i]);
  return chosen;
}

// An image has no lines, and its parts cannot be replaced.
void RemovePlaces(nlohmann::ordered_json& json) {
  for (auto& [name, value] : json.items()) {
    if (name == "line" || name == "column" || name == "end_line" || name == "end_column") value = nullptr;
    if (name == "fix") value = nlohmann::ordered_json::array();
    if (value.is_structured()) RemovePlaces(value);
  }
}

std::string WithoutPlaces(const std::string& report) {
  nlohmann::ordered_json json = nlohmann::ordered_json::parse(report, nullptr, false);
  if (json.is_discarded()) return report;
  RemovePlaces(json);
  return json.dump(2) + "\n";
}

// Two folders with files of the same names: text in one, images in the other.
class ImageCasesTest : public ToolTest {
 protected:
  ImageCasesTest() {
    for (const char* form : {"text", "image"}) fs::create_directory(PathOf(form));
  }

  void MakeBothForms(const fs::path& file, const std::string& name) const {
    fs::copy_file(file, PathOf("text/" + name), fs::copy_options::overwrite_existing);
    ExpectOutcome(Korvelcheck({"compile", "text/" + name, "-o", "image/" + name}), 0, "", "");
  }

  Outcome Run(const std::string& form, const std::vector<std::string>& arguments) const {
    return RunProgram(Call{.arguments = arguments, .directory = PathOf(form)});
  }
};

TEST_F(ImageCasesTest, ResultsAreTheSameForFilesAndImages) {
  std::size_t refused = 0;
  const std::vector<SchemaPair> pairs = Pairs();
  for (const SchemaPair& pair : pairs) {
    SCOPED_TRACE(pair.new_file);
    MakeBothForms(pair.old_file, "old");
    MakeBothForms(pair.new_file, "new");
    for (const std::vector<std::string>& question :
         {std::vector<std::string>{"check", "old", "new"}, {"same", "old", "new"}, {"lint", "old", "new"}}) {
      std::vector<std::string> arguments = question;
      arguments.insert(arguments.end(), {"--format", "json"});
      const Outcome text = Run("text", arguments);
      if (text.exit_code == 1) ++refused;
      ExpectOutcome(Run("image", arguments), text.exit_code, WithoutPlaces(text.out), text.err);
    }
    if (HasFailure()) break;
  }
  EXPECT_GT(pairs.size() * kStep, 200u);
  EXPECT_GT(refused * kStep, 100u);
}

TEST_F(ImageCasesTest, ImagesRestoreEverySchema) {
  for (const SchemaPair& pair : Pairs()) {
    SCOPED_TRACE(pair.new_file);
    MakeBothForms(pair.new_file, "new");
    ExpectOutcome(Korvelcheck({"dump", "image/new", "-o", "dump.xml"}), 0, "", "");
    ExpectOutcome(Korvelcheck({"compile", "dump.xml", "-o", "-"}), 0, Read("image/new"), "");
    if (HasFailure()) break;
  }
}

}  // namespace
}  // namespace tool_test
