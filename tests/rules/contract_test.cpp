// What callers see of class ModifyTable: which operations are public, with which signatures. The one source of these tests that
// is compiled under the rules of access.

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

// A new object is asked, as a caller would.
TEST(Contract, ANewObjectHasNoText) {
  ModifyTable checker;
  static_assert(kSame<decltype(checker.GetErrType()), const char*>);
  EXPECT_STREQ(checker.GetErrType(), "");
}

// Each concept holds for a class whose operation can be named from outside.
template <typename T>
concept HasOrder = requires {
  &T::CompareOrder;
};
template <typename T>
concept HasVersion = requires {
  &T::CompareVersion;
};
template <typename T>
concept HasPrimaryKeyMember = requires {
  &T::CheckWhetherPrimaryKey;
};
template <typename T>
concept HasIndexColumn = requires {
  &T::CompareIndexColumn;
};
template <typename T>
concept HasColumnField = requires {
  &T::CheckWhetherColumnField;
};
template <typename T>
concept HasIndexField = requires {
  &T::CheckWhetherIndexField;
};
template <typename T>
concept HasRecordFields = requires {
  &T::CompareEntryValueField;
};
template <typename T>
concept HasLookup = requires {
  &T::CheckWhetherExistEntry;
};
template <typename T>
concept HasLookupById = requires {
  &T::CheckWhetherExistEntryById;
};
template <typename T>
concept HasTlvFields = requires {
  &T::CompareEntryValueFieldTLV;
};
template <typename T>
concept HasTlvMembers = requires {
  &T::CompareEntrySubMetaFieldTLV;
};
template <typename T>
concept HasNames = requires {
  &T::CheckFieldNameValidate;
};
template <typename T>
concept HasSurvival = requires {
  &T::CheckWhetherExistEntryOfTLV;
};
template <typename T>
concept HasTexts = requires {
  &T::GetDescStr;
}
|| requires { &T::GetOrderStr; };
template <typename T>
concept HasLengths = requires {
  &T::CheckWhiteListFieldLen;
}
|| requires { &T::CheckWhiteFieldIsModify; };
template <typename T>
concept HasMembers = requires {
  &T::m_szErrorType;
}
|| requires { &T::printVec; }
|| requires { &T::whiteVec; }
|| requires { &T::m_svr_ver; };
template <typename T>
concept HasIndexes = requires {
  &T::CompareIndex;
};

static_assert(HasIndexes<ModifyTable>);  // the concepts can hold
static_assert(!HasOrder<ModifyTable> && !HasVersion<ModifyTable> && !HasPrimaryKeyMember<ModifyTable>);
static_assert(!HasIndexColumn<ModifyTable> && !HasColumnField<ModifyTable> && !HasIndexField<ModifyTable>);
static_assert(!HasRecordFields<ModifyTable> && !HasLookup<ModifyTable> && !HasLookupById<ModifyTable>);
static_assert(!HasTlvFields<ModifyTable> && !HasTlvMembers<ModifyTable> && !HasNames<ModifyTable>);
static_assert(!HasSurvival<ModifyTable> && !HasTexts<ModifyTable> && !HasLengths<ModifyTable> && !HasMembers<ModifyTable>);

}  // namespace
