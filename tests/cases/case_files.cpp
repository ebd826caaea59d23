#include "case_files.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "common/check_table.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"

namespace cases {
namespace {

namespace fs = std::filesystem;

constexpr int kRecordFormat = 1;
constexpr int kTlv = 2;

qmx::Metalib ReadLibrary(const fs::path& path) {
  qmx::ReadResult result = qmx::ReadXml(ReadFile(path));
  if (result.schema) return std::move(result.schema->metalib);
  std::ostringstream text;
  for (const qmx::ReadError& error : result.errors) {
    text << path.string() << ":" << error.location.line << ":" << error.location.column << ": " << error.text << "\n";
  }
  throw std::runtime_error(text.str());
}

std::string FirstTable(LPQMXMETALIB library) {
  for (int i = 0; i < qmx_get_meta_num(library); ++i) {
    const LPQMXMETA meta = qmx_get_meta_by_index(library, i);
    if (meta->nPrimayKeyMemberNum > 0) return qmx_get_meta_name(meta);
  }
  return "";
}

bool IsTlv(LPQMXMETALIB library) { return library->iFlag != QMX_FLAG_UNSET && (library->iFlag & QMX_FLAG_TLV) != 0; }

// Settings from the attributes of the old table.
void ApplyAttributes(LPQMXMETALIB library, Settings& settings) {
  settings.created_as = IsTlv(library) ? kTlv : kRecordFormat;
  int type = 0, list_num = 0, sort_fields = 0, sort_rule = 0;
  std::array<char, 8> protocol{};
  CheckTable reader;
  if (reader.CheckTableTypeByCustomAttr(library, settings.table.c_str(), type, list_num, sort_fields, sort_rule, protocol.data(),
                                        false, nullptr) != 0) {
    return;
  }
  settings.table_type = type == TABLE_TYPE_GENERIC ? 0 : 1;
  settings.list_num = list_num;
  if (std::string(protocol.data()) == "TLV") settings.created_as = kTlv;
  if (std::string(protocol.data()) == "QMX") settings.created_as = kRecordFormat;
}

int OneOf(const std::string& value, const std::string& first, int first_code, const std::string& second, int second_code) {
  if (value == first) return first_code;
  if (value == second) return second_code;
  throw std::runtime_error("settings: '" + value + "' is neither " + first + " nor " + second);
}

void ApplySetting(const std::string& key, const std::string& value, Settings& settings) {
  if (key == "table") return;  // read before the attributes
  if (key == "type") {
    settings.table_type = OneOf(value, "generic", 0, "list", 1);
  } else if (key == "created-as") {
    settings.created_as = OneOf(value, "qmx", kRecordFormat, "tlv", kTlv);
  } else if (key == "server-version") {
    settings.server_version = value;
  } else if (key == "whitelist") {
    settings.whitelist = value;
  } else if (key == "list-num") {
    settings.list_num = std::stoi(value);
  } else {
    throw std::runtime_error("settings: unknown key '" + key + "'");
  }
}

using Lines = std::vector<std::pair<std::string, std::string>>;

Lines ReadSettings(const fs::path& path) {
  Lines lines;
  if (!fs::exists(path)) return lines;
  std::istringstream text(ReadFile(path));
  for (std::string line; std::getline(text, line);) {
    const std::size_t colon = line.find(": ");
    if (colon == std::string::npos) throw std::runtime_error(path.string() + ": not 'key: value': " + line);
    lines.emplace_back(line.substr(0, colon), line.substr(colon + 2));
  }
  return lines;
}

Settings MakeSettings(LPQMXMETALIB old_lib, const Lines& lines) {
  Settings settings;
  settings.table = FirstTable(old_lib);
  for (const auto& [key, value] : lines) {
    if (key == "table") settings.table = value;
  }
  ApplyAttributes(old_lib, settings);
  for (const auto& [key, value] : lines) ApplySetting(key, value, settings);
  if (settings.table.empty()) throw std::runtime_error("old.xml has no table, and settings names none");
  return settings;
}

}  // namespace

korvel::PartialSettings ToCheckerSettings(const Settings& settings) {
  return {.type = settings.table_type,
          .created_as = settings.created_as,
          .server_version = settings.server_version,
          .whitelist = settings.whitelist,
          .list_num = settings.list_num};
}

std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const auto& family : fs::directory_iterator(KORVEL_CASES_DIR)) {
    if (!family.is_directory()) continue;
    for (const auto& folder : fs::directory_iterator(family)) {
      names.push_back(family.path().filename().string() + "/" + folder.path().filename().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

fs::path Folder(const std::string& name) { return fs::path(KORVEL_CASES_DIR) / name; }

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path.string() + ": cannot be read");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Case Load(const std::string& name) {
  const fs::path folder = Folder(name);
  qmx::Metalib old_lib = ReadLibrary(folder / "old.xml");
  qmx::Metalib new_lib = ReadLibrary(folder / "new.xml");
  Settings settings = MakeSettings(old_lib.get(), ReadSettings(folder / "settings"));
  return {std::move(old_lib), std::move(new_lib), std::move(settings)};
}

}  // namespace cases
