// The book by families, one file each. For rule_book.cpp alone.
#pragma once

#include <span>

#include "rule_docs/rule_book.h"

namespace korvel {

std::span<const RulePage> ArgumentPages();
std::span<const RulePage> LibraryPages();
std::span<const RulePage> KeyPages();
std::span<const RulePage> IndexPages();
std::span<const RulePage> FieldPages();
std::span<const RulePage> TlvFieldPages();
std::span<const RulePage> FieldSetPages();
std::span<const RulePage> FieldNamePages();
std::span<const RulePage> KindPages();
std::span<const RulePage> LengthPages();

}  // namespace korvel
