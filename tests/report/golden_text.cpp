#include "golden_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

namespace report_test {
namespace {

std::string WithoutVersion(std::string text) {
  const std::string version = "\"" KORVEL_VERSION "\"";
  for (std::size_t at; (at = text.find(version)) != std::string::npos;) text.replace(at, version.size(), "\"VERSION\"");
  for (std::size_t at; (at = text.find("korvelcheck " KORVEL_VERSION "<")) != std::string::npos;) {
    text.replace(at + 12, std::string_view(KORVEL_VERSION).size(), "VERSION");
  }
  return text;
}

// A page without its style and script, which are files of their own, and without their hashes.
std::string WithoutAssets(std::string text) {
  for (const auto& [begin, end] :
       {std::pair{"<style>", "</style>"}, {"<script>", "</script>"}, {"'sha256-", "'"}, {"'sha256-", "'"}}) {
    const std::size_t at = text.find(begin);
    if (at == std::string::npos) continue;
    const std::size_t inside = at + std::string_view(begin).size();
    text.replace(at, text.find(end, inside) - at, std::string(1, *begin) + "...");
  }
  return text;
}

std::string WithoutRules(const std::string& text) {
  auto log = nlohmann::ordered_json::parse(text);
  log["runs"][0]["tool"]["driver"]["rules"] = "...";
  return log.dump(2) + "\n";
}

}  // namespace

std::string GoldenText(const korvel::Format& format, const korvel::Report& report) {
  const std::string text = WithoutAssets(WithoutVersion(format.Render(report, false)));
  return std::string_view(format.name) == "sarif" ? WithoutRules(text) : text;
}

std::string TestNameOf(std::string format) {
  std::ranges::replace(format, '-', '_');
  return format;
}

}  // namespace report_test
