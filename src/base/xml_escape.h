// Text as the value of an attribute in XML.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvel {

// What stands between quotes of this kind (' or ") so that a reader gets `value`; nullopt if XML 1.0 in UTF-8 cannot say it.
std::optional<std::string> XmlEscaped(std::string_view value, char quote = '"');

}  // namespace korvel
