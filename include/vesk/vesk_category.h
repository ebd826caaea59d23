// The logging interface that the checker calls.
//
// A store with its own logging library provides these two operations instead of src/vesk. Before it logs at priority P, the
// checker tests in this order, and stops at the first condition that is false:
//   1. the category is not null;
//   2. piPriorityLow is null, or points to -1, or to at least P;
//   3. piPriorityHigh is null, or points to at most P;
//   4. vesk_category_can_write(category, P, 0, 0) is not zero.
#pragma once

#include <cstdarg>

#include "vesk/vesk_event.h"

extern "C" {

// A log category. The checker reads only the two bounds. The rest of a category belongs to the library, which puts this record at
// the start of a larger one.
typedef struct tagVeskCategoryInst {
  int* piPriorityHigh;  // smallest priority (most severe) that is written; null = no bound
  int* piPriorityLow;   // largest priority (least severe) that is written; null or a value of -1 = no bound
} VESKCATEGORYINST, *LPVESKCATEGORYINST;

// Non-zero if an event with this priority, id and class would be written now.
int vesk_category_can_write(LPVESKCATEGORYINST category, int priority, int id, int cls);

// Formats and writes one event; never throws. The event and the arguments are borrowed for the call.
void vesk_category_logv(LPVESKCATEGORYINST category, const struct tagVeskEvent* event, const char* format, va_list arguments);

}  // extern "C"
