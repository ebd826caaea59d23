// Fingerprints do not change as long as rule, location and kind of a change stay the same.
#include "analysis/findings/finding.h"

#include <gtest/gtest.h>

#include <set>

#include "change_check.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::Changes;
using korvel::Edit;
using korvel::EditKind;
using korvel::Finding;
using korvel::FingerprintOf;
using korvel::Source;

Edit EditOf(EditKind kind, const std::string& meta, const std::string& item) {
  Edit edit;
  edit.kind = kind;
  edit.meta = meta;
  edit.item = item;
  return edit;
}

Finding FindingOf(std::vector<std::size_t> edits, const std::string& rule, const std::string& path = "orders.uid") {
  Finding finding;
  finding.edits = std::move(edits);
  finding.verdict = {-3, "text", rule};
  finding.path = path;
  return finding;
}

// Project files contain fingerprints: if this one changes, all of them change.
TEST(Fingerprint, HasKnownValue) {
  const std::vector<Edit> edits = {EditOf(EditKind::kEntryType, "orders", "uid")};
  EXPECT_EQ(FingerprintOf("mall", FindingOf({0}, "primary-key.size"), edits), "84ffde231685f362");
}

TEST(Fingerprint, DistinguishesDifferentFindings) {
  const std::vector<Edit> edits = {EditOf(EditKind::kEntryType, "orders", "uid"), EditOf(EditKind::kEntryCount, "orders", "uid"),
                                   EditOf(EditKind::kEntryType, "carts", "uid"), EditOf(EditKind::kEntryType, "orders", "id")};
  std::set<std::string> all;
  for (std::size_t i = 0; i < edits.size(); ++i) all.insert(FingerprintOf("mall", FindingOf({i}, "a"), edits));
  all.insert(FingerprintOf("mall", FindingOf({0}, "b"), edits));
  all.insert(FingerprintOf("mall", FindingOf({0}, ""), edits));
  all.insert(FingerprintOf("shop", FindingOf({0}, "a"), edits));
  all.insert(FingerprintOf("mall", FindingOf({0, 1}, "a"), edits));
  all.insert(FingerprintOf("mall", FindingOf({}, "a"), edits));
  all.insert(FingerprintOf("mall", FindingOf({}, "a", "orders.id"), edits));
  EXPECT_EQ(all.size(), 10u);
}

TEST(Fingerprint, IgnoresOrderAndPathOfEdits) {
  const std::vector<Edit> edits = {EditOf(EditKind::kEntryType, "orders", "uid"), EditOf(EditKind::kEntryType, "orders", "id")};
  EXPECT_EQ(FingerprintOf("mall", FindingOf({0, 1}, "a", "orders.uid"), edits),
            FingerprintOf("mall", FindingOf({1, 0}, "a", "carts.order.id"), edits));
}

std::string OfField(const std::string& name, const std::string& type) {
  const std::string begin = R"(<metalib name="mall" version="1"><meta name="orders"><entry name="uid" type="int32"/>)";
  const std::string end = R"(<primarykey entries="uid"/></meta></metalib>)";
  const Source old_source = ReadSource("old.xml", begin + "<entry name=\"" + name + "\" type=\"int64\"/>" + end);
  const Source new_source = ReadSource("new.xml", begin + "<entry name=\"" + name + "\" type=\"" + type + "\"/>" + end);
  const Changes changes = MakeCheck(old_source, new_source, "orders").Find();
  EXPECT_EQ(changes.findings.size(), 1u);
  return changes.findings.front().fingerprint;
}

TEST(Fingerprint, KeepsForAnotherValueAndChangesForAnotherField) {
  EXPECT_EQ(OfField("zone", "int8"), OfField("zone", "int16"));
  EXPECT_NE(OfField("zone", "int8"), OfField("area", "int8"));
}

}  // namespace
}  // namespace report_test
