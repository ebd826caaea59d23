// Hover, completion, navigation, rename and the line above each table, as an editor asks for them. What the text alone decides is
// tested by outline_test.cpp, symbols_test.cpp, rename_test.cpp and completion_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "lsp/json.h"
#include "server_fixture.h"

namespace lsp_test {
namespace {

using korvel::lsp::ErrorCode;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class FeaturesTest : public ServerTest {
 protected:
  FeaturesTest() { client_.Initialize({{"window", {{"showDocument", {{"support", true}}}}}}); }

  // The parameters of a request at the first occurrence of a text in the shop as it is open.
  Json At(const std::string& found, std::size_t offset = 0) const {
    const std::size_t at = text_.find(found) + offset;
    const auto line = std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(at), '\n');
    const std::size_t begin = text_.rfind('\n', at) + 1;
    return {{"textDocument", {{"uri", Uri("shop.xml")}}}, {"position", {{"line", line}, {"character", at - begin}}}};
  }
  void Open(const std::string& text) {
    text_ = text;
    client_.Open(Uri("shop.xml"), text);
  }
  void Change(const std::string& text) {
    text_ = text;
    client_.Change(Uri("shop.xml"), text);
  }

  // "" for nothing.
  std::string Hover(const std::string& found, std::size_t offset = 0) {
    const Json result = client_.Result("textDocument/hover", At(found, offset));
    return result.is_null() ? "" : result["contents"]["value"].get<std::string>();
  }

  // The texts of the ranges of locations.
  std::vector<std::string> PiecesOf(const Json& locations) const {
    std::vector<std::string> pieces;
    for (const Json& one : locations) {
      EXPECT_EQ(one["uri"], Uri("shop.xml"));
      const Json& range = one["range"];
      std::size_t begin = 0;
      for (int line = 0; line < range["start"]["line"]; ++line) begin = text_.find('\n', begin) + 1;
      const std::size_t from = range["start"]["character"];
      pieces.push_back(std::to_string(range["start"]["line"].get<int>()) + " " +
                       text_.substr(begin + from, range["end"]["character"].get<std::size_t>() - from));
    }
    return pieces;
  }

  std::vector<std::string> Titles() {
    std::vector<std::string> titles;
    for (const Json& one : client_.Result("textDocument/codeLens", {{"textDocument", {{"uri", Uri("shop.xml")}}}})) {
      EXPECT_EQ(one["command"]["command"], "korvelcheck.report");
      titles.push_back(one["command"]["title"]);
    }
    return titles;
  }

  std::string text_;
  Client client_;
};

// --- Hover ---

TEST_F(FeaturesTest, HoverShowsSizeAndChangesOfAnEntry) {
  Open(Replaced(kShop, "    <primarykey",
                "    <entry name=\"stock\" type=\"uint16\" count=\"3\" version=\"2\"/>\n    <primarykey"));
  EXPECT_THAT(Hover("price"), StartsWith("**`items.price`** `int64`\n\noffset 4, 8 bytes, 44.4 % of 18 bytes, version 1\n\n"
                                         "Since `git:HEAD`: unchanged\n"));
  EXPECT_THAT(Hover("stock"), AllOf(HasSubstr("offset 12, 6 bytes"), HasSubstr("Since `git:HEAD`: new\n")));
  EXPECT_THAT(Hover("entries=\"sku", 10), StartsWith("**`items.sku`** `uint32`"));  // a reference
  EXPECT_THAT(Hover("items"), StartsWith("**`items`**\n\n3 fields, 18 bytes\n\nSince `git:HEAD`: was 2 fields, 12 bytes"));
}

TEST_F(FeaturesTest, HoverShowsTheMeaningOfTheFormat) {
  Open(kShop);
  EXPECT_THAT(Hover("type="), StartsWith("**type**: Type of the entry"));
  EXPECT_THAT(Hover("uint32"), HasSubstr("`uint32`: Unsigned integer of 32 bits, 4 bytes."));
  EXPECT_EQ(Hover("primarykey"), "The entries whose values identify a record. It makes the meta a table.");
  EXPECT_EQ(Hover("\n    <entry"), "");
}

TEST_F(FeaturesTest, HoverShowsTheRuleOfADiagnostic) {
  Open(SmallPrice());
  EXPECT_THAT(Hover("int32\"/>\n    <primary"), AllOf(HasSubstr("# field.size\n"), HasSubstr("## Allowed instead\n"),
                                                      HasSubstr("[Result code](https://"), Not(HasSubstr("](result-codes"))));
  EXPECT_THAT(Hover("price"), AllOf(HasSubstr("Since `git:HEAD`: type: `int64` -> `int32`"), Not(HasSubstr("# field.size"))));
}

TEST_F(FeaturesTest, HoverUsesTheLastTextWithoutAFault) {
  Open(kShop);
  EXPECT_THAT(Hover("price"), HasSubstr("8 bytes"));
  Change(Replaced(kShop, "<primarykey", "<entry name=\"new\" <primarykey"));
  EXPECT_THAT(Hover("price"), HasSubstr("8 bytes"));
}

TEST_F(FeaturesTest, HoverSaysNothingAboutOtherFiles) {
  client_.Open(Uri("pom.xml"), "<project><name>shop</name></project>");
  const Json position = {{"line", 0}, {"character", 3}};
  EXPECT_EQ(client_.Result("textDocument/hover", {{"textDocument", {{"uri", Uri("pom.xml")}}}, {"position", position}}), nullptr);
}

// --- Completion ---

std::vector<std::string> LabelsOf(const Json& list) {
  std::vector<std::string> labels;
  for (const Json& one : list["items"]) labels.push_back(one["label"]);
  return labels;
}

TEST_F(FeaturesTest, CompletionListsTypesWithTheirMeaning) {
  Open(kShop);
  const Json list = client_.Result("textDocument/completion", At("int64"));
  EXPECT_THAT(LabelsOf(list), AllOf(Contains("uint16"), Contains("string"), Not(Contains("items"))));
  const auto uint16 = std::ranges::find(list["items"], "uint16", [](const Json& one) { return one["label"].get<std::string>(); });
  ASSERT_NE(uint16, list["items"].end());
  EXPECT_EQ((*uint16)["documentation"], "Unsigned integer of 16 bits, 2 bytes.");
  EXPECT_EQ((*uint16)["textEdit"]["newText"], "uint16");
}

TEST_F(FeaturesTest, CompletionKnowsTheIdsAndTheVersionOfTheBaseline) {
  const std::string with_ids =
      Replaced(Replaced(kShop, "name=\"sku\"", "id=\"1\" name=\"sku\""), "name=\"price\"", "id=\"7\" name=\"price\"");
  Write("shop.xml", with_ids);
  Commit("Add ids");
  // The entry with id 7 is gone, but its id is not free.
  const std::string text = Replaced(with_ids, "<entry id=\"7\" name=\"price\" type=\"int64\"/>",
                                    "<entry name=\"cost\" type=\"int64\" id=\"\" version=\"\"/>");
  Open(text);
  EXPECT_THAT(LabelsOf(client_.Result("textDocument/completion", At("id=\"\"", 4))), ElementsAre("8"));
  EXPECT_THAT(LabelsOf(client_.Result("textDocument/completion", At("version=\"\"", 9))), ElementsAre("2"));
}

TEST_F(FeaturesTest, CompletionWorksInBrokenText) {
  Open(Replaced(kShop, "<primarykey", "<entry name=\"x\" ty\n    <primarykey"));
  EXPECT_THAT(LabelsOf(client_.Result("textDocument/completion", At("ty\n", 2))), Contains("type"));
}

TEST_F(FeaturesTest, CompletionUsesSnippetsOnlyIfTheClientDoes) {
  const auto formats = [&](Client& client) {
    client.Open(Uri("shop.xml"), Replaced(kShop, "    <primarykey", "    <\n    <primarykey"));
    text_ = Replaced(kShop, "    <primarykey", "    <\n    <primarykey");
    const Json list = client.Result("textDocument/completion", At("<\n", 1));
    std::vector<int> found;
    for (const Json& one : list["items"]) found.push_back(one["insertTextFormat"]);
    return found;
  };
  EXPECT_THAT(formats(client_), Not(Contains(2)));
  Client snippets;
  snippets.Initialize({{"textDocument", {{"completion", {{"completionItem", {{"snippetSupport", true}}}}}}}});
  EXPECT_THAT(formats(snippets), Contains(2));
}

// --- Names ---

TEST_F(FeaturesTest, NamesLeadToTheirDeclarationAndUses) {
  Open(kShop);
  EXPECT_THAT(PiecesOf(Json::array({client_.Result("textDocument/definition", At("entries=\"sku", 9))})), ElementsAre("2 sku"));
  Json params = At("sku");
  params["context"] = {{"includeDeclaration", true}};
  EXPECT_THAT(PiecesOf(client_.Result("textDocument/references", params)), ElementsAre("2 sku", "4 sku"));
  params["context"] = {{"includeDeclaration", false}};
  EXPECT_THAT(PiecesOf(client_.Result("textDocument/references", params)), ElementsAre("4 sku"));
  EXPECT_EQ(client_.Result("textDocument/definition", At("uint32")), nullptr);
}

TEST_F(FeaturesTest, SymbolsAreATree) {
  Open(kShop);
  const Json symbols = client_.Result("textDocument/documentSymbol", {{"textDocument", {{"uri", Uri("shop.xml")}}}});
  ASSERT_EQ(symbols.size(), 1U);
  EXPECT_EQ(symbols[0]["name"], "shop");
  const Json& items = symbols[0]["children"][0];
  EXPECT_EQ(items["name"], "items");
  EXPECT_EQ(items["children"][1]["name"], "price");
  EXPECT_EQ(items["children"][1]["detail"], "int64");
}

TEST_F(FeaturesTest, RenamesWhatTheBaselineDoesNotHave) {
  Open(Replaced(kShop, "    <primarykey", "    <entry name=\"stock\" type=\"uint16\" version=\"2\"/>\n    <primarykey"));
  EXPECT_EQ(client_.Result("textDocument/prepareRename", At("stock"))["placeholder"], "stock");
  Json params = At("stock");
  params["newName"] = "amount";
  const Json edits = client_.Result("textDocument/rename", params)["changes"][Uri("shop.xml")];
  ASSERT_EQ(edits.size(), 1U);
  EXPECT_EQ(edits[0]["newText"], "amount");
}

TEST_F(FeaturesTest, RefusesToRenameWhatTheBaselineHas) {
  Open(kShop);
  const auto error = [&](const std::string& name, const std::string& new_name) {
    Json params = At("\"" + name + "\"", 1);
    params["newName"] = new_name;
    const Json found = client_.Error("textDocument/rename", params);
    EXPECT_EQ(found["code"], ErrorCode::kRequestFailed);
    return found["message"].get<std::string>();
  };
  EXPECT_EQ(error("price", "cost"),
            "a field was removed or renamed (record format): items.price [field.missing]; allowed: renaming what the baseline "
            "does not have");
  EXPECT_THAT(error("items", "things"), HasSubstr("[library.table]"));
  EXPECT_THAT(error("shop", "store"), HasSubstr("[advice.library-renamed]"));
  EXPECT_THAT(error("price", "sku"), HasSubstr("'sku'"));
  EXPECT_THAT(client_.Error("textDocument/rename",
                            [&] {
                              Json params = At("uint32");
                              params["newName"] = "x";
                              return params;
                            }())["message"],
              HasSubstr("there is no name here"));
  client_.Change(Uri("shop.xml"), kShop);
  EXPECT_EQ(client_.Diagnostics(Uri("shop.xml")), Json::array());  // a refused rename left nothing behind
}

TEST_F(FeaturesTest, RenamesWhatIsRefusedForAnotherReason) {
  // The new entry lacks its version.
  Open(Replaced(kShop, "    <primarykey", "    <entry name=\"stock\" type=\"uint16\"/>\n    <primarykey"));
  Json params = At("stock");
  params["newName"] = "amount";
  EXPECT_EQ(client_.Result("textDocument/rename", params)["changes"][Uri("shop.xml")].size(), 1U);
}

TEST_F(FeaturesTest, RefusesToRenameInAFileThatCannotBeChecked) {
  Open(Replaced(kShop, "</metalib>", ""));
  Json params = At("price");
  params["newName"] = "cost";
  EXPECT_THAT(client_.Error("textDocument/rename", params)["message"],
              StartsWith("this file cannot be checked: shop.xml:8:1: error: "));
}

TEST_F(FeaturesTest, HoverShowsNamesAsTheyAre) {
  const std::string name = "a`` ![x](http://example.org/x.png) ``b";
  Open(Replaced(kShop, "\"price\"", "\"" + name + "\""));
  EXPECT_THAT(Hover("![x]"), StartsWith("**``` items." + name + " ```** `int64`"));
}

// --- The line above each table ---

TEST_F(FeaturesTest, TablesHaveALineWithTheirSizeAndChanges) {
  Open(kShop);
  EXPECT_THAT(Titles(), ElementsAre("12 bytes"));
  Change(Replaced(SmallPrice(), "    <primarykey", "    <entry name=\"a\" type=\"uint8\" version=\"2\"/>\n    <primarykey"));
  EXPECT_THAT(Titles(), ElementsAre("9 bytes, 1 refused, 1 new"));
  Change(Replaced(text_, "</meta>", "</met"));  // the last text without a fault
  EXPECT_THAT(Titles(), ElementsAre("9 bytes, 1 refused, 1 new"));
}

TEST_F(FeaturesTest, TheLineOpensTheReport) {
  Open(SmallPrice());
  const Json result =
      client_.Result("workspace/executeCommand", {{"command", "korvelcheck.report"}, {"arguments", {Uri("shop.xml")}}});
  const Json shown = client_.Notification("window/showDocument");
  EXPECT_EQ(shown["uri"], result);
  EXPECT_EQ(shown["external"], true);
  const std::filesystem::path page = korvel::PathOf(result.get<std::string>()).value();
  EXPECT_EQ(page.filename(), "shop.xml.html");
  EXPECT_EQ(std::filesystem::status(page.parent_path()).permissions(), std::filesystem::perms::owner_all);
  std::filesystem::copy_file(page, PathOf("page.html"));
  EXPECT_THAT(Read("page.html"), AllOf(StartsWith("<!DOCTYPE html>"), HasSubstr("field.size"), HasSubstr("int64")));
  client_.Result("shutdown", nullptr);
  client_.Notify("exit", nullptr);
  EXPECT_EQ(client_.End(), true);
  EXPECT_FALSE(std::filesystem::exists(page));
}

TEST_F(FeaturesTest, EachFileHasItsOwnReport) {
  const auto page_of = [&](const std::string& file) {
    client_.Open(Uri(file), SmallPrice());
    const Json result =
        client_.Result("workspace/executeCommand", {{"command", "korvelcheck.report"}, {"arguments", {Uri(file)}}});
    return std::filesystem::path(korvel::PathOf(result.get<std::string>()).value());
  };
  const std::filesystem::path page = page_of("shop.xml");
  EXPECT_EQ(page_of("a/shop.xml"), page.parent_path() / "shop.xml-2.html");
  EXPECT_EQ(page_of("b/shop.xml"), page.parent_path() / "shop.xml-3.html");
  EXPECT_EQ(page_of("shop.xml"), page);
  // At most 100 bytes of the name, without half a character.
  EXPECT_EQ(page_of(std::string(99, 'x') + "\xC3\xA4" + std::string(150, 'y')).filename(), std::string(99, 'x') + ".html");
}

TEST_F(FeaturesTest, OnlyFilesWithASchemaHaveAReport) {
  const auto error = [&](const std::string& uri, const std::string& text) {
    client_.Open(uri, text);
    return client_.Error("workspace/executeCommand", {{"command", "korvelcheck.report"}, {"arguments", {uri}}})["message"];
  };
  EXPECT_EQ(error("untitled:1", SmallPrice()), "the document is not a file; allowed: a file with a schema");
  EXPECT_EQ(error(Uri("korvelcheck.toml"), kProject), "this is a project file, not a schema");
  Write("korvelcheck.toml", std::string(kProject) + "exclude = [\"pom.xml\"]\n");
  client_.Close(Uri("korvelcheck.toml"));
  EXPECT_EQ(error(Uri("pom.xml"), "<project/>"), "this file is not checked; allowed: a schema of the project");
}

TEST_F(FeaturesTest, OnlyKnownCommandsRun) {
  Open(kShop);
  EXPECT_EQ(client_.Error("workspace/executeCommand", {{"command", "rm"}, {"arguments", {Uri("shop.xml")}}})["code"],
            ErrorCode::kInvalidParams);
}

}  // namespace
}  // namespace lsp_test
