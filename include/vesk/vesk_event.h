// Records of one log event.
#pragma once

// Priorities: the lower the number, the more severe the event.
inline constexpr int VESK_PRIORITY_ERROR = 300;
inline constexpr int VESK_PRIORITY_WARN = 400;
inline constexpr int VESK_PRIORITY_INFO = 600;

extern "C" {

// Where an event was raised. The texts are borrowed for the duration of the log call.
typedef struct tagVeskLocInfo {
  const char* loc_file;
  int loc_line;
  const char* loc_function;
  void* loc_data;
} vesk_loc_info_t;

// One event. The caller fills in the members below for the duration of the log call.
typedef struct tagVeskEvent {
  int evt_priority;
  const vesk_loc_info_t* evt_loc;
  int evt_is_msg_binary;  // 0: the message is text
  int evt_id;
  int evt_cls;
} VESKEVENT, *LPVESKEVENT;

}  // extern "C"
