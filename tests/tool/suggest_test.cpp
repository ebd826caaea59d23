// suggest: its output is allowed, for every refused case and example, and `patch` applies the diff to the same result.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <set>

#include "tool_test.h"

namespace tool_test {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Cases in which the old schema is already refused, or that no alternative can fix.
const std::set<std::string> kWithoutSuggestion = {
    "driver/protocols-record",
    "driver/protocols-record-to-tlv",
    "index/index-on-list-table-kept",
    "keys/percent-in-names",
    "keys/primary-key-added",
    "list/attributes-malformed-old",
    "name/name-kept",
    "splittable/splittable-key-old-text",
    "splittable/splittable-key-text-both",
};

// The settings of a case as options.
std::vector<std::string> OptionsOf(const fs::path& folder) {
  std::vector<std::string> options;
  std::ifstream file(folder / "settings");
  for (std::string line; std::getline(file, line);) {
    const std::size_t colon = line.find(": ");
    options.push_back("--" + line.substr(0, colon));
    options.push_back(line.substr(colon + 2));
  }
  return options;
}

class SuggestTest : public ToolTest {
 protected:
  Outcome Run(const std::string& command, const std::vector<std::string>& files, const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = {command};
    arguments.insert(arguments.end(), files.begin(), files.end());
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Korvelcheck(arguments);
  }

  // A file after `patch`.
  std::string Patched(const std::string& file, const std::string& diff) const {
    const std::string before = Read(file);
    Write("the.diff", diff);
    EXPECT_EQ(std::system(("cd '" + PathOf("").string() + "' && patch -s -p0 < the.diff").c_str()), 0) << diff;
    const std::string after = Read(file);
    Write(file, before);
    return after;
  }

  bool HasWarnings(const Outcome& check) const { return check.out.find(": warning [") != std::string::npos; }

  // Requires that the suggestion is allowed, without warnings that the change does not have, and that patch and whole file agree.
  // `old.xml` and `new.xml` are in the directory.
  void ExpectSuggestion(const std::vector<std::string>& options) const {
    const Outcome file = Run("suggest", {"old.xml", "new.xml", "--file"}, options);
    ASSERT_EQ(file.exit_code, 0) << file.err;
    EXPECT_THAT(file.err, AnyOf("", StartsWith("korvelcheck: note: OLD has version ")));
    const Outcome diff = Run("suggest", {"old.xml", "new.xml"}, options);
    ASSERT_EQ(diff.exit_code, 0) << diff.err;
    EXPECT_EQ(Patched("new.xml", diff.out), file.out);
    Write("suggested.xml", file.out);
    const Outcome check = Run("check", {"old.xml", "suggested.xml"}, options);
    EXPECT_EQ(check.exit_code, 0) << check.out << file.out;
    EXPECT_TRUE(!HasWarnings(check) || HasWarnings(Run("check", {"old.xml", "new.xml"}, options))) << check.out;
  }
};

TEST_F(SuggestTest, EveryRefusedCaseHasOneOrIsKnownToHaveNone) {
  std::size_t suggested = 0;
  std::set<std::string> without;
  for (const auto& family : fs::directory_iterator(fs::path(KORVEL_SOURCE_DIR) / "tests/cases")) {
    if (!family.is_directory()) continue;
    for (const auto& folder : fs::directory_iterator(family)) {
      const std::string name = family.path().filename().string() + "/" + folder.path().filename().string();
      if (name.ends_with("-allowed") || name == "driver/table-new") continue;
      SCOPED_TRACE(name);
      for (const char* file : {"old.xml", "new.xml"}) {
        fs::copy_file(folder.path() / file, PathOf(file), fs::copy_options::overwrite_existing);
      }
      const std::vector<std::string> options = OptionsOf(folder.path());
      const Outcome outcome = Run("suggest", {"old.xml", "new.xml"}, options);
      if (outcome.exit_code == 1) {
        without.insert(name);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr("new.xml: error: no suggestion: table '"));
        EXPECT_THAT(outcome.err, HasSubstr("\n   no allowed alternative: "));
      } else {
        ++suggested;
        ExpectSuggestion(options);
      }
    }
  }
  EXPECT_EQ(without, kWithoutSuggestion);
  EXPECT_GT(suggested, 90u);
}

TEST_F(SuggestTest, EveryExampleAfterAnEarlierOne) {
  std::size_t refused = 0;
  for (const char* old_file : {"shop/v6.xml", "shop/v8.xml", "game/v12.xml"}) {
    const fs::path old_path = fs::path(KORVEL_SOURCE_DIR) / "examples" / old_file;
    fs::copy_file(old_path, PathOf("old.xml"), fs::copy_options::overwrite_existing);
    for (const auto& file : fs::directory_iterator(old_path.parent_path())) {
      fs::copy_file(file.path(), PathOf("new.xml"), fs::copy_options::overwrite_existing);
      if (Korvelcheck({"check", "old.xml", "new.xml"}).exit_code != 1) continue;
      SCOPED_TRACE(old_file + (" -> " + file.path().filename().string()));
      ++refused;
      ExpectSuggestion({});
    }
  }
  EXPECT_GT(refused, 20u);
}

constexpr char kOld[] = R"(<metalib name="mall" version="5" protocol="QMX">
  <meta name="box"><entry name="a" type="int32"/></meta>
  <meta name="orders">
    <entry name="uid" type="uint32"/>
    <entry name="in" type="box"/>
    <primarykey entries="uid"/>
  </meta>
  <meta name="users">
    <entry name="uid" type="uint32"/>
    <entry name="in" type="box"/>
    <primarykey entries="uid"/>
  </meta>
</metalib>
)";
constexpr char kNew[] = R"(<metalib name="mall" version="6" protocol="QMX">
  <!-- smaller -->
  <meta name="box"><entry name="a" type="int32" count="3"/></meta>
  <meta name="orders">
    <entry name="uid" type="uint64"/>  <!-- wider -->
    <entry name="in" type="box"/>
    <entry name="note" type="string" size="9"/>
    <primarykey entries="uid"/>
  </meta>
  <meta name="users">
    <entry name="uid" type="uint32"/>
    <entry name="in" type="box"/>
    <primarykey entries="uid"/>
  </meta>
</metalib>
)";

TEST_F(SuggestTest, TablesThatShareAStructureAgree) {
  Write("old.xml", kOld);
  Write("new.xml", kNew);
  ExpectSuggestion({});
  ExpectOutcome(Korvelcheck({"suggest", "old.xml", "new.xml"}), 0,
                "--- new.xml\n+++ new.xml\n"
                "@@ -1,10 +1,11 @@\n"
                " <metalib name=\"mall\" version=\"6\" protocol=\"QMX\">\n"
                "   <!-- smaller -->\n"
                "-  <meta name=\"box\"><entry name=\"a\" type=\"int32\" count=\"3\"/></meta>\n"
                "+  <meta name=\"box\"><entry name=\"a\" type=\"int32\"/><entry name=\"a_2\" type=\"int32\" version=\"6\" "
                "count=\"3\"/></meta>\n"
                "   <meta name=\"orders\">\n"
                "-    <entry name=\"uid\" type=\"uint64\"/>  <!-- wider -->\n"
                "+    <entry name=\"uid\" type=\"uint32\"/>  <!-- wider -->\n"
                "     <entry name=\"in\" type=\"box\"/>\n"
                "-    <entry name=\"note\" type=\"string\" size=\"9\"/>\n"
                "+    <entry name=\"note\" type=\"string\" size=\"9\" version=\"6\"/>\n"
                "+    <entry name=\"uid_2\" type=\"uint64\" version=\"6\"/>\n"
                "     <primarykey entries=\"uid\"/>\n"
                "   </meta>\n"
                "   <meta name=\"users\">\n",
                "");
}

// A table that embeds a structure uses it as the suggestion for the other table left it.
TEST_F(SuggestTest, RestoredStructureKeepsAllowedRemovals) {
  const auto library = [](const std::string& item, const std::string& prize) {
    return Library(5, {"<meta name=\"item\"><entry name=\"sku\" type=\"int32\"/>" + item + "</meta>",
                       "<meta name=\"reward\"><entry name=\"prize\" type=\"" + prize + "\"/></meta>",
                       Table({.name = "mail", .fields = "<entry name=\"gift\" type=\"reward\"/>"}),
                       Table({.name = "bag", .fields = "<entry name=\"thing\" type=\"item\"/>"})});
  };
  const std::string added = "<entry name=\"amount\" type=\"int32\" version=\"6\"/>";
  Write("old.xml", library("", "item"));
  Write("new.xml", library(added, "int64"));
  ExpectSuggestion({});
  EXPECT_THAT(Read("suggested.xml"), AllOf(HasSubstr(added), HasSubstr("name=\"prize\" type=\"item\"")));
}

// Attributes that are probably only misspelled keep their new values.
TEST_F(SuggestTest, CorrectsTheSpellingOfAttributes) {
  const std::pair<const char*, const char*> cases[] = {
      {"TableType=LIST;ListNum = 20", "TableType=LIST;ListNum=20"}, {"TableType=list;ListNum=10", "TableType=LIST;ListNum=10"},
      {"TableType=LIST;ListNumm=20", "TableType=LIST;ListNum=20"},  {"TableType=LIST;;ListNum=20;", "TableType=LIST;ListNum=20"},
      {"TableType=LIST;ListNum=ten", "TableType=LIST;ListNum=10"},
  };
  Write("old.xml", Library(5, {Table({.attributes = "TableType=LIST;ListNum=10"})}));
  for (const auto& [given, suggested] : cases) {
    Write("new.xml", Library(6, {Table({.attributes = given})}));
    EXPECT_EQ(Korvelcheck({"suggest", "old.xml", "new.xml", "--file"}).out, Library(6, {Table({.attributes = suggested})}))
        << given;
  }
}

TEST_F(SuggestTest, FixesOnlyRequestedTables) {
  Write("old.xml", kOld);
  Write("new.xml", kNew);
  const Outcome outcome = Korvelcheck({"suggest", "old.xml", "new.xml", "--table", "users", "--file"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, HasSubstr("<entry name=\"uid\" type=\"uint64\"/>  <!-- wider -->"));
  EXPECT_THAT(outcome.out, HasSubstr("<entry name=\"a_2\""));
}

TEST_F(SuggestTest, ReportsNothingToFix) {
  const std::string said = "korvelcheck: same.xml: nothing to fix: every table that was compared is allowed\n";
  ExpectOutcome(Korvelcheck({"suggest", "old.xml", "same.xml"}), 0, "", said);
  ExpectOutcome(Korvelcheck({"suggest", "old.xml", "same.xml", "--file"}), 0, Read("same.xml"), said);
}

TEST_F(SuggestTest, NamesTableWithoutSuggestionAndPrintsNothing) {
  Write("old.xml", Library(5, {Table({.fields = "<entry name=\"a-b\" type=\"int8\"/>"}), Table({.name = "users"})}));
  Write("new.xml",
        Library(5, {Table({.key_type = "int8", .fields = "<entry name=\"a-b\" type=\"int8\"/>"}), Table({.name = "users"})}));
  const Outcome outcome = Korvelcheck({"suggest", "old.xml", "new.xml", "-o", "out"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, StartsWith("new.xml: error: no suggestion: table 'orders' stays refused ["));
  EXPECT_THAT(outcome.err, Not(HasSubstr("users")));
  EXPECT_FALSE(fs::exists(PathOf("out")));
}

TEST_F(SuggestTest, FilesMayBeImagesOrStandardInput) {
  for (const char* name : {"old", "wide"}) {
    ASSERT_EQ(Korvelcheck({"compile", name + std::string(".xml"), "-o", name + std::string(".qmb")}).exit_code, 0);
  }
  const std::string suggested = Korvelcheck({"suggest", "old.xml", "wide.xml", "--file"}).out;
  ExpectOutcome(Korvelcheck({"suggest", "old.qmb", "wide.xml", "--file"}), 0, suggested, "");
  ExpectOutcome(Korvelcheck(Call{.arguments = {"suggest", "old.xml", "-", "--file"}, .input = Read("wide.xml")}), 0, suggested,
                "");
  ExpectInputError(Korvelcheck({"suggest", "old.xml", "wide.qmb"}),
                   "korvelcheck: wide.qmb is an image, which has no lines to compare; allowed: --file\n");
  Write("written.xml", Korvelcheck({"suggest", "old.xml", "wide.qmb", "--file"}).out);
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "written.xml"}).exit_code, 0);
}

TEST_F(SuggestTest, WritesTheFileToOutput) {
  ExpectOutcome(Korvelcheck({"suggest", "old.xml", "wide.xml", "--file", "-o", "out.xml"}), 0, "", "");
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "out.xml"}).exit_code, 0);
  const std::string wide = Read("wide.xml");
  ExpectInputError(Korvelcheck({"suggest", "old.xml", "wide.xml", "--file", "-o", "wide.xml"}),
                   "korvelcheck: -o wide.xml would replace an input\n");
  EXPECT_EQ(Read("wide.xml"), wide);
}

TEST_F(SuggestTest, WrongUsageIsRefused) {
  EXPECT_EQ(Korvelcheck({"suggest", "old.xml", "wide.xml", "--file", "--diff"}).exit_code, 2);
  EXPECT_EQ(Korvelcheck({"suggest", "old.xml"}).exit_code, 2);
  ExpectInputError(Korvelcheck({"suggest", "old.xml", "wide.xml", "--table", "order"}),
                   "korvelcheck: table 'order' is neither in old.xml nor in wide.xml (did you mean 'orders'?)\n");
}

// An oddly formatted file: only the necessary bytes change.
TEST_F(SuggestTest, OddLayoutsKeepTheirBytes) {
  const std::string fields =
      "\t<entry name='a' type=\"int16\" desc='1 &gt; 0'/><entry\r\n name='b'\r\n type='int8'/> <!-- b -->\r\n";
  const std::string head = "<?xml version='1.0'?>\r\n<!-- é -->\r\n<metalib version='5' name='m&amp;n'>";
  const std::string tail = "<primarykey entries=' uid '/></meta></metalib><!-- end -->";
  Write("old.xml", head + "<meta name='orders'><entry name='uid' type='int8'/>\r\n" + fields + tail);
  const std::string begin = head + "<meta name='orders'><entry name='uid' type='int8'/>\r\n";
  Write("new.xml",
        begin + "\t<entry name='a' type=\"int8\" desc='1 &gt; 0'/><entry\r\n name='b'\r\n type='int8'/> <!-- b -->\r\n" + tail);
  ExpectOutcome(
      Korvelcheck({"suggest", "old.xml", "new.xml", "--file"}), 0,
      "<?xml version='1.0'?>\r\n<!-- é -->\r\n<metalib version='6' name='m&amp;n'><meta name='orders'><entry name='uid' "
      "type='int8'/>\r\n\t<entry name='a' type=\"int16\" desc='1 &gt; 0'/><entry\r\n name='b'\r\n type='int8'/><entry "
      "name=\"a_2\" type=\"int8\" version=\"6\"/> <!-- b -->\r\n" +
          tail,
      "");
  ExpectSuggestion({});
}

// Regression: the suggestion changed a structure in a key, so that the keys of old records were lost.
TEST_F(SuggestTest, KeepsStructuresInKeys) {
  const auto library = [](int version, const std::string& type) {
    return Library(version, {"<meta name=\"p\"><entry name=\"x\" type=\"" + type + "\"/></meta>",
                             Table({.fields = "<entry name=\"p\" type=\"p\"/><splittablekey entries=\"p\"/>"})});
  };
  Write("old.xml", library(5, "uint32"));
  Write("new.xml", library(6, "uint64"));
  ExpectSuggestion({});
  EXPECT_EQ(Read("suggested.xml"), library(6, "uint32"));
}

// Regression: one table that was refused already withheld the suggestions for all others.
TEST_F(SuggestTest, TableThatWasAlreadyRefusedDoesNotWithholdOthers) {
  const std::string bad = Table({.name = "bad", .fields = "<entry name=\"a-b\" type=\"int8\"/>"});
  Write("old.xml", Library(5, {Table(), bad}));
  Write("new.xml", Library(5, {Table({.fields = "<entry name=\"note\" type=\"int8\"/>"}), bad}));
  const Outcome outcome = Korvelcheck({"suggest", "old.xml", "new.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.err, StartsWith("new.xml: error: no suggestion: table 'bad' stays refused ["));
  const std::string fixed = Patched("new.xml", outcome.out);
  EXPECT_THAT(fixed, HasSubstr("<entry name=\"note\" type=\"int8\" version=\"6\"/>"));
  EXPECT_EQ(Korvelcheck({"suggest", "old.xml", "new.xml", "--file"}).out, fixed);
  Write("fixed.xml", fixed);
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "fixed.xml", "--table", "orders"}).exit_code, 0);
}

}  // namespace
}  // namespace tool_test
