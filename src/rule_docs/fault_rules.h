// The catalog of faults: rules about files that could not be checked, and about calls that could not be carried out. They cannot
// be waived.
#pragma once

#include <array>
#include <string_view>

#include "base/input_error.h"
#include "common/catalog.h"

namespace korvel {

// No code and no text, because the checker reports nothing. In the order of FaultKind.
inline constexpr std::array<RefusalRow, 6> kFaultRules{{
    {"schema.syntax", 0, "", "a schema file is not well-formed XML"},
    {"schema.invalid", 0, "", "a schema file is not a valid schema"},
    {"schema.image", 0, "", "an image is damaged or of an unknown version"},
    {"schema.no-table", 0, "", "a schema file has no table"},
    {"schema.unreadable", 0, "", "a schema file cannot be read"},
    {"check.failed", 0, "", "the check could not be carried out"},
}};

// What the pages and JSON documents call the level of these rules.
inline constexpr char kFaultLevel[] = "error";

const RefusalRow& RuleOf(FaultKind kind);

// The rule of that id, or null.
const RefusalRow* FindFaultRule(std::string_view id);

}  // namespace korvel
