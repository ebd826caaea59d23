// Tested by tests/report: findings_law_test and excerpts_test.
#include "analysis/findings/change_checker.h"

#include <algorithm>
#include <thread>

#include "analysis/findings/run_checker.h"
#include "base/parallel.h"

namespace korvel {
namespace {

bool IsSame(const CheckAnswer& a, const CheckAnswer& b) { return a && b && a->code == b->code && a->text == b->text; }

}  // namespace

// A schema that is refused as it is has no excerpts: what is unchanged can be refused, too. Excerpts are also not used if they
// give another answer about all edits than the whole table.
ChangeChecker::ChangeChecker(const TableContext& context, const Difference& difference, Use use)
    : context_(context), difference_(difference), unchanged_(CheckUnchanged()) {
  if (use == Use::kWholeTables || !unchanged_ || unchanged_->Refused()) return;
  excerpts_ = Excerpts::Of(difference, context.old_source.Library());
  const EditSet all(difference.edits().size(), true);
  if (excerpts_ && !IsSame(Check(all), CheckWhole(all))) excerpts_.reset();
}

// A library read from a schema file contains only what a model expresses, so it is used as it is. An image can contain more.
CheckAnswer ChangeChecker::CheckUnchanged() const {
  const Source& source = context_.old_source;
  if (!source.IsFromText()) return CheckWhole(EditSet(difference_.edits().size()));
  return RunChecker(source.Library(), source.Library(), context_.table, context_.settings);
}

std::vector<CheckAnswer> ChangeChecker::Check(const std::vector<EditSet>& sets) const {
  const std::size_t size = context_.old_source.metalib.size() + context_.new_source.metalib.size();
  std::vector<CheckAnswer> answers(sets.size());
  ForEach(sets.size(), size < kWorthAThread ? 1 : std::thread::hardware_concurrency(),
          [&](std::size_t i) { answers[i] = Check(sets[i]); });
  return answers;
}

CheckAnswer ChangeChecker::Check(const EditSet& set) const {
  if (std::ranges::find(set, true) == set.end()) return unchanged_;
  if (!excerpts_ || !excerpts_->Has(set)) return CheckWhole(set);
  const std::optional<LibraryPair> built = excerpts_->Build(set);
  if (!built) return std::nullopt;
  return RunChecker(built->old_library.get(), built->new_library.get(), context_.table, context_.settings);
}

CheckAnswer ChangeChecker::CheckWhole(const EditSet& set) const {
  const std::optional<qmx::Metalib> built = difference_.Build(set);
  if (!built) return std::nullopt;
  return RunChecker(context_.old_source.Library(), built->get(), context_.table, context_.settings);
}

}  // namespace korvel
