// Limits of schema files and images: the limit itself is accepted, also as an image; one more is refused with its own error text.
// Limits of file size, of errors and of nested elements are tested by input_test.cpp and tests/qmx/reader_hostile_test.cpp.
#include <ostream>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_image.h"
#include "tool_test.h"

namespace tool_test {
namespace {

std::string Repeated(const std::string& text, std::size_t times) {
  std::string all;
  all.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

// One item a line, numbered; the first is on the line after `head`.
std::string Numbered(const std::string& head, const std::string& before, const std::string& behind, std::size_t count,
                     const std::string& tail) {
  std::string text = head + "\n";
  for (std::size_t i = 0; i < count; ++i) text.append(before).append(std::to_string(i)).append(behind).append("\n");
  return text + tail;
}

const std::string kHead = "<metalib name='m' version='1'>";

std::string OneMeta(const std::string& attributes, const std::string& more = "") {
  return kHead + "\n<meta " + attributes + "><entry name='a' type='int8'/>" + more + "</meta></metalib>";
}

std::string Metas(std::size_t count) {
  return Numbered(kHead, "<meta name='", "'><entry name='a' type='int8'/></meta>", count, "</metalib>");
}

std::string Entries(std::size_t count) {
  return Numbered(kHead + "<meta name='t'>", "<entry name='", "' type='int8'/>", count, "</meta></metalib>");
}

// The metas nest so many levels deep.
std::string Nested(std::size_t levels) {
  std::string text = kHead;
  for (std::size_t i = 0; i < levels; ++i) {
    const std::string type = i + 1 == levels ? "int8" : "m" + std::to_string(i + 1);
    text += "\n<meta name='m" + std::to_string(i) + "'><entry name='a' type='" + type + "'/></meta>";
  }
  return text + "</metalib>";
}

std::string Members(std::size_t count) { return OneMeta("name='t'", "<primarykey entries='" + Repeated("a ", count) + "'/>"); }
std::string Prolog(std::size_t bytes) { return "<!--" + std::string(bytes - 7, '.') + "-->" + OneMeta("name='t'"); }
std::string Name(std::size_t bytes) { return OneMeta("name='" + std::string(bytes, 'n') + "'"); }
std::string Attribute(std::size_t bytes) { return OneMeta("name='t' customattr='" + std::string(bytes, 'x') + "'"); }

struct Limit {
  std::string name;
  std::string (*file)(std::size_t size);
  std::size_t most;
  std::string refusal;
};

void PrintTo(const Limit& limit, std::ostream* out) { *out << limit.name; }

const Limit kLimits[] = {
    {"Metas", Metas, qmx::kMaxMetas, "1000002:1: error: too many metas; allowed: at most 1000000"},
    {"Entries", Entries, qmx::kMaxEntries, "1000002:1: error: too many entries in meta 't'; allowed: at most 1000000"},
    {"KeyMembers", Members, qmx::kMaxPrimaryKeyMembers, "2:66: error: the primary key has 32768 members; allowed: at most 32767"},
    {"Nesting", Nested, qmx::kMaxNesting, "2:39: error: meta 'm0' nests structures 129 levels deep; allowed: at most 128"},
    {"PrologBytes", Prolog, qmx::kMaxPrologBytes,
     "1:1: error: more than 1048576 bytes before the outermost element; allowed: at most 1048576"},
    {"NameBytes", Name, qmx::kMaxNameBytes, "2:13: error: 'name' has 65536 bytes; allowed: at most 65535"},
    {"AttributeBytes", Attribute, qmx::kMaxAttributeBytes,
     "2:28: error: 'customattr' has 16777217 bytes; allowed: at most 16777216"},
};

class LimitTest : public ToolTest, public testing::WithParamInterface<Limit> {};

TEST_P(LimitTest, IsAcceptedAndRefusedOneAbove) {
  Write("most.xml", GetParam().file(GetParam().most));
  ExpectOutcome(Korvelcheck({"compile", "most.xml", "-o", "most.qmb"}), 0, "", "");
  ExpectOutcome(Korvelcheck({"layout", "most.qmb", "--table", "gone"}), 2, "", "korvelcheck: table 'gone' is not in most.qmb\n");
  Write("more.xml", GetParam().file(GetParam().most + 1));
  ExpectInputError(Korvelcheck({"compile", "more.xml", "-o", "more.qmb"}), "more.xml:" + GetParam().refusal + "\n");
  EXPECT_FALSE(std::filesystem::exists(PathOf("more.qmb")));
}

INSTANTIATE_TEST_SUITE_P(Limits, LimitTest, testing::ValuesIn(kLimits), [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace tool_test
