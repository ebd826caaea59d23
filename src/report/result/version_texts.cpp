// Tested by tests/tool/history_format_test.cpp.
#include "report/result/version_texts.h"

#include <algorithm>

namespace korvel {

void VersionTexts::Add(std::size_t version, std::string_view text) {
  count_ += static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
  if (count_ > kMaxLines) return;
  std::vector<std::uint32_t>& lines = texts_[version];
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const auto known = ids_.find(line);
    const auto id = known == ids_.end() ? static_cast<std::uint32_t>(lines_.size()) : known->second;
    if (known == ids_.end()) {
      lines_.emplace_back(line);
      ids_.emplace(line, id);
    }
    lines.push_back(id);
  }
}

}  // namespace korvel
