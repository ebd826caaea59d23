#include "fuzz/check_all.h"

#include <cstring>
#include <functional>

#include "fuzz/require.h"
#include "qmx/qmx_metalib_kernel.h"
#include "support/log_capture.h"

namespace fuzz {
namespace {

using Call = std::function<int(ModifyTable&)>;

void RunTwice(const Call& call) {
  ModifyTable first;
  ModifyTable second;
  const int code = call(first);
  Require(call(second) == code, "a repeated call returns the same code");
  constexpr std::size_t kBuffer = 1024;  // of the checker's text
  const std::size_t length = ::strnlen(first.GetErrType(), kBuffer);
  Require(length < kBuffer, "the error text is terminated");
  Require(std::strcmp(first.GetErrType(), second.GetErrType()) == 0, "a repeated call leaves the same text");
}

}  // namespace

void CheckAll(LPQMXMETALIB old_library, LPQMXMETALIB new_library, const Settings& settings) {
  // Field lengths are checked only if there is a category.
  support::CaptureCategory closed;
  closed.SetCanWrite(0);
  for (int i = 0; i < qmx_get_meta_num(old_library); ++i) {
    const LPQMXMETA old_meta = qmx_get_meta_by_index(old_library, i);
    const char* const name = qmx_get_meta_name(old_meta);
    RunTwice([&](ModifyTable& checker) {
      return checker.KorvelModifyTable(old_library, new_library, name, settings.type, settings.created_as, &closed,
                                       settings.server_version, settings.whitelist, settings.list_num);
    });
    RunTwice([&](ModifyTable& checker) { return checker.CheckTableMetaCompatible(old_library, new_library, name, nullptr); });
    RunTwice([&](ModifyTable& checker) { return checker.CompareSortListInfo(name, name, old_library, new_library, nullptr); });
    const LPQMXMETA new_meta = qmx_get_meta_by_name(new_library, name);
    if (new_meta == nullptr) continue;
    RunTwice([&](ModifyTable& checker) {
      return checker.CompareValue(old_meta, new_meta, old_library, new_library, settings.created_as, nullptr);
    });
    RunTwice([&](ModifyTable& checker) { return checker.CompareTableField(old_meta, new_meta, nullptr); });
    RunTwice([&](ModifyTable& checker) { return checker.ComparePrimaryKey(old_meta, new_meta, nullptr); });
    RunTwice([&](ModifyTable& checker) { return checker.CompareSplittableKey(old_meta, new_meta, nullptr); });
    RunTwice([&](ModifyTable& checker) { return checker.CompareIndex(old_meta, new_meta, 0, nullptr); });
    RunTwice([&](ModifyTable& checker) {
      return checker.CheckListMetaInfo(name, old_library, new_library, nullptr, settings.type, settings.list_num);
    });
  }
}

}  // namespace fuzz
