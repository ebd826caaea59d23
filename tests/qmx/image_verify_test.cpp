// Tests the verifier of untrusted blocks: every refusal, and blocks that would take long.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>

#include "common/meta_view.h"
#include "qmx/image_reading.h"
#include "qmx/meta_slots.h"
#include "qmx/qmx_metalib_kernel.h"

namespace {

using qmx::VerifyError;

// A copy of the bytes of a library, to be damaged.
class Block {
 public:
  explicit Block(const qmx::Metalib& metalib) : size_(metalib.size()), bytes_(std::make_unique<char[]>(size_)) {
    std::memcpy(bytes_.get(), metalib.get(), size_);
  }

  std::size_t size() const { return size_; }
  tagQMXMetaLib& Lib() { return *reinterpret_cast<tagQMXMetaLib*>(bytes_.get()); }
  tagQMXMeta& Meta(int meta) { return *qmx_get_meta_by_index(&Lib(), meta); }
  tagQMXMetaEntry& Entry(int meta, int entry) { return *qmx_get_entry_by_index(&Meta(meta), entry); }
  tagQMXDBKeyInfo& Key(int meta, int member) { return *korvel::PrimaryKeyMembers(&Meta(meta))[member]; }
  tagQMXMetaIndex& Index(int meta, int index) { return *korvel::Indexes(&Meta(meta))[index]; }
  tagQMXColumnInfo& Column(int meta, int index, int column) { return *korvel::Columns(&Meta(meta), &Index(meta, index))[column]; }
  std::int64_t& ListItem(int item) { return At<std::int64_t>(Lib().ptrMetas, item); }
  tagQMXMetaSlot& Slot(int slot) { return At<tagQMXMetaSlot>(Lib().ptrMetaSlots, slot); }
  tagQMXMetaSlot& SlotOf(int meta) {
    int slot = 0;
    while (Slot(slot).iMeta != meta) ++slot;
    return Slot(slot);
  }
  char& Byte(std::int64_t offset) { return Lib().data[offset]; }

  std::optional<VerifyError> Verify(const qmx::Limits& limits = {}) { return qmx::Verify(bytes_.get(), size_, limits); }

  // The error of the block; empty if it is accepted.
  std::string Fault() {
    const std::optional<VerifyError> error = Verify();
    return error ? error->part + " " + error->reason : "";
  }

  std::size_t OffsetOf(const void* field) const {
    return static_cast<std::size_t>(static_cast<const char*>(field) - bytes_.get());
  }

 private:
  template <class Record>
  Record& At(std::int64_t offset, int position) {
    return reinterpret_cast<Record*>(&Byte(offset))[position];
  }

  std::size_t size_;
  std::unique_ptr<char[]> bytes_;
};

// Sets a number; returns its address.
template <class Number>
const void* Put(Number& field, std::int64_t value) {
  field = static_cast<Number>(value);
  return &field;
}

struct Corruption {
  const char* name;
  std::function<const void*(Block&)> damage;  // of image::FullLibrary: item, money, orders
  const char* part;
};

constexpr std::int64_t kFar = std::int64_t{1} << 40;
constexpr int kItem = 0, kMoney = 1, kOrders = 2;
constexpr int kUid = 0, kCount = 2, kItems = 3;  // entries of orders

const Corruption kCorruptions[] = {
    {"data size too large", [](Block& b) { return Put(b.Lib().iDataSize, b.Lib().iDataSize + 8); }, "library: iDataSize"},
    {"data size negative", [](Block& b) { return Put(b.Lib().iDataSize, -8); }, "library: iDataSize"},
    {"library name missing", [](Block& b) { return Put(b.Lib().ptrName, -1); }, "library: ptrName"},
    {"library name past the end", [](Block& b) { return Put(b.Lib().ptrName, b.Lib().iDataSize); }, "library: ptrName"},
    {"number of metas negative", [](Block& b) { return Put(b.Lib().iMetaNum, -1); }, "library: iMetaNum"},
    {"number of metas above the limit", [](Block& b) { return Put(b.Lib().iMetaNum, qmx::kMaxMetas + 1); }, "library: iMetaNum"},
    {"list of metas missing", [](Block& b) { return Put(b.Lib().ptrMetas, -1); }, "library: ptrMetas"},
    {"list of metas not aligned", [](Block& b) { return Put(b.Lib().ptrMetas, b.Lib().ptrMetas + 1); }, "library: ptrMetas"},
    {"list of metas past the end", [](Block& b) { return Put(b.Lib().ptrMetas, kFar); }, "library: ptrMetas"},
    {"list of metas too long",
     [](Block& b) {
       b.Lib().iMetaNum = qmx::kMaxMetas;
       return Put(b.Lib().ptrMetas, b.Lib().ptrMetas);
     },
     "library: ptrMetas"},
    {"meta past the end", [](Block& b) { return Put(b.ListItem(2), kFar); }, "library: list of metas"},
    {"meta before the data", [](Block& b) { return Put(b.ListItem(0), -8); }, "library: list of metas"},
    {"meta not aligned", [](Block& b) { return Put(b.ListItem(1), b.ListItem(1) + 4); }, "library: list of metas"},
    {"meta twice", [](Block& b) { return Put(b.ListItem(1), b.ListItem(0)); }, "library: list of metas"},
    {"meta inside a meta", [](Block& b) { return Put(b.ListItem(1), b.ListItem(0) + 112); }, "library: list of metas"},
    {"metas out of order",
     [](Block& b) {
       std::swap(b.ListItem(0), b.ListItem(1));
       return Put(b.ListItem(1), b.ListItem(1));
     },
     "library: list of metas"},
    {"number of slots wrong", [](Block& b) { return Put(b.Lib().iMetaSlotNum, 16); }, "library: iMetaSlotNum"},
    {"number of slots negative", [](Block& b) { return Put(b.Lib().iMetaSlotNum, -8); }, "library: iMetaSlotNum"},
    {"slots missing", [](Block& b) { return Put(b.Lib().ptrMetaSlots, -1); }, "library: ptrMetaSlots"},
    {"slots past the end", [](Block& b) { return Put(b.Lib().ptrMetaSlots, b.Lib().iDataSize); }, "library: ptrMetaSlots"},
    {"slot of another meta", [](Block& b) { return Put(b.SlotOf(0).iMeta, 1); }, "slot"},
    {"slot without meta", [](Block& b) { return Put(b.SlotOf(2).iMeta, 3); }, "slot"},
    {"slot with another hash", [](Block& b) { return Put(b.SlotOf(1).iHash, 0); }, "slot"},
    {"free slot taken", [](Block& b) { return Put(b.SlotOf(-1).iMeta, 0); }, "slot"},
    {"free slot with a hash", [](Block& b) { return Put(b.SlotOf(-1).iHash, 1); }, "slot"},

    {"ptrMeta past the end", [](Block& b) { return Put(b.Meta(0).ptrMeta, kFar); }, "meta 0: ptrMeta"},
    {"kind unknown", [](Block& b) { return Put(b.Meta(kOrders).iType, 2); }, "meta 2: iType"},
    {"name missing", [](Block& b) { return Put(b.Meta(1).ptrName, -1); }, "meta 1: ptrName"},
    {"name past the end", [](Block& b) { return Put(b.Meta(1).ptrName, kFar); }, "meta 1: ptrName"},
    {"name of another meta", [](Block& b) { return Put(b.Meta(1).ptrName, b.Meta(0).ptrName); }, "meta 1: ptrName"},
    {"name inside a name", [](Block& b) { return Put(b.Meta(1).ptrName, b.Meta(1).ptrName + 1); }, "meta 1: ptrName"},
    {"name in a record", [](Block& b) { return Put(b.Meta(1).ptrName, b.Meta(1).ptrMeta + 8); }, "meta 1: ptrName"},
    {"attributes past the end", [](Block& b) { return Put(b.Meta(2).ptrCustomAttr, kFar); }, "meta 2: ptrCustomAttr"},
    {"attributes below none", [](Block& b) { return Put(b.Meta(2).ptrCustomAttr, -2); }, "meta 2: ptrCustomAttr"},
    {"entries at another offset", [](Block& b) { return Put(b.Meta(1).ptrEntries, b.Meta(1).ptrEntries + 72); },
     "meta 1: ptrEntries"},
    {"entries of another meta", [](Block& b) { return Put(b.Meta(1).ptrEntries, b.ListItem(0) + 120 - b.ListItem(1)); },
     "meta 1: ptrEntries"},
    {"entries missing", [](Block& b) { return Put(b.Meta(1).ptrEntries, -1); }, "meta 1: ptrEntries"},
    {"number of entries negative", [](Block& b) { return Put(b.Meta(1).iEntriesNum, -1); }, "meta 1: iEntriesNum"},
    {"no entries", [](Block& b) { return Put(b.Meta(1).iEntriesNum, 0); }, "meta 1: iEntriesNum"},
    {"number of entries huge", [](Block& b) { return Put(b.Meta(1).iEntriesNum, 2147483647); }, "meta 1: iEntriesNum"},
    {"key at another offset", [](Block& b) { return Put(b.Meta(2).ptrPrimayKeyBase, 0); }, "meta 2: ptrPrimayKeyBase"},
    {"key list without a key", [](Block& b) { return Put(b.Meta(0).ptrPrimayKeyBase, 120); }, "meta 0: ptrPrimayKeyBase"},
    {"number of key members negative", [](Block& b) { return Put(b.Meta(2).nPrimayKeyMemberNum, -1); },
     "meta 2: nPrimayKeyMemberNum"},
    {"number of key members huge", [](Block& b) { return Put(b.Meta(2).nPrimayKeyMemberNum, 32767); },
     "meta 2: nPrimayKeyMemberNum"},
    {"splittable key at another offset", [](Block& b) { return Put(b.Meta(2).ptrSplitTableKeyBase, kFar); },
     "meta 2: ptrSplitTableKeyBase"},
    {"number of splittable members huge", [](Block& b) { return Put(b.Meta(2).iSplitTableKeyMemberNum, 1 << 28); },
     "meta 2: iSplitTableKeyMemberNum"},
    {"indexes at another offset", [](Block& b) { return Put(b.Meta(2).ptrIndexes, 8); }, "meta 2: ptrIndexes"},
    {"number of indexes huge", [](Block& b) { return Put(b.Meta(2).iIndexesNum, 1 << 28); }, "meta 2: iIndexesNum"},
    {"columns shared", [](Block& b) { return Put(b.Index(2, 1).ptrColumnBase, b.Index(2, 0).ptrColumnBase); },
     "meta 2: ptrColumnBase"},
    {"number of columns huge", [](Block& b) { return Put(b.Index(2, 1).iColumnNum, 1 << 28); }, "meta 2: iColumnNum"},
    {"number of columns negative", [](Block& b) { return Put(b.Index(2, 0).iColumnNum, -1); }, "meta 2: iColumnNum"},
    {"index without a name", [](Block& b) { return Put(b.Index(2, 0).ptrName, -1); }, "meta 2, index 0: ptrName"},
    {"names of indexes shared", [](Block& b) { return Put(b.Index(2, 1).ptrName, b.Index(2, 0).ptrName); },
     "meta 2, index 1: ptrName"},
    {"a sort key", [](Block& b) { return Put(b.Meta(2).stSortKey.ptrSortKeyBase, 120); }, "meta 2: ptrSortKeyBase"},
    {"members of a sort key", [](Block& b) { return Put(b.Meta(2).stSortKey.iSortKeyMemberNum, 1); },
     "meta 2: iSortKeyMemberNum"},
    {"meta of another size", [](Block& b) { return Put(b.Meta(2).iUnitSize, 7); }, "meta 2: iUnitSize"},

    {"ptrEntry of another entry", [](Block& b) { return Put(b.Entry(2, 1).ptrEntry, b.Entry(2, 0).ptrEntry); },
     "meta 2, entry 1: ptrEntry"},
    {"entry without a name", [](Block& b) { return Put(b.Entry(2, kUid).ptrName, -1); }, "meta 2, entry 0: ptrName"},
    {"name of the previous entry", [](Block& b) { return Put(b.Entry(2, 1).ptrName, b.Entry(2, 0).ptrName); },
     "meta 2, entry 1: ptrName"},
    {"name inside the previous name", [](Block& b) { return Put(b.Entry(2, 1).ptrName, b.Entry(2, 1).ptrName - 2); },
     "meta 2, entry 1: ptrName"},
    {"name in another meta", [](Block& b) { return Put(b.Entry(0, 1).ptrName, b.Entry(1, 1).ptrName); },
     "meta 0, entry 1: ptrName"},
    {"attribute that is the name", [](Block& b) { return Put(b.Entry(2, 1).ptrCustomAttr2, b.Entry(2, 1).ptrName); },
     "meta 2, entry 1: ptrCustomAttr2"},
    {"attribute past the end", [](Block& b) { return Put(b.Entry(2, 0).ptrCustomAttr2, kFar); },
     "meta 2, entry 0: ptrCustomAttr2"},
    {"count by a later entry", [](Block& b) { return Put(b.Entry(2, kCount).ptrRefer, b.Entry(2, kItems).ptrEntry); },
     "meta 2, entry 2: ptrRefer"},
    {"count by the entry itself", [](Block& b) { return Put(b.Entry(2, kItems).ptrRefer, b.Entry(2, kItems).ptrEntry); },
     "meta 2, entry 3: ptrRefer"},
    {"count by an entry of another meta", [](Block& b) { return Put(b.Entry(2, kItems).ptrRefer, b.Entry(0, 0).ptrEntry); },
     "meta 2, entry 3: ptrRefer"},
    {"count by half an entry", [](Block& b) { return Put(b.Entry(2, kItems).ptrRefer, b.Entry(2, 0).ptrEntry + 8); },
     "meta 2, entry 3: ptrRefer"},
    {"type unknown", [](Block& b) { return Put(b.Entry(2, kUid).iType, 16); }, "meta 2, entry 0: iType"},
    {"type negative", [](Block& b) { return Put(b.Entry(2, kUid).iType, -1); }, "meta 2, entry 0: iType"},
    {"simple type with a meta", [](Block& b) { return Put(b.Entry(2, kUid).ptrTypeMeta, b.ListItem(0)); },
     "meta 2, entry 0: ptrTypeMeta"},
    {"composite type without a meta", [](Block& b) { return Put(b.Entry(2, kItems).ptrTypeMeta, -1); },
     "meta 2, entry 3: ptrTypeMeta"},
    {"composite type past the end", [](Block& b) { return Put(b.Entry(2, kItems).ptrTypeMeta, kFar); },
     "meta 2, entry 3: ptrTypeMeta"},
    {"composite type before the data", [](Block& b) { return Put(b.Entry(2, kItems).ptrTypeMeta, -120); },
     "meta 2, entry 3: ptrTypeMeta"},
    {"composite type inside a meta", [](Block& b) { return Put(b.Entry(2, kItems).ptrTypeMeta, b.ListItem(kItem) + 8); },
     "meta 2, entry 3: ptrTypeMeta"},
    {"composite type not aligned", [](Block& b) { return Put(b.Entry(2, kItems).ptrTypeMeta, b.ListItem(kItem) + 1); },
     "meta 2, entry 3: ptrTypeMeta"},
    {"structure that is a union", [](Block& b) { return Put(b.Entry(2, kItems).ptrTypeMeta, b.ListItem(kMoney)); },
     "meta 2, entry 3: ptrTypeMeta"},
    {"another size than the type", [](Block& b) { return Put(b.Entry(2, kUid).iUnitSize, 4); }, "meta 2, entry 0: iUnitSize"},
    {"another size than the structure", [](Block& b) { return Put(b.Entry(2, kItems).iUnitSize, 4); },
     "meta 2, entry 3: iUnitSize"},
    {"size that overflows",
     [](Block& b) {
       Put(b.Entry(0, 0).iUnitSize, -1);
       return &b.Entry(0, 1).iUnitSize;
     },
     "meta 0, entry 1: iUnitSize"},
    {"count that overflows",
     [](Block& b) {
       b.Entry(1, 1).iCount = 3;
       return Put(b.Entry(1, 1).iUnitSize, -1);
     },
     "meta 1, entry 1: iUnitSize"},

    {"key member of another meta", [](Block& b) { return Put(b.Key(2, 1).ptrEntry, b.Entry(0, 0).ptrEntry); },
     "meta 2, primary key member 1: ptrEntry"},
    {"key member before the entries",
     [](Block& b) { return Put(b.Key(2, 1).ptrEntry, std::numeric_limits<std::int64_t>::min()); },
     "meta 2, primary key member 1: ptrEntry"},
    {"key member after the entries", [](Block& b) { return Put(b.Key(2, 0).ptrEntry, b.Entry(2, kItems).ptrEntry + 72); },
     "meta 2, primary key member 0: ptrEntry"},
    {"key member missing", [](Block& b) { return Put(b.Key(2, 0).ptrEntry, -1); }, "meta 2, primary key member 0: ptrEntry"},
    {"splittable member inside an entry", [](Block& b) { return Put(b.Key(2, 2).ptrEntry, b.Entry(2, 0).ptrEntry + 8); },
     "meta 2, splittable key member 0: ptrEntry"},
    {"another first splittable member", [](Block& b) { return Put(b.Meta(2).stSplitTableKey.ptrEntry, -1); },
     "meta 2: stSplitTableKey.ptrEntry"},
    {"splittable key without members", [](Block& b) { return Put(b.Meta(0).stSplitTableKey.ptrEntry, b.Entry(0, 0).ptrEntry); },
     "meta 0: stSplitTableKey.ptrEntry"},
    {"first splittable member at another offset", [](Block& b) { return Put(b.Meta(2).stSplitTableKey.iHOff, 1); },
     "meta 2: stSplitTableKey.iHOff"},
    {"column of another meta", [](Block& b) { return Put(b.Column(2, 0, 1).ptrEntry, b.Entry(1, 0).ptrEntry); },
     "meta 2, column 1: ptrEntry"},
};

class Corrupted : public testing::TestWithParam<Corruption> {};

TEST_P(Corrupted, IsRefusedAtItsLocation) {
  Block block(image::FullLibrary());
  ASSERT_EQ(block.Fault(), "");
  const void* const place = GetParam().damage(block);
  const std::optional<VerifyError> error = block.Verify();
  ASSERT_TRUE(error);
  EXPECT_EQ(error->part.substr(0, std::strlen(GetParam().part)), GetParam().part) << error->reason;
  EXPECT_EQ(error->offset, block.OffsetOf(place)) << error->part;
  EXPECT_NE(error->reason.find("; allowed: "), std::string::npos) << error->reason;
}

std::string RowName(const testing::TestParamInfo<Corruption>& row) {
  std::string name = row.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Verify, Corrupted, testing::ValuesIn(kCorruptions), RowName);

TEST(Verify, ReportsWhatIsAllowed) {
  Block block(image::FullLibrary());
  block.Entry(kOrders, kItems).iType = 99;
  EXPECT_EQ(block.Fault(), "meta 2, entry 3: iType is 99; allowed: 0 to 15");
}

// Regression: with a log, the checker took exponential time for structures that lead to a structure without entries.
TEST(Verify, RefusesMetaWithoutEntries) {
  qmx::MetalibBuilder builder("empty", 1, qmx::Protocol::kQmx);
  builder.AddMeta("nothing");
  builder.AddMeta("table");
  builder.AddEntry({.name = "inner", .type = "nothing"});
  Block block(*builder.Finish().metalib);
  EXPECT_EQ(block.Fault(), "meta 0: iEntriesNum is 0; allowed: 1 to 1000000");
}

TEST(Verify, RefusesBlockWithoutHeader) {
  Block block(image::FullLibrary());
  for (const std::size_t size : {0u, 55u}) {
    const auto error = qmx::Verify(&block.Lib(), size);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->part, "block");
  }
  EXPECT_TRUE(qmx::Verify(reinterpret_cast<char*>(&block.Lib()) + 4, block.size() - 8));
}

TEST(Verify, LibraryWithoutMetasHasNoLists) {
  const qmx::Metalib empty = *qmx::MetalibBuilder("", 0, qmx::Protocol::kQmx).Finish().metalib;
  Block block(empty);
  EXPECT_EQ(block.Fault(), "");
  block.Lib().ptrMetaSlots = 0;
  EXPECT_EQ(block.Fault(), "library: ptrMetaSlots is 0; allowed: -1 for an empty list");
  block.Lib().ptrMetas = 0;
  EXPECT_EQ(block.Fault(), "library: ptrMetas is 0; allowed: -1 for an empty list");
}

TEST(Verify, TextsMustEndInsideMeta) {
  Block block(image::FullLibrary());
  // Makes everything between the last text of a meta and the next meta part of that text.
  for (std::int64_t end = block.ListItem(1); block.Byte(end - 1) == 0; --end) block.Byte(end - 1) = 'x';
  EXPECT_EQ(block.Fault().substr(0, 15), "meta 0: ptrName");
}

TEST(Verify, LibraryNameMustBeTerminated) {
  Block block(image::FullLibrary());
  block.Lib().ptrName = block.Lib().iDataSize - 1;
  block.Byte(block.Lib().iDataSize - 1) = 'x';
  EXPECT_EQ(block.Fault().substr(0, 16), "library: ptrName");
}

// --- Blocks that would take long ---

// Structures s0, s1, ... with one int32 each, which can be turned into structures.
qmx::Metalib Structures(int count, int entries = 1) {
  qmx::MetalibBuilder builder("deep", 1, qmx::Protocol::kQmx);
  for (int i = 0; i < count; ++i) {
    builder.AddMeta("s" + std::to_string(i));
    for (int e = 0; e < entries; ++e) builder.AddEntry({.name = "e" + std::to_string(e), .type = "int32"});
  }
  return *builder.Finish().metalib;
}

void MakeComposite(Block& block, int meta, int entry, int type) {
  block.Entry(meta, entry).iType = QMX_TYPE_STRUCT;
  block.Entry(meta, entry).ptrTypeMeta = block.ListItem(type);
}

TEST(HostileBlock, RefusesCycles) {
  for (const int length : {1, 2, 100}) {
    Block block(Structures(length));
    for (int i = 0; i < length; ++i) MakeComposite(block, i, 0, (i + 1) % length);
    EXPECT_EQ(block.Fault(), "meta " + std::to_string(length - 1) + ", entry 0: ptrTypeMeta is " +
                                 std::to_string(block.ListItem(0)) + "; allowed: structures that do not contain themselves");
  }
}

// The verifier must not recurse into every level: 100,000 levels would overflow the stack.
TEST(HostileBlock, RefusesDeepNestingEarly) {
  const int count = 100'000;
  Block block(Structures(count));
  for (int i = 0; i + 1 < count; ++i) MakeComposite(block, i, 0, i + 1);
  EXPECT_NE(block.Fault().find("; allowed: structures nested up to 128 levels deep"), std::string::npos);
}

TEST(HostileBlock, CountsNestingFromEveryMeta) {
  for (const bool forwards : {true, false}) {
    for (const int count : {128, 129}) {
      Block block(Structures(count));
      for (int i = 0; i + 1 < count; ++i) MakeComposite(block, forwards ? i : i + 1, 0, forwards ? i + 1 : i);
      EXPECT_EQ(block.Fault().empty(), count == 128) << block.Fault();
    }
  }
}

// Each of 60 levels has two fields of the next one: 2^60 paths and 60 structures.
TEST(HostileBlock, VisitsSharedStructuresOnce) {
  Block block(Structures(60, 2));
  for (int i = 1; i < 60; ++i) {
    for (int e = 0; e < 2; ++e) {
      MakeComposite(block, i, e, i - 1);
      block.Entry(i, e).iUnitSize = block.Meta(i - 1).iUnitSize;
    }
    block.Meta(i).iUnitSize = 2 * block.Meta(i - 1).iUnitSize;
  }
  EXPECT_EQ(block.Fault(), "");
  EXPECT_LE(image::ReadEverything(&block.Lib()), block.size());
}

// Every text runs to the end of the block, through all other texts.
TEST(HostileBlock, RefusesTextsThatShareBytes) {
  Block block(Structures(1, 1000));
  for (int e = 0; e < 1000; ++e) {
    for (char* text = &block.Byte(block.Entry(0, e).ptrName); *text != 0; ++text) *text = 'x';
    block.Byte(block.Entry(0, e).ptrName - 1) = 'x';
  }
  EXPECT_NE(block.Fault().find("ptrName"), std::string::npos);
}

TEST(HostileBlock, RefusesFullTableOfNames) {
  Block block(Structures(4));
  for (int slot = 0; slot < block.Lib().iMetaSlotNum; ++slot) {
    if (block.Slot(slot).iMeta < 0) block.Slot(slot) = {1, 0};
  }
  EXPECT_EQ(block.Fault().substr(0, 5), "slot ");
}

// Names that collide under the seed of the block: a search for one would compare all others.
TEST(HostileBlock, RefusesSeedWithCollisions) {
  qmx::MetalibBuilder builder("collide", 1, qmx::Protocol::kQmx);
  int count = 0;
  for (int i = 0; count < 300; ++i) {
    const std::string name = "n" + std::to_string(i);
    if ((qmx::MetaHash(name, 0).place & 1023) != 7) continue;
    ++count;
    builder.AddMeta(name);
    builder.AddEntry({.name = "e", .type = "int8"});
  }
  Block block(*builder.Finish().metalib);
  EXPECT_EQ(block.Fault(), "");
  EXPECT_EQ(block.Lib().iMetaSlotSeed, 1u);
  block.Lib().iMetaSlotSeed = 0;
  EXPECT_EQ(block.Fault(), "library: iMetaSlotSeed is 0; allowed: a seed under which every name is found in few steps");
}

// A member of 16 bytes refers to a name of 60,000 bytes, which a rule reads.
TEST(HostileBlock, RefusesMembersThatRepeatLongName) {
  qmx::MetalibBuilder builder("repeats", 1, qmx::Protocol::kQmx);
  builder.AddMeta("table");
  builder.AddEntry({.name = "short", .type = "int8"});
  builder.AddEntry({.name = std::string(60'000, 'x'), .type = "int8"});
  builder.SetPrimaryKey(std::vector<std::string_view>(1000, "short"));
  Block block(*builder.Finish().metalib);
  EXPECT_EQ(block.Fault(), "");
  for (int i = 0; i < 1000; ++i) block.Key(0, i).ptrEntry = block.Entry(0, 1).ptrEntry;
  EXPECT_NE(block.Fault().find("primary key member 20: ptrEntry"), std::string::npos) << block.Fault();
}

// Reading an accepted block takes as many steps as it has bytes: no record and no text is read twice.
TEST(Verify, AcceptedBlocksAreReadOnce) {
  for (const auto& library : {image::FullLibrary(), Structures(1000), Structures(3, 1000)}) {
    ASSERT_FALSE(qmx::Verify(library.get(), library.size()));
    EXPECT_LE(image::ReadEverything(library.get()), library.size());
  }
}

}  // namespace
