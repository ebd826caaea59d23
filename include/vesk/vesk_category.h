// The logging interface that the checker calls.
//
// A store with a logging library of its own provides these two operations instead of src/vesk. Before it logs at priority P the
// checker asks, in this order and each only if the one before let it through:
//   1. the category is not null;
//   2. piPriorityLow is null, or points to -1, or to at least P;
//   3. piPriorityHigh is null, or points to at most P;
//   4. vesk_category_can_write(category, P, 0, 0) is not zero.
#pragma once

#include <cstdarg>

#include "vesk/vesk_event.h"

extern "C" {

// A log category. Only the two bounds are read by the checker; what else a category holds is its library's own, which puts this
// record at the front of a larger one.
typedef struct tagVeskCategoryInst {
  int* piPriorityHigh;  // gravest priority that is written; null = no bound
  int* piPriorityLow;   // least grave priority that is written; null or a value of -1 = no bound
} VESKCATEGORYINST, *LPVESKCATEGORYINST;

// Non-zero when an event of this priority, id and class would be written now.
int vesk_category_can_write(LPVESKCATEGORYINST category, int priority, int id, int cls);

// Formats and writes one event; never throws. The event and the arguments are borrowed for the call.
void vesk_category_logv(LPVESKCATEGORYINST category, const struct tagVeskEvent* event, const char* format, va_list arguments);

}  // extern "C"
