// Days.
#pragma once

#include <string>
#include <string_view>

namespace korvel {

// Whether the text is a day of the calendar: "2027-01-31". Such texts are ordered as their days are.
bool IsDay(std::string_view text);

// The day in UTC, by the clock; by the environment variable SOURCE_DATE_EPOCH (seconds since 1970) where it is set, so that a
// call can be repeated. Throws InputError if that is no such number.
std::string Today();

}  // namespace korvel
