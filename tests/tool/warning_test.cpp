// Warnings and notes: the exit code, --fail-on, every format, and waivers.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "git_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr char kFixed[] = "<entry name=\"n\" type=\"uint8\"/><entry name=\"a\" type=\"uint8\" count=\"4\"/>";
constexpr char kCounted[] = "<entry name=\"n\" type=\"uint8\"/><entry name=\"a\" type=\"uint8\" count=\"4\" refer=\"n\"/>";

// The change from counted.xml to fixed.xml has a warning, that from counted.xml to renamed.xml has a note.
class WarningTest : public GitTest {
 protected:
  WarningTest() {
    Write("counted.xml", Library(5, {Table({.fields = kCounted})}));
    Write("fixed.xml", Library(6, {Table({.fields = kFixed})}));
    std::string renamed = Read("counted.xml");
    renamed.replace(renamed.find("mall"), 4, "shop");
    Write("renamed.xml", renamed);
  }

  Outcome Check(const std::vector<std::string>& more = {}) const {
    return Run(Joined({"check", "counted.xml", "fixed.xml"}, more));
  }
  nlohmann::json CheckJson(const std::vector<std::string>& more = {}) const {
    return nlohmann::json::parse(Check(Joined({"--format", "json"}, more)).out);
  }
};

TEST_F(WarningTest, TextShowsTheWarningAndTheCallSucceeds) {
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, StartsWith("verdict: allowed (with warnings)\nfixed.xml:2:1: allowed: table orders\ncounted.xml:2:"));
  EXPECT_THAT(outcome.out, HasSubstr(": warning [advice.refer-changed] the refer of a field was added, removed or changed\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  change: refer of a: n -> none\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  missing in: fixed.xml:2:"));
  EXPECT_THAT(outcome.out, HasSubstr("  suggestion: keep the refer of a: n\n  fingerprint: "));
  EXPECT_THAT(outcome.out,
              HasSubstr("\n0 tables refused, 1 allowed (1 changed, 0 unchanged); 1 compared, 0 new, 0 removed; 1 warning\n"
                        "Run 'korvelcheck explain advice.refer-changed' for the rule.\n"));
}

TEST_F(WarningTest, FailOnWarningFailsTheCall) {
  const Outcome outcome = Check({"--fail-on", "warning"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, StartsWith("verdict: allowed (warnings fail this call)\n"));
  EXPECT_EQ(Check({"--fail-on", "refused"}).exit_code, 0);
  EXPECT_EQ(CheckJson({"--fail-on", "warning"})["summary"]["failing"], 1);
  EXPECT_EQ(CheckJson()["summary"]["failing"], 0);
  EXPECT_EQ(Run({"check", "counted.xml", "counted.xml", "--fail-on", "warning"}).exit_code, 0);
}

TEST_F(WarningTest, NotesNeverFailACall) {
  const Outcome outcome = Run({"check", "counted.xml", "renamed.xml", "--fail-on", "warning"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, StartsWith("verdict: allowed\n"));
  EXPECT_THAT(outcome.out, HasSubstr(": note [advice.library-renamed] the library was renamed\n"));
  EXPECT_THAT(outcome.out, HasSubstr("; 1 note\n"));
}

TEST_F(WarningTest, ProjectFileSetsTheDefault) {
  Write("korvelcheck.toml", "[report]\nfail-on = \"warning\"\n");
  EXPECT_EQ(Check().exit_code, 1);
  EXPECT_EQ(Check({"--fail-on", "refused"}).exit_code, 0);
  EXPECT_EQ(Check({"--no-project"}).exit_code, 0);
  EXPECT_EQ(Run({"history", "counted.xml", "fixed.xml"}).exit_code, 1);
  EXPECT_EQ(Run({"lint", "counted.xml"}).exit_code, 0);
  Write("korvelcheck.toml", "[report]\nfail-on = \"refused\"\n");
  EXPECT_EQ(Check().exit_code, 0);
  Write("korvelcheck.toml", "[report]\nfail-on = \"note\"\n");
  ExpectInputError(Check(), "korvelcheck.toml:2:11: error: fail-on is 'note'; allowed: refused|warning\n");
}

TEST_F(WarningTest, WaivedWarningsDoNotFailACall) {
  const std::string named = "[[waivers]]\ntable = \"orders\"\nrule = \"advice.refer-changed\"\n";
  const std::string exact = "path = \"orders.a\"\nchange = \"refer of a: n -> none\"\nfile = \"fixed.xml\"\n";
  const std::string rest = "reason = \"no record has elements\"\nuntil = 2026-01-01\n";
  const std::pair<std::string, std::string> kForms[] = {{exact, "waived until"},
                                                        {"entry = \"a\"\n", "waived (wide: any change of this rule here) until"}};
  for (const auto& [finding, shown] : kForms) {
    Write("korvelcheck.toml", named + finding + rest);
    const Outcome outcome = Check({"--fail-on", "warning"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
    EXPECT_THAT(outcome.out, StartsWith("verdict: allowed\n"));
    EXPECT_THAT(outcome.out, HasSubstr(": waived [advice.refer-changed] "));
    EXPECT_THAT(outcome.out, HasSubstr("  " + shown + " 2026-01-01: no record has elements\n"));
    EXPECT_THAT(outcome.out, HasSubstr("; 1 warning, 1 waived\n"));
  }
  Write("korvelcheck.toml", "[[waivers]]\ntable = \"orders\"\nrule = \"advice.refer-change\"\nentry = \"a\"\n" + rest);
  EXPECT_THAT(Check().out, HasSubstr("rule is 'advice.refer-change' (did you mean 'advice.refer-changed'?)"));
}

TEST_F(WarningTest, WaiveAddsAWaiverOfAWarning) {
  const std::string fingerprint = CheckJson()["tables"][0]["warnings"][0]["fingerprint"];
  const Outcome outcome =
      Run({"waive", fingerprint, "counted.xml", "fixed.xml", "--reason", "no record has elements", "--until", "2026-01-01"});
  ASSERT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr("\nchange = \"refer of a: n -> none\"\n"));
  EXPECT_EQ(Check({"--fail-on", "warning"}).exit_code, 0);
  Write("fixed.xml", Library(6, {Table({.fields = std::string(kFixed) + "<entry name=\"m\" type=\"uint8\" version=\"6\"/>"})}));
  EXPECT_EQ(Check({"--fail-on", "warning"}).exit_code, 0);
}

TEST_F(WarningTest, ExpiredWaiverIsAnErrorIfTheWarningFails) {
  Write("korvelcheck.toml",
        "[[waivers]]\ntable = \"orders\"\nrule = \"advice.refer-changed\"\nentry = \"a\"\n"
        "reason = \"no record has elements\"\nuntil = 2025-12-31\n");
  const Outcome allowed = Check();
  EXPECT_EQ(allowed.exit_code, 0);
  EXPECT_THAT(allowed.out, HasSubstr("korvelcheck.toml:1:"));
  EXPECT_THAT(allowed.out, HasSubstr(": warning [waiver.expired] "));
  const Outcome failing = Check({"--fail-on", "warning"});
  EXPECT_EQ(failing.exit_code, 1);
  EXPECT_THAT(failing.out, HasSubstr(" expired on 2025-12-31; the warning fails again\n"));
}

TEST_F(WarningTest, WarningAboutTheProjectFileDoesNotFailACall) {
  Write("korvelcheck.toml",
        "[[waivers]]\ntable = \"orders\"\nrule = \"advice.refer-changed\"\nentry = \"a\"\n"
        "reason = \"no record has elements\"\nuntil = 2025-12-31\n");
  const std::vector<std::string> same = {"check", "counted.xml", "counted.xml", "--fail-on", "warning", "--format", "junit"};
  const Outcome outcome = Run(same);
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, HasSubstr("waiver.expired"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("<failure")));
}

TEST_F(WarningTest, JsonHasLevelLocationsAndSuggestion) {
  const nlohmann::json report = CheckJson();
  EXPECT_EQ(report["version"], 2);
  EXPECT_EQ(report["verdict"], "allowed");
  const nlohmann::json& warning = report["tables"][0]["warnings"][0];
  EXPECT_EQ(warning["level"], "warning");
  EXPECT_EQ(warning["rule"], "advice.refer-changed");
  EXPECT_EQ(warning["kind"], "entry-refer");
  EXPECT_EQ(warning["path"], "orders.a");
  EXPECT_EQ(warning["before"], "n");
  EXPECT_EQ(warning["after"], "");
  EXPECT_EQ(warning["old_location"]["file"], "counted.xml");
  EXPECT_EQ(warning["new_location"]["file"], "fixed.xml");
  EXPECT_EQ(warning["suggestion"], "keep the refer of a: n");
  EXPECT_EQ(warning["waiver"], nullptr);
  EXPECT_EQ(report["warnings"], nlohmann::json::parse(R"([{"table": 0, "warning": 0, "also": []}])"));
  EXPECT_EQ(report["summary"]["warnings"], nlohmann::json::parse(R"({"all": 1, "waived": 0})"));
  EXPECT_FALSE(report["summary"].contains("notes"));
}

TEST_F(WarningTest, PipelineFormatsHaveLevels) {
  const nlohmann::json sarif = nlohmann::json::parse(Check({"--format", "sarif"}).out)["runs"][0];
  ASSERT_EQ(sarif["results"].size(), 1u);
  EXPECT_EQ(sarif["results"][0]["level"], "warning");
  EXPECT_EQ(sarif["tool"]["driver"]["rules"].back()["id"], "advice.refer-changed");
  EXPECT_EQ(sarif["tool"]["driver"]["rules"].back()["defaultConfiguration"]["level"], "warning");
  EXPECT_EQ(sarif["invocations"][0]["exitCode"], 0);
  EXPECT_THAT(Check({"--format", "github"}).out, HasSubstr("\n::warning file=fixed.xml,line=2,"));
  EXPECT_EQ(nlohmann::json::parse(Check({"--format", "gitlab"}).out)[0]["severity"], "minor");
  EXPECT_THAT(Check({"--format", "markdown"}).out, HasSubstr("\n| warning | <code>advice.refer-changed</code> |"));
  EXPECT_THAT(Check({"--format", "html"}).out, HasSubstr("data-status=\"warning\""));
  const std::string junit = Check({"--format", "junit"}).out;
  EXPECT_THAT(junit, HasSubstr("failures=\"0\""));
  EXPECT_THAT(junit, HasSubstr("<system-out>fixed.xml:2:"));
  EXPECT_THAT(junit, Not(HasSubstr("<failure")));
}

TEST_F(WarningTest, FormatsSayWhetherWarningsFail) {
  const auto sarif = nlohmann::json::parse(Check({"--format", "sarif", "--fail-on", "warning"}).out);
  EXPECT_EQ(sarif["runs"][0]["invocations"][0]["exitCode"], 1);
  const std::string junit = Check({"--format", "junit", "--fail-on", "warning"}).out;
  EXPECT_THAT(junit, HasSubstr("failures=\"1\""));
  EXPECT_THAT(junit, HasSubstr("<failure"));
}

TEST_F(WarningTest, NoteHasItsOwnLevel) {
  const auto note = [&](const char* format) { return Run({"check", "counted.xml", "renamed.xml", "--format", format}).out; };
  EXPECT_EQ(nlohmann::json::parse(note("sarif"))["runs"][0]["results"][0]["level"], "note");
  EXPECT_THAT(note("github"), HasSubstr("\n::notice file=renamed.xml,"));
  EXPECT_EQ(nlohmann::json::parse(note("gitlab"))[0]["severity"], "info");
  EXPECT_THAT(note("markdown"), HasSubstr("\n| note | <code>advice.library-renamed</code> |"));
  EXPECT_THAT(note("html"), HasSubstr("data-status=\"note\""));
}

TEST_F(WarningTest, ProjectCheckShowsLocations) {
  std::filesystem::create_directory(PathOf("old"));
  std::filesystem::create_directory(PathOf("new"));
  Write("old/a.xml", Read("counted.xml"));
  Write("new/a.xml", Read("fixed.xml"));
  const Outcome outcome = Run({"check", "--against", "../old", "."}, "new");
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("/a.xml:2:"));
  EXPECT_THAT(outcome.out, HasSubstr(": warning [advice.refer-changed] "));
  EXPECT_EQ(Run({"check", "--against", "../old", ".", "--fail-on", "warning"}, "new").exit_code, 1);
}

// One warning about a shared structure.
TEST_F(WarningTest, SharedStructureIsReportedOnce) {
  const auto library = [](int version, const char* fields) {
    const std::string item = std::string("<meta name=\"item\">") + fields + "</meta>";
    const std::string use = "<entry name=\"i\" type=\"item\"/>";
    return Library(version, {item, Table({.name = "carts", .fields = use}), Table({.name = "orders", .fields = use})});
  };
  Write("counted.xml", library(5, kCounted));
  Write("fixed.xml", library(6, kFixed));
  const Outcome outcome = Check();
  EXPECT_THAT(outcome.out, HasSubstr("  path: carts.i.a\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  also affected: orders.i.a\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\n1 more table has only findings that are listed above: orders\n"));
  EXPECT_THAT(outcome.out, HasSubstr("; 1 warning\n"));
  const nlohmann::json report = CheckJson();
  EXPECT_EQ(report["warnings"],
            nlohmann::json::parse(R"([{"table": 0, "warning": 0, "also": [{"table": 1, "path": "orders.i.a"}]}])"));
  EXPECT_EQ(report["tables"][1]["shared_warnings"],
            nlohmann::json::parse(R"([{"table": 0, "first": 0, "count": 1, "path": "orders", "instead_of": "carts"}])"));
}

TEST_F(WarningTest, RefusedTableShowsWarningsAfterItsRefusals) {
  Write("fixed.xml", Library(6, {Table({.key_type = "uint32", .fields = kFixed})}));
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 1);
  const std::size_t refused = outcome.out.find(": refused [primary-key.size]");
  const std::size_t warning = outcome.out.find(": warning [advice.refer-changed]");
  ASSERT_NE(warning, std::string::npos) << outcome.out;
  EXPECT_LT(refused, warning);
  EXPECT_THAT(outcome.out, HasSubstr("; 1 finding, 0 waived; 1 warning\n"));
}

// The refusal of one change of a field hid the warning about another one, even when the refusal was waived.
TEST_F(WarningTest, WaivedRefusalHidesNoWarning) {
  const std::string fewer = "<entry name=\"n\" type=\"uint8\"/><entry name=\"a\" type=\"uint8\" count=\"3\"/>";
  Write("fixed.xml", Library(6, {Table({.fields = fewer})}));
  const Outcome refused = Check({"--fail-on", "warning"});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_THAT(refused.out, HasSubstr(": refused [field.count-refer] "));
  EXPECT_THAT(refused.out, Not(HasSubstr("advice.")));
  const std::string until = "reason = \"r\"\nuntil = 2026-01-01\n";
  const std::string waiver = "[[waivers]]\ntable = \"orders\"\nrule = \"field.count-refer\"\nentry = \"a\"\n" + until;
  Write("korvelcheck.toml", waiver);
  const Outcome warned = Check({"--fail-on", "warning"});
  EXPECT_EQ(warned.exit_code, 1);
  EXPECT_THAT(warned.out, HasSubstr(": waived [field.count-refer] "));
  EXPECT_THAT(warned.out, HasSubstr(": warning [advice.refer-changed] "));
  EXPECT_THAT(warned.out, HasSubstr("; 1 finding, 1 waived; 1 warning\n"));
  EXPECT_EQ(Check().exit_code, 0);
  EXPECT_EQ(CheckJson()["tables"][0]["warnings"].size(), 1);
  Write("korvelcheck.toml", waiver + "[[waivers]]\ntable = \"orders\"\nrule = \"advice.refer-changed\"\nentry = \"a\"\n" + until);
  EXPECT_EQ(Check({"--fail-on", "warning"}).exit_code, 0);
}

TEST_F(WarningTest, IsListedOnceAllRefusalsOfItsElementAreWaived) {
  const std::string wide = "<entry name=\"n\" type=\"uint8\"/><entry name=\"a\" type=\"uint16\" count=\"3\"/>";
  Write("fixed.xml", Library(6, {Table({.fields = wide})}));
  const auto waive = [](const std::string& rule) {
    return "[[waivers]]\ntable = \"orders\"\nrule = \"" + rule + "\"\nentry = \"a\"\nreason = \"r\"\nuntil = 2026-01-01\n";
  };
  Write("korvelcheck.toml", waive("field.type"));
  EXPECT_THAT(Check().out, Not(HasSubstr("advice.")));
  Write("korvelcheck.toml", waive("field.type") + waive("field.count-refer"));
  EXPECT_EQ(Check().exit_code, 0);
  EXPECT_EQ(Check({"--fail-on", "warning"}).exit_code, 1);
}

// A change that needs a refused change was left out, although no waiver accepted it.
TEST_F(WarningTest, BlockedChangesHaveWarnings) {
  const std::string fields = "<entry name=\"m\" type=\"uint8\"/><entry name=\"a\" type=\"uint8\" count=\"4\" refer=\"m\"/>";
  Write("counted.xml", Library(5, {Table({.fields = "<entry name=\"a\" type=\"uint8\" count=\"4\"/>"})}));
  Write("fixed.xml", Library(6, {Table({.fields = fields})}));
  Write("korvelcheck.toml",
        "[[waivers]]\ntable = \"orders\"\nrule = \"field.new-version\"\nentry = \"m\"\nreason = \"r\"\nuntil = 2026-01-01\n");
  const Outcome outcome = Check({"--fail-on", "warning"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr(": waived [field.new-version] "));
  EXPECT_THAT(outcome.out, HasSubstr("  change: refer of a: none -> m\n"));
}

TEST_F(WarningTest, ImagesHaveNoLines) {
  ASSERT_EQ(Run({"compile", "counted.xml", "-o", "counted.qmb"}).exit_code, 0);
  ASSERT_EQ(Run({"compile", "fixed.xml", "-o", "fixed.qmb"}).exit_code, 0);
  const Outcome outcome = Run({"check", "counted.qmb", "fixed.qmb"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, HasSubstr("\ncounted.qmb: warning [advice.refer-changed] "));
}

TEST_F(WarningTest, HistoryShowsWarningsOfSteps) {
  const Outcome outcome = Run({"history", "counted.xml", "fixed.xml"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, HasSubstr(": warning [advice.refer-changed] the refer of a field was added, removed or changed\n"));
  EXPECT_THAT(outcome.out, HasSubstr("    change: refer of a: n -> none\n    missing in: fixed.xml:2:"));
  EXPECT_THAT(outcome.out, HasSubstr("; 1 warning\n"));
  EXPECT_EQ(Run({"history", "counted.xml", "fixed.xml", "--fail-on", "warning"}).exit_code, 1);
  const auto json = nlohmann::json::parse(Run({"history", "counted.xml", "fixed.xml", "--format", "json"}).out);
  EXPECT_EQ(json["files"][0]["steps"][0]["tables"][0]["warnings"][0]["rule"], "advice.refer-changed");
}

// A field is removed and comes back with another counter: no step changes a counter. History was silent.
class WarningAgainstNewestTest : public WarningTest {
 protected:
  WarningAgainstNewestTest() {
    const std::string n = "<entry name=\"n\" type=\"uint8\" id=\"1\"/>";
    const std::string items = "<entry name=\"items\" type=\"uint32\" id=\"2\" count=\"4\" refer=";
    WriteVersion(1, 4, n + items + "\"n\"/>");
    WriteVersion(2, 40, n);
    WriteVersion(3, 40, n + "<entry name=\"m\" type=\"uint8\" id=\"3\"/>" + items + "\"m\"/>");
    WriteVersion(4, 44, n + "<entry name=\"m\" type=\"uint8\" id=\"3\"/>" + items + "\"m\"/>");
  }
  void WriteVersion(int number, int size, const std::string& fields) const {
    const std::string box = "<meta name=\"box\">" + fields + "<entry name=\"pad\" id=\"5\" type=\"bytes\" size=\"" +
                            std::to_string(size) + "\"/></meta>";
    Write("v" + std::to_string(number) + ".xml",
          Library(number, {box, Table({.fields = "<entry name=\"b\" id=\"9\" type=\"box\"/>"})}, "TLV"));
  }
  Outcome History(const std::vector<std::string>& more = {}) const {
    return Run(Joined({"history", "v1.xml", "v2.xml", "v3.xml", "v4.xml"}, more));
  }
};

TEST_F(WarningAgainstNewestTest, IsReportedInEveryFormat) {
  const Outcome outcome = History();
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\nv1.xml -> v4.xml: allowed\n  v4.xml:3:1: allowed: table orders\n  v4.xml:2:"));
  EXPECT_THAT(outcome.out, HasSubstr(": warning [advice.refer-changed] "));
  EXPECT_THAT(outcome.out, HasSubstr("\nv2.xml -> v4.xml: allowed\n0 of 3 steps refused"));
  EXPECT_THAT(outcome.out, HasSubstr("; 1 warning\n"));
  for (const char* const format : {"sarif", "junit", "github", "gitlab", "markdown", "html", "json"}) {
    EXPECT_THAT(History({"--format", format}).out, HasSubstr("advice.refer-changed")) << format;
  }
  const auto json = nlohmann::json::parse(History({"--format", "json"}).out);
  const auto& warnings = json["files"][0]["against_newest"][0]["warnings"];
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0]["table"], "orders");
  EXPECT_EQ(warnings[0]["warning"]["path"], "orders.b.items");
  EXPECT_TRUE(json["files"][0]["against_newest"][1]["warnings"].empty());
}

TEST_F(WarningAgainstNewestTest, FailsTheCallUnlessItIsWaived) {
  EXPECT_EQ(History({"--fail-on", "warning"}).exit_code, 1);
  Write("korvelcheck.toml",
        "[[waivers]]\ntable = \"orders\"\nrule = \"advice.refer-changed\"\nentry = \"b.items\"\nreason = \"no records\"\n"
        "until = 2026-01-01\n");
  const Outcome waived = History({"--fail-on", "warning"});
  EXPECT_EQ(waived.exit_code, 0) << waived.out;
  EXPECT_THAT(waived.out, HasSubstr(": waived [advice.refer-changed] "));
}

// A step with the same change has reported it.
TEST_F(WarningAgainstNewestTest, IsNotRepeated) {
  Write("same.xml", Read("fixed.xml"));
  const Outcome outcome = Run({"history", "counted.xml", "fixed.xml", "same.xml"});
  EXPECT_THAT(outcome.out, HasSubstr("\ncounted.xml -> same.xml: allowed\n0 of 2 steps refused"));
  EXPECT_THAT(outcome.out, HasSubstr("; 1 warning\n"));
}

}  // namespace
}  // namespace tool_test
