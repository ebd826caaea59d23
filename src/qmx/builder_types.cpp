// Finds the metas of entries with composite types.
#include "base/did_you_mean.h"
#include "base/text.h"
#include "qmx/builder_state.h"

namespace qmx {
namespace {

using korvel::DidYouMean;
using korvel::Quote;

using Stage = BuildErrors::Stage;

std::vector<std::string_view> KnownTypes(const Library& library) {
  std::vector<std::string_view> words;
  for (const SimpleType& type : SimpleTypes()) words.push_back(type.name);
  for (std::uint32_t meta = 0; meta < library.metas.size(); ++meta) words.push_back(library.MetaName(meta));
  return words;
}

std::string Unknown(std::string_view type, const std::vector<std::string_view>& known) {
  return "unknown type " + Quote(type) + DidYouMean(type, known) +
         "; allowed: " + korvel::Join(SimpleTypes(), ", ", &SimpleType::name) + ", or a meta of this library";
}

void ReportRefersToComposites(Library& library) {
  for (const ReferToComposite& refer : library.refers_to_composites) {
    if (library.errors.IsFull()) return;
    const CompositeEntry& counter = library.composites[refer.composite];
    if (counter.type_meta == kNone) continue;  // already reported
    library.errors.AddRefer(
        {ElementId::Kind::kEntry, counter.meta, refer.entry}, library.EntryName(counter.meta, refer.entry),
        Quote(library.EntryName(counter.meta, counter.entry)) + " of type " + Quote(library.types.At(counter.type)));
  }
}

}  // namespace

void ResolveTypes(Library& library) {
  const auto name_at = [&](std::uint32_t meta) { return library.MetaName(meta); };
  std::vector<std::string_view> known;  // filled for the first unknown type
  for (CompositeEntry& composite : library.composites) {
    const std::string_view type = library.types.At(composite.type);
    if (const auto meta = library.meta_index.Find(type, name_at)) {
      composite.type_meta = *meta;
      tagQMXMetaEntry& entry = library.Entry(composite.meta, composite.entry);
      entry.iType = library.Meta(*meta).iType;
      entry.ptrTypeMeta = library.metas[*meta];
    } else if (!library.errors.IsFull()) {
      if (known.empty()) known = KnownTypes(library);
      library.errors.Add(Stage::kTypes, {ElementId::Kind::kEntry, composite.meta, composite.entry}, "type", Unknown(type, known));
    }
  }
  ReportRefersToComposites(library);
}

}  // namespace qmx
