// Records of a QMX schema library in memory.
//
// A library is one block: a header (tagQMXMetaLib) that ends in its data area, and in the data area every meta, entry, key
// member, index, column and string. Records refer to each other by byte offsets, never by addresses, so the block can be moved,
// stored and mapped unchanged. Offsets and sizes are 64 bits wide; an offset of QMX_NO_REF (-1) refers to nothing.
//
// Unless a member says otherwise, its offset counts from the start of the data area (`data`). Lists that belong to a meta count
// from the meta itself. The data area of a meta's library begins at the meta's address minus `ptrMeta`, and the header lies
// immediately before it, so the owning library is found from the meta alone.
//
// This header has no functions: read a library through qmx_metalib_kernel.h, make one with qmx_builder.h or qmx_xml.h.
#pragma once

#include <cstddef>
#include <cstdint>

// Offset of a reference that refers to nothing.
inline constexpr std::int64_t QMX_NO_REF = -1;

// Flag word of a library whose protocol was never set: all ones.
inline constexpr std::int64_t QMX_FLAG_UNSET = -1;
// Bit of a set flag word that marks a library in the tag-length-value protocol.
inline constexpr std::int64_t QMX_FLAG_TLV = 0x1;

// Bit of tagQMXMetaEntry::chDBFlag that marks a member of the primary key.
inline constexpr std::uint8_t QMX_DBFLAG_PRIMARY_KEY = 0x10;

// Type codes of entries. Stored in images: do not change.
// The first two are composite: the value of such an entry is described by another meta of the same library.
enum enQMXType : std::int32_t {
  QMX_TYPE_UNION = 0,
  QMX_TYPE_STRUCT = 1,
  QMX_TYPE_INT8 = 2,
  QMX_TYPE_UINT8 = 3,
  QMX_TYPE_INT16 = 4,
  QMX_TYPE_UINT16 = 5,
  QMX_TYPE_INT32 = 6,
  QMX_TYPE_UINT32 = 7,
  QMX_TYPE_INT64 = 8,
  QMX_TYPE_UINT64 = 9,
  QMX_TYPE_FLOAT = 10,
  QMX_TYPE_DOUBLE = 11,
  QMX_TYPE_BOOL = 12,
  QMX_TYPE_DATETIME = 13,
  QMX_TYPE_STRING = 14,
  QMX_TYPE_BYTES = 15,
};

// The result of qmx_get_entry_type for a missing entry: neither composite nor a simple type.
inline constexpr int QMX_TYPE_NONE = -1;

// A member of a primary or splittable key.
struct tagQMXDBKeyInfo {
  std::int64_t iHOff;     // position of the key field in a packed record, in bytes
  std::int64_t ptrEntry;  // the entry that forms the field; -1 = none
};

// The sort key of a meta. Schema files mark their sort fields by an entry's customattr2 and leave this empty.
struct tagQMXSortKeyInfo {
  std::int64_t ptrSortKeyBase;  // list of tagQMXDBKeyInfo, from the meta; -1 = none
  std::int32_t iSortKeyMemberNum;
  std::int32_t iReserved;
};

// A column of an index.
struct tagQMXColumnInfo {
  std::int64_t ptrEntry;       // the entry that forms the column; -1 = none
  std::int32_t iIsDesc;        // 1 = descending
  std::int32_t iCaredCharNum;  // length of the indexed prefix in bytes; 0 = the whole field
};

struct tagQMXMetaIndex {
  std::int64_t ptrName;
  std::int64_t ptrColumnBase;  // list of tagQMXColumnInfo, from the owning meta
  std::int32_t iColumnNum;
  std::int32_t iReserved;
};

// A field of a structure.
struct tagQMXMetaEntry {
  std::int64_t ptrEntry;  // the entry's own offset
  std::int64_t ptrName;
  std::int64_t ptrCustomAttr2;  // -1 = none
  std::int64_t ptrTypeMeta;     // the meta of a composite entry; -1 for a simple type
  std::int64_t ptrRefer;        // the entry that holds this one's element count; -1 = the count is fixed
  std::uint64_t iUnitSize;      // size of one element in bytes
  std::int32_t iID;             // -1 = none
  std::int32_t iVersion;
  std::int32_t iType;     // enQMXType
  std::int32_t iCount;    // number of elements
  std::uint8_t chDBFlag;  // QMX_DBFLAG_PRIMARY_KEY; the other bits belong to the store
  std::uint8_t chReserved[7];
};

// A structure or union: a table, or the value of a composite entry.
struct tagQMXMeta {
  std::int64_t ptrMeta;  // the meta's own offset
  std::int64_t ptrName;
  std::int64_t ptrCustomAttr;         // table attributes; -1 = none
  std::int64_t ptrEntries;            // list of tagQMXMetaEntry, from the meta; -1 = none
  std::int64_t ptrPrimayKeyBase;      // list of tagQMXDBKeyInfo, from the meta; -1 = none
  std::int64_t ptrIndexes;            // list of tagQMXMetaIndex, from the meta; -1 = none
  std::int64_t ptrSplitTableKeyBase;  // list of tagQMXDBKeyInfo, from the meta; -1 = none
  tagQMXDBKeyInfo stSplitTableKey;    // first member of the splittable key; ptrEntry -1 = the meta has none
  tagQMXSortKeyInfo stSortKey;
  std::uint64_t iUnitSize;  // size of one value in bytes
  std::int32_t iType;       // QMX_TYPE_STRUCT or QMX_TYPE_UNION
  std::int32_t iEntriesNum;
  std::int32_t iIndexesNum;
  std::int32_t iSplitTableKeyMemberNum;
  std::int16_t nPrimayKeyMemberNum;
  std::int16_t nReserved[3];
};

// A slot of the hash table of metas.
struct tagQMXMetaSlot {
  std::uint32_t iHash;  // upper half of the name's hash; 0 in a free slot
  std::int32_t iMeta;   // position of the first meta with that name in declaration order; -1 = the slot is free
};

// Header of a library.
struct tagQMXMetaLib {
  std::int64_t iFlag;      // QMX_FLAG_UNSET, or bits, the lowest of which is QMX_FLAG_TLV
  std::int64_t iDataSize;  // size of the data area in bytes
  std::int64_t ptrName;
  std::int64_t ptrMetas;      // list of iMetaNum offsets (int64) of metas in declaration order
  std::int64_t ptrMetaSlots;  // list of iMetaSlotNum tagQMXMetaSlot
  std::int32_t iVersion;
  std::int32_t iMetaNum;
  std::int32_t iMetaSlotNum;    // a power of two, at least twice iMetaNum; 0 in a library without metas
  std::uint32_t iMetaSlotSeed;  // the seed of the hashes (src/qmx/meta_slots.h)
  char data[1];                 // first byte of the data area, which is iDataSize bytes long
};

typedef struct tagQMXMetaLib* LPQMXMETALIB;
typedef struct tagQMXMeta* LPQMXMETA;
typedef struct tagQMXMetaEntry* LPQMXMETAENTRY;
typedef struct tagQMXMetaIndex* LPQMXMETAINDEX;
typedef struct tagQMXColumnInfo* LPQMXCOLUMNINFO;
typedef struct tagQMXDBKeyInfo* LPQMXDBKEYINFO;

// Stored in images: do not change.
static_assert(sizeof(tagQMXDBKeyInfo) == 16 && sizeof(tagQMXColumnInfo) == 16 && sizeof(tagQMXMetaIndex) == 24);
static_assert(sizeof(tagQMXMetaEntry) == 72 && sizeof(tagQMXMeta) == 120);
static_assert(sizeof(tagQMXMetaSlot) == 8 && offsetof(tagQMXMetaLib, data) == 56);
