// CheckFieldNameValidate.

#include <clocale>

#include "rules/rule_test.h"

namespace rules {
namespace {

constexpr char kRule[] = "CheckFieldNameValidate";
constexpr char kPreset[] = "entry name is too long:";  // in the buffer if every name passes; part of the interface

Library Named(const std::vector<std::string>& names) {
  Table table;
  for (const std::string& name : names) table.fields.push_back({.name = name});
  return Of({table});
}

Call NamesOf(const Library& library) {
  return Between(library, Absent(), [](ModifyTable& checker, const Schema& schema, const Schema&, auto log) {
    return checker.CheckFieldNameValidate(schema.Meta(), log);
  });
}
Call Names(const std::vector<std::string>& names) { return NamesOf(Named(names)); }

std::string Length(const std::string& name) {
  return Info(kRule, "length of entry name " + name + " is " + std::to_string(name.size()));
}

Outcome Passed(const std::vector<std::string>& names) {
  Outcome outcome = {.buffer = kPreset};
  for (const std::string& name : names) outcome.log.push_back(Length(name));
  return outcome;
}

// The record with the length of the bad name comes before the refusal.
Outcome Bad(int code, const std::string& name, const std::string& text) {
  return {code, text, {Length(name), Error(kRule, text)}};
}
Outcome Digit(const std::string& name) { return Bad(-17, name, "field name[" + name + "] startswith digit."); }
Outcome Illegal(const std::string& name) { return Bad(-18, name, "field name[" + name + "] has illegal character."); }
Outcome TooLong(const std::string& name) { return Bad(-9, name, "length of entry " + name + " is too long"); }

std::vector<Row> Rows() {
  const std::string fits(31, 'n'), too_long(32, 'n'), hyphen = std::string(39, 'n') + "-", digits(40, '1');
  const Library box = Of({{.fields = {{"items", "box%s"}}}, {.name = "box%s", .fields = {{"9-"}}}});
  return {
      {"null_meta", NamesOf(Absent()), Refused(-1, kRule, "meta is NULL")},
      {"no_entries", Names({}), {.buffer = kPreset}},
      {"negative_entry_number", NamesOf(Named({"9"}).With(support::EntryNumber("mall%s", -1))), {.buffer = kPreset}},
      {"legal", Names({"_a1", "Z", "zone_2"}), Passed({"_a1", "Z", "zone_2"})},
      {"underscore_alone", Names({"_"}), Passed({"_"})},
      {"of_31_bytes", Names({fits}), Passed({fits})},
      {"of_32_bytes", Names({too_long}), TooLong(too_long)},
      {"leading_digit", Names({"9lives"}), Digit("9lives")},
      {"leading_zero", Names({"0"}), Digit("0")},
      {"hyphen", Names({"a-b"}), Illegal("a-b")},
      {"blank", Names({"a b"}), Illegal("a b")},
      {"blank_after_a_value", Names({"a "}), Illegal("a ")},
      {"byte_above_7f", Names({"caf\xc3\xa9"}), Illegal("caf\xc3\xa9")},
      {"lowest_high_byte", Names({"\x80"}), Illegal("\x80")},
      {"highest_byte", Names({"a\xff"}), Illegal("a\xff")},
      {"percent_signs", Names({"a%s%n%d%"}), Illegal("a%s%n%d%")},
      {"percent_signs_after_a_digit", Names({"1%s%n"}), Digit("1%s%n")},
      {"character_before_length", Names({hyphen}), Illegal(hyphen)},
      {"digit_before_length", Names({digits}), Digit(digits)},
      {"digit_before_character", Names({"1-"}), Digit("1-")},
      {"only_the_first_bad_name",
       Names({"ok", "a-b", "9"}),
       {-18,
        "field name[a-b] has illegal character.",
        {Length("ok"), Length("a-b"), Error(kRule, "field name[a-b] has illegal character.")}}},
      {"structures_are_not_visited", NamesOf(box), Passed({"items"})},
  };
}

INSTANTIATE_TEST_SUITE_P(FieldName, RuleTest, testing::ValuesIn(Rows()), RowName);

TEST(FieldName, EmptyNameIsRefused) { EXPECT_EQ(OutcomeOf(Names({""})), Bad(-19, "", "field name is empty.")); }

TEST(FieldName, MissingNameCountsAsEmpty) {
  EXPECT_EQ(OutcomeOf(NamesOf(Named({"uid"}).With(support::NoName("mall%s", "uid")))), Bad(-19, "", "field name is empty."));
}

// The text in the buffer is truncated, the record of the length is not.
TEST(FieldName, TextsOfLongNames) {
  const auto cut_bad = [](int code, const std::string& name, const std::string& text) {
    return Outcome{code, text.substr(0, 1023), {Length(name), Error(kRule, text.substr(0, 1023))}};
  };
  const std::string digit(2000, '1'), letters(2000, 'n'), blanks(2000, ' ');
  EXPECT_EQ(OutcomeOf(Names({digit})), cut_bad(-17, digit, "field name[" + digit + "] startswith digit."));
  EXPECT_EQ(OutcomeOf(Names({blanks})), cut_bad(-18, blanks, "field name[" + blanks + "] has illegal character."));
  EXPECT_EQ(OutcomeOf(Names({letters})), cut_bad(-9, letters, "length of entry " + letters + " is too long"));
}

bool IsAllowed(int byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || byte == '_';
}

void CheckEveryByte() {
  for (int byte = 1; byte < 256; ++byte) {
    const std::string letter(1, static_cast<char>(byte));
    const bool is_digit = byte >= '0' && byte <= '9';
    const std::string behind = "a" + letter + "z";
    EXPECT_EQ(OutcomeOf(Names({letter})), is_digit          ? Digit(letter)
                                          : IsAllowed(byte) ? Passed({letter})
                                                            : Illegal(letter))
        << byte;
    EXPECT_EQ(OutcomeOf(Names({behind})), IsAllowed(byte) ? Passed({behind}) : Illegal(behind)) << byte;
  }
}

TEST(FieldName, EveryByteAsFirstAndLast) { CheckEveryByte(); }

// Locales in which more bytes are letters; those that are not installed are skipped.
TEST(FieldName, LocaleHasNoEffect) {
  for (const char* locale : {"C.UTF-8", "en_US.ISO-8859-1", "de_DE", "fr_FR.ISO-8859-15", "tr_TR.UTF-8"}) {
    if (std::setlocale(LC_ALL, locale) != nullptr) CheckEveryByte();
  }
  std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace rules
