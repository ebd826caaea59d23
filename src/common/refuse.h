// Writes texts into the checker's error buffer, logs them, and turns a refusal into its code. Nothing else formats or logs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "common/message.h"
#include "common/refusals.h"
#include "vesk/vesk_category.h"

namespace korvel {

// Capacity of an error buffer in bytes, the terminating zero included.
inline constexpr std::size_t kErrorTextSize = 1024;

// Where a text is written, which category logs it, and the place it is logged from.
struct Site {
  char* buffer;  // kErrorTextSize bytes
  LPVESKCATEGORYINST log;
  vesk_loc_info_t loc;
};

// The site of the rule it stands in, a member of ModifyTable with a parameter log_handle.
#define HERE (::korvel::Site{m_szErrorType, log_handle, {__FILE__, __LINE__, static_cast<const char*>(__func__), nullptr}})

// How many texts and records this thread has written so far; a record counts when its bounds let it through.
struct Traces {
  std::uint64_t texts = 0;
  std::uint64_t records = 0;
};
Traces TracesOfThread();

// Formats into an error buffer. A text that does not fit is cut; one that cannot be formatted leaves the buffer empty.
void FormatText(char* buffer, const char* format, ...);

// Writes one record if the category and its bounds let the priority through.
void LogRecord(const Site& site, int priority, const char* format, ...);

// The arguments of a message are taken as exactly its types, so that an int given for a size is widened before it is formatted.
template <class T>
using Exactly = std::type_identity_t<T>;

// Writes a text into the buffer without logging it.
template <class... Args>
void WriteText(const Site& site, const Message<Args...>& message, Exactly<Args>... args) {
  FormatText(site.buffer, message.text, args...);
}

// Logs a text, uncut, without writing it into the buffer.
template <class... Args>
void LogOnly(const Site& site, int priority, const Message<Args...>& message, Exactly<Args>... args) {
  LogRecord(site, priority, message.text, args...);
}

// Logs what the buffer holds.
inline void LogBuffer(const Site& site, int priority) { LogRecord(site, priority, "%s", site.buffer); }

// Writes a text into the buffer and logs it as an error, for the caller to go on.
template <class... Args>
void Report(const Site& site, const Message<Args...>& message, Exactly<Args>... args) {
  WriteText(site, message, args...);
  LogBuffer(site, VESK_PRIORITY_ERROR);
}

// Writes and logs a refusal's text; returns its code.
template <class... Args>
int Refuse(const Site& site, const Refusal<Args...>& refusal, Exactly<Args>... args) {
  Report<Args...>(site, refusal, args...);
  return refusal.code;
}

// Logs a refusal's text and leaves the buffer as it is; returns its code.
template <class... Args>
int RefuseInLog(const Site& site, const Refusal<Args...>& refusal, Exactly<Args>... args) {
  LogOnly<Args...>(site, VESK_PRIORITY_ERROR, refusal, args...);
  return refusal.code;
}

// Refuses with a text that serves as a format without arguments: "%%" gives "%", any other conversion stands as it is, and a
// text that ends in a lone "%" cannot be formatted. Returns `code`.
int RefuseWithFormat(const Site& site, int code, const char* format);

}  // namespace korvel
