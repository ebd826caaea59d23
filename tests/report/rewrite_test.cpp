// Rewrites files according to a model: complete texts for usual changes, and a law for random changes and unusual layouts.
#include "analysis/suggest/rewrite.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "models.h"
#include "read_source.h"
#include "schema/source.h"
#include "schema/xml_writer.h"

namespace report_test {
namespace {

using korvel::ApplyReplacements;
using korvel::AttributesOf;
using korvel::AttributeText;
using korvel::EntryModel;
using korvel::IndexModel;
using korvel::KeyAttributes;
using korvel::MetaModel;
using korvel::Model;
using korvel::ModelOf;
using korvel::Rewriter;
using korvel::Source;
using korvel::SourceOfText;

constexpr char kOld[] = R"(<metalib name="mall" version="5" protocol="QMX">
  <meta name="item"><entry name="sku" type="uint32"/></meta>
  <meta name="orders">
    <entry name="uid"  type="uint32" desc="who"/>
    <entry name="zone" type="uint32" desc="where"/>
    <entry name="note" type="string" size="16"/>
    <primarykey entries="uid"/>
    <index name="by_zone">
      <column entry="zone" desc="true"/>
    </index>
  </meta>
</metalib>
)";

// The text of `text` after its table "orders" is changed.
std::string Rewritten(const std::string& text, const std::function<void(Model&)>& change) {
  const Source source = ReadSource("new.xml", text);
  const Source old_source = ReadSource("old.xml", kOld);
  Model model = ModelOf(source, "orders");
  change(model);
  const auto replacements = Rewriter(source, old_source).Rewrite(model);
  if (!replacements) return "cannot be written";
  const std::string result = ApplyReplacements(text, *replacements);
  EXPECT_EQ(ModelOf(ReadSource("result.xml", result), "orders"), model);
  return result;
}

constexpr char kOrders[] = R"(<metalib name='mall' version="6">
  <!-- orders -->
  <meta name="orders">
    <entry name="uid" type="uint64"/>  <!-- wider -->
    <!-- the shop -->
    <entry name="shop" version="6" type='uint32' desc="a &lt; b"/>
    <entry name="note" type="string" size="16"/>
    <primarykey entries="uid"/>
  </meta>
</metalib>
)";

std::string With(std::string text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  EXPECT_NE(at, std::string::npos) << what;
  return text.replace(at, what.size(), by);
}

TEST(Rewrite, ReplacesNothingIfNothingDiffers) {
  EXPECT_EQ(Rewritten(kOrders, [](Model&) {}), kOrders);
}

TEST(Rewrite, ChangesAttributesInPlace) {
  const std::string result = Rewritten(kOrders, [](Model& model) {
    model.version = 7;
    model.protocol = qmx::Protocol::kQmx;
    model.metas[0].customattr = "TableType=LIST;ListNum=4";
    model.metas[0].entries[0].type = "uint32";
    model.metas[0].entries[1].version = 1;
  });
  std::string expected = With(kOrders, "version=\"6\">", "version=\"7\" protocol=\"QMX\">");
  expected = With(expected, "\"orders\"", "\"orders\" customattr=\"TableType=LIST;ListNum=4\"");
  expected = With(expected, "uint64", "uint32");
  EXPECT_EQ(result, With(expected, " version=\"6\"", ""));
}

TEST(Rewrite, RemovesElementsWithTheirLine) {
  const std::string result =
      Rewritten(kOrders, [](Model& model) { model.metas[0].entries.erase(model.metas[0].entries.begin() + 1); });
  EXPECT_EQ(result, With(kOrders, "    <entry name=\"shop\" version=\"6\" type='uint32' desc=\"a &lt; b\"/>\n", ""));
}

TEST(Rewrite, RestoresElementsFromTheOldFile) {
  const std::string result = Rewritten(kOrders, [](Model& model) {
    MetaModel& orders = model.metas[0];
    orders.entries.insert(orders.entries.begin() + 1, EntryModel{.name = "zone", .type = "uint32"});
    orders.indexes.push_back({"by_zone", {{"zone", true}}});
  });
  std::string expected =
      With(kOrders, "<!-- wider -->\n", "<!-- wider -->\n    <entry name=\"zone\" type=\"uint32\" desc=\"where\"/>\n");
  expected = With(expected, "<primarykey entries=\"uid\"/>\n",
                  "<primarykey entries=\"uid\"/>\n    <index name=\"by_zone\">\n      <column entry=\"zone\" desc=\"true\"/>\n"
                  "    </index>\n");
  EXPECT_EQ(result, expected);
}

TEST(Rewrite, RenamedFieldKeepsItsLine) {
  const std::string result = Rewritten(kOrders, [](Model& model) {
    model.metas[0].entries[1].name = "store";
    model.metas[0].splittable_key = {"uid", "store"};
  });
  std::string expected = With(kOrders, "\"shop\"", "\"store\"");
  expected = With(expected, "<primarykey entries=\"uid\"/>\n",
                  "<primarykey entries=\"uid\"/>\n    <splittablekey entries=\"uid store\"/>\n");
  EXPECT_EQ(result, expected);
}

TEST(Rewrite, MovedFieldKeepsTheCommentOnItsLine) {
  const std::string result = Rewritten(kOrders, [](Model& model) {
    auto& entries = model.metas[0].entries;
    std::rotate(entries.begin(), entries.begin() + 1, entries.end());
  });
  const std::string line = "    <entry name=\"uid\" type=\"uint64\"/>  <!-- wider -->\n";
  EXPECT_EQ(result, With(With(kOrders, line, ""), "size=\"16\"/>\n", "size=\"16\"/>\n" + line));
}

TEST(Rewrite, RestoresMissingStructureFromTheOldFile) {
  const std::string result = Rewritten(kOrders, [](Model& model) {
    model.metas[0].entries.push_back({.name = "items", .type = "item", .version = 6, .count = 3});
    model.metas.push_back({.name = "item", .entries = {{.name = "sku", .type = "uint32"}}});
  });
  std::string expected =
      With(kOrders, "size=\"16\"/>\n", "size=\"16\"/>\n    <entry name=\"items\" type=\"item\" version=\"6\" count=\"3\"/>\n");
  expected = With(expected, "  <meta name=\"orders\">",
                  "  <meta name=\"item\"><entry name=\"sku\" type=\"uint32\"/></meta>\n  <meta name=\"orders\">");
  EXPECT_EQ(result, expected);
}

TEST(Rewrite, OneLineStaysOneLine) {
  const std::string text =
      "<metalib name='m' version='6'><meta name='orders'><entry name='uid' type='int8'/><entry name='b' type='int8'/><primarykey "
      "entries='uid'/></meta></metalib>";
  const std::string result = Rewritten(text, [](Model& model) {
    model.metas[0].entries.pop_back();
    model.metas[0].entries.push_back({.name = "c", .type = "int8", .version = 6});
  });
  EXPECT_EQ(result, With(text, "name='b' type='int8'", "name='c' type='int8' version=\"6\""));
}

TEST(Rewrite, UsesLineEndsAndTabsOfTheFile) {
  std::string text = kOrders;
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) text.replace(at, 1, "\r\n");
  const std::string result = Rewritten(text, [](Model& model) {
    model.metas[0].entries.push_back({.name = "zone", .type = "uint32"});
    model.metas[0].indexes.push_back({"by_uid", {{"uid", false}}});
  });
  std::string expected =
      With(text, "size=\"16\"/>\r\n", "size=\"16\"/>\r\n    <entry name=\"zone\" type=\"uint32\" desc=\"where\"/>\r\n");
  expected =
      With(expected, "<primarykey entries=\"uid\"/>\r\n",
           "<primarykey entries=\"uid\"/>\r\n    <index name=\"by_uid\">\r\n      <column entry=\"uid\"/>\r\n    </index>\r\n");
  EXPECT_EQ(result, expected);
}

TEST(Rewrite, ReturnsNothingIfXmlCannotExpressTheModel) {
  EXPECT_EQ(Rewritten(kOrders, [](Model& model) { model.metas[0].entries[1].customattr2 = "\x01"; }), "cannot be written");
  EXPECT_EQ(Rewritten(kOrders, [](Model& model) { model.metas[0].primary_key = {"a b"}; }), "cannot be written");
}

// Writes schemas in unusual layouts: any blanks, quotes and line ends, descriptions, and a numbered comment between elements.
class OddWriter {
 public:
  explicit OddWriter(std::mt19937_64& random) : random_(random), line_end_(OneIn(2) ? "\n" : "\r\n") {}

  std::string Write(const Model& model) {
    Open("metalib", AttributesOf(model));
    for (const MetaModel& meta : model.metas) Write(meta);
    text_ += "</metalib>";
    return text_;
  }
  int comments() const { return comments_; }

 private:
  bool OneIn(std::size_t n) { return random_() % n == 0; }

  void Gap() {
    if (!in_index_ && OneIn(6)) text_ += "<!-- comment " + std::to_string(comments_++) + " -->";
    if (OneIn(4)) text_ += " \t";
    if (!OneIn(4)) text_ += line_end_ + std::string(random_() % 5, ' ');
    if (!in_index_ && OneIn(9)) text_ += "<!-- comment " + std::to_string(comments_++) + " --> ";
  }

  void Begin(const std::string& element, const std::vector<AttributeText>& attributes) {
    Gap();
    text_ += "<" + element;
    for (const AttributeText& attribute : attributes) {
      if (!attribute.value) continue;
      const char quote = OneIn(3) ? '\'' : '"';
      text_ += (OneIn(5) ? line_end_ : "") + " " + std::string(attribute.name) + (OneIn(5) ? " = " : "=") + quote +
               *attribute.value + quote;
    }
    if (OneIn(5) && element != "column") text_ += " desc='/>'";
    if (OneIn(5)) text_ += " ";
  }
  void Open(const std::string& element, const std::vector<AttributeText>& attributes) {
    Begin(element, attributes);
    text_ += ">";
  }
  void Empty(const std::string& element, const std::vector<AttributeText>& attributes) {
    Begin(element, attributes);
    text_ += OneIn(4) ? "><!-- inner --></" + element + " >" : "/>";
  }
  void Close(const std::string& element) {
    Gap();
    text_ += "</" + element + ">";
  }

  void Write(const MetaModel& meta) {
    Open("meta", AttributesOf(meta));
    const bool keys_first = OneIn(3);
    if (keys_first) Keys(meta);
    for (const EntryModel& entry : meta.entries) Empty("entry", AttributesOf(entry));
    if (!keys_first) Keys(meta);
    for (const IndexModel& index : meta.indexes) {
      Open("index", AttributesOf(index));
      in_index_ = true;
      for (const auto& column : index.columns) Empty("column", AttributesOf(column));
      Close("index");
      in_index_ = false;
    }
    Close("meta");
  }
  void Keys(const MetaModel& meta) {
    if (!meta.primary_key.empty()) Empty("primarykey", *KeyAttributes(meta.primary_key));
    if (!meta.splittable_key.empty()) Empty("splittablekey", *KeyAttributes(meta.splittable_key));
  }

  std::mt19937_64& random_;
  std::string line_end_;
  std::string text_;
  int comments_ = 0;
  bool in_index_ = false;  // comments inside an index are removed with it
};

// A random model that some of the edits make.
Model AnyModel(const Source& old_source, const Source& new_source, std::mt19937_64& random) {
  const korvel::Difference difference(old_source, new_source, "t");
  std::vector<bool> chosen(difference.edits().size());
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    if (random() % 2 == 0) continue;
    chosen[i] = true;
    for (const std::size_t need : difference.Needs(i)) chosen[need] = true;
  }
  return difference.Apply(chosen);
}

bool CanBeRead(const Model& model) {
  std::string text = "<metalib name=\"lib\" version=\"" + std::to_string(model.version) + "\"" +
                     (model.protocol == qmx::Protocol::kTlv ? " protocol=\"TLV\"" : "") + ">";
  for (const MetaModel& meta : model.metas) text += *ElementOf(meta, {});
  return SourceOfText("any", text + "</metalib>").has_value();
}

TEST(RewriteLaws, WritesAnyModelInAnyLayout) {
  std::uint64_t written = 0;
  const std::uint64_t pairs = TestRandomModels(20261121, 500, [&](const ModelPair& models, std::mt19937_64& random) {
    OddWriter writer(random);
    const std::string text = writer.Write(ModelOf(SourceOf("new", models.new_model), "t"));
    const std::optional<Source> source = SourceOfText("new", text);
    const Source old_source = SourceOf("old", models.old_model);
    if (!source) return;
    const Model wanted = AnyModel(old_source, *source, random);
    if (!CanBeRead(wanted)) return;
    ++written;
    const auto replacements = Rewriter(*source, old_source).Rewrite(wanted);
    ASSERT_TRUE(replacements);
    const std::string result = ApplyReplacements(text, *replacements);
    const std::optional<Source> again = SourceOfText("again", result);
    ASSERT_TRUE(again) << text << "\n----\n" << result;
    ASSERT_EQ(ModelOf(*again, "t"), wanted) << text << "\n----\n" << result;
    for (int comment = 0; comment < writer.comments(); ++comment) {
      EXPECT_NE(result.find("<!-- comment " + std::to_string(comment) + " -->"), std::string::npos) << comment << "\n"
                                                                                                    << text << "\n----\n"
                                                                                                    << result;
    }
    // A file that matches the model already is unchanged.
    EXPECT_EQ(Rewriter(*again, old_source).Rewrite(wanted)->size(), 0u);
  });
  if (pairs >= 500) {
    EXPECT_GT(written, 200u);
  }
}

}  // namespace
}  // namespace report_test
