// Callers that pass what they should not: nothing crashes, nothing is leaked (under the address sanitizer), and nothing that was
// not checked reads as allowed.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>

#include "capi/example.h"

namespace capi_test {
namespace {

constexpr std::size_t kHuge = std::size_t{1} << 63;

// Expects that a call is refused with a message, and that its result is a null handle or text.
class Refused {
 public:
  ~Refused() { kc_error_free(error_); }

  kc_error** error() { return &error_; }

  void Expect(int result, const std::string& message) {
    EXPECT_EQ(result, KC_ERROR_ARGUMENT) << message;
    EXPECT_EQ(kc_error_message(error_), message);
    kc_fault fault;
    EXPECT_EQ(kc_error_fault(error_, 0, &fault, sizeof(fault)), KC_OK);
    EXPECT_EQ(fault.message, message);
    EXPECT_STREQ(fault.rule, "");
    EXPECT_EQ(kc_error_fault(error_, 1, &fault, sizeof(fault)), KC_END);
    kc_error_free(error_);
    error_ = nullptr;
  }

 private:
  kc_error* error_ = nullptr;
};

TEST(CApiHostile, NullArgumentsOfSchemas) {
  Refused refused;
  const auto unset = reinterpret_cast<kc_schema*>(1);
  kc_schema* schema = unset;
  refused.Expect(kc_schema_load(nullptr, "x", 1, &schema, refused.error()), "kc_schema_load: name is NULL");
  EXPECT_EQ(schema, nullptr);
  refused.Expect(kc_schema_load("x", nullptr, 1, &schema, refused.error()), "kc_schema_load: data is NULL");
  refused.Expect(kc_schema_load("x", "x", 1, nullptr, refused.error()), "kc_schema_load: schema is NULL");
  schema = unset;
  refused.Expect(kc_schema_load_file(nullptr, &schema, refused.error()), "kc_schema_load_file: path is NULL");
  EXPECT_EQ(schema, nullptr);
  refused.Expect(kc_schema_load_file("x", nullptr, refused.error()), "kc_schema_load_file: schema is NULL");
  const korvelcheck::Schema valid = Example("v6.xml");
  const void* data = "";
  std::size_t size = 1;
  refused.Expect(kc_schema_image(nullptr, &data, &size, refused.error()), "kc_schema_image: schema is NULL");
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 0U);
  refused.Expect(kc_schema_image(valid.get(), nullptr, &size, refused.error()), "kc_schema_image: data is NULL");
  refused.Expect(kc_schema_image(valid.get(), &data, nullptr, refused.error()), "kc_schema_image: size is NULL");
  EXPECT_EQ(kc_schema_table(nullptr, 0), nullptr);
  EXPECT_EQ(kc_schema_table(valid.get(), kHuge), nullptr);
}

TEST(CApiHostile, NullArgumentsOfSettings) {
  Refused refused;
  refused.Expect(kc_settings_new(nullptr, refused.error()), "kc_settings_new: settings is NULL");
  kc_settings* settings = nullptr;
  ASSERT_EQ(kc_settings_new(&settings, nullptr), KC_OK);
  refused.Expect(kc_settings_set(nullptr, nullptr, "type", "list", refused.error()), "kc_settings_set: settings is NULL");
  refused.Expect(kc_settings_set(settings, nullptr, nullptr, "list", refused.error()), "kc_settings_set: key is NULL");
  refused.Expect(kc_settings_set(settings, nullptr, "type", nullptr, refused.error()), "kc_settings_set: value is NULL");
  kc_settings_free(settings);
}

TEST(CApiHostile, NullArgumentsOfChecks) {
  Refused refused;
  const korvelcheck::Schema schema = Example("v6.xml");
  kc_report* report = reinterpret_cast<kc_report*>(1);
  const char* const tables[] = {"orders", nullptr};
  refused.Expect(kc_check(nullptr, schema.get(), nullptr, 0, nullptr, &report, refused.error()), "kc_check: old_schema is NULL");
  EXPECT_EQ(report, nullptr);
  refused.Expect(kc_check(schema.get(), nullptr, nullptr, 0, nullptr, &report, refused.error()), "kc_check: new_schema is NULL");
  refused.Expect(kc_check(schema.get(), schema.get(), nullptr, 1, nullptr, &report, refused.error()), "kc_check: tables is NULL");
  refused.Expect(kc_check(schema.get(), schema.get(), tables, 2, nullptr, &report, refused.error()),
                 "kc_check: an element of tables is NULL");
  refused.Expect(kc_check(schema.get(), schema.get(), tables, 0, nullptr, &report, refused.error()),
                 "kc_check: tables is empty; allowed: NULL for all tables");
  refused.Expect(kc_check(schema.get(), schema.get(), tables, kHuge, nullptr, &report, refused.error()),
                 "kc_check: table_count is too large");
  refused.Expect(kc_check(schema.get(), schema.get(), nullptr, 0, nullptr, nullptr, refused.error()), "kc_check: report is NULL");
  refused.Expect(kc_lint(nullptr, nullptr, &report, refused.error()), "kc_lint: schema is NULL");
  refused.Expect(kc_lint(schema.get(), nullptr, nullptr, refused.error()), "kc_lint: report is NULL");
}

TEST(CApiHostile, NullArgumentsOfTexts) {
  Refused refused;
  const korvelcheck::Report report = RefusedReport();
  const char* text = "";
  std::size_t size = 1;
  refused.Expect(kc_report_text(nullptr, "json", &text, &size, refused.error()), "kc_report_text: report is NULL");
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(size, 0U);
  refused.Expect(kc_report_text(report.get(), nullptr, &text, &size, refused.error()), "kc_report_text: format is NULL");
  refused.Expect(kc_report_text(report.get(), "json", nullptr, &size, refused.error()), "kc_report_text: text is NULL");
  refused.Expect(kc_report_text(report.get(), "yaml", &text, &size, refused.error()),
                 "kc_report_text: unknown format 'yaml'; kc_format_name lists them");
  EXPECT_EQ(kc_report_text(report.get(), "json", &text, nullptr, nullptr), KC_OK);
  refused.Expect(kc_explain(nullptr, &text, refused.error()), "kc_explain: rule is NULL");
  refused.Expect(kc_explain("field.size", nullptr, refused.error()), "kc_explain: page is NULL");
}

TEST(CApiHostile, ErrorsMayBeIgnored) {
  kc_schema* schema = nullptr;
  EXPECT_EQ(kc_schema_load("x", "x", 1, &schema, nullptr), KC_ERROR_INPUT);
  EXPECT_EQ(kc_schema_load(nullptr, nullptr, 0, nullptr, nullptr), KC_ERROR_ARGUMENT);
  EXPECT_STREQ(kc_error_message(nullptr), "");
}

TEST(CApiHostile, SuccessClearsTheError) {
  auto* error = reinterpret_cast<kc_error*>(1);
  kc_settings* settings = nullptr;
  ASSERT_EQ(kc_settings_new(&settings, &error), KC_OK);
  EXPECT_EQ(error, nullptr);
  kc_settings_free(settings);
}

// A function that fills a struct, called with some size.
template <class Fill>
void ExpectSizes(const Fill& fill, std::size_t known) {
  std::array<unsigned char, KC_MAX_STRUCT + 8> whole{};
  for (const std::size_t size : {std::size_t{0}, std::size_t{KC_MAX_STRUCT} + 1, kHuge, SIZE_MAX}) {
    whole.fill(0xAA);
    EXPECT_EQ(fill(whole.data(), size), KC_ERROR_ARGUMENT);
    EXPECT_EQ(whole[0], 0xAA);
  }
  EXPECT_EQ(fill(nullptr, known), KC_ERROR_ARGUMENT);
  whole.fill(0xAA);
  ASSERT_EQ(fill(whole.data(), KC_MAX_STRUCT), KC_OK);  // of a later version
  for (std::size_t i = known; i < KC_MAX_STRUCT; ++i) ASSERT_EQ(whole[i], 0) << i;
  EXPECT_EQ(whole[KC_MAX_STRUCT], 0xAA);
  for (std::size_t size = 1; size <= known; ++size) {  // of an earlier version
    std::array<unsigned char, KC_MAX_STRUCT> part{};
    part.fill(0xAA);
    ASSERT_EQ(fill(part.data(), size), KC_OK);
    ASSERT_EQ(std::memcmp(part.data(), whole.data(), size), 0);
    ASSERT_EQ(part[size], 0xAA) << size;
  }
}

TEST(CApiHostile, SizesOfStructs) {
  const korvelcheck::Schema schema = Example("v6.xml");
  const korvelcheck::Report report = korvelcheck::Check(schema, Example("v7-several-changes.xml"));
  std::size_t with_affected = 0;
  while (report.Affected(with_affected).empty()) ++with_affected;
  std::size_t with_fix = 0;
  while (report.Fixes(with_fix).empty()) ++with_fix;
  kc_schema* none = nullptr;
  kc_error* error = nullptr;
  ASSERT_EQ(kc_schema_load("x", "x", 1, &none, &error), KC_ERROR_INPUT);
  ExpectSizes([&](void* to, std::size_t size) { return kc_schema_get(schema.get(), static_cast<kc_schema_info*>(to), size); },
              sizeof(kc_schema_info));
  ExpectSizes([&](void* to, std::size_t size) { return kc_report_get(report.get(), static_cast<kc_report_info*>(to), size); },
              sizeof(kc_report_info));
  ExpectSizes([&](void* to, std::size_t size) { return kc_report_table(report.get(), 0, static_cast<kc_table*>(to), size); },
              sizeof(kc_table));
  ExpectSizes([&](void* to, std::size_t size) { return kc_report_finding(report.get(), 0, static_cast<kc_finding*>(to), size); },
              sizeof(kc_finding));
  ExpectSizes(
      [&](void* to, std::size_t size) {
        return kc_report_affected(report.get(), with_affected, 0, static_cast<kc_affected*>(to), size);
      },
      sizeof(kc_affected));
  ExpectSizes(
      [&](void* to, std::size_t size) { return kc_report_fix(report.get(), with_fix, 0, static_cast<kc_fix*>(to), size); },
      sizeof(kc_fix));
  ExpectSizes([&](void* to, std::size_t size) { return kc_error_fault(error, 0, static_cast<kc_fault*>(to), size); },
              sizeof(kc_fault));
  kc_error_free(error);
}

TEST(CApiHostile, ListsEnd) {
  const korvelcheck::Report report = RefusedReport();
  kc_table table;
  kc_finding finding;
  kc_affected affected;
  kc_fix fix;
  for (const std::size_t behind : {std::size_t{7}, kHuge, SIZE_MAX}) {
    EXPECT_EQ(kc_report_table(report.get(), behind, &table, sizeof(table)), KC_END);
    EXPECT_EQ(kc_report_finding(report.get(), behind, &finding, sizeof(finding)), KC_END);
    EXPECT_EQ(kc_report_affected(report.get(), 0, behind, &affected, sizeof(affected)), KC_END);
    EXPECT_EQ(kc_report_affected(report.get(), behind, 0, &affected, sizeof(affected)), KC_END);
    EXPECT_EQ(kc_report_fix(report.get(), 0, behind, &fix, sizeof(fix)), KC_END);
    EXPECT_EQ(kc_report_fix(report.get(), behind, 0, &fix, sizeof(fix)), KC_END);
  }
  kc_report_info info;
  kc_schema_info schema_info;
  kc_fault fault;
  EXPECT_EQ(kc_report_get(nullptr, &info, sizeof(info)), KC_ERROR_ARGUMENT);
  EXPECT_EQ(kc_schema_get(nullptr, &schema_info, sizeof(schema_info)), KC_ERROR_ARGUMENT);
  EXPECT_EQ(kc_report_table(nullptr, 0, &table, sizeof(table)), KC_ERROR_ARGUMENT);
  EXPECT_EQ(kc_report_finding(nullptr, 0, &finding, sizeof(finding)), KC_ERROR_ARGUMENT);
  EXPECT_EQ(kc_report_affected(nullptr, 0, 0, &affected, sizeof(affected)), KC_ERROR_ARGUMENT);
  EXPECT_EQ(kc_report_fix(nullptr, 0, 0, &fix, sizeof(fix)), KC_ERROR_ARGUMENT);
  EXPECT_EQ(kc_error_fault(nullptr, 0, &fault, sizeof(fault)), KC_ERROR_ARGUMENT);
}

TEST(CApiHostile, NullMayBeFreed) {
  for (int i = 0; i < 2; ++i) {
    kc_schema_free(nullptr);
    kc_settings_free(nullptr);
    kc_report_free(nullptr);
    kc_error_free(nullptr);
  }
  SUCCEED();
}

// Every order of freeing two schemas, settings and a report; what is left still works.
TEST(CApiHostile, HandlesMayBeFreedInAnyOrder) {
  const std::string expected(RefusedReport().Text("text"));
  std::array<int, 4> order{0, 1, 2, 3};
  do {
    std::array<kc_schema*, 2> schemas{};
    kc_settings* settings = nullptr;
    kc_report* report = nullptr;
    const std::array<std::string, 2> names{"v6.xml", "v7-wider-key.xml"};
    for (std::size_t i = 0; i < 2; ++i) {
      const std::string text = cases::ReadFile(kShop + names[i]);
      ASSERT_EQ(kc_schema_load(names[i].c_str(), text.data(), text.size(), &schemas[i], nullptr), KC_OK);
    }
    ASSERT_EQ(kc_settings_new(&settings, nullptr), KC_OK);
    ASSERT_EQ(kc_check(schemas[0], schemas[1], nullptr, 0, settings, &report, nullptr), KC_OK);
    for (const int handle : order) {
      if (handle < 2) kc_schema_free(schemas[static_cast<std::size_t>(handle)]);
      if (handle == 2) kc_settings_free(settings);
      if (handle != 3) continue;
      const char* text = nullptr;
      ASSERT_EQ(kc_report_text(report, "text", &text, nullptr, nullptr), KC_OK);
      EXPECT_EQ(text, expected);
      kc_report_free(report);
    }
  } while (std::next_permutation(order.begin(), order.end()));
}

// Loads bytes; whatever is loaded can be checked. Returns the result.
int LoadAndUse(const std::string& bytes) {
  kc_schema* schema = nullptr;
  kc_error* error = nullptr;
  const int result = kc_schema_load("input", bytes.data(), bytes.size(), &schema, &error);
  EXPECT_TRUE(result == KC_OK || result == KC_ERROR_INPUT) << result;
  EXPECT_EQ(result == KC_OK, schema != nullptr);
  EXPECT_EQ(result == KC_OK, error == nullptr);
  EXPECT_EQ(result == KC_OK, std::string(kc_error_message(error)).empty());
  if (result == KC_OK) {
    kc_report* report = nullptr;
    const char* text = nullptr;
    if (kc_check(schema, schema, nullptr, 0, nullptr, &report, nullptr) == KC_OK) {
      EXPECT_EQ(kc_report_text(report, "json", &text, nullptr, nullptr), KC_OK);
      kc_report_free(report);
    }
  }
  kc_schema_free(schema);
  kc_error_free(error);
  return result;
}

TEST(CApiHostile, SizesOfInput) {
  kc_schema* schema = nullptr;
  kc_error* error = nullptr;
  for (const std::size_t size : {kHuge, SIZE_MAX, std::size_t{1} << 40}) {
    EXPECT_EQ(kc_schema_load("big", "x", size, &schema, &error), KC_ERROR_INPUT);
    EXPECT_NE(std::string(kc_error_message(error)).find("korvelcheck: big: is too large; allowed: at most"), std::string::npos);
    kc_error_free(error);
  }
  EXPECT_EQ(kc_schema_load("empty", nullptr, 0, &schema, &error), KC_ERROR_INPUT);
  EXPECT_EQ(std::string(kc_error_message(error)).find("empty:1:1: error: "), 0U) << kc_error_message(error);
  kc_error_free(error);
}

TEST(CApiHostile, TruncatedInputs) {
  const std::string text = cases::ReadFile(KORVEL_CASES_DIR "/driver/table-new/new.xml");
  const std::string image(korvelcheck::Schema::FromMemory("new.xml", text).Image());
  const std::size_t end = text.find("</metalib>") + std::string("</metalib>").size();
  for (std::size_t size = 0; size < end; ++size) EXPECT_EQ(LoadAndUse(text.substr(0, size)), KC_ERROR_INPUT) << size;
  for (std::size_t size = 0; size < image.size(); ++size) EXPECT_EQ(LoadAndUse(image.substr(0, size)), KC_ERROR_INPUT) << size;
  EXPECT_EQ(LoadAndUse(text), KC_OK);
  EXPECT_EQ(LoadAndUse(image), KC_OK);
}

TEST(CApiHostile, FuzzCorpora) {
  std::size_t loaded = 0;
  std::size_t all = 0;
  for (const auto& file : std::filesystem::recursive_directory_iterator(KORVEL_SOURCE_DIR "/tests/fuzz/corpus")) {
    if (!file.is_regular_file()) continue;
    SCOPED_TRACE(file.path());
    loaded += LoadAndUse(cases::ReadFile(file.path())) == KC_OK ? 1 : 0;
    ++all;
  }
  EXPECT_GT(all, 500U);
  EXPECT_GT(loaded, 20U);
}

// Structs give names as they are; formats escape them.
TEST(CApiHostile, NamesMayBeAnyBytes) {
  const std::string name = "%s\xFF\x01";
  const std::string text = cases::ReadFile(kShop + "v6.xml");
  const auto report = korvelcheck::Check(korvelcheck::Schema::FromMemory(name, text), Example("v7-wider-key.xml"));
  EXPECT_EQ(report.Findings().at(0).old_location.file, name);
  EXPECT_EQ(report.Text("text").find(name), std::string::npos);
}

}  // namespace
}  // namespace capi_test
