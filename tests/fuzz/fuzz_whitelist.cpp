// Whitelists: how they are split, and how the check of field lengths uses them. The first line of the input is the whitelist, the
// second the server's version, the third the name of a field.
#include <cstdint>
#include <set>
#include <string>

#include "common/text_helpers.h"
#include "fuzz/check_all.h"
#include "fuzz/input.h"
#include "fuzz/require.h"
#include "qmx/qmx_builder.h"

namespace {

void RequirePieces(const std::string& text) {
  std::set<std::string> pieces;
  SplitString(text.c_str(), ";", pieces);
  for (const std::string& piece : pieces) {
    fuzz::Require(!piece.empty() && piece.find(';') == std::string::npos, "a piece contains no separator");
    fuzz::Require((";" + text + ";").find(";" + piece + ";") != std::string::npos, "a piece occurs between separators");
  }
  fuzz::Require(pieces.empty() == (text.find_first_not_of(';') == std::string::npos), "no piece is lost");
}

qmx::Metalib Build(const std::string& field, std::uint64_t size) {
  qmx::MetalibBuilder builder("fuzz", 5, qmx::Protocol::kQmx);
  builder.AddMeta("t");
  builder.AddEntry({.name = "uid", .type = "uint64"});
  builder.AddEntry({.name = field, .type = "bytes", .size = size});
  builder.SetPrimaryKey({"uid"});
  return *builder.Finish().metalib;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  fuzz::Settings settings;
  settings.whitelist = input.Text();
  settings.server_version = input.Text();
  const std::string name = input.Text();
  RequirePieces(settings.whitelist);
  const qmx::Metalib old_library = Build(name, 300'000);
  const qmx::Metalib new_library = Build(name, 400'000);
  fuzz::CheckAll(old_library.get(), new_library.get(), settings);
  fuzz::CheckAll(new_library.get(), old_library.get(), settings);
  return 0;
}
