// The catalogue of refusals: its rows, and the way back from a text to its row.

#include "common/refusals.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using korvel::AllRefusals;
using korvel::Identify;
using korvel::RefusalRow;

std::string IdOf(std::string_view text) {
  const RefusalRow* row = Identify(text);
  return row == nullptr ? "(none)" : row->id;
}

// A row's text with every text conversion and every number filled in.
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

TEST(Refusals, EveryTextLeadsBackToItsRow) {
  for (const std::string argument : {"uid", "a b", "%s%n", "(null)", "it's", "\xef\xbc\x8c"}) {
    for (const RefusalRow* row : AllRefusals()) EXPECT_EQ(IdOf(Filled(row->text, argument, "42")), row->id) << argument;
  }
}

TEST(Refusals, NumbersMayHaveASign) {
  for (const RefusalRow* row : AllRefusals()) EXPECT_EQ(IdOf(Filled(row->text, "uid", "-2147483648")), row->id);
}

// A byte of a format that belongs to no conversion has to stand in the text.
TEST(Refusals, ATextWithAnyOtherByteIsNotOfTheRow) {
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

// A text that lost its end is found by what it has left, if that is more than a name. Rows that begin alike cannot be told apart
// then: the row found has to begin as the text does.
TEST(Refusals, CutTextsLeadToARowThatBeginsAlike) {
  for (const RefusalRow* row : AllRefusals()) {
    const std::string text = Filled(row->text, std::string(1100, 'n'), "42").substr(0, 1023);
    const RefusalRow* found = Identify(text);
    ASSERT_TRUE(found != nullptr || row->text[0] == '%') << row->id;
    const std::string head = found == nullptr ? "" : std::string(found->text).substr(0, std::string(found->text).find('%'));
    EXPECT_TRUE(text.starts_with(head)) << row->id << " led to " << found->id;
  }
}

// Where a name holds what another row says, the row of which more stands in the text is meant.
TEST(Refusals, OfTwoRowsThatFitTheOneWithMoreOfItsOwnIsFound) {
  EXPECT_EQ(IdOf("can not find value_entry:uid in a ValueFieldNum(1) is not equal to b ValueFieldNum(2)"), korvel::kFieldNum.id);
  EXPECT_EQ(IdOf("can not find value_entry:a ValueFieldNum(1) in b"), korvel::kFieldMissing.id);
}

TEST(Refusals, OtherTextsLeadNowhere) {
  for (const char* text : {"", "entry name is too long:", "ModifyTable successed! table:'uid'",
                           "Primaykey is invalid! table:'uid", "The entry can't be found", "x Invalid parameter, meta is null",
                           "Invalid parameter, meta is null!", "Primaykey is invalid! table:'uid' or so",
                           "Primaykey is invalid! table:'", "The size of primarykey can't be modified! entry:'uid' metaname:'"}) {
    EXPECT_EQ(IdOf(text), "(none)") << text;
  }
}

}  // namespace
