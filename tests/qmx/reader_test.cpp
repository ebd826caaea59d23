// Tests the reader on files that it accepts: the library contains what the file declares.
#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "qmx/layout_check.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"

namespace {

using Kind = qmx::ElementId::Kind;

qmx::Schema Read(std::string_view text) {
  qmx::ReadResult result = qmx::ReadXml(text);
  for (const qmx::ReadError& error : result.errors)
    ADD_FAILURE() << error.location.line << ":" << error.location.column << ": " << error.text;
  EXPECT_EQ(layout::Faults(result.schema->metalib), std::vector<std::string>{});
  return std::move(*result.schema);
}

constexpr std::string_view kMall = R"(<?xml version="1.0" encoding="UTF-8"?>
<?editor grammar="qmx.rng"?>
<!-- the tables of a mall -->
<metalib name="mall" version="5" protocol="QMX" desc="all of it">
  <meta name="item" desc="one line of an order">
    <entry name="sku"   id="1" type="string" size="32"/>
    <entry name="price" id="2" type="int64" version="4"/>
  </meta>
  <meta name="orders" customattr="TableType=LIST;ListNum=1024;DataProtocol=QMX">
    <primarykey    entries=" uid&#10;zone	" desc="who"/>
    <entry name="uid"     id="1" type="uint64"/>
    <entry name="zone"    id="0002" type="uint32"/>
    <index name="by_zone"><column entry="zone" desc="true"/><column entry="uid" desc="false"/></index>
    <entry name="n_items" id="3" type="uint32"/>
    <entry name="items"   id="4" type="item" count="100" refer="n_items"/>
    <entry name="note"    type="bytes" size="256" customattr2="pii" version="0"></entry>
    <splittablekey entries="uid"/>
  </meta>
  <meta name="either" kind="union"><entry name="a" type="item"/></meta>
</metalib>
<!-- the end -->
)";

TEST(Reader, Library) {
  const qmx::Schema mall = Read(kMall);
  LPQMXMETALIB lib = mall.metalib.get();
  EXPECT_EQ(qmx_get_metalib_version(lib), 5);
  EXPECT_EQ(lib->iFlag, 0);
  EXPECT_STREQ(lib->data + lib->ptrName, "mall");
  EXPECT_EQ(qmx_get_meta_num(lib), 3);
  EXPECT_EQ(qmx_get_meta_by_name(lib, "either")->iType, QMX_TYPE_UNION);
  EXPECT_EQ(qmx_get_meta_by_name(lib, "item")->iType, QMX_TYPE_STRUCT);
}

TEST(Reader, Entries) {
  const qmx::Schema mall = Read(kMall);
  LPQMXMETALIB lib = mall.metalib.get();
  LPQMXMETA orders = qmx_get_meta_by_name(lib, "orders");
  std::string all;
  for (int i = 0; i < qmx_get_entry_num(orders); ++i) {
    LPQMXMETAENTRY entry = qmx_get_entry_by_index(orders, i);
    LPQMXMETAENTRY refer = qmx_get_entry_refer(entry);
    const char* attribute = qmx_get_entry_customattr2(lib, entry);
    all += std::string(qmx_get_entry_name(entry)) + " id " + std::to_string(qmx_get_entry_id(entry)) + " version " +
           std::to_string(qmx_get_entry_version(entry)) + " type " + std::to_string(qmx_get_entry_type(entry)) + " size " +
           std::to_string(qmx_get_entry_unitsize(entry)) + " count " + std::to_string(qmx_get_entry_count(entry)) +
           (refer == nullptr ? "" : std::string(" refer ") + qmx_get_entry_name(refer)) +
           (attribute == nullptr ? "" : std::string(" attribute ") + attribute) + (entry->chDBFlag == 0x10 ? " key\n" : "\n");
  }
  EXPECT_EQ(all,
            "uid id 1 version 1 type 9 size 8 count 1 key\n"
            "zone id 2 version 1 type 7 size 4 count 1 key\n"
            "n_items id 3 version 1 type 7 size 4 count 1\n"
            "items id 4 version 1 type 1 size 40 count 100 refer n_items\n"
            "note id -1 version 0 type 15 size 256 count 1 attribute pii\n");
}

TEST(Reader, KeysIndexesAttributes) {
  const qmx::Schema mall = Read(kMall);
  LPQMXMETA orders = qmx_get_meta_by_name(mall.metalib.get(), "orders");
  char key[32];
  EXPECT_EQ(qmx_get_meta_splittablekey(orders, key, sizeof key, nullptr), 0);
  EXPECT_STREQ(key, "uid");
  EXPECT_EQ(orders->nPrimayKeyMemberNum, 2);
  EXPECT_STREQ(qmx_get_meta_customattr(orders), "TableType=LIST;ListNum=1024;DataProtocol=QMX");
  ASSERT_EQ(orders->iIndexesNum, 1);
  auto* index = reinterpret_cast<LPQMXMETAINDEX>(reinterpret_cast<char*>(orders) + orders->ptrIndexes);
  ASSERT_EQ(index->iColumnNum, 2);
  auto* columns = reinterpret_cast<LPQMXCOLUMNINFO>(reinterpret_cast<char*>(orders) + index->ptrColumnBase);
  EXPECT_EQ(columns[0].iIsDesc, 1);
  EXPECT_EQ(columns[1].iIsDesc, 0);
}

TEST(Reader, SourceMap) {
  const qmx::Schema mall = Read(kMall);
  const auto shown = [&](qmx::ElementId id) {
    const auto offset = mall.source_map.Find(id);
    return offset ? std::string(kMall.substr(*offset, kMall.find_first_of(" >", *offset + 1) - *offset)) : "none";
  };
  const auto value = [&](qmx::ElementId id, std::string_view attribute) {
    const auto span = qmx::FindAttributeValue(kMall, mall.source_map.Find(id).value(), attribute);
    return span ? std::string(kMall.substr(span->begin, span->end - span->begin)) : "none";
  };
  EXPECT_EQ(shown({Kind::kMetalib}), "<metalib");
  EXPECT_EQ(value({Kind::kMeta, 1}, "name"), "orders");
  EXPECT_EQ(value({Kind::kEntry, 0, 1}, "name"), "price");
  EXPECT_EQ(value({Kind::kEntry, 1, 4}, "name"), "note");
  EXPECT_EQ(value({Kind::kPrimaryKey, 1}, "desc"), "who");
  EXPECT_EQ(shown({Kind::kSplittableKey, 1}), "<splittablekey");
  EXPECT_EQ(value({Kind::kIndex, 1, 0}, "name"), "by_zone");
  EXPECT_EQ(value({Kind::kColumn, 1, 0, 1}, "entry"), "uid");
  EXPECT_EQ(shown({Kind::kColumn, 1, 0, 2}), "none");
  EXPECT_EQ(shown({Kind::kPrimaryKey, 0}), "none");
}

// A library of one meta "t" with the entry "a" and the given content.
std::string Table(const std::string& content) {
  return "<metalib name='m' version='1'><meta name='t'><entry name='a' type='int32'/>" + content + "</meta></metalib>";
}

TEST(Reader, Protocols) {
  const auto flag = [](const std::string& attribute) {
    return Read("<metalib name='m' version='0' " + attribute + "/>").metalib.get()->iFlag;
  };
  EXPECT_EQ(flag(""), -1);
  EXPECT_EQ(flag("protocol='QMX'"), 0);
  EXPECT_EQ(flag("protocol='TLV'"), 1);
}

TEST(Reader, TlvIdsDifferOnlyWithinMeta) {
  Read(
      "<metalib name='m' version='1' protocol='TLV'><meta name='s'><entry name='a' id='1' type='int8'/></meta>"
      "<meta name='t'><entry name='a' id='1' type='int8'/></meta></metalib>");
}

TEST(Reader, EqualAndMissingIdsOutsideTlv) {
  Read(Table("<entry name='b' id='1' type='int8'/><entry name='c' id='1' type='int8'/>"));
}

TEST(Reader, ByteOrderMarkAndDeclarations) {
  Read("\xEF\xBB\xBF" + Table(""));
  Read("\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>" + Table(""));
  for (const char* encoding : {"UTF-8", "Utf-8", "US-ASCII", "us-ascii"}) {
    Read("<?xml version='1.0' encoding='" + std::string(encoding) + "' standalone='yes'?>" + Table(""));
  }
}

TEST(Reader, AcceptsOddNamesUnchanged) {
  const std::vector<std::pair<std::string, std::string>> names = {
      {"", ""},
      {"1st", "1st"},
      {"%n%s", "%n%s"},
      {"a b", "a b"},
      {"&lt;&amp;&quot;&apos;&gt;", "<&\"'>"},
      {"&#9;&#10;&#13;", "\t\n\r"},
      {"\t\n", "  "},  // XML converts literal whitespace to spaces
      {"表ä😀", "表ä😀"},
      {"&#x8868;", "表"},
      {"\x7F\xC2\x85", "\x7F\xC2\x85"},
      {std::string(5000, 'x'), std::string(5000, 'x')},
  };
  for (const auto& [written, name] : names) {
    const qmx::Schema schema = Read("<metalib name='" + written + "' version='1'><meta name='" + written + "'><entry name='" +
                                    written + "' type='int8'/></meta></metalib>");
    LPQMXMETA meta = qmx_get_meta_by_name(schema.metalib.get(), name.c_str());
    ASSERT_NE(meta, nullptr) << written;
    EXPECT_EQ(qmx_get_entry_name(qmx_get_entry_by_index(meta, 0)), name);
  }
}

TEST(Reader, ComparesNamesBytewise) { Read(Table("<entry name='A' type='int8'/><entry name='ａ' type='int8'/>")); }

TEST(Reader, KeyMembersMayRepeat) {
  const qmx::Schema schema = Read(Table("<primarykey entries='a a'/><splittablekey entries='a a a'/>"));
  LPQMXMETA meta = qmx_get_meta_by_index(schema.metalib.get(), 0);
  EXPECT_EQ(meta->nPrimayKeyMemberNum, 2);
  EXPECT_EQ(meta->iSplitTableKeyMemberNum, 3);
}

TEST(Reader, NumbersAtTheirLimits) {
  const qmx::Schema schema = Read(
      "<metalib name='m' version='2147483647'><meta name='t'><entry name='a' id='2147483647' version='2147483647' "
      "type='string' size='9223372036854775807'/><entry name='b' id='0' version='0' type='int8' count='2147483647'/>"
      "<entry name='c' type='bytes' size='1' count='1'/></meta></metalib>");
  LPQMXMETA meta = qmx_get_meta_by_index(schema.metalib.get(), 0);
  EXPECT_EQ(qmx_get_metalib_version(schema.metalib.get()), 2147483647);
  EXPECT_EQ(qmx_get_entry_id(qmx_get_entry_by_index(meta, 0)), 2147483647);
  EXPECT_EQ(qmx_get_entry_unitsize(qmx_get_entry_by_index(meta, 0)), 9223372036854775807u);
  EXPECT_EQ(qmx_get_entry_count(qmx_get_entry_by_index(meta, 1)), 2147483647);
}

TEST(Reader, BlanksCommentsAndBlankCdataBetweenElements) {
  Read(
      "<!-- a --><metalib name='m' version='1'>\r\n\t<!-- b --><?p i?><![CDATA[ \n]]>&#32;<meta name='t' ><entry\n name = 'a'\n"
      " type\n=\n'int8' ></entry ></meta></metalib >\n<!-- c --><?p?>\n");
}

TEST(Reader, NestingOf128Levels) {
  std::string text = "<metalib name='m' version='1'>";
  for (int i = 0; i < 128; ++i) {
    const std::string type = i == 127 ? "int8" : "m" + std::to_string(i + 1);
    text += "<meta name='m" + std::to_string(i) + "'><entry name='a' type='" + type + "'/></meta>";
  }
  EXPECT_EQ(qmx_get_meta_num(Read(text + "</metalib>").metalib.get()), 128);
}

// The separators of a locale must not change the meaning of a number.
TEST(Reader, LocaleHasNoEffect) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  for (const char* locale : {"de_DE.UTF-8", "C.UTF-8", "C"}) {
    if (std::setlocale(LC_ALL, locale) == nullptr) continue;
    EXPECT_EQ(qmx_get_metalib_version(Read("<metalib name='m' version='1000000'/>").metalib.get()), 1000000) << locale;
  }
  std::setlocale(LC_ALL, before.c_str());
}

TEST(Reader, SameInputGivesSameBytes) {
  const qmx::Schema first = Read(kMall);
  const qmx::Schema second = Read(kMall);
  ASSERT_EQ(first.metalib.size(), second.metalib.size());
  EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(first.metalib.get()), first.metalib.size()),
            std::string_view(reinterpret_cast<const char*>(second.metalib.get()), second.metalib.size()));
}

}  // namespace
