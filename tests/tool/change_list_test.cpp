// The lists of changes in a text report: what is left out, and what tells two changes apart.
#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class ChangeListTest : public ToolTest {
 protected:
  std::string Check() const {
    const Outcome outcome = Korvelcheck({"check", "old.xml", "new.xml"});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
};

TEST_F(ChangeListTest, LeavesOutTheVersionOfTheLibraryIfNothingElseIsAllowed) {
  Write("old.xml", Library(5, {Table({.key_type = "uint32"})}));
  Write("new.xml", Library(6, {Table({.key_type = "uint64"})}));
  EXPECT_THAT(Check(), AllOf(HasSubstr("refused [primary-key.size]"), Not(HasSubstr("on its own")),
                             Not(HasSubstr("version of the library")), Not(HasSubstr("1 is refused"))));
}

TEST_F(ChangeListTest, ListsTheOtherChangesWithoutTheVersionOfTheLibrary) {
  Write("old.xml", Library(5, {Table({.key_type = "uint32", .fields = "<entry name=\"zone\" type=\"int32\"/>"})}));
  Write("new.xml", Library(6, {Table({.key_type = "uint64", .fields = "<entry name=\"zone\" type=\"int8\"/>"})}));
  EXPECT_THAT(Check(),
              AllOf(HasSubstr("\n  2 are refused:\n    type of uid: uint32 -> uint64\n    type of zone: int32 -> int8\n1 table"),
                    Not(HasSubstr("version of the library"))));
}

TEST_F(ChangeListTest, ListsTheVersionOfTheLibraryWithOtherAllowedChanges) {
  Write("old.xml", Library(5, {Table({.key_type = "uint32"})}));
  Write("new.xml", Library(6, {Table({.key_type = "uint64", .fields = "<entry name=\"zone\" type=\"int8\" version=\"6\"/>"})}));
  EXPECT_THAT(Check(), HasSubstr("\n  2 of 3 changes are allowed on their own (verified):\n    version of the library: 5 -> 6\n"
                                 "    field zone added\n  1 is refused:\n    type of uid: uint32 -> uint64\n"));
}

TEST_F(ChangeListTest, ListsAnotherChangeThatAloneIsAllowed) {
  Write("old.xml", Library(5, {Table({.key_type = "uint32", .fields = "<entry name=\"zone\" type=\"string\" size=\"8\"/>"})}));
  Write("new.xml", Library(5, {Table({.key_type = "uint64", .fields = "<entry name=\"zone\" type=\"string\" size=\"9\"/>"})}));
  EXPECT_THAT(Check(), HasSubstr("\n  1 of 2 changes is allowed on its own (verified):\n    size of zone: 8 -> 9\n"));
}

// A structure with one field, and one without that field's change.
std::string Structure(const std::string& name, const std::string& type) {
  return "<meta name=\"" + name + "\"><entry name=\"price\" type=\"" + type + "\"/></meta>";
}

std::string Shop(const std::string& type) {
  return Library(5, {Structure("item", type), Structure("gift", type),
                     Table({.fields = "<entry name=\"price\" type=\"" + type +
                                      "\"/><entry name=\"a\" type=\"item\"/><entry name=\"b\" type=\"gift\"/>"})});
}

// Regression: three changes of fields with one name were listed as the same line.
TEST_F(ChangeListTest, NamesTheStructureOfEachChange) {
  Write("old.xml", Shop("int64"));
  Write("new.xml", Shop("int32"));
  const std::string report = Check();
  EXPECT_THAT(report, HasSubstr("\n  3 are refused:\n    type of price: int64 -> int32\n    type of item.price: int64 -> int32\n"
                                "    type of gift.price: int64 -> int32\n1 table"));
}

// Changes that are refused in combination are a list, too.
TEST_F(ChangeListTest, NoTwoLinesOfAListAreTheSame) {
  Write("old.xml", Shop("int64"));
  Write("new.xml", Shop("int32"));
  std::istringstream lines(Check());
  std::multiset<std::string> items;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("    ") && line.find(" | ") == std::string::npos) items.insert(line);
  }
  EXPECT_EQ(items.size(), 3u);
  for (const std::string& item : items) EXPECT_EQ(items.count(item), 1u) << item;
}

TEST_F(ChangeListTest, NamesTheStructureInTheLineOfAChange) {
  const auto shop = [](const std::string& field) {
    return Library(5, {"<meta name=\"item\"><entry name=\"id\" type=\"int8\"/>" + field + "</meta>",
                       Table({.fields = "<entry name=\"a\" type=\"item\"/>"})});
  };
  Write("old.xml", shop("<entry name=\"price\" type=\"int32\"/>"));
  Write("new.xml", shop(""));
  EXPECT_THAT(Check(), HasSubstr("\n  change: field item.price removed\n  path: orders.a.price\n"));
}

}  // namespace
}  // namespace tool_test
