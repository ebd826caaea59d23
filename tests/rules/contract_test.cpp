// The interface of class ModifyTable: its public operations and their signatures. The only source file of these tests that is
// compiled with access control, like callers.

#include <gtest/gtest.h>

#include <type_traits>

#include "common/modify_table.h"

namespace {

using Log = LPVESKCATEGORYINST;

template <typename Actual, typename Expected>
inline constexpr bool kSame = std::is_same_v<Actual, Expected>;

static_assert(std::is_default_constructible_v<ModifyTable> && !std::is_polymorphic_v<ModifyTable>);
static_assert(std::is_nothrow_destructible_v<ModifyTable>);

static_assert(
    kSame<decltype(&ModifyTable::KorvelModifyTable), int (ModifyTable::*)(LPQMXMETALIB, LPQMXMETALIB, const char*, int, int, Log,
                                                                          const std::string&, const std::string&, int)>);
static_assert(
    kSame<decltype(&ModifyTable::CheckTableMetaCompatible), int (ModifyTable::*)(LPQMXMETALIB, LPQMXMETALIB, const char*, Log)>);
static_assert(kSame<decltype(&ModifyTable::CompareIndex), int (ModifyTable::*)(LPQMXMETA, LPQMXMETA, int, Log)>);
static_assert(kSame<decltype(&ModifyTable::ComparePrimaryKey), int (ModifyTable::*)(LPQMXMETA, LPQMXMETA, Log)>);
static_assert(kSame<decltype(&ModifyTable::CompareSplittableKey), int (ModifyTable::*)(LPQMXMETA, LPQMXMETA, Log)>);
static_assert(kSame<decltype(&ModifyTable::CompareTableField), int (ModifyTable::*)(LPQMXMETA, LPQMXMETA, Log)>);
static_assert(kSame<decltype(&ModifyTable::CheckListMetaInfo),
                    int (ModifyTable::*)(const char*, LPQMXMETALIB, LPQMXMETALIB, Log, int, int) const>);
static_assert(kSame<decltype(&ModifyTable::CompareSortListInfo),
                    int (ModifyTable::*)(const char*, const char*, LPQMXMETALIB, LPQMXMETALIB, Log) const>);
static_assert(kSame<decltype(&ModifyTable::CompareValue),
                    int (ModifyTable::*)(LPQMXMETA, LPQMXMETA, LPQMXMETALIB, LPQMXMETALIB, int, Log)>);

TEST(Contract, NewObjectHasNoText) {
  ModifyTable checker;
  static_assert(kSame<decltype(checker.GetErrType()), const char*>);
  EXPECT_STREQ(checker.GetErrType(), "");
}

}  // namespace
