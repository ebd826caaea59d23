// Versions, one a line: requires that their comparison is a total order.
#include <cstdint>
#include <string>

#include "common/text_helpers.h"
#include "fuzz/input.h"
#include "fuzz/require.h"

namespace {

int Sign(int number) { return (number > 0) - (number < 0); }

int Compare(const std::string& a, const std::string& b) { return Sign(RealCmpVersion(a.c_str(), b.c_str(), false)); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string a = input.Line();
  const std::string b = input.Line();
  const std::string c = input.Line();
  fuzz::Require(Compare(a, a) == 0, "a version equals itself");
  fuzz::Require(Compare(a, b) == -Compare(b, a), "the order of versions is antisymmetric");
  if (Compare(a, b) <= 0 && Compare(b, c) <= 0) fuzz::Require(Compare(a, c) <= 0, "the order of versions is transitive");
  if (Compare(a, b) == 0) fuzz::Require(Compare(a, c) == Compare(b, c), "equal versions have the same order relative to others");
  fuzz::Require(Compare(a, a + ".0") == 0, "a missing number counts as zero");
  fuzz::Require(RealCmpVersion(a.c_str(), b.c_str(), true) == RealCmpVersion(a.c_str(), b.c_str(), false),
                "the flag has no effect");
  return 0;
}
