#include "change_check.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "analysis/findings/run_checker.h"
#include "base/text.h"

namespace report_test {

using korvel::Changes;
using korvel::Difference;
using korvel::Edit;
using korvel::EditKind;
using korvel::EditStatus;
using korvel::Finding;
using korvel::PartialSettings;
using korvel::Source;
using korvel::Verdict;

Verdict ChangeCheck::WholeVerdict() const { return RunChecker(old_source.Library(), new_source.Library(), table, settings); }

Changes ChangeCheck::Find(std::size_t max_findings) const {
  const korvel::TableContext context{old_source, new_source, table, settings};
  if (!IsOnBothSides()) return FindRemovedTable(context, WholeVerdict());
  return FindChanges(context, Difference(old_source, new_source, table), WholeVerdict(), max_findings);
}

ChangeCheck MakeCheck(const Source& old_source, const Source& new_source, const std::string& table,
                      const PartialSettings& given) {
  return {old_source, new_source, table, ResolveSettings(given, old_source, table)};
}

namespace {

std::string ToText(const Edit& edit) {
  std::string text(NameOf(edit.kind));
  if (!edit.meta.empty()) text += " " + edit.meta;
  if (!edit.item.empty()) text += "." + edit.item;
  return korvel::OneLine(text);
}

std::string ToText(EditStatus status) {
  constexpr const char* kWords[] = {"allowed", "refused", "blocked", "not checked"};
  return kWords[static_cast<std::size_t>(status)];
}

std::string ToText(const Finding& finding, const std::vector<Edit>& edits) {
  std::string text = "[" + finding.verdict.rule + "] " + std::to_string(finding.verdict.code);
  for (const std::size_t edit : finding.edits) text += (edit == finding.edits.front() ? " " : " + ") + ToText(edits[edit]);
  if (finding.edits.empty()) text += " (pre-existing)";
  return text + "\n  " + korvel::OneLine(finding.path) + " " + finding.fingerprint + "\n  " +
         korvel::OneLine(finding.verdict.text) + "\n";
}

}  // namespace

std::string ToText(const Changes& changes) {
  std::string text;
  for (std::size_t i = 0; i < changes.edits.size(); ++i) {
    text += ToText(changes.status[i]) + " " + ToText(changes.edits[i]) + "\n";
  }
  for (const Finding& finding : changes.findings) text += ToText(finding, changes.edits);
  const Verdict& together = changes.allowed_together;
  text += "together: " + (together.Refused() ? std::to_string(together.code) + " " + together.text : "allowed") + "\n";
  return text + (changes.stopped ? "stopped\n" : "");
}

namespace {

class Laws {
 public:
  Laws(const ChangeCheck& check, const Changes& changes)
      : check_(check),
        changes_(changes),
        difference_(check.old_source, check.new_source, check.table),
        nothing_(*VerdictWithNeeds({})) {}

  void Expect() const {
    EXPECT_EQ(check_.WholeVerdict().Refused(), !changes_.findings.empty());
    ASSERT_EQ(changes_.status.size(), changes_.edits.size());
    ExpectTogether();
    for (const Finding& finding : changes_.findings) ExpectFinding(finding);
    ExpectStatuses();
  }

 private:
  using Edits = std::vector<std::size_t>;

  std::optional<Verdict> VerdictOn(const std::vector<bool>& chosen) const {
    const std::optional<qmx::Metalib> built = difference_.Build(chosen);
    if (!built) return std::nullopt;
    return RunChecker(check_.old_source.Library(), built->get(), check_.table, check_.settings);
  }

  // The verdict on the edits together with the edits that they need.
  std::optional<Verdict> VerdictWithNeeds(const Edits& edits) const {
    std::vector<bool> chosen(difference_.edits().size());
    for (const std::size_t edit : edits) {
      chosen[edit] = true;
      for (const std::size_t needed : difference_.Needs(edit)) chosen[needed] = true;
    }
    return VerdictOn(chosen);
  }

  bool IsPreexisting(const Verdict& verdict) const {
    if (!verdict.Refused() || (verdict.code == nothing_.code && verdict.text == nothing_.text)) return true;
    if (verdict.rule == "length.limit" && verdict.rule == nothing_.rule) return verdict.text.size() <= nothing_.text.size();
    return nothing_.Refused() && verdict.rule == "field-name.invalid";
  }

  void ExpectTogether() const {
    std::vector<bool> allowed;
    const bool is_hidden = changes_.allowed_together.Refused();
    EXPECT_TRUE(!is_hidden || std::ranges::count(changes_.status, EditStatus::kAllowed) == 0);
    if (is_hidden && changes_.stopped) return;  // which edits were tried together is not known
    const EditStatus together = is_hidden ? EditStatus::kNotChecked : EditStatus::kAllowed;
    for (const EditStatus status : changes_.status) allowed.push_back(status == together);
    if (check_.WholeVerdict().Refused()) {
      const std::optional<Verdict> verdict = VerdictOn(allowed);
      ASSERT_TRUE(verdict);
      EXPECT_EQ(verdict->text, changes_.allowed_together.text);
      EXPECT_EQ(verdict->code, changes_.allowed_together.code);
      EXPECT_TRUE(IsPreexisting(*verdict)) << verdict->text;
    } else {
      EXPECT_EQ(std::ranges::count(allowed, true), std::ssize(allowed));
    }
  }

  void ExpectFinding(const Finding& finding) const {
    EXPECT_TRUE(finding.verdict.Refused());
    EXPECT_EQ(finding.fingerprint.size(), 16u);
    if (finding.edits.empty()) return;
    const std::optional<Verdict> verdict = VerdictWithNeeds(finding.edits);
    ASSERT_TRUE(verdict);
    if (finding.verdict.rule == "field-name.invalid" && verdict->text != finding.verdict.text) {
      ExpectBadName(finding);
      return;
    }
    EXPECT_EQ(verdict->code, finding.verdict.code);
    EXPECT_EQ(verdict->text, finding.verdict.text);
    if (finding.edits.size() > 1) ExpectAllAreNeeded(finding.edits);
  }

  void ExpectBadName(const Finding& finding) const {
    const Edit& edit = changes_.edits[finding.edits.front()];
    const std::string name = edit.kind == EditKind::kEntryAdded ? edit.item : edit.after;
    EXPECT_EQ(korvel::FindBadNames(check_.table, {name}, 1).size(), 1u) << name;
  }

  void ExpectAllAreNeeded(const Edits& edits) const {
    for (const std::size_t edit : edits) {
      Edits rest = edits;
      std::erase(rest, edit);
      const std::optional<Verdict> verdict = VerdictWithNeeds(rest);
      if (!verdict || IsPreexisting(*verdict)) continue;
      // The edit compensates for another one, so that without it the allowed part would be refused.
      std::erase_if(rest, [&](std::size_t one) {
        return changes_.status[one] == EditStatus::kRefused || changes_.status[one] == EditStatus::kBlocked;
      });
      const std::optional<Verdict> without = VerdictWithNeeds(rest);
      EXPECT_TRUE(!without || !IsPreexisting(*without)) << "edit " << edit << " can be left out";
    }
  }

  void ExpectStatuses() const {
    std::vector<bool> found(changes_.edits.size());
    for (const Finding& finding : changes_.findings) {
      for (const std::size_t edit : finding.edits) found[edit] = true;
    }
    for (std::size_t i = 0; i < found.size(); ++i) {
      const bool is_hidden = changes_.allowed_together.Refused() && changes_.status[i] == EditStatus::kNotChecked;
      if (is_hidden || changes_.status[i] == EditStatus::kAllowed) continue;  // it may be part of a combination
      EXPECT_EQ(found[i], changes_.status[i] == EditStatus::kRefused) << "edit " << i;
      EXPECT_TRUE(changes_.stopped || changes_.status[i] != EditStatus::kNotChecked) << "edit " << i;
    }
  }

  const ChangeCheck& check_;
  const Changes& changes_;
  Difference difference_;
  Verdict nothing_;
};

}  // namespace

void ExpectLaws(const ChangeCheck& check, const Changes& changes) { Laws(check, changes).Expect(); }

}  // namespace report_test
