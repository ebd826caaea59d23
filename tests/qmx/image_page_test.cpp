// Compares docs/formats/image.md with the records, and its example with the output of the writer.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "qmx/image_header.h"
#include "qmx/qmx_image.h"
#include "qmx/qmx_xml.h"

namespace {

std::string Page() {
  std::ifstream file(KORVEL_IMAGE_PAGE, std::ios::binary);
  EXPECT_TRUE(file.good()) << KORVEL_IMAGE_PAGE;
  return {std::istreambuf_iterator<char>(file), {}};
}

// The text between two markers; empty if one is missing.
std::string Between(const std::string& text, const std::string& begin, const std::string& end) {
  const std::size_t from = text.find(begin);
  if (from == std::string::npos) return "";
  const std::size_t to = text.find(end, from + begin.size());
  return to == std::string::npos ? "" : text.substr(from + begin.size(), to - from - begin.size());
}

// The bytes of the example. Each line begins with the offset of its first byte.
std::string ShownBytes(const std::string& dump) {
  constexpr std::size_t kBytes = 5;  // column of the first byte, after the offset
  constexpr std::size_t kWidth = 23;
  std::string bytes;
  std::istringstream lines(dump);
  for (std::string line; std::getline(lines, line);) {
    if (line.size() < kBytes || line.substr(0, 3).find_first_not_of(" 0123456789") != std::string::npos) continue;
    EXPECT_EQ(std::stoul(line), bytes.size()) << line;
    std::istringstream shown(line.substr(kBytes, kWidth));
    for (std::string byte; shown >> byte;) bytes += static_cast<char>(std::stoi(byte, nullptr, 16));
  }
  return bytes;
}

TEST(ImagePage, ExampleIsOutputOfWriter) {
  const std::string page = Page();
  const qmx::ReadResult read = qmx::ReadXml(Between(page, "```xml\n", "```"));
  ASSERT_TRUE(read.schema);
  EXPECT_EQ(ShownBytes(Between(page, "```text\n", "```")), qmx::WriteImage(read.schema->metalib));
}

struct Member {
  const char* record;  // heading of the table
  const char* name;
  std::size_t offset;
  std::size_t size;
};

#define MEMBER(record, member) \
  { "`" #record "`", #member, offsetof(record, member), sizeof(record::member) }

const Member kMembers[] = {
    {"Header of the file", "magic", offsetof(qmx::ImageHeader, magic), sizeof(qmx::ImageHeader::magic)},
    {"Header of the file", "byte order", offsetof(qmx::ImageHeader, byte_order), sizeof(qmx::ImageHeader::byte_order)},
    {"Header of the file", "format version", offsetof(qmx::ImageHeader, version), sizeof(qmx::ImageHeader::version)},
    {"Header of the file", "header size", offsetof(qmx::ImageHeader, header_size), sizeof(qmx::ImageHeader::header_size)},
    {"Header of the file", "reserved", offsetof(qmx::ImageHeader, reserved), sizeof(qmx::ImageHeader::reserved)},
    {"Header of the file", "block size", offsetof(qmx::ImageHeader, block_size), sizeof(qmx::ImageHeader::block_size)},
    {"Header of the file", "checksum", offsetof(qmx::ImageHeader, checksum), sizeof(qmx::ImageHeader::checksum)},
    {"Header of the file", "reserved", offsetof(qmx::ImageHeader, reserved_2), sizeof(qmx::ImageHeader::reserved_2)},
    MEMBER(tagQMXMetaLib, iFlag),
    MEMBER(tagQMXMetaLib, iDataSize),
    MEMBER(tagQMXMetaLib, ptrName),
    MEMBER(tagQMXMetaLib, ptrMetas),
    MEMBER(tagQMXMetaLib, ptrMetaSlots),
    MEMBER(tagQMXMetaLib, iVersion),
    MEMBER(tagQMXMetaLib, iMetaNum),
    MEMBER(tagQMXMetaLib, iMetaSlotNum),
    MEMBER(tagQMXMetaLib, iMetaSlotSeed),
    MEMBER(tagQMXMeta, ptrMeta),
    MEMBER(tagQMXMeta, ptrName),
    MEMBER(tagQMXMeta, ptrCustomAttr),
    MEMBER(tagQMXMeta, ptrEntries),
    MEMBER(tagQMXMeta, ptrPrimayKeyBase),
    MEMBER(tagQMXMeta, ptrIndexes),
    MEMBER(tagQMXMeta, ptrSplitTableKeyBase),
    MEMBER(tagQMXMeta, stSplitTableKey),
    MEMBER(tagQMXMeta, stSortKey),
    MEMBER(tagQMXMeta, iUnitSize),
    MEMBER(tagQMXMeta, iType),
    MEMBER(tagQMXMeta, iEntriesNum),
    MEMBER(tagQMXMeta, iIndexesNum),
    MEMBER(tagQMXMeta, iSplitTableKeyMemberNum),
    MEMBER(tagQMXMeta, nPrimayKeyMemberNum),
    MEMBER(tagQMXMeta, nReserved),
    MEMBER(tagQMXMetaEntry, ptrEntry),
    MEMBER(tagQMXMetaEntry, ptrName),
    MEMBER(tagQMXMetaEntry, ptrCustomAttr2),
    MEMBER(tagQMXMetaEntry, ptrTypeMeta),
    MEMBER(tagQMXMetaEntry, ptrRefer),
    MEMBER(tagQMXMetaEntry, iUnitSize),
    MEMBER(tagQMXMetaEntry, iID),
    MEMBER(tagQMXMetaEntry, iVersion),
    MEMBER(tagQMXMetaEntry, iType),
    MEMBER(tagQMXMetaEntry, iCount),
    MEMBER(tagQMXMetaEntry, chDBFlag),
    MEMBER(tagQMXMetaEntry, chReserved),
    MEMBER(tagQMXDBKeyInfo, iHOff),
    MEMBER(tagQMXDBKeyInfo, ptrEntry),
    MEMBER(tagQMXMetaIndex, ptrName),
    MEMBER(tagQMXMetaIndex, ptrColumnBase),
    MEMBER(tagQMXMetaIndex, iColumnNum),
    MEMBER(tagQMXMetaIndex, iReserved),
    MEMBER(tagQMXColumnInfo, ptrEntry),
    MEMBER(tagQMXColumnInfo, iIsDesc),
    MEMBER(tagQMXColumnInfo, iCaredCharNum),
    MEMBER(tagQMXMetaSlot, iHash),
    MEMBER(tagQMXMetaSlot, iMeta),
};

TEST(ImagePage, HasOneRowForEachMember) {
  const std::string records = Between(Page(), "## Records\n", "\n## The data area");
  std::size_t rows = 0;
  for (std::size_t at = records.find("\n| "); at != std::string::npos; at = records.find("\n| ", at + 1)) ++rows;
  std::size_t tables = 0;
  std::string last_record;
  for (const Member& member : kMembers) {
    if (last_record != member.record) ++tables;
    last_record = member.record;
    const std::string table = Between(records + "\n### ", std::string("### ") + member.record + "\n", "\n### ");
    const std::string row =
        "\n| " + std::to_string(member.offset) + " | " + std::to_string(member.size) + " | `" + member.name + "` | ";
    EXPECT_NE(table.find(row), std::string::npos) << member.record << row;
  }
  EXPECT_EQ(rows, std::size(kMembers) + tables);  // each table has a heading row
}

TEST(ImagePage, HasLimitsOfReader) {
  const std::string page = Page();
  const qmx::Limits limits;
  EXPECT_NE(page.find("(" + std::to_string(limits.max_bytes) + " bytes)"), std::string::npos);
  EXPECT_NE(page.find("| " + std::to_string(limits.max_depth) + " levels |"), std::string::npos);
  EXPECT_NE(page.find("at most " + std::to_string(qmx::kMaxRepeatedNames) + " times the size of the block"), std::string::npos);
}

}  // namespace
