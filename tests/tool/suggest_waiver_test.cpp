// suggest keeps changes that waivers accept, also beside other refused changes.
#include <gmock/gmock.h>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class SuggestWaiverTest : public ProjectTest {
 protected:
  static std::string Fields(const std::string& a, const std::string& b) {
    return Library(5, {Table({.fields = "<entry name=\"a\" type=\"" + a + "\"/><entry name=\"b\" type=\"" + b + "\"/>"})});
  }

  // Both fields shrink; the waiver accepts that of a.
  SuggestWaiverTest() {
    Write("schemas/orders.xml", Fields("uint32", "uint32"));
    Commit("fields");
    Write("schemas/orders.xml", Fields("uint16", "uint16"));
    Waive("orders", "a");
  }

  void Waive(const std::string& table, const std::string& entry) const {
    Write("korvelcheck.toml", Read("korvelcheck.toml") + "[[waivers]]\ntable = '" + table + "'\nrule = 'field.size'\nentry = '" +
                                  entry + "'\nreason = 'no records yet'\nuntil = 2026-12-31\n");
  }

  // What fixes the file, in both forms of the call, is the same.
  std::string Fixed(int exit_code = 0) const {
    const std::string old_file = "git:HEAD:schemas/orders.xml";
    const Outcome pair = Run({"suggest", old_file, "schemas/orders.xml"});
    const Outcome project = Run({"suggest", "--against", "git:HEAD", "schemas/orders.xml"});
    EXPECT_EQ(pair.exit_code, exit_code) << pair.err;
    EXPECT_EQ(project.exit_code, exit_code);
    EXPECT_EQ(pair.out, project.out);
    EXPECT_EQ(pair.err, project.err);
    EXPECT_EQ(Run({"suggest", "--against", "git:HEAD", "schemas/orders.xml", "--write"}).exit_code, exit_code);
    return Read("schemas/orders.xml");
  }
};

TEST_F(SuggestWaiverTest, KeepsTheWaivedChangeOfATable) {
  const std::string fixed = Fixed();
  EXPECT_THAT(fixed, HasSubstr(R"(<entry name="a" type="uint16"/>)"));
  EXPECT_THAT(fixed, HasSubstr(R"(<entry name="b" type="uint32"/>)"));
  EXPECT_EQ(Run({"check", "--against", "git:HEAD"}).exit_code, 0);
  EXPECT_EQ(Run({"check", "--against", "git:HEAD", "--no-project", "schemas/orders.xml"}).exit_code, 1);
}

TEST_F(SuggestWaiverTest, KeepsTheChangeThatAnExactWaiverNames) {
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\n");
  const std::string json = Run({"check", "--against", "git:HEAD", "--format", "json"}).out;
  const std::string before = "\"path\": \"orders.a\"";
  const std::string key = "\"fingerprint\": \"";
  const std::string fingerprint = json.substr(json.find(key, json.find(before)) + key.size(), 16);
  ASSERT_EQ(Run({"waive", fingerprint, "--against", "git:HEAD", "--reason", "r", "--until", "2026-12-31"}).exit_code, 0);
  const std::string fixed = Fixed();
  EXPECT_THAT(fixed, HasSubstr(R"(<entry name="a" type="uint16"/>)"));
  EXPECT_THAT(fixed, HasSubstr(R"(<entry name="b" type="uint32"/>)"));
}

TEST_F(SuggestWaiverTest, WithoutAProjectFileNothingIsWaived) {
  const Outcome outcome = Run({"suggest", "--no-project", "git:HEAD:schemas/orders.xml", "schemas/orders.xml", "--file"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, HasSubstr(R"(<entry name="a" type="uint32"/>)"));
}

TEST_F(SuggestWaiverTest, NothingToFixIfAllIsWaived) {
  Waive("orders", "b");
  ExpectOutcome(Run({"suggest", "git:HEAD:schemas/orders.xml", "schemas/orders.xml"}), 0, "",
                "korvelcheck: schemas/orders.xml: nothing to fix: every table that was compared is allowed or waived\n");
  ExpectOutcome(Run({"suggest", "--against", "git:HEAD"}), 0, "",
                "korvelcheck: nothing to fix: every table that was compared is allowed or waived\n");
}

TEST_F(SuggestWaiverTest, ExpiredWaiversAcceptNothing) {
  std::string project = Read("korvelcheck.toml");
  project.replace(project.find("2026-12-31"), 10, "2025-12-31");
  Write("korvelcheck.toml", project);
  EXPECT_THAT(Fixed(), HasSubstr(R"(<entry name="a" type="uint32"/>)"));
}

TEST_F(SuggestWaiverTest, OldImagesKeepWaivedChanges) {
  Write("old.xml", Fields("uint32", "uint32"));
  ASSERT_EQ(Run({"compile", "old.xml", "-o", "old.qmb"}).exit_code, 0);
  const Outcome outcome = Run({"suggest", "old.qmb", "schemas/orders.xml", "--file"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, HasSubstr(R"(<entry name="a" type="uint16"/>)"));
  EXPECT_THAT(outcome.out, HasSubstr(R"(<entry name="b" type="uint32"/>)"));
}

// A change of a shared structure that one table does not accept is undone in all of them.
TEST_F(SuggestWaiverTest, ChangesThatATableDoesNotAcceptAreUndone) {
  const auto library = [](const std::string& type) {
    const std::string item = R"(<entry name="item" type="item"/>)";
    return Library(
        5, {"<meta name=\"item\"><entry name=\"p\" type=\"" + type + "\"/><entry name=\"q\" type=\"" + type + "\"/></meta>",
            Table({.name = "orders", .fields = item}), Table({.name = "carts", .fields = item})});
  };
  Write("schemas/orders.xml", library("uint32"));
  Commit("shared");
  Write("schemas/orders.xml", library("uint16"));
  Waive("orders", "item.p");
  Waive("orders", "item.q");
  Waive("carts", "item.p");
  const std::string fixed = Fixed();
  EXPECT_THAT(fixed, HasSubstr(R"(<entry name="p" type="uint16"/>)"));
  EXPECT_THAT(fixed, HasSubstr(R"(<entry name="q" type="uint32"/>)"));
  EXPECT_EQ(Run({"check", "--against", "git:HEAD"}).exit_code, 0);
}

// A new field with the id of a removed one would read what is stored for that one.
TEST_F(SuggestWaiverTest, FieldsOfWaivedRemovalsStayReserved) {
  const auto library = [](const std::string& fields) { return Library(5, {Table({.name = "orders", .fields = fields})}, "TLV"); };
  Write("schemas/orders.xml", library(R"(<entry name="a" id="2" type="uint32"/><entry name="a_2" id="3" type="int64"/>)"));
  Commit("fields");
  Write("schemas/orders.xml", library(R"(<entry name="a" id="2" type="int64"/>)"));
  Write("korvelcheck.toml",
        "[schemas]\npaths = ['schemas/**/*.xml']\n[[waivers]]\ntable = 'orders'\nrule = 'field.missing-tlv'\nentry = "
        "'a_2'\nreason = 'r'\nuntil = 2026-12-31\n");
  const std::string fixed = Fixed();
  EXPECT_THAT(fixed, HasSubstr(R"(<entry name="a" id="2" type="uint32"/>)"));
  EXPECT_THAT(fixed, HasSubstr(R"(<entry name="a_2_2" id="4" type="int64" version="6"/>)"));
  EXPECT_EQ(Run({"check", "--against", "git:HEAD"}).exit_code, 0);
}

// To undo the change for carts would change what the waiver of orders names.
TEST_F(SuggestWaiverTest, WaivedTablesStayWaived) {
  const auto library = [](const std::string& size) {
    const std::string address = R"(<entry name="address" type="address"/>)";
    return Library(
        5, {"<meta name=\"address\"><entry name=\"street\" type=\"string\" size=\"" + size + "\"/></meta>",
            Table({.name = "orders", .attributes = " ", .fields = address}), Table({.name = "carts", .fields = address})});
  };
  Write("schemas/orders.xml", library("90"));
  Commit("address");
  Write("schemas/orders.xml", library("80"));
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\n");
  const std::string json = Run({"check", "--against", "git:HEAD", "--table", "orders", "--format", "json"}).out;
  const std::string key = "\"fingerprint\": \"";
  const std::string fingerprint = json.substr(json.find(key, json.find("table.attributes")) + key.size(), 16);
  ASSERT_EQ(Run({"waive", fingerprint, "--against", "git:HEAD", "--reason", "r", "--until", "2026-12-31"}).exit_code, 0);
  ASSERT_EQ(Run({"check", "--against", "git:HEAD", "--table", "orders"}).exit_code, 0);
  EXPECT_EQ(Fixed(1), library("80"));
  const Outcome outcome = Run({"suggest", "--against", "git:HEAD"});
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("table 'carts' stays refused ["));
  EXPECT_THAT(outcome.err, HasSubstr("\n   found no version after which all other tables stay allowed or waived\n"));
}

// A new structure is part of the change that needs it.
TEST_F(SuggestWaiverTest, KeepsStructuresOfWaivedChanges) {
  const std::string item = "<meta name=\"item\"><entry name=\"p\" type=\"uint32\"/></meta>";
  const std::string added = R"(<entry name="new" type="item"/>)";
  Write("schemas/orders.xml",
        Library(6, {item, Table({.fields = R"(<entry name="a" type="uint32"/><entry name="b" type="uint16"/>)" + added})}));
  Write("korvelcheck.toml", Read("korvelcheck.toml") +
                                "[[waivers]]\ntable = 'orders'\nrule = 'field.new-version'\nentry = 'new'\nreason = 'r'\nuntil = "
                                "2026-12-31\n");
  const std::string fixed = Fixed();
  EXPECT_THAT(fixed, HasSubstr(item));
  EXPECT_THAT(fixed, HasSubstr(added));
  EXPECT_THAT(fixed, HasSubstr(R"(<entry name="b" type="uint32"/>)"));
  EXPECT_EQ(Run({"check", "--against", "git:HEAD"}).exit_code, 0);
}

}  // namespace
}  // namespace tool_test
