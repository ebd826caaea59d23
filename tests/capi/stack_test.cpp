// Calls on a thread with a small stack, such as those of server programs.
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

#include "capi/example.h"

namespace capi_test {
namespace {

using korvelcheck::Report;
using korvelcheck::Schema;

// Promised in korvelcheck.h.
constexpr std::size_t kStackBytes = std::size_t{128} * 1024;

// The deepest structure that a schema may contain is 128 levels deep; `innermost` is the type of its field.
std::string DeepLibrary(const std::string& innermost) {
  std::string text = "<metalib name='m' version='1'>\n";
  std::string type = innermost;
  for (int i = 0; i < 127; ++i) {
    const std::string name = "s" + std::to_string(i);
    text += "<meta name='" + name + "'><entry name='a' type='" + type + "'/></meta>\n";
    type = name;
  }
  return text + "<meta name='t'><entry name='k' type='uint32'/><entry name='deep' type='" + type +
         "'/><primarykey entries='k'/></meta>\n</metalib>\n";
}

// Runs `work` on a thread with that stack. An overflow ends the program.
void RunOnSmallStack(const std::function<void()>& work) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStackBytes), 0);
  pthread_t thread = {};
  const auto run = [](void* function) -> void* {
    (*static_cast<const std::function<void()>*>(function))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

class CApiStack : public testing::Test {
 protected:
  void SetUp() override {
    if (KORVEL_SANITIZED) GTEST_SKIP() << "sanitizers need more stack";
  }
};

TEST_F(CApiStack, SufficesForDeepSchemas) {
  const std::string old_text = DeepLibrary("int32");
  const std::string new_text = DeepLibrary("int16");
  std::string path;
  std::size_t formats = 0;
  RunOnSmallStack([&] {
    const Schema old_schema = Schema::FromMemory("old.xml", old_text);
    const Schema new_schema = Schema::FromMemory("new.qmb", Schema::FromMemory("new.xml", new_text).Image());
    const Report report = korvelcheck::Check(old_schema, new_schema);
    path = report.Findings().at(0).path;
    for (; kc_format_name(formats) != nullptr; ++formats) static_cast<void>(report.Text(kc_format_name(formats)));
    static_cast<void>(korvelcheck::Lint(new_schema).Text("json"));
  });
  EXPECT_EQ(path.rfind("t.deep.a.a.", 0), 0U) << path;
  EXPECT_GT(formats, 5U);
}

TEST_F(CApiStack, SufficesForErrors) {
  std::string deep = "<metalib name='m' version='1'>";
  for (int i = 0; i < 1000; ++i) deep += "<meta>";
  std::vector<int> results;
  RunOnSmallStack([&] {
    for (const std::string& text : {deep, DeepLibrary("s126"), std::string(100'000, '<')}) {
      kc_schema* schema = nullptr;
      kc_error* error = nullptr;
      results.push_back(kc_schema_load("bad.xml", text.data(), text.size(), &schema, &error));
      kc_error_free(error);
    }
  });
  EXPECT_EQ(results, std::vector<int>(3, KC_ERROR_INPUT));
}

// With suggestions and fixes for every kind of change.
TEST_F(CApiStack, SufficesForEveryCase) {
  std::size_t refused = 0;
  for (const std::string& name : cases::Names()) {
    const std::string old_text = cases::ReadFile(KORVEL_CASES_DIR "/" + name + "/old.xml");
    const std::string new_text = cases::ReadFile(KORVEL_CASES_DIR "/" + name + "/new.xml");
    RunOnSmallStack([&] {
      try {
        const Report report =
            korvelcheck::Check(Schema::FromMemory("old.xml", old_text), Schema::FromMemory("new.xml", new_text));
        if (!report.IsAllowed()) ++refused;
      } catch (const korvelcheck::Error&) {
        // Some cases are about invalid schemas.
      }
    });
  }
  EXPECT_GT(refused, 100U);
}

}  // namespace
}  // namespace capi_test
