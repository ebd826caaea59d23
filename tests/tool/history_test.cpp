// history: steps, each version against the newest, and the pair that broke a table.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "git_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

constexpr char kNote[] = "<entry name=\"note\" id=\"2\" type=\"uint32\" version=\"6\"/>";

class HistoryTest : public GitTest {
 protected:
  // v1 and v2 differ by a new field; v3 widens the key; v4 is as v3.
  HistoryTest() {
    Write("v1.xml", Library(5, {Table()}));
    Write("v2.xml", Library(6, {Table({.fields = kNote})}));
    Write("v3.xml", Library(6, {Table({.key_type = "uint32", .fields = kNote})}));
    Write("v4.xml", Read("v3.xml"));
  }
};

TEST_F(HistoryTest, AllowsSteps) {
  ExpectOutcome(Run({"history", "v1.xml", "v2.xml"}), 0,
                "verdict: allowed\n"
                "step 1: v1.xml -> v2.xml: allowed\n"
                "0 of 1 step refused; the newest version is refused from 0 of 1 older version\n",
                "");
}

// A step lists its refusals as check does.
TEST_F(HistoryTest, ReportsTheFindingsOfAStep) {
  const std::string checked = Run({"check", "v2.xml", "v3.xml"}).out;
  const std::string steps = Run({"history", "v2.xml", "v3.xml"}).out;
  const std::size_t begin = checked.find('\n') + 1;
  std::string indented;
  for (const char c : checked.substr(begin, checked.find("\n1 table refused") + 1 - begin)) {
    if (indented.empty() || indented.back() == '\n') indented += "  ";
    indented += c;
  }
  EXPECT_EQ(steps, "verdict: refused\nstep 1: v2.xml -> v3.xml: refused\n" + indented +
                       "1 of 1 step refused; the newest version is refused from 1 of 1 older version\n");
  EXPECT_THAT(indented, HasSubstr("\n  v3.xml:2:52: refused [primary-key.size] "));
}

TEST_F(HistoryTest, NamesTheStepAndTheChangeThatBrokeATable) {
  const Outcome outcome = Run({"history", "v1.xml", "v2.xml", "v3.xml", "v4.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("step 1: v1.xml -> v2.xml: allowed\nstep 2: v2.xml -> v3.xml: refused\n"));
  const std::string refusal = "  same as in step 2: refused [primary-key.size] type of uid: uint64 -> uint32, path orders.uid\n";
  EXPECT_THAT(outcome.out, HasSubstr("step 3: v3.xml -> v4.xml: allowed\n"
                                     "each version against the newest, v4.xml:\n"
                                     "v1.xml -> v4.xml: refused\n" +
                                     refusal + "v2.xml -> v4.xml: refused\n" + refusal +
                                     "1 of 3 steps refused; the newest version is refused from 2 of 3 older versions\n"));
}

// The change of the first finding was named, not the one that the shown text is about.
TEST_F(HistoryTest, NamesTheChangeThatTheTextIsAbout) {
  const auto version = [](int number, const std::string& key_type, const std::string& fields) {
    return Library(number, {"<meta name=\"item\">" + fields + "</meta>",
                            Table({.key_type = key_type, .fields = "<entry name=\"i\" id=\"2\" type=\"item\"/>"})});
  };
  const std::string a = "<entry name=\"a\" id=\"1\" type=\"uint32\"/>";
  const std::string b = "<entry name=\"b\" id=\"2\" type=\"uint32\"/>";
  Write("a.xml", version(5, "uint64", a + b));
  Write("b.xml", version(5, "uint32", a));
  const auto json = nlohmann::json::parse(Run({"history", "a.xml", "b.xml", "a.xml", "b.xml", "--format", "json"}).out);
  const auto& step = json["files"][0]["steps"][0];
  ASSERT_EQ(step["tables"][0]["changes"]["findings"].size(), 2);
  const std::string text = step["tables"][0]["text"];
  const auto& refused = json["files"][0]["against_newest"][0]["refused"][0];
  EXPECT_EQ(refused["text"], text);
  for (const auto& finding : step["tables"][0]["changes"]["findings"]) {
    const bool is_cause = finding["text"] == text;
    EXPECT_EQ(finding["fingerprint"] == step["causes"][0]["fingerprint"], is_cause);
  }
  EXPECT_EQ(refused["cause"]["path"], step["causes"][0]["path"]);
  EXPECT_EQ(refused["step"], 3);
  EXPECT_EQ(refused["step_has_cause"], true);
}

// The checker refuses the whole change by another rule than the change alone. Then the change was not found in the step, and the
// place of the table in the new file was shown as the old one.
TEST_F(HistoryTest, NamesTheChangeIfAnotherRuleRefusesItAlone) {
  const auto version = [](int number, int count, int size, const std::string& more) {
    const std::string b = "<meta name=\"b\"><entry name=\"p\" type=\"uint8\" count=\"" + std::to_string(count) +
                          "\" id=\"1\"/><entry name=\"q\" type=\"bytes\" size=\"" + std::to_string(size) + "\" id=\"2\"/></meta>";
    return Library(number, {b, Table({.fields = "<entry name=\"b\" id=\"2\" type=\"b\"/>" + more})}, "TLV");
  };
  Write("t1.xml", version(1, 8, 8, ""));
  Write("t2.xml", version(2, 4, 64, ""));
  Write("t3.xml", version(3, 4, 64, "<entry name=\"more\" id=\"3\" type=\"uint8\" version=\"3\"/>"));
  const Outcome outcome = Run({"history", "t1.xml", "t2.xml", "t3.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\n  same as in step 1: refused ["));
  EXPECT_THAT(outcome.out, HasSubstr("] count of p: 8 -> 4, path orders.b.p\n"));
  const auto json = nlohmann::json::parse(Run({"history", "t1.xml", "t2.xml", "t3.xml", "--format", "json"}).out);
  const auto& refused = json["files"][0]["against_newest"][0]["refused"][0];
  EXPECT_EQ(refused["rule"], "field.count-tlv");
  EXPECT_EQ(refused["cause"]["description"], "count of p: 8 -> 4");
  EXPECT_THAT(refused["cause"]["new_location"].get<std::string>(), testing::StartsWith("t3.xml:2:"));
  EXPECT_THAT(refused["cause"]["old_location"].get<std::string>(), testing::StartsWith("t1.xml:2:"));
}

// The step was said to have refused something else, because it also lowered the version.
TEST_F(HistoryTest, NamesTheStepThatRemovedATable) {
  Write("more.xml", Library(6, {Table(), Table({.name = "carts"})}));
  Write("v0.xml", Library(5, {Table()}));
  Write("last.xml", Library(7, {Table()}));
  EXPECT_THAT(Run({"history", "more.xml", "v0.xml", "last.xml"}).out,
              HasSubstr("\n    caused by: the table was removed, in step 1: more.xml -> v0.xml\n"));
}

TEST_F(HistoryTest, JsonMatchesText) {
  const Outcome outcome = Run({"history", "v1.xml", "v2.xml", "v3.xml", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  const auto json = nlohmann::json::parse(outcome.out);
  EXPECT_EQ(json["version"], 2);
  EXPECT_EQ(json["verdict"], "refused");
  const auto& history = json["files"][0];
  ASSERT_EQ(history["versions"].size(), 3);
  EXPECT_EQ(history["versions"][2]["name"], "v3.xml");
  ASSERT_EQ(history["steps"].size(), 2);
  EXPECT_EQ(history["steps"][0]["verdict"], "allowed");
  EXPECT_EQ(history["steps"][1]["causes"][0]["description"], "type of uid: uint64 -> uint32");
  EXPECT_EQ(history["steps"][1]["causes"][0]["path"], "orders.uid");
  EXPECT_EQ(history["steps"][1]["causes"][0]["new_location"], "v3.xml:2:52");
  EXPECT_EQ(history["steps"][1]["tables"][0]["changes"]["findings"].size(), 1);
  ASSERT_EQ(history["against_newest"].size(), 1);
  EXPECT_EQ(history["against_newest"][0]["from"], "v1.xml");
  EXPECT_EQ(history["against_newest"][0]["refused"][0]["step"], 2);
}

// Waivers had no effect.
TEST_F(HistoryTest, WaiversCoverFindingsOfSteps) {
  const std::string waived = "verdict: refused (all waived)\n";
  ASSERT_EQ(Run({"history", "v1.xml", "v2.xml", "v3.xml", "v4.xml"}).exit_code, 1);
  const auto json = nlohmann::json::parse(Run({"history", "v2.xml", "v3.xml", "--format", "json"}).out);
  const std::string fingerprint = json["files"][0]["steps"][0]["causes"][0]["fingerprint"];
  const Outcome waive = Run({"waive", fingerprint, "v2.xml", "v3.xml", "--reason", "empty", "--until", "2999-01-01"});
  ASSERT_EQ(waive.exit_code, 0) << waive.err;
  const Outcome outcome = Run({"history", "v2.xml", "v3.xml"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
  EXPECT_THAT(outcome.out, HasSubstr(waived));
  EXPECT_THAT(outcome.out, HasSubstr("\n    waived until 2999-01-01: empty\n"));
  // The waiver is for the file v3.xml, not for v4.xml.
  EXPECT_EQ(Run({"history", "v1.xml", "v2.xml", "v3.xml", "v4.xml"}).exit_code, 1);
}

TEST_F(HistoryTest, ReportsNewAndRemovedTables) {
  Write("more.xml", Library(6, {Table(), Table({.name = "carts"})}));
  const Outcome outcome = Run({"history", "v1.xml", "more.xml", "v1.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("step 1: v1.xml -> more.xml: allowed\n  more.xml:3:1: new: table carts (not compared)\n"));
  EXPECT_THAT(outcome.out, HasSubstr(" (removed)\n"));
  const auto json = nlohmann::json::parse(Run({"history", "v1.xml", "more.xml", "v1.xml", "--format", "json"}).out);
  EXPECT_EQ(json["files"][0]["steps"][1]["causes"][1]["description"], "the table was removed");
}

// Regression: a structure that became a table was left out.
TEST_F(HistoryTest, ReportsAStructureThatBecameATableAsNew) {
  const std::string structure = "<meta name=\"carts\"><entry name=\"uid\" id=\"1\" type=\"uint64\"/></meta>";
  Write("structure.xml", Library(5, {structure, Table()}));
  Write("table.xml", Library(6, {Table({.name = "carts"}), Table()}));
  const Outcome outcome = Run({"history", "structure.xml", "table.xml"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, HasSubstr(": new: table carts (not compared)\n"));
}

// A field is removed and added again: each step is allowed, both together are not.
TEST_F(HistoryTest, RefusesAVersionThoughEveryStepIsAllowed) {
  const auto tlv = [](int version, const std::string& fields) { return Library(version, {Table({.fields = fields})}, "TLV"); };
  Write("t1.xml", tlv(5, "<entry name=\"a\" id=\"2\" type=\"uint32\"/>"));
  Write("t2.xml", tlv(6, ""));
  Write("t3.xml", tlv(7, "<entry name=\"a\" id=\"2\" type=\"string\" size=\"9\" version=\"7\"/>"));
  const Outcome outcome = Run({"history", "t1.xml", "t2.xml", "t3.xml", "--created-as", "tlv"});
  const auto json =
      nlohmann::json::parse(Run({"history", "t1.xml", "t2.xml", "t3.xml", "--created-as", "tlv", "--format", "json"}).out);
  const auto& steps = json["files"][0]["steps"];
  const bool steps_allowed = steps[0]["verdict"] == "allowed" && steps[1]["verdict"] == "allowed";
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(outcome.out.find(", although each step alone is allowed\n") != std::string::npos, steps_allowed) << outcome.out;
}

TEST_F(HistoryTest, ImagesStandardInputAndCommitsAreVersions) {
  ASSERT_EQ(Run({"compile", "v2.xml", "-o", "v2.qmb"}).exit_code, 0);
  Commit("first");
  const Outcome outcome = RunProgram(Call{.arguments = {"history", "git:HEAD:v1.xml", "v2.qmb", "-"},
                                          .directory = PathOf(""),
                                          .input = Read("v2.xml"),
                                          .environment = environment_});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("step 2: v2.qmb -> <stdin>: allowed"));
}

TEST_F(HistoryTest, UsesTheCommitsOfAFile) {
  std::filesystem::create_directory(PathOf("sub"));
  const auto write = [&](const char* version) { Write("sub/orders.xml", Read(version)); };
  write("v1.xml");
  const std::string first = Commit("first");
  Commit("nothing");
  write("v2.xml");
  Commit("second");
  std::filesystem::remove(PathOf("sub/orders.xml"));
  Commit("removed");
  write("v3.xml");
  const std::string last = Commit("third");
  for (const auto& [path, directory] : {std::pair("sub/orders.xml", ""), std::pair("./orders.xml", "sub")}) {
    const Outcome outcome = Run({"history", "--git", path, "--format", "json"}, directory);
    EXPECT_EQ(outcome.exit_code, 1) << outcome.err;
    const auto json = nlohmann::json::parse(outcome.out);
    const auto& history = json["files"][0];
    ASSERT_EQ(history["versions"].size(), 3);
    EXPECT_EQ(history["versions"][0]["name"], "git:" + first.substr(0, 7) + ":" + path);
    EXPECT_EQ(history["steps"][1]["to"], "git:" + last.substr(0, 7) + ":" + path);
  }
  Git({"clone", "-q", "--depth=2", "file://" + PathOf("").string(), "clone"});
  const Outcome shallow = Run({"history", "--git", "sub/orders.xml"}, "clone");
  EXPECT_EQ(shallow.exit_code, 2);
  EXPECT_EQ(
      shallow.err,
      "korvelcheck: sub/orders.xml: is in only one commit of this shallow clone; allowed: a file with at least two versions\n");
}

TEST_F(HistoryTest, ReportsInputErrors) {
  const std::string hint = "\nTry 'korvelcheck history --help'.\n";
  ExpectInputError(Run({"history", "v1.xml"}), "korvelcheck: history: at least two versions are required" + hint);
  ExpectInputError(Run({"history", "v1.xml", "no.xml"}), "korvelcheck: no.xml: No such file or directory\n");
  ExpectInputError(Run({"history", "v1.xml", "v2.xml", "--table", "nowhere"}), "korvelcheck: table 'nowhere' is in no version\n");
  ExpectInputError(Run({"history", "--git", "v1.xml"}), "korvelcheck: v1.xml: the repository has no commit yet\n");
  Commit("first");
  ExpectInputError(Run({"history", "--git", "v1.xml"}),
                   "korvelcheck: v1.xml: is in only one commit; allowed: a file with at least two versions\n");
  ExpectInputError(Run({"history", "--git", "no.xml"}),
                   "korvelcheck: no.xml: is in no commit; allowed: a file with at least two versions\n");
  Write("none.xml", "<metalib name=\"m\" version=\"1\"/>");
  ExpectInputError(Run({"history", "none.xml", "v1.xml"}),
                   "korvelcheck: nothing was compared: only the last version has such a table\n");
}

}  // namespace
}  // namespace tool_test
