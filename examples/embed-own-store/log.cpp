// The logging library of this store: prints the message and the function of each event.
#include <cstdio>

#include "vesk/vesk_category.h"

extern "C" {

int vesk_category_can_write(LPVESKCATEGORYINST /*category*/, int priority, int /*id*/, int /*cls*/) {
  return priority <= VESK_PRIORITY_ERROR ? 1 : 0;
}

void vesk_category_logv(LPVESKCATEGORYINST /*category*/, const struct tagVeskEvent* event, const char* format,
                        va_list arguments) {
  std::printf("log: %s: ", event->evt_loc->loc_function);
  std::vprintf(format, arguments);
  std::putchar('\n');
}

}  // extern "C"
