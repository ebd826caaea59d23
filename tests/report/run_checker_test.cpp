// Verdicts of the checker as reports store them.
#include "analysis/findings/run_checker.h"

#include <gtest/gtest.h>

#include "read_source.h"
#include "schema/settings.h"

namespace report_test {
namespace {

using korvel::PartialSettings;
using korvel::ResolveSettings;
using korvel::RunChecker;
using korvel::Source;
using korvel::Verdict;

Source Orders(const std::string& fields) {
  return ReadSource("orders.xml", "<metalib name=\"mall\" version=\"2\" protocol=\"QMX\"><meta name=\"orders\">" + fields +
                                      "<primarykey entries=\"uid\"/></meta></metalib>");
}

Verdict VerdictOn(const Source& old_source, const Source& new_source, const std::string& server_version = "") {
  PartialSettings given;
  given.server_version = server_version;
  return RunChecker(old_source.Library(), new_source.Library(), "orders", ResolveSettings(given, old_source, "orders"));
}

TEST(RunChecker, AllowedChangeHasNoText) {
  const Source source = Orders(R"(<entry name="uid" type="uint32"/>)");
  const Verdict verdict = VerdictOn(source, source);
  EXPECT_FALSE(verdict.Refused());
  EXPECT_EQ(verdict.text, "");
  EXPECT_EQ(verdict.rule, "");
}

TEST(RunChecker, RefusedChangeHasCodeTextAndRule) {
  const Verdict verdict =
      VerdictOn(Orders(R"(<entry name="uid" type="uint32"/>)"), Orders(R"(<entry name="uid" type="uint64"/>)"));
  EXPECT_TRUE(verdict.Refused());
  EXPECT_EQ(verdict.code, -3);
  EXPECT_EQ(verdict.text, "The size of primarykey can't be modified! entry:'uid' metaname:'orders'");
  EXPECT_EQ(verdict.rule, "primary-key.size");
}

// Without a log category the checker refuses to check field lengths.
TEST(RunChecker, ChecksFieldLengths) {
  const Source source = Orders(R"(<entry name="uid" type="uint32"/><entry name="blob" type="bytes" size="200000"/>)");
  EXPECT_EQ(VerdictOn(source, source, "3.0.0").text, "ERR_ENTRY_LEN;blob|");
  EXPECT_FALSE(VerdictOn(source, source, "3.29.0").Refused());
}

}  // namespace
}  // namespace report_test
