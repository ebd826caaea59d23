// Loading schemas, and what is known about them.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "capi/example.h"
#include "capi/temporary_directory.h"

namespace capi_test {
namespace {

using korvelcheck::Schema;

void Write(const std::string& path, std::string_view bytes) { std::ofstream(path, std::ios::binary) << bytes; }

// The result and message of loading a file that is refused.
std::string LoadError(const std::string& path) {
  kc_schema* schema = nullptr;
  kc_error* error = nullptr;
  EXPECT_EQ(kc_schema_load_file(path.c_str(), &schema, &error), KC_ERROR_INPUT);
  EXPECT_EQ(schema, nullptr);
  const std::string message = kc_error_message(error);
  kc_error_free(error);
  return message;
}

TEST(CApiSchema, DescribesSchemaFile) {
  const Schema schema = Example("v6.xml");
  EXPECT_STREQ(schema.Info().name, "v6.xml");
  EXPECT_STREQ(schema.Info().library, "shop");
  EXPECT_EQ(schema.Info().version, 6);
  EXPECT_EQ(schema.Info().is_image, 0);
  EXPECT_EQ(schema.Info().table_count, 7U);
  EXPECT_EQ(schema.Tables().size(), 7U);
  EXPECT_EQ(schema.Tables().at(0), "customers");
}

TEST(CApiSchema, ImageGivesSameSchema) {
  const Schema schema = Example("v6.xml");
  const Schema image = Schema::FromMemory("v6.qmb", schema.Image());
  EXPECT_EQ(image.Info().is_image, 1);
  EXPECT_EQ(image.Tables(), schema.Tables());
  EXPECT_EQ(image.Image(), schema.Image());
}

TEST(CApiSchema, ImageHasNoLines) {
  const Schema image = Schema::FromMemory("v7.qmb", Example("v7-wider-key.xml").Image());
  const kc_finding finding = korvelcheck::Check(Example("v6.xml"), image).Findings().at(0);
  EXPECT_STREQ(finding.location.file, "v7.qmb");
  EXPECT_EQ(finding.location.line, 0U);
  EXPECT_EQ(finding.location.column, 0U);
}

TEST(CApiSchema, ReadsFilesOfBothForms) {
  const TemporaryDirectory directory;
  Write(directory.path() + "/v6.xml", cases::ReadFile(kShop + "v6.xml"));
  Write(directory.path() + "/v6.qmb", Example("v6.xml").Image());
  EXPECT_EQ(Schema::FromFile(directory.path() + "/v6.xml").Info().is_image, 0);
  EXPECT_EQ(Schema::FromFile(directory.path() + "/v6.qmb").Info().is_image, 1);
}

// A mapped file would end the process when pages behind its new end are used.
TEST(CApiSchema, StaysAsItIsWhenTheFileShrinks) {
  const TemporaryDirectory directory;
  const std::string old_path = directory.path() + "/old.qmb";
  const std::string new_path = directory.path() + "/new.xml";
  Write(old_path, Example("v6.xml").Image());
  // Large texts are not kept by the program.
  Write(new_path, cases::ReadFile(kShop + "v7-wider-key.xml") + std::string(600'000, '\n'));
  const Schema old_schema = Schema::FromFile(old_path);
  const Schema new_schema = Schema::FromFile(new_path);
  for (const std::string& path : {old_path, new_path}) ASSERT_EQ(::truncate(path.c_str(), 0), 0);
  const korvelcheck::Report report = korvelcheck::Check(old_schema, new_schema);
  EXPECT_EQ(report.Findings().at(0).location.line, 70U);
  for (std::size_t i = 0; kc_format_name(i) != nullptr; ++i) EXPECT_FALSE(report.Text(kc_format_name(i)).empty());
}

TEST(CApiSchema, RefusesWhatIsNoRegularFile) {
  const TemporaryDirectory directory;
  const std::string pipe = directory.path() + "/pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(LoadError(pipe), "korvelcheck: " + pipe + ": is not a regular file; allowed: a file");
  EXPECT_EQ(LoadError(directory.path() + "/absent"), "korvelcheck: " + directory.path() + "/absent: No such file or directory");
  EXPECT_EQ(LoadError(""), "korvelcheck: '': No such file or directory");
  EXPECT_EQ(LoadError(directory.path()), "korvelcheck: " + directory.path() + ": is a directory; allowed: a file");
  EXPECT_NE(LoadError("/dev/zero").find("is not a regular file"), std::string::npos);
}

// Standard input belongs to the host program.
TEST(CApiSchema, DashIsAFileName) { EXPECT_EQ(LoadError("-"), "korvelcheck: ./-: No such file or directory"); }

// No git program is started.
TEST(CApiSchema, CommitIsAFileName) {
  EXPECT_EQ(LoadError("git:HEAD:v6.xml"), "korvelcheck: git:HEAD:v6.xml: No such file or directory");
}

TEST(CApiSchema, ReportsAllFaultsWithLocations) {
  std::string text = cases::ReadFile(kShop + "v6.xml");
  for (int i = 0; i < 2; ++i) text.replace(text.find("type=\"uint64\""), 13, "type=\"uint65\"");
  try {
    Schema::FromMemory("bad.xml", text);
    FAIL() << "no error";
  } catch (const korvelcheck::Error& error) {
    EXPECT_EQ(error.result(), KC_ERROR_INPUT);
    const std::vector<kc_fault> faults = error.Faults();
    ASSERT_EQ(faults.size(), 2U);
    for (const kc_fault& fault : faults) {
      EXPECT_STREQ(fault.rule, "schema.invalid");
      EXPECT_STREQ(fault.location.file, "bad.xml");
      EXPECT_GT(fault.location.line, 0U);
      EXPECT_GT(fault.location.column, 0U);
      EXPECT_EQ(std::string(fault.message).rfind("bad.xml:" + std::to_string(fault.location.line) + ":", 0), 0U) << fault.message;
      EXPECT_NE(std::string(fault.text).find("uint65"), std::string::npos);
    }
    EXPECT_EQ(error.what(), std::string(faults[0].message) + "\n" + faults[1].message);
  }
}

TEST(CApiSchema, RefusesSchemaWithoutTableToLint) {
  const Schema schema = Schema::FromMemory(
      "empty.xml", "<metalib name=\"m\" version=\"1\"><meta name=\"s\"><entry name=\"k\" type=\"uint32\"/></meta></metalib>");
  EXPECT_EQ(schema.Tables().size(), 0U);
  try {
    korvelcheck::Lint(schema);
    FAIL() << "no error";
  } catch (const korvelcheck::Error& error) {
    EXPECT_STREQ(error.Faults().at(0).rule, "schema.no-table");
    EXPECT_STREQ(error.Faults().at(0).location.file, "empty.xml");
  }
}

}  // namespace
}  // namespace capi_test
