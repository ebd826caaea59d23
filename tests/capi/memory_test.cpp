// Out of memory at any allocation of the C interface: the result is KC_ERROR_MEMORY with an error, or the right one; no
// exception, no crash, no leak (under the address sanitizer), and a later call gives the right answer.
//
// Linked with the objects of the shared library, so that the linker can replace malloc in them.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <stdexcept>

#include "cases/case_files.h"
#include "korvelcheck/korvelcheck.h"
#include "memory/failing_memory.h"

namespace capi_test {
namespace {

const std::string kShop = KORVEL_SOURCE_DIR "/examples/shop/";

constexpr long kStep = KORVEL_SANITIZED ? 7 : 1;  // every allocation takes too long under the sanitizers

kc_schema* Load(const std::string& name) {
  const std::string text = cases::ReadFile(kShop + name);
  kc_schema* schema = nullptr;
  EXPECT_EQ(kc_schema_load(name.c_str(), text.data(), text.size(), &schema, nullptr), KC_OK);
  return schema;
}

// Runs a call repeatedly, each time with a later allocation failing, until it succeeds. Returns the number of failures.
long FailEachOf(const std::function<int(kc_error** error)>& call) {
  long failures = 0;
  for (;; ++failures) {
    std::atomic<bool> failed = false;
    memory::FailAfter(failures * kStep, memory::Failing::kOne, failed);
    kc_error* error = nullptr;
    const int result = call(&error);
    memory::FailNever();
    if (!failed) {
      EXPECT_EQ(result, KC_OK) << kc_error_message(error);
      EXPECT_EQ(error, nullptr);
      break;
    }
    if (result == KC_OK) continue;  // the library can do without what it asked for, such as another thread
    EXPECT_EQ(result, KC_ERROR_MEMORY) << kc_error_message(error);
    EXPECT_STREQ(kc_error_message(error), "out of memory");
    kc_fault fault;
    EXPECT_EQ(kc_error_fault(error, 0, &fault, sizeof(fault)), KC_OK);
    EXPECT_STREQ(fault.message, "out of memory");
    EXPECT_EQ(kc_error_fault(error, 1, &fault, sizeof(fault)), KC_END);
    kc_error_free(error);
  }
  memory::CountFailures(failures);
  return failures * kStep;
}

// The same where also the memory for the error is missing.
void FailAllOf(const std::function<int(kc_error** error)>& call) {
  std::atomic<bool> failed = false;
  memory::FailAfter(0, memory::Failing::kRest, failed);
  kc_error* error = nullptr;
  const int result = call(&error);
  memory::FailNever();
  EXPECT_EQ(result, KC_ERROR_MEMORY);
  EXPECT_STREQ(kc_error_message(error), "out of memory");
  kc_error_free(error);
}

TEST(CApiOutOfMemory, LoadsSchemas) {
  for (const std::string name : {"v6.xml", "v6.qmb"}) {
    std::string bytes = cases::ReadFile(kShop + "v6.xml");
    if (name == "v6.qmb") {
      kc_schema* schema = Load("v6.xml");
      const void* data = nullptr;
      std::size_t size = 0;
      EXPECT_GT(FailEachOf([&](kc_error** error) { return kc_schema_image(schema, &data, &size, error); }), 0);
      bytes.assign(static_cast<const char*>(data), size);
      kc_schema_free(schema);
    }
    const auto load = [&](kc_error** error) {
      kc_schema* schema = nullptr;
      const int result = kc_schema_load(name.c_str(), bytes.data(), bytes.size(), &schema, error);
      EXPECT_EQ(result == KC_OK, schema != nullptr);
      kc_schema_free(schema);
      return result;
    };
    EXPECT_GT(FailEachOf(load), 10);
    FailAllOf(load);
  }
}

TEST(CApiOutOfMemory, LoadsFiles) {
  const std::string path = kShop + "v6.xml";
  const auto load = [&](kc_error** error) {
    kc_schema* schema = nullptr;
    const int result = kc_schema_load_file(path.c_str(), &schema, error);
    EXPECT_EQ(result == KC_OK, schema != nullptr);
    kc_schema_free(schema);
    return result;
  };
  EXPECT_GT(FailEachOf(load), 10);
  FailAllOf(load);
}

// The faults of an invalid schema must not become fewer.
TEST(CApiOutOfMemory, RefusesInvalidSchemas) {
  std::string text = cases::ReadFile(kShop + "v6.xml");
  text.replace(text.find("type=\"uint64\""), 13, "type=\"uint65\" colour=\"red\"");
  bool is_complete = true;
  FailEachOf([&](kc_error** error) {
    kc_schema* schema = nullptr;
    const int result = kc_schema_load("bad.xml", text.data(), text.size(), &schema, error);
    EXPECT_EQ(schema, nullptr);
    if (result != KC_ERROR_INPUT) return result;
    is_complete = std::strstr(kc_error_message(*error), "\nbad.xml:") != nullptr && is_complete;
    kc_error_free(*error);
    *error = nullptr;
    return static_cast<int>(KC_OK);
  });
  EXPECT_TRUE(is_complete);
}

TEST(CApiOutOfMemory, Settings) {
  const auto set = [](kc_error** error) {
    kc_settings* settings = nullptr;
    int result = kc_settings_new(&settings, error);
    if (result == KC_OK)
      result = kc_settings_set(settings, "orders of a long name", "whitelist", "a name that takes memory", error);
    kc_settings_free(settings);
    return result;
  };
  EXPECT_GT(FailEachOf(set), 2);
  FailAllOf(set);
}

class Pair {
 public:
  Pair(const std::string& old_name, const std::string& new_name) : old_(Load(old_name)), new_(Load(new_name)) {}
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;
  ~Pair() {
    kc_schema_free(old_);
    kc_schema_free(new_);
  }

  // The text of a report; "" without one.
  int Check(const char* format, std::string* text, kc_error** error) const {
    const char* const tables[] = {"orders"};
    kc_report* report = nullptr;
    int result = kc_check(old_, new_, tables, 1, nullptr, &report, error);
    EXPECT_EQ(result == KC_OK, report != nullptr);
    const char* bytes = nullptr;
    if (result == KC_OK && format != nullptr) result = kc_report_text(report, format, &bytes, nullptr, error);
    if (text != nullptr && bytes != nullptr) *text = bytes;
    kc_report_free(report);
    return result;
  }

  kc_report* Report() const {
    kc_report* report = nullptr;
    EXPECT_EQ(kc_check(old_, new_, nullptr, 0, nullptr, &report, nullptr), KC_OK);
    return report;
  }

 private:
  kc_schema* old_;
  kc_schema* new_;
};

TEST(CApiOutOfMemory, Checks) {
  const Pair pair("v6.xml", "v7-wider-key.xml");
  const auto check = [&](kc_error** error) { return pair.Check(nullptr, nullptr, error); };
  EXPECT_GT(FailEachOf(check), 1000);
  FailAllOf(check);
}

TEST(CApiOutOfMemory, Lints) {
  kc_schema* const schema = Load("v6.xml");
  const auto lint = [&](kc_error** error) {
    kc_report* report = nullptr;
    const int result = kc_lint(schema, nullptr, &report, error);
    EXPECT_EQ(result == KC_OK, report != nullptr);
    kc_report_free(report);
    return result;
  };
  EXPECT_GT(FailEachOf(lint), 100);
  FailAllOf(lint);
  kc_schema_free(schema);
}

// Every format; the text that a report gives after a failure is the right one.
TEST(CApiOutOfMemory, Renders) {
  const Pair pair("v6.xml", "v7-wider-key.xml");
  for (std::size_t i = 0; kc_format_name(i) != nullptr; ++i) {
    const char* const format = kc_format_name(i);
    SCOPED_TRACE(format);
    std::string expected;
    kc_report* const fresh = pair.Report();
    const char* text = nullptr;
    ASSERT_EQ(kc_report_text(fresh, format, &text, nullptr, nullptr), KC_OK);
    expected = text;
    kc_report_free(fresh);
    kc_report* const report = pair.Report();
    EXPECT_GT(FailEachOf([&](kc_error** error) { return kc_report_text(report, format, &text, nullptr, error); }), 50);
    EXPECT_EQ(text, expected);
    kc_report_free(report);
  }
}

TEST(CApiOutOfMemory, Explains) {
  FailEachOf([](kc_error** error) {
    const char* page = nullptr;
    return kc_explain("primary-key.size", &page, error);
  });
}

}  // namespace
}  // namespace capi_test
