// The lower bound of every check of compiled files that reads each table: maps two files, without verifying them, and checks each
// table of the old one.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cstdio>

#include "common/modify_table.h"
#include "qmx/image_header.h"
#include "qmx/qmx_metalib_kernel.h"
#include "vesk/closed_category.h"

namespace {

LPQMXMETALIB Map(const char* path) {
  const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
  struct stat status {};
  if (fd < 0 || ::fstat(fd, &status) != 0) return nullptr;
  void* const bytes = ::mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
  if (bytes == MAP_FAILED) return nullptr;
  return reinterpret_cast<LPQMXMETALIB>(static_cast<char*>(bytes) + qmx::kImageHeaderSize);
}

}  // namespace

int main(int argc, char** argv) {
  const LPQMXMETALIB old_library = argc == 3 ? Map(argv[1]) : nullptr;
  const LPQMXMETALIB new_library = argc == 3 ? Map(argv[2]) : nullptr;
  if (old_library == nullptr || new_library == nullptr) {
    std::fputs("usage: korvel_bound_check OLD NEW, two images\n", stderr);
    return 2;
  }
  constexpr int kGeneric = 0, kRecordFormat = 1;
  vesk::ClosedCategory no_log;
  bool is_allowed = true;
  for (int i = 0; i < qmx_get_meta_num(old_library); ++i) {
    ModifyTable check;
    const char* const table = qmx_get_meta_name(qmx_get_meta_by_index(old_library, i));
    is_allowed &=
        check.KorvelModifyTable(old_library, new_library, table, kGeneric, kRecordFormat, no_log.handle(), "", "", 0) == 0;
  }
  return is_allowed ? 0 : 1;
}
