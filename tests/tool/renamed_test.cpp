// Renamed fields, tables and structures: one finding, and a suggestion that restores the old name everywhere.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kSuggestion[] = "renamed? fields are matched by name; keep amount instead of amuont";

class RenamedTest : public ToolTest {
 protected:
  // A table whose field `name` is a counter, and in the key and in an index.
  static std::string With(int version, const std::string& name, const std::string& more = "") {
    return Library(version, {"<meta name=\"orders\"><entry name=\"uid\" type=\"uint64\"/><entry name=\"" + name +
                             "\" type=\"uint32\"/><entry name=\"items\" type=\"int8\" count=\"9\" refer=\"" + name + "\"/>" +
                             more + "<primarykey entries=\"uid " + name + "\"/><index name=\"by_amount\"><column entry=\"" +
                             name + "\"/></index></meta>"});
  }

  RenamedTest() {
    Write("old.xml", With(5, "amount"));
    Write("new.xml", With(6, "amuont"));
  }

  Outcome Check(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"check", "old.xml", "new.xml"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Korvelcheck(arguments);
  }
};

// It was reported as a removed and an added field.
TEST_F(RenamedTest, MisspelledFieldIsOneFinding) {
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\nnew.xml:2:67: refused [primary-key.field] "));
  EXPECT_THAT(outcome.out, HasSubstr("\n  change: field amount renamed to amuont\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\n  was: old.xml:2:67  amount\n"));
  EXPECT_THAT(outcome.out, HasSubstr(std::string("\n  suggestion: ") + kSuggestion + "\n"));
  EXPECT_THAT(outcome.out, HasSubstr("; 1 finding, 0 waived\n"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("warning [")));
}

TEST_F(RenamedTest, EveryFormatHasTheSuggestion) {
  for (const std::string format : {"text", "json", "sarif", "junit", "github", "gitlab", "markdown", "html"}) {
    EXPECT_THAT(Check({"--format", format}).out, HasSubstr("fields are matched by name; keep amount instead of amuont"))
        << format;
  }
  const nlohmann::json change = nlohmann::json::parse(Check({"--format", "json"}).out)["tables"][0]["changes"]["edits"][1];
  EXPECT_EQ(change["kind"], "entry-renamed");
  EXPECT_EQ(change["item"], "amount");
  EXPECT_EQ(change["after"], "amuont");
}

TEST_F(RenamedTest, DiffListsOneChange) {
  EXPECT_THAT(Korvelcheck({"diff", "old.xml", "new.xml"}).out,
              HasSubstr("table orders: 1 change\n  new.xml:2:67: field amount renamed to amuont (was at old.xml:2:67)\n"));
}

TEST_F(RenamedTest, SuggestRestoresTheNameEverywhere) {
  const Outcome outcome = Korvelcheck({"suggest", "old.xml", "new.xml", "--file"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_EQ(outcome.out, With(6, "amount"));
}

TEST_F(RenamedTest, SuggestKeepsOtherChanges) {
  const std::string note = "<entry name=\"note\" type=\"uint32\" version=\"6\"/>";
  Write("new.xml", With(6, "amuont", note));
  EXPECT_EQ(Korvelcheck({"suggest", "old.xml", "new.xml", "--file"}).out, With(6, "amount", note));
}

TEST_F(RenamedTest, SuggestRestoresHundredsOfNames) {
  const auto library = [](int version, const std::string& prefix) {
    std::string fields;
    for (int i = 0; i < 500; ++i) fields += "<entry name=\"" + prefix + std::to_string(i) + "\" type=\"int8\"/>";
    return Library(version, {Table({.fields = fields})});
  };
  Write("old.xml", library(5, "field_"));
  Write("new.xml", library(6, "feild_"));
  EXPECT_EQ(Korvelcheck({"suggest", "old.xml", "new.xml", "--file"}).out, library(6, "field_"));
  EXPECT_THAT(Check().out, HasSubstr("; 500 findings, 0 waived\n"));
}

// A waiver covers this name only.
TEST_F(RenamedTest, WaiverCoversOneName) {
  const auto json = nlohmann::json::parse(Check({"--format", "json"}).out);
  const std::string fingerprint = json["tables"][0]["changes"]["findings"][0]["fingerprint"];
  const Outcome waive = Korvelcheck({"waive", fingerprint, "old.xml", "new.xml", "--reason", "r", "--until", "2099-01-01"});
  ASSERT_EQ(waive.exit_code, 0) << waive.err;
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr("\nchange = \"field amount renamed to amuont\"\n"));
  EXPECT_EQ(Check().exit_code, 0);
  Write("new.xml", With(6, "amounts"));
  EXPECT_EQ(Check().exit_code, 1);
}

TEST_F(RenamedTest, HistoryReportsTheStep) {
  const Outcome outcome = Korvelcheck({"history", "old.xml", "new.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr(kSuggestion));
}

// The warnings about both names belong to the refused change.
TEST_F(RenamedTest, HasNoWarningsAboutTheNewName) {
  const auto array = [](const std::string& name) {
    return "<entry name=\"n\" type=\"uint32\"/><entry name=\"" + name + "\" type=\"int8\" count=\"9\" refer=\"n\"/>";
  };
  Write("old.xml", Library(5, {Table({.fields = array("items")})}));
  Write("new.xml", Library(6, {Table({.fields = array("itmes")})}));
  EXPECT_THAT(Check().out, Not(HasSubstr("warning [")));
  EXPECT_EQ(Korvelcheck({"suggest", "old.xml", "new.xml", "--file"}).out, Library(6, {Table({.fields = array("items")})}));
}

// What is allowed stays allowed: TLV records have no names.
TEST_F(RenamedTest, AllowedNamesStayAllowed) {
  const auto library = [](int version, const std::string& name) {
    return Library(version,
                   {"<meta name=\"box\"><entry name=\"" + name + "\" id=\"1\" type=\"uint32\"/></meta>",
                    "<meta name=\"orders\"><entry name=\"uid\" id=\"1\" type=\"uint64\"/><entry name=\"box\" id=\"2\" "
                    "type=\"box\"/><primarykey entries=\"uid\"/></meta>"},
                   "TLV");
  };
  Write("old.xml", library(5, "amount"));
  Write("new.xml", library(6, "amuont"));
  const Outcome outcome = Check({"--created-as", "tlv"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
  EXPECT_THAT(outcome.out, Not(HasSubstr("renamed?")));
}

// --- Tables ---

// old.xml has orders, new.xml has oders instead.
class RenamedTableTest : public ToolTest {
 protected:
  static std::string With(int version, const std::string& name, const std::string& more = "") {
    return Library(version, {Table({.name = name, .fields = kFields + more}), Table({.name = "users"})});
  }

  RenamedTableTest() {
    Write("old.xml", With(5, "orders"));
    Write("new.xml", With(6, "oders"));
  }

  Outcome Suggest(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"suggest", "old.xml", "new.xml", "--file"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Korvelcheck(arguments);
  }

  static inline const std::string kFields = "<entry name=\"zone\" type=\"uint32\"/><entry name=\"note\" type=\"int8\"/>";
};

TEST_F(RenamedTableTest, FindingNamesTheNewTable) {
  for (const std::string format : {"text", "json", "sarif", "junit", "github", "gitlab", "markdown", "html"}) {
    const Outcome outcome = Korvelcheck({"check", "old.xml", "new.xml", "--format", format});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_THAT(outcome.out, HasSubstr("tables are matched by name; keep orders instead of oders")) << format;
  }
  const std::string text = Korvelcheck({"check", "old.xml", "new.xml"}).out;
  EXPECT_THAT(text, HasSubstr(": refused [library.table] "));
  EXPECT_THAT(text, HasSubstr(": new: table oders (not compared)\n"));
}

// The whole old table was added beside the new one.
TEST_F(RenamedTableTest, SuggestRestoresTheName) { EXPECT_EQ(Suggest().out, With(6, "orders")); }

TEST_F(RenamedTableTest, SuggestKeepsAllowedChangesOfTheTable) {
  const std::string added = "<entry name=\"added\" type=\"int8\" version=\"6\"/>";
  Write("new.xml", With(6, "oders", added));
  EXPECT_EQ(Suggest().out, With(6, "orders", added));
}

TEST_F(RenamedTableTest, SuggestFixesRefusedChangesOfTheTable) {
  Write("new.xml", With(6, "oders", "<entry name=\"added\" type=\"int8\"/>"));
  EXPECT_EQ(Suggest().out, With(6, "orders", "<entry name=\"added\" type=\"int8\" version=\"6\"/>"));
}

TEST_F(RenamedTableTest, SuggestFixesOtherTables) {
  Write("new.xml", Library(6, {Table({.name = "oders", .fields = kFields}), Table({.name = "users", .key_type = "int8"})}));
  EXPECT_EQ(Korvelcheck(Call{.arguments = {"check", "old.xml", "-"}, .input = Suggest().out}).exit_code, 0);
  EXPECT_THAT(Suggest().out, Not(HasSubstr("oders")));
  EXPECT_THAT(Suggest({"--table", "users"}).out, HasSubstr("oders"));
}

TEST_F(RenamedTableTest, OtherTableIsAddedBesideTheRestoredOne) {
  Write("new.xml",
        Library(6, {Table({.name = "carts", .fields = "<entry name=\"sum\" type=\"int8\"/>"}), Table({.name = "users"})}));
  EXPECT_THAT(Korvelcheck({"check", "old.xml", "new.xml"}).out, HasSubstr("keep table orders, even if it is unused"));
  EXPECT_THAT(Suggest().out, HasSubstr("carts"));
  EXPECT_THAT(Suggest().out, HasSubstr("orders"));
}

// The restored name does not make it allowed: the old table is refused as it is.
TEST_F(RenamedTableTest, RefusedTableStaysRefused) {
  const std::string bad = "<entry name=\"unit-price\" type=\"int8\"/>";
  Write("old.xml", With(5, "orders", bad));
  Write("new.xml", With(6, "oders", bad));
  EXPECT_THAT(Korvelcheck({"check", "old.xml", "new.xml"}).out,
              HasSubstr("no allowed alternative: the old schema already breaks"));
  EXPECT_EQ(Suggest().exit_code, 1);
}

TEST_F(RenamedTableTest, SettingsAreThoseOfTheOldTable) {
  const auto library = [](int version, const std::string& name, int list_num) {
    return Library(
        version, {Table({.name = name, .attributes = "TableType=LIST;ListNum=" + std::to_string(list_num), .fields = kFields})});
  };
  Write("old.xml", library(5, "orders", 9));
  Write("new.xml", library(6, "oders", 12));
  EXPECT_EQ(Suggest().out, library(6, "orders", 12));
  Write("new.xml", library(6, "oders", 8));
  EXPECT_EQ(Suggest().out, library(6, "orders", 9));
}

TEST_F(RenamedTableTest, HundredsOfTables) {
  const auto library = [](int version, const std::string& prefix) {
    std::vector<std::string> tables;
    for (int i = 0; i < 300; ++i) tables.push_back(Table({.name = prefix + std::to_string(i), .fields = kFields}));
    return Library(version, tables);
  };
  Write("old.xml", library(5, "table_"));
  Write("new.xml", library(6, "talbe_"));
  EXPECT_EQ(Suggest().out, library(6, "table_"));
  EXPECT_THAT(Korvelcheck({"check", "old.xml", "new.xml"}).out, HasSubstr("keep table_299 instead of talbe_299"));
}

TEST_F(RenamedTableTest, HistoryNamesTheNewTable) {
  EXPECT_THAT(Korvelcheck({"history", "old.xml", "new.xml"}).out, HasSubstr("keep orders instead of oders"));
}

// --- Structures ---

// Two tables embed the structure item, one of them twice; new.xml calls it itm.
class RenamedStructureTest : public ToolTest {
 protected:
  static std::string With(int version, const std::string& name, const std::string& protocol = "QMX", const std::string& more = "",
                          const std::string& fields = "") {
    const std::string type = "\" type=\"" + name + "\"/>";
    const std::string key = "<entry name=\"uid\" id=\"1\" type=\"uint64\"/>";
    const std::string last = "<primarykey entries=\"uid\"/></meta>";
    return Library(version,
                   {"<meta name=\"" + name + "\"><entry name=\"sku\" id=\"1\" type=\"int32\"/><entry name=\"price\" id=\"2\" " +
                        "type=\"int32\"/>" + more + "</meta>",
                    "<meta name=\"orders\">" + key + "<entry name=\"gift\" id=\"2" + type + "<entry name=\"main\" id=\"3" + type +
                        fields + last,
                    "<meta name=\"carts\">" + key + "<entry name=\"main\" id=\"2" + type + last},
                   protocol);
  }

  RenamedStructureTest() {
    Write("old.xml", With(5, "item"));
    Write("new.xml", With(6, "itm"));
  }

  Outcome Suggest(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"suggest", "old.xml", "new.xml", "--file"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Korvelcheck(arguments);
  }
};

// There was one finding for each field of the structure.
TEST_F(RenamedStructureTest, IsOneFinding) {
  const Outcome outcome = Korvelcheck({"check", "old.xml", "new.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\nnew.xml:2:13: refused [field.structure] "));
  EXPECT_THAT(outcome.out, HasSubstr("\n  change: structure item renamed to itm\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\n  suggestion: renamed? structures are matched by name; keep item instead of itm\n"));
  EXPECT_THAT(outcome.out, HasSubstr("; 1 finding, 0 waived\n"));
}

TEST_F(RenamedStructureTest, JsonHasKindAndFix) {
  const auto json = nlohmann::json::parse(Korvelcheck({"check", "old.xml", "new.xml", "--format", "json"}).out);
  const nlohmann::json& changes = json["tables"][0]["changes"];
  EXPECT_EQ(changes["edits"][1]["kind"], "meta-renamed");
  EXPECT_EQ(changes["edits"][1]["meta"], "item");
  EXPECT_EQ(changes["edits"][1]["after"], "itm");
  EXPECT_EQ(changes["findings"][0]["fix"].size(), 4u) << "the structure and three fields";
}

TEST_F(RenamedStructureTest, DiffListsOneChange) {
  const Outcome outcome = Korvelcheck({"diff", "old.xml", "new.xml"});
  EXPECT_THAT(outcome.out, HasSubstr("structure item: 1 change; embedded as orders.gift, orders.main, carts.main\n"
                                     "  new.xml:2:13: structure item renamed to itm (was at old.xml:2:13)\n"
                                     "2 changes; "));
}

TEST_F(RenamedStructureTest, SuggestRestoresTheNameEverywhere) {
  const Outcome outcome = Suggest();
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_EQ(outcome.out, With(6, "item"));
}

TEST_F(RenamedStructureTest, SuggestKeepsAllowedChangesOfTheStructure) {
  const std::string note = "<entry name=\"note\" id=\"3\" type=\"int32\" version=\"6\"/>";
  Write("new.xml", With(6, "itm", "QMX", note));
  EXPECT_EQ(Suggest().out, With(6, "item", "QMX", note));
}

TEST_F(RenamedStructureTest, SuggestFixesRefusedChangesOfTheStructure) {
  Write("new.xml", With(6, "itm", "QMX", "<entry name=\"note\" id=\"3\" type=\"int32\"/>"));
  EXPECT_EQ(Suggest().out, With(6, "item", "QMX", "<entry name=\"note\" id=\"3\" type=\"int32\" version=\"6\"/>"));
  EXPECT_THAT(Korvelcheck({"check", "old.xml", "new.xml"}).out,
              HasSubstr("\n  suggestion: set the version of note to 6, above "));
}

TEST_F(RenamedStructureTest, TableAndStructureRenamed) {
  std::string text = With(6, "itm");
  text.replace(text.find("\"carts\""), 7, "\"crats\"");
  text.replace(text.find("\"orders\""), 8, "\"oders\"");
  Write("new.xml", text);
  EXPECT_EQ(Suggest().out, With(6, "item"));
}

TEST_F(RenamedStructureTest, AllowedNamesStayAllowed) {
  const std::vector<std::string> tlv = {"--created-as", "tlv"};
  Write("old.xml", With(5, "item", "TLV"));
  Write("new.xml", With(6, "itm", "TLV"));
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "new.xml", "--created-as", "tlv"}).exit_code, 0);
  EXPECT_EQ(Suggest(tlv).out, With(6, "itm", "TLV"));
  Write("old.xml", With(5, "item", "TLV", "", "<entry name=\"n\" id=\"4\" type=\"int8\"/>"));
  EXPECT_EQ(Suggest(tlv).out, With(6, "itm", "TLV", "", "<entry name=\"n\" id=\"4\" type=\"int8\"/>"))
      << "only the field comes back";
}

// A new structure with the same content, in a new field, was taken for the structure of a removed field.
TEST_F(RenamedTest, StructureOfANewFieldIsAnotherOne) {
  const auto library = [](const std::string& version, const std::string& structure, const std::string& field) {
    return "<metalib name=\"s\" version=\"" + version + "\" protocol=\"QMX\">\n<meta name=\"" + structure +
           "\"><entry name=\"x\" type=\"int32\"/><entry name=\"y\" type=\"int32\"/></meta>\n<meta name=\"b\"><entry name=\"k\" "
           "type=\"uint32\"/>" +
           field + "<primarykey entries=\"k\"/></meta>\n</metalib>\n";
  };
  Write("before.xml", library("1", "pos", "<entry name=\"p\" type=\"pos\"/>"));
  Write("after.xml", library("2", "velocity", "<entry name=\"v\" type=\"velocity\" version=\"2\"/>"));
  EXPECT_THAT(Korvelcheck({"check", "before.xml", "after.xml"}).out, Not(HasSubstr("renamed to")));
  EXPECT_THAT(Korvelcheck({"suggest", "before.xml", "after.xml", "--file"}).out, HasSubstr("type=\"velocity\""));
  Write("after.xml", library("1", "velocity", "<entry name=\"p\" type=\"velocity\"/>"));
  EXPECT_THAT(Korvelcheck({"check", "before.xml", "after.xml"}).out, HasSubstr("structure pos renamed to velocity"));
}

}  // namespace
}  // namespace tool_test
