// Splitting and version comparison for the length rules. Built with the checker; a store may link its own instead.
#pragma once

#include <set>
#include <string>

// Adds every non-empty piece of `str` between characters of `separators` to `out`, which keeps what it holds. A null `str` has
// no pieces; null separators separate nothing.
void SplitString(const char* str, const char* separators, std::set<std::string>& out);

// Compares two dotted version texts ("3.29.0") number by number, of any length: negative when `a` is older than `b`, zero when
// they are equal, positive when `a` is newer. A missing number counts as zero ("3.29" equals "3.29.0"), as does a part without
// leading digits; what follows the digits of a part is ignored. A null text counts as empty. The flag has no effect.
int RealCmpVersion(const char* a, const char* b, bool flag);
