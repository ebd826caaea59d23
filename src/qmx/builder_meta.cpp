// Closes a meta: finds the entries that its counts, keys and indexes name, and appends keys, indexes and texts to the block. The
// order of the parts of a meta: the meta, its entries, members of the primary key and of the splittable key, indexes, columns,
// texts. Every part starts at a multiple of 8 bytes.
#include <algorithm>
#include <span>

#include "base/did_you_mean.h"
#include "base/text.h"
#include "qmx/builder_state.h"

namespace qmx {
namespace {

using korvel::DidYouMean;
using korvel::Quote;

using Kind = ElementId::Kind;
using Stage = BuildErrors::Stage;

constexpr std::size_t kLikelyWords = 1000;  // as many as a suggestion considers

class MetaCloser {
 public:
  explicit MetaCloser(Library& library) : library_(library), open_(library.open), position_(Position(library.metas.size() - 1)) {}

  void Run() {
    for (const OpenMeta::Refer& refer : open_.refers) ResolveRefer(refer);
    AppendKeys();
    AppendIndexes();
    AppendTexts();
    if (library_.composites.size() == open_.first_composite) SizeMeta(library_, position_);
  }

 private:
  tagQMXMeta& Meta() { return library_.Meta(position_); }
  tagQMXMetaEntry& Entry(std::uint32_t entry) { return library_.Entry(position_, entry); }
  std::string_view EntryName(std::uint32_t entry) { return open_.texts.At(Entry(entry).ptrName); }

  std::optional<std::uint32_t> Find(std::string_view name) {
    return open_.entry_names.Find(name, [this](std::uint32_t entry) { return EntryName(entry); });
  }

  std::string NoEntry(std::string_view name) {
    std::vector<std::string_view> words;
    const std::uint32_t count = library_.EntryNum(position_);
    for (std::uint32_t entry = 0; entry < count && entry < kLikelyWords; ++entry) words.push_back(EntryName(entry));
    return Quote(name) + ", which is not an entry of meta " + Quote(library_.MetaName(position_)) + DidYouMean(name, words);
  }

  // Why entry `counted` cannot be counted by the entry with that name, `found`; empty if it can.
  std::string WhyNoCount(std::string_view name, std::optional<std::uint32_t> found, std::uint32_t counted) {
    if (!found) return NoEntry(name);
    if (*found == counted) return Quote(name) + ", the entry itself";
    if (*found > counted) return Quote(name) + ", which is declared after it";
    const tagQMXMetaEntry& counter = Entry(*found);
    if (!IsIntegerType(counter.iType)) return Quote(name) + " of type " + Quote(FindSimpleType(counter.iType)->name);
    if (counter.iCount != 1) return Quote(name) + " with count " + std::to_string(counter.iCount);
    return "";
  }

  // REQUIRES: the entry is composite. Composite entries are stored in the order of the entries.
  std::size_t CompositeOf(std::uint32_t entry) const {
    const auto first = library_.composites.begin() + static_cast<std::ptrdiff_t>(open_.first_composite);
    const auto found = std::ranges::lower_bound(first, library_.composites.end(), entry, {}, &CompositeEntry::entry);
    return static_cast<std::size_t>(found - library_.composites.begin());
  }

  void ResolveRefer(const OpenMeta::Refer& refer) {
    if (library_.errors.IsFull()) return;
    const std::string_view name = open_.words.At(refer.name);
    const std::optional<std::uint32_t> found = Find(name);
    if (found && *found < refer.entry && Entry(*found).iType == QMX_TYPE_NONE) {
      library_.refers_to_composites.push_back({CompositeOf(*found), refer.entry});
      return;
    }
    const std::string why = WhyNoCount(name, found, refer.entry);
    if (why.empty()) {
      Entry(refer.entry).ptrRefer = Entry(*found).ptrEntry;
    } else {
      library_.errors.AddRefer({Kind::kEntry, position_, refer.entry}, EntryName(refer.entry), why);
    }
  }

  // Null if no entry has that name.
  tagQMXMetaEntry* Resolve(Texts::Place word) {
    const auto found = Find(open_.words.At(word));
    return found ? &Entry(*found) : nullptr;
  }

  void ReportNoEntry(const ElementId& where, std::string_view attribute, const std::string& what, Texts::Place word) {
    if (library_.errors.IsFull()) return;
    library_.errors.Add(Stage::kNames, where, attribute,
                        what + " names " + NoEntry(open_.words.At(word)) + "; allowed: entries of the same meta");
  }

  // The list of a key's members; their offsets in a record are set with the sizes.
  std::int64_t AppendKey(const std::vector<Texts::Place>& key, Kind kind, const char* what, std::uint8_t flag) {
    const std::int64_t list = library_.block.Append<tagQMXDBKeyInfo>(key.size());
    for (std::size_t i = 0; i < key.size(); ++i) {
      if (tagQMXMetaEntry* const entry = Resolve(key[i])) {
        entry->chDBFlag = static_cast<std::uint8_t>(entry->chDBFlag | flag);
        library_.block.At<tagQMXDBKeyInfo>(list, i).ptrEntry = entry->ptrEntry;
      } else {
        library_.block.At<tagQMXDBKeyInfo>(list, i).ptrEntry = QMX_NO_REF;
        ReportNoEntry({kind, position_}, "entries", what, key[i]);
      }
    }
    return list;
  }

  void AppendKeys() {
    const std::size_t members = open_.primary_key.size();
    if (members > kMaxPrimaryKeyMembers) {
      library_.errors.Add(Stage::kKeys, {Kind::kPrimaryKey, position_}, "entries",
                          "the primary key has " + std::to_string(members) + " members; allowed: at most " +
                              std::to_string(kMaxPrimaryKeyMembers));
    }
    const std::int64_t primary = AppendKey(open_.primary_key, Kind::kPrimaryKey, "the primary key", QMX_DBFLAG_PRIMARY_KEY);
    const std::int64_t splittable = AppendKey(open_.splittable_key, Kind::kSplittableKey, "the splittable key", 0);
    tagQMXMeta& meta = Meta();
    meta.ptrEntries = meta.iEntriesNum == 0 ? QMX_NO_REF : std::int64_t{sizeof(tagQMXMeta)};
    meta.ptrPrimayKeyBase = FromMeta(primary);
    meta.ptrSplitTableKeyBase = FromMeta(splittable);
    meta.nPrimayKeyMemberNum = static_cast<std::int16_t>(std::min(members, kMaxPrimaryKeyMembers));
    meta.iSplitTableKeyMemberNum = static_cast<std::int32_t>(open_.splittable_key.size());
    meta.stSplitTableKey.ptrEntry = QMX_NO_REF;
    meta.stSortKey.ptrSortKeyBase = QMX_NO_REF;
  }

  void AppendIndexes() {
    const std::int64_t list = library_.block.Append<tagQMXMetaIndex>(open_.indexes.size());
    const std::int64_t columns = library_.block.Append<tagQMXColumnInfo>(open_.columns.size());
    Meta().ptrIndexes = FromMeta(list);
    Meta().iIndexesNum = static_cast<std::int32_t>(open_.indexes.size());
    for (std::uint32_t i = 0; i < open_.indexes.size(); ++i) {
      const std::size_t first = open_.indexes[i].first_column;
      const std::size_t end = i + 1 < open_.indexes.size() ? open_.indexes[i + 1].first_column : open_.columns.size();
      auto& index = library_.block.At<tagQMXMetaIndex>(list, i);
      index.ptrName = open_.indexes[i].name;
      index.iColumnNum = static_cast<std::int32_t>(end - first);
      index.ptrColumnBase =
          first == end ? QMX_NO_REF : FromMeta(columns) + static_cast<std::int64_t>(first * sizeof(tagQMXColumnInfo));
      for (std::size_t c = first; c < end; ++c) {
        FillColumn(library_.block.At<tagQMXColumnInfo>(columns, c), i, Position(c - first), open_.columns[c]);
      }
    }
  }

  void FillColumn(tagQMXColumnInfo& column, std::uint32_t index, std::uint32_t position, const OpenMeta::Column& decl) {
    column.iIsDesc = decl.descending ? 1 : 0;
    if (const tagQMXMetaEntry* const entry = Resolve(decl.entry)) {
      column.ptrEntry = entry->ptrEntry;
    } else {
      ReportNoEntry({Kind::kColumn, position_, index, position}, "entry",
                    "index " + Quote(open_.texts.At(open_.indexes[index].name)), decl.entry);
    }
  }

  void AppendTexts() {
    const std::int64_t texts = library_.block.AppendBytes(open_.texts.bytes());
    const auto move = [texts](std::int64_t& text) {
      if (text != QMX_NO_REF) text += texts;
    };
    tagQMXMeta& meta = Meta();
    move(meta.ptrName);
    move(meta.ptrCustomAttr);
    auto* const entries = &library_.block.At<tagQMXMetaEntry>(meta.ptrMeta + std::int64_t{sizeof(tagQMXMeta)});
    for (tagQMXMetaEntry& entry : std::span(entries, library_.EntryNum(position_))) {
      move(entry.ptrName);
      move(entry.ptrCustomAttr2);
    }
    for (std::size_t i = 0; i < open_.indexes.size(); ++i) {
      move(library_.block.At<tagQMXMetaIndex>(meta.ptrMeta + meta.ptrIndexes, i).ptrName);
    }
  }

  std::int64_t FromMeta(std::int64_t offset) { return offset == QMX_NO_REF ? QMX_NO_REF : offset - library_.metas[position_]; }

  Library& library_;
  OpenMeta& open_;
  std::uint32_t position_;
};

}  // namespace

void CloseMeta(Library& library) {
  OpenMeta& open = library.open;
  if (!open.is_open) return;
  MetaCloser(library).Run();
  open.is_open = false;
  open.texts.Clear();
  open.words.Clear();
  open.entry_names.Clear();
  if (!open.indexes.empty()) open.index_names.Clear();
  open.refers.clear();
  open.primary_key.clear();
  open.splittable_key.clear();
  open.indexes.clear();
  open.columns.clear();
}

}  // namespace qmx
