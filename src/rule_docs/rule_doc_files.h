// The pages of docs/rules as the build embeds them; cmake/EmbedRuleDocs.cmake writes the source file.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace korvel {

struct RuleDocFile {
  std::string_view name;  // "primary-key-size.md"
  std::string_view text;
};

// One page a rule, by file name.
std::span<const RuleDocFile> RuleDocFiles();

// The page of the result codes.
const RuleDocFile& ResultCodesFile();

// The file of a rule's page: "primary-key-size.md" for "primary-key.size".
std::string RuleDocFileName(std::string_view rule_id);

}  // namespace korvel
