// Days of the Gregorian calendar as texts. Has no times of day, and no time zones except UTC.
#pragma once

#include <string>
#include <string_view>

namespace korvel {

// Whether the text is an existing day in the form "2027-01-31", with a year of four digits. Texts of this form sort as their
// days.
bool IsDay(std::string_view text);

// The number of days from one day to another, negative if the other is earlier. REQUIRES: both are days (IsDay).
long long DaysFrom(std::string_view day, std::string_view other);

// The day so many days later. REQUIRES: it is a day (IsDay), and so is the result.
std::string DayAfter(std::string_view day, int days);

// The current day in UTC. If the environment variable SOURCE_DATE_EPOCH (seconds since 1970) is set, the day of that time, which
// makes a call repeatable. Throws InputError if the variable is not such a number.
std::string Today();

}  // namespace korvel
