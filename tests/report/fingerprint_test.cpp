// Fingerprints do not change as long as file, rule, location, kind and values of a change stay the same.
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

Edit EditOf(EditKind kind, const std::string& meta, const std::string& item, const std::string& before = "int64",
            const std::string& after = "int32") {
  Edit edit;
  edit.kind = kind;
  edit.meta = meta;
  edit.item = item;
  edit.before = before;
  edit.after = after;
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
  EXPECT_EQ(FingerprintOf("s.xml", "mall", FindingOf({0}, "primary-key.size"), edits), "990233d7db124537");
}

// Messages about waivers of earlier versions contain what replaces them.
TEST(Fingerprint, OldOneHasKnownValue) {
  const std::vector<Edit> edits = {EditOf(EditKind::kEntryType, "orders", "uid")};
  EXPECT_EQ(korvel::OldFingerprintOf("mall", FindingOf({0}, "primary-key.size"), edits), "84ffde231685f362");
}

TEST(Fingerprint, DistinguishesDifferentFindings) {
  const std::vector<Edit> edits = {
      EditOf(EditKind::kEntryType, "orders", "uid"),          EditOf(EditKind::kEntryCount, "orders", "uid"),
      EditOf(EditKind::kEntryType, "carts", "uid"),           EditOf(EditKind::kEntryType, "orders", "id"),
      EditOf(EditKind::kEntryType, "orders", "uid", "int16"), EditOf(EditKind::kEntryType, "orders", "uid", "int64", "int16")};
  std::set<std::string> all;
  for (std::size_t i = 0; i < edits.size(); ++i) all.insert(FingerprintOf("s.xml", "mall", FindingOf({i}, "a"), edits));
  all.insert(FingerprintOf("s.xml", "mall", FindingOf({0}, "b"), edits));
  all.insert(FingerprintOf("s.xml", "mall", FindingOf({0}, ""), edits));
  all.insert(FingerprintOf("s.xml", "shop", FindingOf({0}, "a"), edits));
  all.insert(FingerprintOf("s.xml", "mall", FindingOf({0, 1}, "a"), edits));
  all.insert(FingerprintOf("s.xml", "mall", FindingOf({}, "a"), edits));
  all.insert(FingerprintOf("s.xml", "mall", FindingOf({}, "a", "orders.id"), edits));
  all.insert(FingerprintOf("t.xml", "mall", FindingOf({0}, "a"), edits));
  EXPECT_EQ(all.size(), 13u);
}

TEST(Fingerprint, IgnoresOrderAndPathOfEdits) {
  const std::vector<Edit> edits = {EditOf(EditKind::kEntryType, "orders", "uid"), EditOf(EditKind::kEntryType, "orders", "id")};
  EXPECT_EQ(FingerprintOf("s.xml", "mall", FindingOf({0, 1}, "a", "orders.uid"), edits),
            FingerprintOf("s.xml", "mall", FindingOf({1, 0}, "a", "carts.order.id"), edits));
}

std::string OfField(const std::string& name, const std::string& type, const std::string& file = "schemas/s.xml") {
  const std::string begin = R"(<metalib name="mall" version="1"><meta name="orders"><entry name="uid" type="int32"/>)";
  const std::string end = R"(<primarykey entries="uid"/></meta></metalib>)";
  const Source old_source = ReadSource("old.xml", begin + "<entry name=\"" + name + "\" type=\"int64\"/>" + end);
  Source new_source = ReadSource("new.xml", begin + "<entry name=\"" + name + "\" type=\"" + type + "\"/>" + end);
  new_source.path_in_project = file;
  const Changes changes = MakeCheck(old_source, new_source, "orders").Find();
  EXPECT_EQ(changes.findings.size(), 1u);
  return changes.findings.front().fingerprint;
}

TEST(Fingerprint, ChangesForAnotherValueFieldAndFile) {
  EXPECT_EQ(OfField("zone", "int8"), OfField("zone", "int8"));
  EXPECT_NE(OfField("zone", "int8"), OfField("zone", "int16"));
  EXPECT_NE(OfField("zone", "int8"), OfField("area", "int8"));
  EXPECT_NE(OfField("zone", "int8"), OfField("zone", "int8", "schemas/t.xml"));
}

// --- What waivers contain ---

TEST(AcceptedChange, HasOldAndNewValues) {
  struct Row {
    Edit edit;
    const char* text;
  };
  const Row kRows[] = {
      {EditOf(EditKind::kEntryType, "orders", "uid"), "type of uid: int64 -> int32"},
      {EditOf(EditKind::kTableAttribute, "orders", "ListNum", "100", "99"), "attribute ListNum of orders: 100 -> 99"},
      {EditOf(EditKind::kEntryAdded, "orders", "note", "", "string(64)"), "field note added: string(64)"},
      {EditOf(EditKind::kEntryRemoved, "orders", "note", "string(64)", ""), "field note removed: string(64)"},
      {EditOf(EditKind::kEntryRenamed, "orders", "note", "note", "memo"), "field note renamed to memo"},
      {EditOf(EditKind::kEntryMoved, "orders", "note", "a", "b"), "field note moved after b (was after a)"},
      {EditOf(EditKind::kEntryMoved, "orders", "note", "", "b"), "field note moved after b (was at the front)"},
      {EditOf(EditKind::kIndexAdded, "orders", "by_uid", "", "uid desc"), "index by_uid added: uid desc"},
      {EditOf(EditKind::kIndexRemoved, "orders", "by_uid", "uid", ""), "index by_uid removed: uid"},
      {EditOf(EditKind::kIndexMoved, "orders", "by_uid", "a", ""), "index by_uid moved to the front (was after a)"},
  };
  for (const auto& [edit, text] : kRows) EXPECT_EQ(korvel::ChangeOf(FindingOf({0}, "a"), {edit}), text);
}

TEST(AcceptedChange, OfSeveralEditsIsSorted) {
  const std::vector<Edit> edits = {EditOf(EditKind::kEntryType, "orders", "uid"), EditOf(EditKind::kEntryCount, "orders", "a")};
  EXPECT_EQ(korvel::ChangeOf(FindingOf({0, 1}, "a"), edits), "count of a: int64 -> int32; type of uid: int64 -> int32");
}

// A pre-existing refusal may hide all of them.
TEST(AcceptedChange, WithoutEditsNamesAllExceptTheVersionOfTheLibrary) {
  const std::vector<Edit> edits = {EditOf(EditKind::kLibraryVersion, "", "", "5", "6"),
                                   EditOf(EditKind::kEntryType, "orders", "uid"), EditOf(EditKind::kEntryCount, "orders", "a")};
  const Finding preexisting = FindingOf({}, "a");
  EXPECT_EQ(korvel::ChangeOf(preexisting, edits), "count of a: int64 -> int32; type of uid: int64 -> int32");
  EXPECT_EQ(korvel::ChangeOf(preexisting, {}), "");
  EXPECT_EQ(FingerprintOf("s.xml", "mall", preexisting, {edits[0]}), FingerprintOf("s.xml", "mall", preexisting, {}));
  EXPECT_NE(FingerprintOf("s.xml", "mall", preexisting, edits), FingerprintOf("s.xml", "mall", preexisting, {}));
}

}  // namespace
}  // namespace report_test
