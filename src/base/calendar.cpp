// Parses days and reads the clock. Tested by tests/tool/waiver_test.cpp.
#include "base/calendar.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "base/input_error.h"
#include "base/text.h"

namespace korvel {
namespace {

template <class Number>
bool Parse(std::string_view text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

// Not ok() if the text is not a day.
std::chrono::year_month_day ParseDay(std::string_view text) {
  unsigned year = 0;
  unsigned month = 0;
  unsigned day = 0;
  const bool is_day = text.size() == 10 && text[4] == '-' && text[7] == '-' && Parse(text.substr(0, 4), year) &&
                      Parse(text.substr(5, 2), month) && Parse(text.substr(8, 2), day);
  if (!is_day) return {};
  return {std::chrono::year(static_cast<int>(year)), std::chrono::month(month), std::chrono::day(day)};
}

constexpr long long kLastSecond = 253402300799;  // of the year 9999

// In seconds: the ticks of the system clock reach only the year 2262.
std::chrono::sys_seconds Now() {
  const char* const fixed = std::getenv("SOURCE_DATE_EPOCH");
  if (fixed == nullptr) return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  long long seconds = 0;
  if (!Parse<long long>(fixed, seconds) || seconds < 0 || seconds > kLastSecond) {
    throw InputError{
        {ToolMessage("SOURCE_DATE_EPOCH is " + Quote(fixed) + "; allowed: 0 to " + std::to_string(kLastSecond) + " seconds")}};
  }
  return std::chrono::sys_seconds(std::chrono::seconds(seconds));
}

std::string ToText(const std::chrono::year_month_day& day) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                static_cast<unsigned>(day.day()));
  return text.data();
}

}  // namespace

bool IsDay(std::string_view text) { return ParseDay(text).ok(); }

long long DaysFrom(std::string_view day, std::string_view other) {
  return (std::chrono::sys_days(ParseDay(other)) - std::chrono::sys_days(ParseDay(day))).count();
}

std::string DayAfter(std::string_view day, int days) {
  return ToText(std::chrono::sys_days(ParseDay(day)) + std::chrono::days(days));
}

std::string Today() { return ToText(std::chrono::floor<std::chrono::days>(Now())); }

}  // namespace korvel
