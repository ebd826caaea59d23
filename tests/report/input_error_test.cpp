// Faults of files as data, and the lines that are printed for them.
#include "base/input_error.h"

#include <gmock/gmock.h>

namespace report_test {
namespace {

using korvel::FaultAbout;
using korvel::FaultAt;
using korvel::FaultIn;
using korvel::FaultKind;
using korvel::FaultsOf;
using korvel::InputError;
using korvel::InputFault;
using korvel::LinesOf;
using testing::ElementsAre;

TEST(InputFault, SaysWhatIsWrongAndWhatIsAllowed) {
  const InputFault fault = FaultAt(FaultKind::kInvalid, "a.xml", 3, 5, "type is 'x; allowed: y'; allowed: int8, int16");
  EXPECT_EQ(fault.text, "type is 'x; allowed: y'");
  EXPECT_EQ(fault.allowed, "int8, int16");
  EXPECT_EQ(fault.message, "a.xml:3:5: error: type is 'x; allowed: y'; allowed: int8, int16");
  EXPECT_EQ(FaultAt(FaultKind::kInvalid, "a.xml", 3, 5, "too many errors").allowed, "");
}

TEST(InputFault, MessagesAreOneLine) {
  EXPECT_EQ(FaultAt(FaultKind::kSyntax, "a\nb", 1, 2, "c").message, "a\\nb:1:2: error: c");
  EXPECT_EQ(FaultIn(FaultKind::kImage, "a\nb", "c").message, "a\\nb: error: c");
  EXPECT_EQ(FaultAbout(FaultKind::kUnreadable, "a\nb", "c").message, "korvelcheck: a\\nb: c");
  EXPECT_EQ(FaultAbout(FaultKind::kUnreadable, "a\nb", "c").file, "a\nb");
}

TEST(InputFault, LineOfAnErrorBecomesAFaultOfTheFile) {
  const InputError error{{"korvelcheck: git:v1:a.xml: is a link", "git fails"}};
  const std::vector<InputFault> faults = FaultsOf(error, "git:v1:a.xml");
  ASSERT_EQ(faults.size(), 2u);
  EXPECT_EQ(faults[0].text, "is a link");
  EXPECT_EQ(faults[0].file, "git:v1:a.xml");
  EXPECT_EQ(faults[0].kind, FaultKind::kUnreadable);
  EXPECT_EQ(faults[1].text, "git fails");
  EXPECT_EQ(LinesOf(faults), error.lines);
}

TEST(InputFault, FileThatCannotBeComparedIsNamedOnceBehindTheFaults) {
  InputFault first = FaultAt(FaultKind::kInvalid, "git:v1:a.xml", 1, 1, "x");
  InputFault second = FaultAt(FaultKind::kInvalid, "git:v1:a.xml", 2, 1, "y");
  first.needed_by = second.needed_by = "a.xml";
  EXPECT_THAT(LinesOf({first, second, FaultAt(FaultKind::kSyntax, "a.xml", 1, 1, "z")}),
              ElementsAre("git:v1:a.xml:1:1: error: x", "git:v1:a.xml:2:1: error: y",
                          "korvelcheck: a.xml: cannot be compared with git:v1:a.xml", "a.xml:1:1: error: z"));
}

}  // namespace
}  // namespace report_test
