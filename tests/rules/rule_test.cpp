#include "rules/rule_test.h"

#include <ostream>
#include <utility>

#include "common/refusals.h"

namespace rules {
namespace {

constexpr std::size_t kLongestBufferText = 1023;

std::string Cut(std::string text) { return text.substr(0, kLongestBufferText); }

// A record when every usual table name is long: texts from the buffer are truncated, texts that are only logged are not.
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

// Whether a refusal with a text can be found in the catalog by it.
bool IsInTheCatalog(const Outcome& outcome) {
  const bool is_refused_with_a_text = outcome.code < 0 && outcome.buffer != kUntouched;
  return !is_refused_with_a_text || korvel::Identify(outcome.buffer) != nullptr;
}

// Expects that GetRefusal() is the row of the text that the call left, and null after a success or a refusal without a text.
void ExpectRow(const Call& call) {
  ModifyTable checker;
  support::CaptureCategory log;
  const Outcome outcome = Observe(checker, log, call);
  const korvel::RefusalRow* const of_text = outcome.code < 0 ? korvel::Identify(outcome.buffer) : nullptr;
  EXPECT_EQ(checker.GetRefusal(), of_text) << outcome.buffer;
}

}  // namespace

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

Call Between(Library old_library, Library new_library, Compare compare) {
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

TEST_P(RuleTest, HasExpectedOutcome) {
  const Outcome outcome = OutcomeOf(GetParam().call, GetParam().quiet);
  EXPECT_EQ(outcome, GetParam().expected);
  EXPECT_TRUE(IsInTheCatalog(outcome));
  ExpectRow(GetParam().call);
}

TEST_P(RuleTest, TruncatesLongTexts) {
  const support::LongNames long_names;
  EXPECT_EQ(OutcomeOf(GetParam().call, GetParam().quiet), Lengthened(GetParam().expected));
}

std::string RowName(const testing::TestParamInfo<Row>& info) { return info.param.name; }

}  // namespace rules
