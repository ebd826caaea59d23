// The C interface and the program give the same answer, byte for byte: every case and every example, and every format.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "capi/example.h"
#include "capi/temporary_directory.h"
#include "tool/process.h"

namespace capi_test {
namespace {

namespace fs = std::filesystem;

using korvelcheck::Schema;
using korvelcheck::Settings;

// Two schema files, relative to the top of the project, and what else a call has.
struct Question {
  std::string old_file;
  std::string new_file;
  std::vector<std::string> tables = {};
  std::vector<std::pair<std::string, std::string>> settings = {};
};

// What the program prints: the report, or the errors of a call that fails. All calls are made in the top of the project, where
// files have the same names.
std::string Program(std::vector<std::string> arguments) {
  arguments.emplace_back("--no-project");
  const tool_test::Outcome outcome = tool_test::RunProgram({.arguments = arguments, .directory = KORVEL_SOURCE_DIR});
  EXPECT_TRUE(outcome.exit_code >= 0 && outcome.exit_code <= 2) << outcome.err;
  return outcome.exit_code == 2 ? outcome.err : outcome.out;
}

std::string ProgramCheck(const Question& question, const std::string& format) {
  std::vector<std::string> arguments = {"check", question.old_file, question.new_file, "--format", format};
  for (const std::string& table : question.tables) arguments.insert(arguments.end(), {"--table", table});
  for (const auto& [key, value] : question.settings) arguments.insert(arguments.end(), {"--" + key, value});
  return Program(arguments);
}

korvelcheck::Report CApiCheck(const Question& question) {
  Settings settings;
  for (const auto& [key, value] : question.settings) settings.Set(key, value);
  const auto load = [](const std::string& file) { return Schema::FromMemory(file, cases::ReadFile(file)); };
  return korvelcheck::Check(load(question.old_file), load(question.new_file), question.tables, settings.get());
}

// Likewise.
std::string CApiAnswer(const Question& question) {
  try {
    return std::string(CApiCheck(question).Text("json"));
  } catch (const korvelcheck::Error& error) {
    return std::string(error.what()) + "\n";
  }
}

// Lines "key: value".
Question CaseQuestion(const std::string& name) {
  const std::string folder = "tests/cases/" + name + "/";
  Question question{.old_file = folder + "old.xml", .new_file = folder + "new.xml"};
  std::ifstream lines(folder + "settings");
  for (std::string line; std::getline(lines, line);) {
    const std::size_t colon = line.find(": ");
    const std::string key = line.substr(0, colon);
    const std::string value = line.substr(colon + 2);
    if (key == "table") {
      question.tables.push_back(value);
    } else {
      question.settings.emplace_back(key, value);
    }
  }
  return question;
}

// Each proposal and each version of the examples with the version before it.
std::vector<Question> ExampleQuestions() {
  std::vector<Question> questions;
  for (const char* project : {"examples/game", "examples/shop"}) {
    std::vector<std::string> files;
    for (const auto& file : fs::directory_iterator(project)) files.push_back(file.path().string());
    std::ranges::sort(files);
    for (const std::string& new_file : files) {
      for (const std::string& old_file : files) {
        const bool is_version = old_file.find('-') == std::string::npos;
        if (is_version && old_file < new_file) questions.push_back({.old_file = old_file, .new_file = new_file});
      }
    }
  }
  return questions;
}

class SameAnswer : public testing::Test {
 protected:
  void SetUp() override { fs::current_path(KORVEL_SOURCE_DIR); }
};

TEST_F(SameAnswer, ForEveryCase) {
  const std::vector<std::string> names = cases::Names();
  EXPECT_GT(names.size(), 200U);
  for (const std::string& name : names) {
    const Question question = CaseQuestion(name);
    EXPECT_EQ(CApiAnswer(question), ProgramCheck(question, "json")) << name;
  }
}

TEST_F(SameAnswer, ForEveryExample) {
  const std::vector<Question> questions = ExampleQuestions();
  EXPECT_GT(questions.size(), 20U);
  for (const Question& question : questions) {
    EXPECT_EQ(CApiCheck(question).Text("json"), ProgramCheck(question, "json")) << question.old_file << " " << question.new_file;
  }
}

// The program names the call that fixes what is refused; a library does not know which program its host has.
std::string WithoutFixCall(const std::string& text) {
  const std::size_t begin = text.find("To fix what is refused: ");
  return begin == std::string::npos ? text : text.substr(0, begin) + text.substr(text.find('\n', begin) + 1);
}

TEST_F(SameAnswer, InEveryFormat) {
  for (const Question& question : {Question{"examples/shop/v6.xml", "examples/shop/v7-several-changes.xml"},
                                   Question{"examples/shop/v5.xml", "examples/shop/v7.xml"},
                                   Question{"examples/game/v12.xml", "examples/game/v13-reused-id.xml"}}) {
    const korvelcheck::Report report = CApiCheck(question);
    for (std::size_t i = 0; kc_format_name(i) != nullptr; ++i) {
      const std::string format = kc_format_name(i);
      EXPECT_EQ(report.Text(format), WithoutFixCall(ProgramCheck(question, format))) << format << " " << question.new_file;
    }
  }
}

TEST_F(SameAnswer, ForFilesAndImages) {
  const TemporaryDirectory directory;
  Question question;
  for (const auto& [name, file] : {std::pair("v6", &question.old_file), std::pair("v7-wider-key", &question.new_file)}) {
    const Schema schema = Schema::FromFile("examples/shop/" + std::string(name) + ".xml");
    *file = directory.path() + "/" + name + ".qmb";
    std::ofstream(*file, std::ios::binary) << schema.Image();
    const std::string compiled = directory.path() + "/compiled.qmb";
    tool_test::RunProgram({.arguments = {"compile", schema.Info().name, "-o", compiled}, .directory = KORVEL_SOURCE_DIR});
    EXPECT_EQ(cases::ReadFile(compiled), schema.Image());
  }
  const auto report = korvelcheck::Check(Schema::FromFile(question.old_file), Schema::FromFile(question.new_file));
  for (std::size_t i = 0; kc_format_name(i) != nullptr; ++i) {
    const std::string format = kc_format_name(i);
    EXPECT_EQ(report.Text(format), WithoutFixCall(ProgramCheck(question, format))) << format;
  }
}

// The fingerprint of a refused change between old.xml and new.xml in a directory, as the C interface and the program give it to
// files of these names; of the C interface, only the names count.
std::string CApiFingerprint(const std::string& directory) {
  const auto load = [&](const std::string& name, const char* example) {
    return Schema::FromMemory(directory + name, cases::ReadFile(kShop + example));
  };
  return korvelcheck::Check(load("old.xml", "v6.xml"), load("new.xml", "v7-wider-key.xml")).Findings().at(0).fingerprint;
}

std::string ProgramFingerprint(const std::string& directory) {
  const std::string json = tool_test::RunProgram({.arguments = {"check", directory + "old.xml", directory + "new.xml",
                                                                "--no-project", "--format", "json"},
                                                  .directory = fs::current_path()})
                               .out;
  const std::string key = "\"fingerprint\": \"";
  const std::size_t begin = json.find(key);
  return begin == std::string::npos ? "none" : json.substr(begin + key.size(), 16);
}

TEST_F(SameAnswer, FingerprintsOfNames) {
  const TemporaryDirectory directory;
  for (const std::string top : {"/shop", "/other"}) {
    fs::create_directories(directory.path() + top + "/schemas");
    fs::copy(kShop + "v6.xml", directory.path() + top + "/schemas/old.xml");
    fs::copy(kShop + "v7-wider-key.xml", directory.path() + top + "/schemas/new.xml");
  }
  fs::current_path(directory.path() + "/shop");
  fs::create_symlink("schemas", "link");
  // Relative paths below the working directory, and all paths of files elsewhere.
  for (const std::string& name : {std::string("schemas/"), std::string("./schemas/../schemas/"), std::string("../other/schemas/"),
                                  directory.path() + "/other/schemas/"}) {
    EXPECT_EQ(CApiFingerprint(name), ProgramFingerprint(name)) << name;
  }
  // Other paths to files below the working directory: the program finds out where the file is.
  for (const std::string& name : {std::string("link/"), std::string("../shop/schemas/"), directory.path() + "/shop/schemas/"}) {
    EXPECT_EQ(ProgramFingerprint(name), CApiFingerprint("schemas/")) << name;
    EXPECT_NE(CApiFingerprint(name), CApiFingerprint("schemas/")) << name;
  }
  EXPECT_EQ(CApiFingerprint("/anywhere/"), CApiFingerprint("../"));
  fs::current_path(KORVEL_SOURCE_DIR);
}

TEST_F(SameAnswer, ToLint) {
  for (const char* project : {"examples/game", "examples/shop"}) {
    for (const auto& file : fs::directory_iterator(project)) {
      const std::string name = file.path().string();
      EXPECT_EQ(korvelcheck::Lint(Schema::FromFile(name)).Text("json"), Program({"lint", name, "--format", "json"})) << name;
    }
  }
}

TEST_F(SameAnswer, ToExplain) {
  const char* page = nullptr;
  ASSERT_EQ(kc_explain("primary-key.size", &page, nullptr), KC_OK);
  const tool_test::Outcome outcome =
      tool_test::RunProgram({.arguments = {"explain", "primary-key.size", "--format", "markdown"}});
  EXPECT_EQ(page, outcome.out);
}

// The structs say what the JSON says.
TEST_F(SameAnswer, InStructs) {
  const korvelcheck::Report report = CApiCheck({"examples/shop/v6.xml", "examples/shop/v7-several-changes.xml"});
  const std::string json(report.Text("json"));
  ASSERT_FALSE(report.Findings().empty());
  for (const kc_finding& finding : report.Findings()) {
    EXPECT_NE(json.find("\"fingerprint\": \"" + std::string(finding.fingerprint) + "\""), std::string::npos);
    EXPECT_NE(json.find("\"path\": \"" + std::string(finding.path) + "\""), std::string::npos);
    EXPECT_NE(json.find("\"suggestion\": \"" + std::string(finding.suggestion) + "\""), std::string::npos) << finding.suggestion;
  }
}

}  // namespace
}  // namespace capi_test
