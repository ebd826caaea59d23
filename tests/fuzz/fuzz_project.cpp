// Project files: requires either a project, or faults that all have a location.
#include <cstdint>
#include <string>

#include "base/input_error.h"
#include "fuzz/require.h"
#include "project/project.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    const korvel::Project project = korvel::ParseProject("p.toml", text);
    fuzz::Require(project.file == "p.toml", "a project knows its file");
  } catch (const korvel::InputError& reason) {
    fuzz::Require(!reason.lines.empty(), "an invalid project file has faults");
    for (const std::string& line : reason.lines) {
      fuzz::Require(line.rfind("p.toml:", 0) == 0, "a fault has a location");
      fuzz::Require(line.find('\n') == std::string::npos, "a fault is one line");
    }
  }
  return 0;
}
