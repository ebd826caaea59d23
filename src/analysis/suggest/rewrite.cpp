// Compares a file with a model, meta by meta; element_text.cpp changes the bytes. Does not run the checker. Tested by
// tests/report/rewrite_test.cpp.
#include "analysis/suggest/rewrite.h"

#include <algorithm>
#include <map>
#include <span>
#include <string_view>
#include <type_traits>

#include "analysis/diff/alignment.h"
#include "analysis/suggest/match_items.h"
#include "qmx/qmx_metalib_kernel.h"
#include "schema/xml_writer.h"

namespace korvel {
namespace {

using Kind = qmx::ElementId::Kind;

// One meta in the text of a source.
struct MetaText {
  std::string_view text;
  const qmx::SourceMap& offsets;
  std::uint32_t meta;
  const std::vector<Slot>* positions = nullptr;  // if only some entries are known, their positions

  std::optional<std::size_t> Find(Kind kind, std::size_t item = 0, std::size_t column = 0) const {
    if (kind == Kind::kEntry && positions != nullptr) item = (*positions)[item];
    return offsets.Find({kind, meta, static_cast<std::uint32_t>(item), static_cast<std::uint32_t>(column)});
  }
  // REQUIRES: the element exists.
  std::size_t OffsetOf(Kind kind, std::size_t item = 0, std::size_t column = 0) const { return *Find(kind, item, column); }
};

std::optional<MetaText> TextOf(const Source& source, const std::string& meta) {
  if (!source.text) return std::nullopt;
  return MetaText{source.text->Bytes(), source.text->source_map, *PositionOf(source, meta)};
}

constexpr Kind KindOf(const EntryModel&) { return Kind::kEntry; }
constexpr Kind KindOf(const IndexModel&) { return Kind::kIndex; }

// Changes an element to `wanted`. `base` is the offset in `from` at which the text of `edits` begins.
bool Change(TextEdits& edits, std::size_t base, const MetaText& from, std::size_t position, const EntryModel& was,
            const EntryModel& wanted) {
  return was == wanted ||
         edits.ChangeAttributes(from.OffsetOf(Kind::kEntry, position) - base, AttributesOf(was), AttributesOf(wanted));
}

bool Change(TextEdits& edits, std::size_t base, const MetaText& from, std::size_t position, const IndexModel& was,
            const IndexModel& wanted) {
  bool written = edits.ChangeAttributes(from.OffsetOf(Kind::kIndex, position) - base, AttributesOf(was), AttributesOf(wanted));
  for (std::size_t i = 0; i < wanted.columns.size(); ++i) {
    const std::size_t offset = from.OffsetOf(Kind::kColumn, position, i) - base;
    written = edits.ChangeAttributes(offset, AttributesOf(was.columns[i]), AttributesOf(wanted.columns[i])) && written;
  }
  return written;
}

std::optional<std::string> Written(const EntryModel& entry, const Layout&) { return ElementOf(entry); }
std::optional<std::string> Written(const IndexModel& index, const Layout& layout) { return ElementOf(index, layout); }

// The text of an element, changed to `wanted`.
template <class Item>
std::optional<std::string> Copied(const MetaText& from, std::size_t position, const Item& was, const Item& wanted) {
  const std::size_t offset = from.OffsetOf(KindOf(was), position);
  const std::string_view text = WithComments(from.text, offset);
  TextEdits edits(text);
  if (!Change(edits, offset, from, position, was, wanted)) return std::nullopt;
  return ApplyReplacements(text, edits.Finish());
}

const std::vector<EntryModel>& ItemsOf(const OtherMeta& other, const EntryModel&) { return other.meta.entries; }
const std::vector<IndexModel>& ItemsOf(const OtherMeta& other, const IndexModel&) { return other.meta.indexes; }
std::size_t Find(OtherMeta& other, const EntryModel& entry) { return other.entry_finder.Find(entry.name); }
std::size_t Find(OtherMeta& other, const IndexModel& index) { return other.index_finder.Find(index.name); }

// Changes one meta of the text.
class MetaRewrite {
 public:
  // `other` is null if the other source has no such meta or no text.
  MetaRewrite(TextEdits& edits, const MetaText& text, const MetaModel& present, OtherMeta* other)
      : edits_(edits), text_(text), present_(present), other_(other) {}

  // False if XML cannot express it.
  bool Run(const MetaModel& wanted) {
    written_ = edits_.ChangeAttributes(text_.OffsetOf(Kind::kMeta), AttributesOf(present_), AttributesOf(wanted));
    ChangeItems(&MetaModel::entries, wanted, text_.OffsetOf(Kind::kEntry, present_.entries.size() - 1));
    ChangeKey("primarykey", Kind::kPrimaryKey, present_.primary_key, wanted.primary_key);
    ChangeKey("splittablekey", Kind::kSplittableKey, present_.splittable_key, wanted.splittable_key);
    ChangeItems(&MetaModel::indexes, wanted, BehindKeys());
    return written_;
  }

  // False if only some entries are known, and they do not tell which ones have moved.
  bool tells_moves() const { return tells_moves_; }

 private:
  // The last of the entries and keys in the text: added keys and indexes go behind it.
  std::size_t BehindKeys() const {
    std::size_t last = text_.OffsetOf(Kind::kEntry, present_.entries.size() - 1);
    for (const Kind key : {Kind::kPrimaryKey, Kind::kSplittableKey}) last = std::max(last, text_.Find(key).value_or(0));
    return last;
  }

  Layout LayoutAt(std::size_t element) const {
    return {std::string(IndentOf(text_.text, element).value_or("")), LineEndAt(text_.text, element)};
  }

  void Insert(std::optional<std::string> text, void (TextEdits::*insert)(std::size_t, std::string_view), std::size_t element) {
    text ? (edits_.*insert)(element, *text) : void(written_ = false);
  }

  void ChangeKey(std::string_view element, Kind kind, const std::vector<std::string>& was,
                 const std::vector<std::string>& wanted) {
    if (was == wanted) return;
    if (wanted.empty()) {
      edits_.Remove(text_.OffsetOf(kind));
    } else if (was.empty()) {
      Insert(KeyElement(element, wanted), &TextEdits::InsertBehind, BehindKeys());
    } else {
      const auto attributes = KeyAttributes(wanted);
      // The attributes of the present key exist: it was read from the text.
      written_ = written_ && attributes && edits_.ChangeAttributes(text_.OffsetOf(kind), *KeyAttributes(was), *attributes);
    }
  }

  // `fallback` is the element behind which the first item is inserted if there are no others.
  template <class Item>
  void ChangeItems(std::vector<Item> MetaModel::*items, const MetaModel& wanted_meta, std::size_t fallback) {
    const std::vector<Item>& present = present_.*items;
    const std::vector<Item>& wanted = wanted_meta.*items;
    if (present == wanted) return;
    const auto offset_of = [&](Slot slot) { return text_.OffsetOf(KindOf(present[slot]), slot); };
    const Alignment alignment(present.size(), MatchItems(present, wanted));
    const bool is_part = std::is_same_v<Item, EntryModel> && text_.positions != nullptr;
    if (is_part && !TellsMoves(alignment)) tells_moves_ = false;
    for (Slot slot = 0; slot < present.size(); ++slot) {
      if (alignment.IsRemoved(slot)) edits_.Remove(offset_of(slot));
      if (alignment.IsMoved(slot)) edits_.RemoveWithComments(offset_of(slot));
    }
    std::optional<std::size_t> anchor;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      const Slot slot = alignment.OfNew(i);
      if (alignment.IsStill(slot)) {
        written_ = Change(edits_, 0, text_, slot, present[slot], wanted[i]) && written_;
        anchor = offset_of(slot);
      } else {
        const bool in_front = !anchor && !present.empty();
        const std::size_t neighbour = in_front ? offset_of(0) : anchor.value_or(fallback);
        const auto text =
            alignment.IsAdded(slot) ? TextOfAdded(wanted[i], LayoutAt(neighbour)) : Copied(text_, slot, present[slot], wanted[i]);
        Insert(text, in_front ? &TextEdits::InsertBefore : &TextEdits::InsertBehind, neighbour);
      }
    }
  }

  template <class Item>
  std::optional<std::string> TextOfAdded(const Item& wanted, const Layout& layout) {
    if (other_ == nullptr) return Written(wanted, layout);
    const std::size_t found = Find(*other_, wanted);
    const std::vector<Item>& items = ItemsOf(*other_, wanted);
    if (found != kNowhere && HaveSameShape(items[found], wanted)) {
      const SchemaText& text = *other_->source.text;
      const auto copied = Copied(MetaText{text.Bytes(), text.source_map, other_->position}, found, items[found], wanted);
      if (copied) return WithLineEnds(*copied, layout.line_end);
    }
    return Written(wanted, layout);
  }

  TextEdits& edits_;
  const MetaText& text_;
  const MetaModel& present_;
  OtherMeta* other_;
  bool written_ = true;
  bool tells_moves_ = true;
};

}  // namespace

std::optional<std::vector<Replacement>> Rewriter::Rewrite(const Model& target) {
  if (!source_.text || qmx_get_meta_num(source_.Library()) == 0) return std::nullopt;
  TextEdits edits(source_.text->Bytes());
  bool written = ChangeHead(edits, target);
  for (const MetaModel& meta : target.metas) written = written && RewriteMeta(edits, meta);
  return written ? std::optional(edits.Finish()) : std::nullopt;
}

std::optional<std::vector<Replacement>> Rewriter::RewritePart(const Model& target, const AppliedPart& part) {
  TextEdits edits(source_.text->Bytes());
  bool written = ChangeHead(edits, target);
  const MetaModel& wanted = target.metas.front();
  if (part.present != wanted) {
    MetaText text = *TextOf(source_, wanted.name);
    text.positions = &part.positions;
    MetaRewrite rewrite(edits, text, part.present, OtherOf(wanted.name));
    written = rewrite.Run(wanted) && written;
    if (!rewrite.tells_moves()) return std::nullopt;
  }
  for (const MetaModel& meta : std::span(target.metas).subspan(1)) written = written && RewriteMeta(edits, meta);
  return written ? edits.Finish() : std::vector<Replacement>();
}

bool Rewriter::ChangeHead(TextEdits& edits, const Model& target) const {
  const std::size_t outermost = *source_.text->source_map.Find({});
  return edits.ChangeAttributes(outermost, AttributesOf(present_.head()), AttributesOf(target));
}

OtherMeta* Rewriter::OtherOf(const std::string& meta) {
  const auto [found, is_new] = copied_from_.try_emplace(meta);
  const MetaModel* const model = is_new && other_.text ? others_.Find(meta) : nullptr;
  if (model != nullptr) {
    found->second.emplace(
        OtherMeta{other_, *PositionOf(other_, meta), *model, NameFinder(model->entries), NameFinder(model->indexes)});
  }
  return found->second ? &*found->second : nullptr;
}

bool Rewriter::RewriteMeta(TextEdits& edits, const MetaModel& wanted) {
  const MetaModel* const present = present_.Find(wanted.name);
  if (present == nullptr) return AddMeta(edits, wanted);
  if (*present == wanted) return true;
  const std::optional<MetaText> text = TextOf(source_, wanted.name);
  return MetaRewrite(edits, *text, *present, OtherOf(wanted.name)).Run(wanted);
}

const std::vector<std::optional<std::uint32_t>>& Rewriter::NextPresent() {
  const LPQMXMETALIB other = other_.Library();
  const auto count = static_cast<std::size_t>(qmx_get_meta_num(other));
  if (!next_present_.empty()) return next_present_;
  next_present_.resize(count);
  std::optional<std::uint32_t> next;
  for (std::size_t i = count; i > 0; --i) {
    const auto here = PositionOf(source_, qmx_get_meta_name(qmx_get_meta_by_index(other, static_cast<int>(i - 1))));
    if (here) next = here;
    next_present_[i - 1] = next;
  }
  return next_present_;
}

// Inserts the meta before the first one that follows it in the other source and exists in the file; else at the end.
bool Rewriter::AddMeta(TextEdits& edits, const MetaModel& wanted) {
  const std::optional<std::uint32_t> position = PositionOf(other_, wanted.name);
  const std::optional<std::uint32_t> next = position ? NextPresent()[*position] : std::nullopt;
  const auto last = static_cast<std::uint32_t>(qmx_get_meta_num(source_.Library()) - 1);
  const std::string_view text = source_.text->Bytes();
  const std::size_t neighbour = *source_.text->source_map.Find({Kind::kMeta, next.value_or(last)});
  const Layout layout{std::string(IndentOf(text, neighbour).value_or("")), LineEndAt(text, neighbour)};
  std::optional<std::string> added = ElementOf(wanted, layout);
  const MetaModel* const other_meta = others_.Find(wanted.name);
  if (other_meta != nullptr && *other_meta == wanted && other_.text) {
    added = WithLineEnds(WithComments(other_.text->Bytes(), *other_.text->source_map.Find({Kind::kMeta, *position})),
                         layout.line_end);
  }
  if (!added) return false;
  next ? edits.InsertBefore(neighbour, *added) : edits.InsertBehind(neighbour, *added);
  return true;
}

}  // namespace korvel
