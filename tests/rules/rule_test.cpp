#include "rules/rule_test.h"

#include <ostream>
#include <utility>

#include "common/refusals.h"

namespace rules {
namespace {

constexpr std::size_t kLongestBufferText = 1023;

std::string Cut(std::string text) { return text.substr(0, kLongestBufferText); }

// A record as it stands when every usual table name is long: texts that come from the buffer are cut, texts only logged are not.
std::string LengthenedLine(const std::string& line) {
  if (line.find(", log only: ") != std::string::npos) return support::Lengthened(line);
  const std::size_t text = line.find(": ") + 2;
  return line.substr(0, text) + Cut(support::Lengthened(line.substr(text)));
}

Outcome Lengthened(const Outcome& plain) {
  Outcome outcome = plain;
  outcome.buffer = Cut(support::Lengthened(plain.buffer));
  for (std::string& line : outcome.log) line = LengthenedLine(line);
  return outcome;
}

// Whether a refusal that left a text can be found in the catalog by it.
bool IsInTheCatalog(const Outcome& outcome) {
  const bool is_refused_with_a_text = outcome.code < 0 && outcome.buffer != kUntouched;
  return !is_refused_with_a_text || korvel::Identify(outcome.buffer) != nullptr;
}

// Whether the object names the row of the text that it left, and none where it refuses nothing or without a text.
void ExpectRow(const Ask& ask) {
  ModifyTable checker;
  support::CaptureCategory log;
  const Outcome outcome = Observe(checker, log, ask);
  const korvel::RefusalRow* const of_text = outcome.code < 0 ? korvel::Identify(outcome.buffer) : nullptr;
  EXPECT_EQ(checker.GetRefusal(), of_text) << outcome.buffer;
}

}  // namespace

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

Ask Between(Library old_library, Library new_library, Compare compare) {
  return [=](ModifyTable& checker, LPVESKCATEGORYINST log) {
    const Schema old_schema = old_library.Build();
    const Schema new_schema = new_library.Build();
    const std::string old_bytes = old_schema.Bytes();
    const std::string new_bytes = new_schema.Bytes();
    const int code = compare(checker, old_schema, new_schema, log);
    EXPECT_TRUE(old_schema.Bytes() == old_bytes) << "the old library was changed";
    EXPECT_TRUE(new_schema.Bytes() == new_bytes) << "the new library was changed";
    return code;
  };
}

TEST_P(RuleTest, AnswersExactly) {
  const Outcome outcome = Judge(GetParam().ask, GetParam().quiet);
  EXPECT_EQ(outcome, GetParam().expected);
  EXPECT_TRUE(IsInTheCatalog(outcome));
  ExpectRow(GetParam().ask);
}

TEST_P(RuleTest, CutsLongTexts) {
  const support::LongNames long_names;
  EXPECT_EQ(Judge(GetParam().ask, GetParam().quiet), Lengthened(GetParam().expected));
}

std::string RowName(const testing::TestParamInfo<Row>& info) { return info.param.name; }

}  // namespace rules
