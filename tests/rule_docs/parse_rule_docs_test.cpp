// The format of a rule page: if one line of a valid page is changed, the fault is reported with file and line.
#include "rule_docs/rule_doc_files.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>

namespace rule_docs_test {
namespace {

using namespace korvel;
using testing::ElementsAre;

constexpr char kPage[] = R"(# field.size

A field's size was reduced.

[Result code](result-codes.md): `-3 ERROR_VALUE_FIELD`

Message:

```text
The size of entry can't be reduced! entry:'%s' metaname:'%s'
```

## What it protects

One line,
and another.

## Allowed instead

Keep `it`.

## Example

`old.xml`:

```xml
<old>

</old>
```

`new.xml`:

```xml
<new/>
```

`korvelcheck check old.xml new.xml --type list` reports `-3 ERROR_VALUE_FIELD`:

```text
The answer
```

## Allowed `new.xml`

```xml
<allowed/>
```
)";

std::string Page() {
  std::string page = kPage;
  const std::string summary = "A field's size was reduced.";
  const RefusalRow& row = *FindRefusal("field.size");
  std::string expected = std::string(row.summary) + ".";
  expected.front() = static_cast<char>(std::toupper(expected.front()));
  return page.replace(page.find(summary), summary.size(), expected);
}

std::string Changed(const std::string& from, const std::string& to) {
  std::string page = Page();
  EXPECT_NE(page.find(from), std::string::npos) << from;
  return page.replace(page.find(from), from.size(), to);
}

ParsedRuleDoc Parse(const std::string& text) { return ParseRuleDoc({.name = "field-size.md", .text = text}); }

// The fault after the file's name.
std::string FaultOf(const std::string& text) {
  const std::string fault = Parse(text).fault;
  const std::string file = "docs/rules/field-size.md:";
  return fault.starts_with(file) ? fault.substr(file.size()) : "not a fault of the file: " + fault;
}

TEST(ParseRuleDoc, ReadsEverySection) {
  const std::string text = Page();
  const auto [doc, fault] = Parse(text);
  EXPECT_EQ(fault, "");
  EXPECT_STREQ(doc.row->id, "field.size");
  EXPECT_EQ(doc.page, text);
  EXPECT_THAT(doc.codes, ElementsAre(-3));
  EXPECT_EQ(doc.replaced_by, "");
  EXPECT_EQ(doc.protects, "One line, and another.");
  EXPECT_EQ(doc.allowed, "Keep it.");
  EXPECT_EQ(doc.no_example_reason, "");
  ASSERT_TRUE(doc.example.has_value());
  EXPECT_EQ(doc.example->old_schema, "<old>\n\n</old>\n");
  EXPECT_EQ(doc.example->new_schema, "<new/>\n");
  EXPECT_EQ(doc.example->call, "korvelcheck check old.xml new.xml --type list");
  EXPECT_EQ(doc.example->code, -3);
  EXPECT_EQ(doc.example->answer, "The answer");
  EXPECT_EQ(doc.example->allowed_schema, "<allowed/>\n");
}

TEST(ParseRuleDoc, AllowedSchemaIsOptional) {
  const std::string text = Page();
  const auto [doc, fault] = Parse(text.substr(0, text.find("\n## Allowed `new.xml`")));
  EXPECT_EQ(fault, "");
  EXPECT_EQ(doc.example->allowed_schema, "");
}

TEST(ParseRuleDoc, ReadsSeveralCodes) {
  const auto [doc, fault] = Parse(Changed("[Result code](result-codes.md): `-3 ERROR_VALUE_FIELD`",
                                          "[Result codes](result-codes.md): `-3 ERROR_VALUE_FIELD`, `-35 "
                                          "ERROR_ENTRY_LENGTH_NOT_LEGAL`"));
  EXPECT_EQ(fault, "");
  EXPECT_THAT(doc.codes, ElementsAre(-3, -35));
}

TEST(ParseRuleDoc, ReadsTheRuleThatReplacesTheText) {
  const std::string line = "Log only: callers get the text of [field.type](field-type.md).";
  const auto [doc, fault] = Parse(Changed("## What", line + "\n\n## What"));
  EXPECT_EQ(fault, "");
  EXPECT_EQ(doc.replaced_by, "field.type");
}

TEST(ParseRuleDoc, ReadsWhyThereIsNoExample) {
  std::string text = Page();
  text.replace(text.find("## Example"), std::string::npos, "## No example\n\nBecause.\n");
  const auto [doc, fault] = Parse(text);
  EXPECT_EQ(fault, "");
  EXPECT_EQ(doc.no_example_reason, "Because.");
  EXPECT_FALSE(doc.example.has_value());
}

TEST(ParseRuleDoc, AdvicePageHasElementsOfItsOwn) {
  const std::string page(FindRuleDoc("advice.table-kind")->page);
  const auto fault_of = [](const std::string& text) {
    return ParseRuleDoc({.name = "advice-table-kind.md", .text = text}).fault;
  };
  EXPECT_EQ(fault_of(page), "");
  for (const std::string line : {"Level: warning", "## What goes wrong", "## What to do instead", "reports a warning.",
                                 "`korvelcheck check", "## Better `new.xml`"}) {
    std::string changed = page;
    changed.replace(changed.find(line), line.size(), "Level: note");
    EXPECT_THAT(fault_of(changed), testing::StartsWith("docs/rules/advice-table-kind.md:")) << line;
  }
  EXPECT_EQ(fault_of(page.substr(0, page.find("\n## Better"))), "");
}

TEST(ParseRuleDoc, ReportsTheFirstFaultWithFileAndLine) {
  EXPECT_EQ(Parse(Changed("# field.size", "# field.type")).fault,
            "docs/rules/field-size.md:1: expected '# RULE', the rule that the file is named after, found '# field.type'");
}

TEST(ParseRuleDoc, ReportsPageWithoutRule) {
  EXPECT_EQ(ParseRuleDoc({.name = "field-sise.md", .text = "# field.size\n"}).fault,
            "docs/rules/field-sise.md:1: expected '# RULE', the rule that the file is named after, found '# field.size'");
}

TEST(ParseRuleDoc, ReportsWhatDiffersFromTheCatalog) {
  const std::string summary = Page().substr(14, Page().find('\n', 14) - 14);
  EXPECT_EQ(FaultOf(Changed(summary, "It shrank.")), "3: expected '" + summary + "', found 'It shrank.'");
  EXPECT_EQ(FaultOf(Changed("The size of entry", "The size")),
            "10: expected 'The size of entry can't be reduced! entry:'%s' metaname:'%s'', found "
            "'The size can't be reduced! entry:'%s' metaname:'%s''");
  const std::string codes = "5: expected '[Result code](result-codes.md): `CODE NAME`', found ";
  EXPECT_EQ(FaultOf(Changed("ERROR_VALUE", "ERROR_INDEX")), codes + "'[Result code](result-codes.md): `-3 ERROR_INDEX_FIELD`'");
  EXPECT_EQ(FaultOf(Changed("`-3 ERROR_VALUE_FIELD`\n\nM", "\n\nM")), codes + "'[Result code](result-codes.md): '");
  EXPECT_EQ(FaultOf(Changed("[Result code]", "[Result codes]")),
            codes + "'[Result codes](result-codes.md): `-3 ERROR_VALUE_FIELD`'");
  EXPECT_EQ(FaultOf(Changed("reports `-3", "reports `-4")),
            "38: expected '`korvelcheck ...` reports `CODE NAME`:', found "
            "'`korvelcheck check old.xml new.xml --type list` reports `-4 ERROR_VALUE_FIELD`:'");
  EXPECT_EQ(FaultOf(Changed("## What", "Log only: callers get the text of [field](field.md).\n\n## What")),
            "13: expected 'Log only: callers get the text of [RULE](FILE).', found "
            "'Log only: callers get the text of [field](field.md).'");
}

TEST(ParseRuleDoc, ReportsMissingAndSurplusSections) {
  EXPECT_EQ(FaultOf(Changed("## Allowed instead\n", "")), "18: expected '## Allowed instead', found ''");
  EXPECT_EQ(FaultOf(Changed("## Example\n", "## More\n\nText.\n\n## Example\n")), "22: expected '## Example', found '## More'");
  EXPECT_EQ(FaultOf(Page() + "\nMore.\n"), "50: expected the end of the file, found 'More.'");
  EXPECT_EQ(FaultOf(""), "1: expected '# RULE', the rule that the file is named after, found the end of the file");
}

TEST(ParseRuleDoc, ReportsBrokenParagraphsAndBlocks) {
  EXPECT_EQ(FaultOf(Changed("Keep `it`.", "- Keep it.")), "20: expected a line of plain text, found '- Keep it.'");
  EXPECT_EQ(FaultOf(Changed("Keep `it`.", "Keep  it.")), "20: expected a line of plain text, found 'Keep  it.'");
  EXPECT_EQ(FaultOf(Changed("Keep `it`.", "Keep it")), "21: expected a full stop at the end of the paragraph above, found ''");
  EXPECT_EQ(FaultOf(Changed("```xml\n<old>", "```text\n<old>")), "26: expected '```xml', found '```text'");
  EXPECT_EQ(FaultOf(Changed("<allowed/>\n```", "<allowed/>")), "48: expected '```', found the end of the file");
  EXPECT_EQ(FaultOf(Changed("`old.xml`:\n\n", "`old.xml`:\n")), "25: expected a blank line, found '```xml'");
  EXPECT_EQ(FaultOf(Page() + "\n"), "50: expected text after the blank line, found the end of the file");
}

std::string CodesPage() { return std::string(ResultCodesFile().text); }

std::string CodesFaultOf(const std::string& text) { return ParseCodeDocs({.name = "result-codes.md", .text = text}).fault; }

TEST(ParseCodeDocs, ReadsBothTables) {
  const std::vector<CodeDoc> codes = ParseCodeDocs(ResultCodesFile()).codes;
  ASSERT_EQ(codes.size(), static_cast<std::size_t>(kResultCodeCount));
  EXPECT_EQ(codes[17].code, -17);
  EXPECT_EQ(codes[17].meaning, "A field name begins with a digit.");
  EXPECT_TRUE(codes[17].returned);
  EXPECT_FALSE(codes[14].returned);
}

TEST(ParseCodeDocs, ReportsRowsThatAreWrongMissingOrRepeated) {
  const std::string row = "| -14 | `ERROR_EXIST_TABLE` | ";
  const std::size_t at = CodesPage().find(row);
  const std::string line = CodesPage().substr(at, CodesPage().find('\n', at) + 1 - at);
  const auto number = std::to_string(1 + std::ranges::count(CodesPage().substr(0, at), '\n'));
  const std::string file = "docs/rules/result-codes.md:";

  EXPECT_THAT(CodesFaultOf(CodesPage().erase(at, line.size())),
              testing::HasSubstr(": expected a row for `-14 ERROR_EXIST_TABLE`"));
  EXPECT_THAT(CodesFaultOf(CodesPage().insert(at + line.size(), line)),
              testing::HasSubstr(": expected a code that has no row yet"));
  EXPECT_THAT(
      CodesFaultOf(CodesPage().replace(at, row.size(), "| -14 | `ERROR_EIXST_TABLE` | ")),
      testing::StartsWith(file + number + ": expected '| CODE | `NAME` | MEANING. |', found '| -14 | `ERROR_EIXST_TABLE`"));
  EXPECT_THAT(CodesFaultOf(CodesPage().replace(at, 5, "| -52")), testing::StartsWith(file + number + ": expected '| CODE |"));
  EXPECT_THAT(CodesFaultOf(CodesPage().replace(at, 5, "| 14x")), testing::StartsWith(file + number + ": expected '| CODE |"));
}

}  // namespace
}  // namespace rule_docs_test
