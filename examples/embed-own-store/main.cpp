// A store with its own metadata and logging libraries checks a change of its table "orders".
#include <cstdio>

#include "common/modify_table.h"
#include "metadata.h"

int main() {
  store::Library old_library(6);
  old_library.AddTable("orders", {{"order_no", QMX_TYPE_UINT32, 4}, {"total", QMX_TYPE_INT64, 8}});
  store::Library new_library(7);
  new_library.AddTable("orders", {{"order_no", QMX_TYPE_UINT64, 8}, {"total", QMX_TYPE_INT64, 8}});

  VESKCATEGORYINST log = {};
  ModifyTable checker;
  const int code = checker.KorvelModifyTable(&old_library, &new_library, "orders", 0 /* generic */,
                                             1 /* created in the record format */, &log, "3.29.0", "", 0);
  if (code == 0) {
    std::puts("allowed");
    return 0;
  }
  std::printf("refused: %d %s: %s\n", code, ResultCodeName(code), checker.GetErrType());
  return 1;
}
