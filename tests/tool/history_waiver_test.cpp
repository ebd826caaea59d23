// Histories with waivers and warnings: what the formats that list findings say must agree with the exit code.
#include <gmock/gmock.h>

#include "history_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::Not;

class HistoryWaiverTest : public HistoryVerdictTest {
 protected:
  // Commits a version of two tables with a field `v`; `orders` also has a structure `box`.
  void CommitVersion(int number, const std::string& box, const std::string& type) const {
    const std::string v = Field("v", 2, type);
    CommitFile("a.xml", Library(number,
                                {"<meta name=\"box\">" + box + "</meta>", Table({.name = "first", .fields = v}),
                                 Table({.fields = v + Field("b", 3, "box")})},
                                "TLV"));
  }
  static std::string Field(const std::string& name, int id, const std::string& type, const std::string& more = "") {
    return "<entry name=\"" + name + "\" id=\"" + std::to_string(id) + "\" type=\"" + type + "\"" + more + "/>";
  }
  static std::string WideWaiver(const std::string& table, const std::string& rule, const std::string& entry,
                                const std::string& until = "2999-01-01") {
    return "[[waivers]]\ntable = \"" + table + "\"\nrule = \"" + rule + "\"\nentry = \"" + entry +
           "\"\nreason = \"no records\"\nuntil = " + until + "\n";
  }
  Outcome HistoryOf(const std::vector<std::string>& more, const std::string& format = "text") const {
    return History(Joined({"--git", "a.xml"}, more), format);
  }
  Json Sarif(const std::vector<std::string>& more = {}) const { return Parsed(HistoryOf(more, "sarif"))["runs"][0]; }
  static std::vector<Json> ResultsOf(const Json& run, const std::string& rule) {
    std::vector<Json> results;
    for (const Json& one : run["results"]) {
      if (one["ruleId"] == rule) results.push_back(one);
    }
    return results;
  }
};

// --- Refused against the newest version only ---

// A field shrinks in step 1, which is waived. An id is used again with another type: only the first version has the old one.
class OpenAgainstNewestTest : public HistoryWaiverTest {
 protected:
  OpenAgainstNewestTest() {
    const std::string x = Field("x", 1, "uint32");
    const std::string z = Field("z", 3, "uint64");
    CommitVersion(1, x + Field("y", 2, "uint32"), "uint64");
    CommitVersion(2, x + z, "uint32");
    CommitVersion(3, x + z + Field("w", 2, "string", " size=\"9\" version=\"3\""), "uint32");
    Write("korvelcheck.toml", WideWaiver("orders", "field.size", "v") + WideWaiver("first", "field.size", "v"));
  }
  // With these options, each format shows why the call fails.
  void ExpectListed(const std::vector<std::string>& more) const {
    EXPECT_EQ(HistoryOf(more).exit_code, 1);
    EXPECT_THAT(HistoryOf(more, "github").out, HasSubstr("::error "));
    EXPECT_THAT(HistoryOf(more, "junit").out, HasSubstr("<failure "));
    EXPECT_THAT(HistoryOf(more, "gitlab").out, HasSubstr("\"major\""));
    EXPECT_THAT(HistoryOf(more, "markdown").out, Not(HasSubstr("all waived")));
    const Json run = Sarif(more);
    EXPECT_EQ(run["invocations"][0]["exitCode"], 1);
    std::size_t open = 0;
    for (const Json& one : ResultsOf(run, "field.size")) open += one.contains("suppressions") ? 0 : 1;
    EXPECT_EQ(open, 1u);
  }
};

// The call failed, but these formats said that all was waived: the table is refused in a step, too.
TEST_F(OpenAgainstNewestTest, IsListedInEveryFormat) { ExpectListed({}); }

// The limit left the table out, because a step refuses it.
TEST_F(OpenAgainstNewestTest, IsListedIfTheLimitIsReached) { ExpectListed({"--max-findings", "1"}); }

// The waived change of the step was named.
TEST_F(OpenAgainstNewestTest, NamesTheOpenChangeAsCause) {
  EXPECT_THAT(
      HistoryOf({}).out,
      HasSubstr("caused by: type of y: uint32 -> string(9); its id 2 is reused by w (string(9)); another change was refused "
                "in step 1: "));
}

// --- Refused in a step, with a warning against the newest version ---

// The refusal of step 3 was listed again with the warning.
TEST_F(HistoryWaiverTest, RefusalOfAStepIsNotRepeatedWithAWarning) {
  const std::string counters = Field("n", 1, "uint32") + Field("m", 4, "uint32");
  const std::string again = counters + Field("a", 2, "uint8", " count=\"9\" refer=\"m\" version=\"3\"");
  CommitVersion(1, counters + Field("a", 2, "uint8", " count=\"9\" refer=\"n\""), "uint64");
  CommitVersion(2, counters, "uint64");
  CommitVersion(3, again, "uint64");
  CommitVersion(4, again, "uint32");
  const Json run = Sarif();
  EXPECT_EQ(ResultsOf(run, "field.size").size(), 3u);  // orders in step 1, both tables in step 3
  EXPECT_EQ(ResultsOf(run, "advice.refer-changed").size(), 1u);
  EXPECT_THAT(HistoryOf({}, "junit").out, HasSubstr("failures=\"3\""));
  const std::string text = HistoryOf({}).out;
  EXPECT_THAT(text, testing::ContainsRegex("\n  [^ ]*: refused: table orders: -3 ERROR_VALUE_FIELD\n  [^ ]*: warning "
                                           "\\[advice.refer-changed\\] "));
  EXPECT_THAT(
      text, Not(testing::ContainsRegex("\n  git:[^ ]*: refused \\[field.size\\] [^\n]*\n    checker: [^\n]*\n    table orders")));
}

// --- Reused ids ---

class WaivedReuseTest : public HistoryWaiverTest {
 protected:
  WaivedReuseTest() {
    const auto w = [](int size) { return Field("w", 1, "bytes", " size=\"" + std::to_string(size) + "\""); };
    CommitVersion(1, w(4) + Field("x", 2, "uint32"), "uint64");
    CommitVersion(2, w(8), "uint64");
    CommitVersion(3, w(12) + Field("y", 2, "float"), "uint64");
    CommitVersion(4, w(16), "uint64");
  }
  static constexpr char kRule[] = "advice.id-reused";
  Json Result() const {
    const std::vector<Json> results = ResultsOf(Sarif(), kRule);
    EXPECT_EQ(results.size(), 1u);
    return results.empty() ? Json() : results.front();
  }
};

// A waived reused id stayed an open alert.
TEST_F(WaivedReuseTest, IsSuppressed) {
  Json open = Result();
  EXPECT_FALSE(open.contains("suppressions"));
  EXPECT_THAT(HistoryOf({}, "github").out, HasSubstr("::warning "));
  const Json reused = Parsed(HistoryOf({}, "json"))["files"][0]["reused_ids"][0];
  EXPECT_EQ(open["partialFingerprints"].begin().value(), reused["fingerprint"]);
  Write("korvelcheck.toml", WideWaiver("orders", kRule, "b.y"));
  Json waived = Result();
  EXPECT_EQ(waived["suppressions"][0]["justification"], "no records");
  EXPECT_EQ(waived["partialFingerprints"], open["partialFingerprints"]);
  EXPECT_THAT(HistoryOf({}, "github").out, Not(HasSubstr("::warning ")));
}

// The call failed without an error about the waiver.
TEST_F(WaivedReuseTest, ExpiredWaiverIsAnErrorIfTheReuseFails) {
  Write("korvelcheck.toml", WideWaiver("orders", kRule, "b.y", "2020-01-01"));
  const Outcome failing = HistoryOf({"--fail-on", "warning"});
  EXPECT_EQ(failing.exit_code, 1);
  EXPECT_THAT(failing.out, HasSubstr("korvelcheck.toml:1:1: error [waiver.expired] "));
  EXPECT_THAT(failing.out, HasSubstr(" expired on 2020-01-01; the warning fails again\n"));
  const Outcome allowed = HistoryOf({});
  EXPECT_EQ(allowed.exit_code, 0);
  EXPECT_THAT(allowed.out, HasSubstr(": warning [waiver.expired] "));
  const std::string exact =
      "[[waivers]]\ntable = \"orders\"\nrule = \"advice.id-reused\"\npath = \"orders.b.y\"\n"
      "change = \"id 2 of box: x, uint32 -> y, float\"\nfile = \"a.xml\"\nreason = \"no records\"\nuntil = 2999-01-01\n";
  Write("korvelcheck.toml", WideWaiver("orders", kRule, "b.y", "2020-01-01") + exact);
  EXPECT_EQ(HistoryOf({"--fail-on", "warning"}).exit_code, 0);
}

}  // namespace
}  // namespace tool_test
