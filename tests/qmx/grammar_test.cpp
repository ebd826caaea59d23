// Tests that the grammar docs/qmx.rng and the reader accept the same files, except for rules that such a grammar cannot express:
// these are listed, and only the reader refuses the files. grammar_variation_test.cpp varies a whole library.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/schema_grammar.h"
#include "qmx/grammar_verdict.h"
#include "qmx/qmx_xml.h"
#include "qmx_xml/schema_form.h"

namespace {

struct Case {
  std::string name;
  std::string xml;
};

std::ostream& operator<<(std::ostream& out, const Case& test) { return out << test.name << ": " << test.xml; }

bool ReaderAccepts(const std::string& xml) { return qmx::ReadXml(xml).schema.has_value(); }

bool GrammarAccepts(const std::string& xml) { return grammar_test::GrammarAcceptsTexts({xml}).front(); }

std::string Lib(const std::string& content, const std::string& attributes = "") {
  return "<metalib name='m' version='1' " + attributes + ">" + content + "</metalib>";
}

std::string Table(const std::string& content, const std::string& attributes = "") {
  return Lib("<meta name='t'><entry name='a' id='1' type='int32'/>" + content + "</meta>", attributes);
}

std::string Entry(const std::string& attributes) { return Table("<entry name='b' " + attributes + "/>"); }

std::string Index(const std::string& content) { return Table("<index name='i'>" + content + "</index>"); }

std::vector<Case> AcceptedCases() {
  return {
      {"Smallest", "<metalib name='' version='0'/>"},
      {"Declaration", "<?xml version='1.0' encoding='UTF-8'?><!-- c --><?p i?>\n" + Lib(" <!-- c --> ") + "\n"},
      {"ProtocolQmx", Table("", "protocol='QMX'")},
      {"ProtocolTlv", Table("<entry id='2' name='b' type='int8'/>", "protocol='TLV'")},
      {"Descriptions", Lib("<meta name='t' desc='x'><entry name='a' type='int8' desc=''/><primarykey entries='a' desc='x'/>"
                           "<splittablekey entries='a' desc='x'/><index name='i' desc='x'><column entry='a'/></index></meta>",
                           "desc='x'")},
      {"Kinds", Lib("<meta name='t' kind='union'><entry name='a' type='int8'/></meta>"
                    "<meta name='u' kind='structure' customattr='x'><entry name='a' type='t'/></meta>")},
      {"EntryInFull", Entry("id='007' type='string' size='5' version='0' count='2147483647' refer='a' customattr2='x' desc='x'")},
      {"NumbersAtTheirLimits", Entry("id='2147483647' type='bytes' size='9223372036854775807' version='2147483647'")},
      {"KeysBeforeEntries",
       Lib("<meta name='t'><index name='i'><column entry='a' desc='true'/><column entry='a' desc='false'/></index>"
           "<splittablekey entries=' a '/><primarykey entries='a&#10;a'/><entry name='a' type='int8'/>"
           "<index name='j'><column entry='a'/></index></meta>")},
      {"OddNames", Lib("<meta name='&lt;&#9;'><entry name='' type='int8'/><entry name='表 %' type='int8'/></meta>")},
      {"BlankCdata", Table("<![CDATA[ ]]>&#32;")},
  };
}

std::vector<Case> RefusedCases() {
  std::vector<Case> cases = {
      {"Empty", ""},
      {"NotXml", "metalib"},
      {"CutOff", "<metalib name='m' version='1'>"},
      {"UnknownRoot", "<schema/>"},
      {"MetaAsRoot", "<meta name='t'><entry name='a' type='int8'/></meta>"},
      {"TwoRoots", Lib("") + Lib("")},
      {"UnknownElement", Table("<sortkey/>")},
      {"EntryInMetalib", Lib("<entry name='a' type='int8'/>")},
      {"MetaInMeta", Table("<meta name='u'><entry name='a' type='int8'/></meta>")},
      {"ElementInEntry", Table("<entry name='b' type='int8'><x/></entry>")},
      {"ColumnInMeta", Table("<column entry='a'/>")},
      {"EntryInIndex", Index("<column entry='a'/><entry name='b' type='int8'/>")},
      {"Text", Table("text")},
      {"TextInCdata", Table("<![CDATA[x]]>")},
      {"TextInMetalib", Lib("text")},
      {"UnknownAttribute", Entry("type='int8' sze='1'")},
      {"UnknownAttributeOfRoot", Lib("", "owner='x'")},
      {"CustomattrOfEntry", Entry("type='int8' customattr='x'")},
      {"DefaultNamespace", "<metalib xmlns='urn:x' name='m' version='1'/>"},
      {"XmlAttribute", Lib("", "xml:lang='en'")},
      {"AttributeTwice", Entry("type='int8' type='int8'")},
      {"NoLibraryName", "<metalib version='1'/>"},
      {"NoLibraryVersion", "<metalib name='m'/>"},
      {"NoMetaName", Lib("<meta><entry name='a' type='int8'/></meta>")},
      {"NoEntryName", Table("<entry type='int8'/>")},
      {"NoType", Table("<entry name='b'/>")},
      {"NoKeyEntries", Table("<primarykey/>")},
      {"NoIndexName", Table("<index><column entry='a'/></index>")},
      {"NoColumnEntry", Index("<column/>")},
      {"MetaWithoutEntries", Lib("<meta name='t'/>")},
      {"IndexWithoutColumns", Index("")},
      {"SecondPrimaryKey", Table("<primarykey entries='a'/><primarykey entries='a'/>")},
      {"SecondSplittableKey", Table("<splittablekey entries='a'/><splittablekey entries='a'/>")},
      {"EmptyKey", Table("<primarykey entries=''/>")},
      {"BlankKey", Table("<primarykey entries=' &#9;&#10;&#13;'/>")},
      {"Protocol", Lib("", "protocol='qmx'")},
      {"ProtocolWithBlank", Lib("", "protocol=' QMX'")},
      {"Kind", Lib("<meta name='t' kind='struct'><entry name='a' type='int8'/></meta>")},
      {"Direction", Index("<column entry='a' desc='yes'/>")},
      {"TlvWithoutId", Table("<entry name='b' type='int8'/>", "protocol='TLV'")},
      {"StringWithoutSize", Entry("type='string'")},
      {"BytesWithoutSize", Entry("type='bytes'")},
      {"SizeOfANumber", Entry("type='int8' size='1'")},
      {"SizeOfAStructure",
       Lib("<meta name='t'><entry name='a' type='u' size='1'/></meta><meta name='u'><entry name='a' type='int8'/></meta>")},
      {"ReferEmpty", Entry("type='int8' refer=''")},
      {"SizeZero", Entry("type='string' size='0'")},
      {"SizeTooLarge", Entry("type='string' size='9223372036854775808'")},
      {"CountZero", Entry("type='int8' count='0'")},
      {"CountTooLarge", Entry("type='int8' count='2147483648'")},
      {"IdTooLarge", Entry("type='int8' id='2147483648'")},
      {"VersionTooLarge", Entry("type='int8' version='2147483648'")},
  };
  int number = 0;
  for (const char* bad : {"", " 1", "1 ", "+1", "-1", "-0", "0x1", "1e3", "1.0", "one"}) {
    cases.push_back({"NotANumber" + std::to_string(++number), Entry("type='int8' id='" + std::string(bad) + "'")});
  }
  return cases;
}

// Rules that the grammar cannot express.
std::vector<Case> ReaderOnlyCases() {
  return {
      {"UnknownType", Entry("type='nothing'")},
      {"UnknownRefer", Entry("type='int8' refer='nothing'")},
      {"ReferOfAnotherType", Table("<entry name='f' type='float'/><entry name='b' type='int8' refer='f'/>")},
      {"UnknownKeyEntry", Table("<primarykey entries='a nothing'/>")},
      {"UnknownColumn", Index("<column entry='nothing'/>")},
      {"SecondMeta",
       Lib("<meta name='t'><entry name='a' type='int8'/></meta><meta name='t'><entry name='a' type='int8'/></meta>")},
      {"SecondEntry", Entry("type='int8'").replace(Entry("").find("'a'"), 3, "'b'")},
      {"SecondIndex", Table("<index name='i'><column entry='a'/></index><index name='i'><column entry='a'/></index>")},
      {"SecondId", Table("<entry name='b' id='1' type='int8'/>", "protocol='TLV'")},
      {"Cycle", Lib("<meta name='t'><entry name='a' type='t'/></meta>")},
      {"SizeOverflow", Entry("type='string' size='9223372036854775807' count='3'")},
      {"Doctype", "<!DOCTYPE metalib>" + Lib("")},
      {"Entity", "<!DOCTYPE metalib [<!ENTITY n 'm'>]>" + Table("<entry name='&n;' type='int8'/>")},
      {"OtherEncoding", "<?xml version='1.0' encoding='ISO-8859-1'?>" + Lib("")},
      {"NamespacePrefix", Lib("", "xmlns:x='urn:x'")},
  };
}

class AcceptedByBoth : public ::testing::TestWithParam<Case> {};
class RefusedByBoth : public ::testing::TestWithParam<Case> {};
class RefusedByReaderOnly : public ::testing::TestWithParam<Case> {};

TEST_P(AcceptedByBoth, Verdict) {
  EXPECT_TRUE(ReaderAccepts(GetParam().xml));
  EXPECT_TRUE(GrammarAccepts(GetParam().xml));
}

TEST_P(RefusedByBoth, Verdict) {
  EXPECT_FALSE(ReaderAccepts(GetParam().xml));
  EXPECT_FALSE(GrammarAccepts(GetParam().xml));
}

TEST_P(RefusedByReaderOnly, Verdict) {
  EXPECT_FALSE(ReaderAccepts(GetParam().xml));
  EXPECT_TRUE(GrammarAccepts(GetParam().xml));
}

std::string FileText(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<std::filesystem::path> XmlFiles(const std::filesystem::path& directory) {
  std::vector<std::filesystem::path> files;
  for (const auto& file : std::filesystem::recursive_directory_iterator(directory)) {
    if (file.path().extension() == ".xml") files.push_back(file.path());
  }
  return files;
}

TEST(GrammarFiles, AreUpToDate) {
  const grammar::Grammar schema = grammar::SchemaGrammar();
  EXPECT_EQ(FileText(KORVEL_GRAMMAR), ToRng(schema)) << "'make docs' writes docs/qmx.rng";
  EXPECT_EQ(FileText(KORVEL_COMPACT_GRAMMAR), ToRnc(schema)) << "'make docs' writes docs/qmx.rnc";
}

// Editors show the documentation as it is.
TEST(GrammarFiles, DocumentEverythingInPlainText) {
  const grammar::Grammar schema = grammar::SchemaGrammar();
  const std::string rng = ToRng(schema);
  const std::string rnc = ToRnc(schema);
  const auto expect_plain = [&](std::string_view name, std::string_view doc) {
    EXPECT_TRUE(doc.ends_with('.')) << name;
    EXPECT_NE(rng.find(">" + std::string(doc) + "</a:documentation>"), std::string::npos) << name;
    EXPECT_NE(rnc.find("## " + std::string(doc) + "\n"), std::string::npos) << name;
    EXPECT_EQ(doc.find_first_of("<>&\"`*\n"), std::string_view::npos) << name;
  };
  for (const qmx::ElementForm& element : qmx::Elements()) {
    expect_plain(element.name, element.doc);
    for (const qmx::AttributeForm& attribute : element.attributes) {
      expect_plain(attribute.name, attribute.doc);
      for (const qmx::ChoiceForm& choice : attribute.choices) expect_plain(choice.value, choice.doc);
    }
  }
  for (const qmx::SimpleType& type : qmx::SimpleTypes()) {
    expect_plain(type.name, type.doc);
    EXPECT_NE(rng.find("<value type=\"string\">" + std::string(type.name) + "</value>"), std::string::npos);
  }
}

TEST(SchemasOfExamplesAndTests, AreAcceptedIfTheyAreRead) {
  std::vector<std::filesystem::path> files = XmlFiles(KORVEL_SOURCE_DIR "/examples");
  EXPECT_GT(files.size(), 20U);
  for (const auto& file : XmlFiles(KORVEL_SOURCE_DIR "/tests/cases")) files.push_back(file);
  EXPECT_GT(files.size(), 500U);
  const std::vector<bool> accepted = grammar_test::GrammarAccepts(files);
  for (std::size_t i = 0; i < files.size(); ++i) {
    EXPECT_TRUE(ReaderAccepts(FileText(files[i]))) << files[i];
    EXPECT_TRUE(accepted[i]) << files[i];
  }
}

std::string NameOf(const ::testing::TestParamInfo<Case>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Grammar, AcceptedByBoth, ::testing::ValuesIn(AcceptedCases()), NameOf);
INSTANTIATE_TEST_SUITE_P(Grammar, RefusedByBoth, ::testing::ValuesIn(RefusedCases()), NameOf);
INSTANTIATE_TEST_SUITE_P(Grammar, RefusedByReaderOnly, ::testing::ValuesIn(ReaderOnlyCases()), NameOf);

}  // namespace
