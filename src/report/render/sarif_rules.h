// The rules that a SARIF log tells of.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace korvel {

// The reportingDescriptor of a rule: of the catalogue with the words of its page, of those that reports have beside it with one
// line.
nlohmann::ordered_json SarifRule(const std::string& id);

}  // namespace korvel
