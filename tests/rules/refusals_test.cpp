// The catalog of refusals: its rows, finding the row of a text, and the row that GetRefusal() returns.

#include "common/refusals.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "common/modify_table.h"
#include "support/schema.h"

namespace {

using korvel::AllRefusals;
using korvel::Identify;
using korvel::RefusalRow;

std::string IdOf(std::string_view text) {
  const RefusalRow* row = Identify(text);
  return row == nullptr ? "(none)" : row->id;
}

// The text of a row with all its conversions filled in.
std::string Filled(std::string format, const std::string& text, const std::string& number) {
  for (std::size_t at = format.find('%'); at != std::string::npos; at = format.find('%', at)) {
    const std::size_t length = format.compare(at, 2, "%z") == 0 || format.compare(at, 2, "%l") == 0 ? 3 : 2;
    const std::string& argument = format[at + 1] == 's' ? text : number;
    format.replace(at, length, argument);
    at += argument.size();
  }
  return format;
}

TEST(Refusals, RowsAreComplete) {
  for (const RefusalRow* row : AllRefusals()) {
    SCOPED_TRACE(row->id);
    EXPECT_NE(std::string(row->id).find('.'), std::string::npos);
    EXPECT_NE(std::string(row->text), "");
    EXPECT_NE(std::string(row->summary), "");
    EXPECT_EQ(std::string(row->summary).find('\n'), std::string::npos);
    EXPECT_NE(ResultCodeName(row->code), nullptr);
    EXPECT_LE(row->code, 0);
  }
}

TEST(Refusals, IdsAndTextsAreUnique) {
  std::set<std::string> ids, texts;
  for (const RefusalRow* row : AllRefusals()) {
    EXPECT_TRUE(ids.insert(row->id).second) << row->id;
    EXPECT_TRUE(texts.insert(row->text).second) << row->text;
  }
}

TEST(Refusals, EveryTextIdentifiesItsRow) {
  for (const std::string argument : {"uid", "a b", "%s%n", "(null)", "it's", "\xef\xbc\x8c"}) {
    for (const RefusalRow* row : AllRefusals()) EXPECT_EQ(IdOf(Filled(row->text, argument, "42")), row->id) << argument;
  }
}

TEST(Refusals, NumbersMayHaveASign) {
  for (const RefusalRow* row : AllRefusals()) EXPECT_EQ(IdOf(Filled(row->text, "uid", "-2147483648")), row->id);
}

// Bytes of a format outside its conversions must occur in the text.
TEST(Refusals, TextWithAnotherByteIsNotOfTheRow) {
  for (const RefusalRow* row : AllRefusals()) {
    const std::string format = row->text;
    for (std::size_t i = 0; i < format.size(); ++i) {
      const bool in_conversion =
          format[i] == '%' || (i > 0 && format[i - 1] == '%') || (i > 1 && format.compare(i - 2, 2, "%z") == 0);
      if (in_conversion) continue;
      std::string other = format;
      other[i] = '\x01';
      EXPECT_NE(IdOf(Filled(other, "uid", "42")), row->id) << "byte " << i;
    }
  }
}

// A truncated text is found if more than a name is left. Rows with the same beginning cannot be distinguished then: the row that
// is found must begin like the text.
TEST(Refusals, TruncatedTextsIdentifyARowWithTheSameBeginning) {
  for (const RefusalRow* row : AllRefusals()) {
    const std::string text = Filled(row->text, std::string(1100, 'n'), "42").substr(0, 1023);
    const RefusalRow* found = Identify(text);
    ASSERT_TRUE(found != nullptr || row->text[0] == '%') << row->id;
    const std::string head = found == nullptr ? "" : std::string(found->text).substr(0, std::string(found->text).find('%'));
    EXPECT_TRUE(text.starts_with(head)) << row->id << " identifies " << found->id;
  }
}

// If a name contains the text of another row, the row of which more is in the text is found.
TEST(Refusals, OfTwoMatchingRowsTheMoreSpecificIsFound) {
  EXPECT_EQ(IdOf("can not find value_entry:uid in a ValueFieldNum(1) is not equal to b ValueFieldNum(2)"), korvel::kFieldNum.id);
  EXPECT_EQ(IdOf("can not find value_entry:a ValueFieldNum(1) in b"), korvel::kFieldMissing.id);
}

TEST(Refusals, OtherTextsIdentifyNoRow) {
  for (const char* text : {"", "entry name is too long:", "ModifyTable successed! table:'uid'",
                           "Primaykey is invalid! table:'uid", "The entry can't be found", "x Invalid parameter, meta is null",
                           "Invalid parameter, meta is null!", "Primaykey is invalid! table:'uid' or so",
                           "Primaykey is invalid! table:'", "The size of primarykey can't be modified! entry:'uid' metaname:'"}) {
    EXPECT_EQ(IdOf(text), "(none)") << text;
  }
}

// --- The row that GetRefusal() returns ---

TEST(FindRefusal, FindsEachRowByItsId) {
  for (const korvel::RefusalRow* row : korvel::AllRefusals()) EXPECT_EQ(korvel::FindRefusal(row->id), row) << row->id;
  EXPECT_EQ(korvel::FindRefusal("primary-key"), nullptr);
}

TEST(GetRefusal, IsNullForNewObject) { EXPECT_EQ(ModifyTable().GetRefusal(), nullptr); }

TEST(GetRefusal, BelongsToLastOperation) {
  ModifyTable checker;
  EXPECT_EQ(checker.CompareTableField(nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(checker.GetRefusal(), &korvel::kOldMetaNull);
  EXPECT_EQ(checker.ComparePrimaryKey(nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(checker.GetRefusal(), &korvel::kMetaNull);
}

TEST(GetRefusal, IsNullAfterSuccessAndAfterRefusalWithoutText) {
  const support::Schema schema = support::Of({{.name = "t", .fields = {{"k"}}, .key = {"k"}}}).Build();
  ModifyTable checker;
  const auto refuse = [&] { EXPECT_EQ(checker.ComparePrimaryKey(nullptr, nullptr, nullptr), -1); };
  refuse();
  EXPECT_EQ(checker.ComparePrimaryKey(schema.Meta(), schema.Meta(), nullptr), 0);
  EXPECT_EQ(checker.GetRefusal(), nullptr);
  refuse();
  EXPECT_EQ(checker.CheckTableMetaCompatible(nullptr, nullptr, "t", nullptr), -1);
  EXPECT_EQ(checker.GetRefusal(), nullptr);
  EXPECT_STREQ(checker.GetErrType(), "Invalid parameter, meta is null");
  refuse();
  EXPECT_EQ(checker.CheckWhiteListFieldLen("t", schema.Lib(), schema.Lib(), "1", "", nullptr), -1);
  EXPECT_EQ(checker.GetRefusal(), nullptr);
}

// The text of a lookup alone is not a refusal: its caller continues.
TEST(GetRefusal, IsNullIfALookupLeftTheText) {
  ModifyTable checker;
  EXPECT_EQ(checker.CheckWhetherExistEntryById(-1, nullptr, nullptr), nullptr);
  EXPECT_STREQ(checker.GetErrType(), "Entry_name or meta is invalid");
  EXPECT_EQ(checker.GetRefusal(), nullptr);
}

TEST(GetRefusal, IsOuterRowIfItsTextReplacesTheInnerOne) {
  const support::Schema schema = support::Of({{.name = "t", .fields = {{"9"}}, .key = {"9"}}}).Build();
  ModifyTable checker;
  EXPECT_EQ(checker.CheckFieldNameValidate(schema.Meta(), nullptr), -17);
  EXPECT_EQ(checker.GetRefusal(), &korvel::kNameDigit);
  EXPECT_EQ(checker.KorvelModifyTable(schema.Lib(), schema.Lib(), "t", 0, 1, nullptr, "", "", 0), -17);
  EXPECT_EQ(checker.GetRefusal(), &korvel::kFieldNames);
}

TEST(GetRefusal, IsInnerRowIfAStructureIsRefused) {
  const auto box = [](const char* type) {
    return support::Of({{.name = "s", .fields = {{"x", type}}}, {.name = "t", .fields = {{"k"}, {"b", "s"}}, .key = {"k"}}})
        .Build();
  };
  const support::Schema old_schema = box("uint32"), new_schema = box("int32");
  ModifyTable checker;
  EXPECT_EQ(checker.CheckTableMetaCompatible(old_schema.Lib(), new_schema.Lib(), "t", nullptr), -3);
  EXPECT_EQ(checker.GetRefusal(), &korvel::kEntryType);
}

TEST(GetRefusal, IsRowOfTableAttributesForCheckTablesText) {
  const auto table = [](const char* attr) {
    return support::Of({{.name = "t", .fields = {{"k"}}, .key = {"k"}, .attr = attr}}).Build();
  };
  const support::Schema right = table("TableType=GENERIC"), wrong = table("TableType=");
  ModifyTable checker;
  EXPECT_EQ(checker.CompareSortListInfo("t", "t", wrong.Lib(), right.Lib(), nullptr), -1);
  EXPECT_EQ(checker.GetRefusal(), &korvel::kTableAttributes);
  EXPECT_EQ(checker.CheckListMetaInfo("t", right.Lib(), wrong.Lib(), nullptr, 0, 0), -2);
  EXPECT_EQ(checker.GetRefusal(), &korvel::kTableAttributes);
  EXPECT_EQ(checker.CompareSortListInfo("u", "t", right.Lib(), right.Lib(), nullptr), -1);
  EXPECT_EQ(checker.GetRefusal(), nullptr) << checker.GetErrType();
}

}  // namespace
