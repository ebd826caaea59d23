// The logging library of the C interface: the checker is only given a category that is closed, so nothing is ever written.
#include "vesk/vesk_category.h"

int vesk_category_can_write(LPVESKCATEGORYINST /*category*/, int /*priority*/, int /*id*/, int /*cls*/) { return 0; }

void vesk_category_logv(LPVESKCATEGORYINST /*category*/, const struct tagVeskEvent* /*event*/, const char* /*format*/,
                        va_list /*arguments*/) {}
