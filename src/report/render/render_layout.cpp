// The output of `layout` as text and JSON; docs/command-line.md describes both. Tested by tests/tool/layout_test.cpp.
#include <algorithm>

#include "base/characters.h"
#include "base/text.h"
#include "report/render/json_stream.h"
#include "report/render/json_values.h"
#include "report/render/render.h"
#include "report/result/layout.h"
#include "report/result/words.h"

namespace korvel {
namespace {

using Row = std::vector<std::string>;

// The part of a whole in tenths of a percent, rounded to the nearest.
std::uint64_t PerMille(std::uint64_t part, std::uint64_t whole) {
  if (whole == 0) return 0;
  return static_cast<std::uint64_t>(static_cast<long double>(part) * 1000 / static_cast<long double>(whole) + 0.5L);
}

// --- Text ---

std::string Offset(const FieldLayout& field) { return (field.in_element ? "+" : "") + std::to_string(field.offset); }

std::string Bar(std::uint64_t per_mille) {
  const auto length = static_cast<std::size_t>((per_mille + 50) / 100);
  return "|" + std::string(length, '#') + std::string(10 - std::min<std::size_t>(length, 10), ' ') + "|";
}

std::string Count(const FieldLayout& field) {
  return std::to_string(field.count) + (field.refer.empty() ? "" : " by " + OneLine(field.refer));
}

std::string Notes(const FieldLayout& field) {
  std::string notes;
  const auto add = [&](const std::string& note) { AppendPart(notes, ", ", note); };
  if (field.key) add("key");
  if (field.splittable) add("splittable key");
  if (!field.sort.empty()) add(OneLine(field.sort));
  if (field.version != 1) add("version " + std::to_string(field.version));
  if (field.closed) add("fields not listed");
  return notes;
}

Row SingleRow(const FieldLayout& field, const TableLayout& layout) {
  const std::uint64_t share = PerMille(field.in_record, layout.size);
  return {layout.tlv ? "-" : Offset(field),
          std::to_string(field.size),
          Percent(field.in_record, layout.size) + "%",
          Bar(share),
          OneLine(field.path),
          OneLine(field.type),
          std::to_string(field.unit_size),
          Count(field),
          field.id == -1 ? "-" : std::to_string(field.id),
          Notes(field)};
}

std::string SingleTable(const TableLayout& layout) {
  std::vector<Row> rows = {{"offset", "size", "share", "", "field", "type", "element", "count", "id", ""}};
  for (const FieldLayout& field : layout.fields) rows.push_back(SingleRow(field, layout));
  constexpr Align kL = Align::kLeft;
  constexpr Align kR = Align::kRight;
  return InColumns({kR, kR, kR, kL, kL, kL, kR, kL, kR, kL}, rows);
}

Row PairRow(const FieldPair& pair, bool tlv) {
  const auto offset = [tlv](const FieldLayout* field) { return field == nullptr ? "" : tlv ? "-" : Offset(*field); };
  const auto size = [](const FieldLayout* field) { return field == nullptr ? "" : std::to_string(field->size); };
  return {WordsOf(ChangeOf(pair, tlv)).sign,
          offset(pair.before),
          size(pair.before),
          offset(pair.after),
          size(pair.after),
          OneLine(pair.Either().path),
          OneLine(pair.Either().type),
          OneLine(DescribeChange(pair, tlv))};
}

std::string PairTable(const TableLayout& before, const TableLayout& after) {
  const bool tlv = before.tlv && after.tlv;
  std::vector<Row> rows = {{"", "offset", "size", "offset", "size", "field", "type", "change"}};
  for (const FieldPair& pair : PairFields(before, after)) rows.push_back(PairRow(pair, tlv));
  constexpr Align kL = Align::kLeft;
  constexpr Align kR = Align::kRight;
  return InColumns({kL, kR, kR, kR, kR, kL, kL, kL}, rows);
}

bool HasElements(const TableLayout& layout) {
  return std::ranges::any_of(layout.fields, [](const FieldLayout& field) { return field.in_element; });
}

std::string Notes(const TableLayout& layout, const std::string& side) {
  std::string notes;
  if (layout.is_union) notes += side + "union: all fields start at offset 0\n";
  if (layout.tlv) {
    notes += side + "TLV records: sizes are those of the packed form; fields have no fixed offset\n";
  } else if (HasElements(layout)) {
    notes += side + "offsets with + are relative to the start of an element of the repeated structure\n";
  }
  if (layout.closed > 0) {
    notes += side + "fields of " + Counted(layout.closed, "structure") +
             " not listed (limit: " + std::to_string(kMaxInnerFields) + " fields inside structures)\n";
  }
  return notes;
}

std::string Notes(const TableLayout& before, const TableLayout& after) {
  const std::string of_old = Notes(before, "old: ");
  const std::string of_new = Notes(after, "new: ");
  const std::string of_both = Notes(after, "");
  return of_both == Notes(before, "") ? of_both : of_old + of_new;
}

std::string Bytes(std::uint64_t size) { return std::to_string(size) + (size == 1 ? " byte" : " bytes"); }

std::string Change(std::uint64_t before, std::uint64_t after) {
  if (before == after) return "unchanged";
  return after > before ? "+" + std::to_string(after - before) : "-" + std::to_string(before - after);
}

std::string PairHead(const TableLayout& before, const TableLayout& after) {
  if (!before.found) return "new, " + Bytes(after.size);
  if (!after.found) return "removed, was " + Bytes(before.size);
  return std::to_string(before.size) + " -> " + Bytes(after.size) + " (" + Change(before.size, after.size) + ")";
}

std::string TextBlock(const LayoutRequest& request, const std::string& table) {
  const std::string head = "table " + OneLine(table) + ": ";
  const TableLayout after = LayoutOf(*request.after, table);
  if (request.before == nullptr) {
    return head + Bytes(after.size) + " per packed record, " + Counted(after.own_fields, "field") + "\n" + SingleTable(after) +
           Notes(after, "");
  }
  const TableLayout before = LayoutOf(*request.before, table);
  return head + PairHead(before, after) + " per packed record; = same, > moved, ~ changed, + added, - removed\n" +
         PairTable(before, after) + Notes(before, after);
}

// --- JSON ---

Json ToJson(const FieldLayout& field, const TableLayout& layout) {
  Json json = {{"path", field.path},
               {"type", field.type},
               {"id", field.id == -1 ? Json() : Json(field.id)},
               {"version", field.version},
               {"count", field.count},
               {"refer", field.refer.empty() ? Json() : Json(field.refer)},
               {"unit_size", field.unit_size},
               {"size", field.size},
               {"offset", layout.tlv ? Json() : Json(field.offset)},
               {"offset_from", layout.tlv ? Json() : Json(field.in_element ? "element" : "record")},
               {"in_record", field.in_record},
               {"percent", Json::number(Percent(field.in_record, layout.size))},
               {"key", field.key},
               {"splittable", field.splittable},
               {"sort", field.sort.empty() ? Json() : Json(field.sort)},
               {"fields_listed", !field.closed}};
  return json;
}

Json Head(const TableLayout& layout) {
  if (!layout.found) return {};
  return {{"protocol", layout.tlv ? "tlv" : "qmx"},
          {"size", layout.size},
          {"own_fields", layout.own_fields},
          {"union", layout.is_union},
          {"unlisted_structures", layout.closed}};
}

Json SingleJson(const TableLayout& layout) {
  Json json = {{"table", layout.table}};
  json.update(Head(layout));
  Json& fields = json["fields"] = Json::array();
  for (const FieldLayout& field : layout.fields) fields.push_back(ToJson(field, layout));
  return json;
}

Json PairJson(const TableLayout& before, const TableLayout& after) {
  const bool tlv = before.tlv && after.tlv;
  Json json = {{"table", after.table}, {"old", Head(before)}, {"new", Head(after)}};
  Json& fields = json["fields"] = Json::array();
  for (const FieldPair& pair : PairFields(before, after)) {
    fields.push_back({{"change", WordsOf(ChangeOf(pair, tlv)).word},
                      {"text", DescribeChange(pair, tlv)},
                      {"old", pair.before == nullptr ? Json() : ToJson(*pair.before, before)},
                      {"new", pair.after == nullptr ? Json() : ToJson(*pair.after, after)}});
  }
  return json;
}

// All members but the header.
Json FileJson(const LayoutRequest& request) {
  Json json;
  Json& inputs = json["inputs"] = Json::array();
  if (request.before != nullptr) inputs.push_back({{"role", "old"}, {"file", request.before->name}});
  inputs.push_back({{"role", request.before == nullptr ? "file" : "new"}, {"file", request.after->name}});
  Json& tables = json["tables"] = Json::array();
  for (const std::string& table : request.tables) {
    const TableLayout after = LayoutOf(*request.after, table);
    tables.push_back(request.before == nullptr ? SingleJson(after) : PairJson(LayoutOf(*request.before, table), after));
  }
  return json;
}

}  // namespace

std::string Percent(std::uint64_t part, std::uint64_t whole) {
  const std::uint64_t share = PerMille(part, whole);
  return std::to_string(share / 10) + "." + std::to_string(share % 10);
}

std::string RenderLayoutText(const LayoutRequest& request) {
  return Join(request.tables, "\n", [&](const std::string& table) { return TextBlock(request, table); });
}

std::string RenderLayoutJson(const LayoutRequest& request) {
  Json json = HeaderToJson(kJsonVersion, "layout");
  json.update(FileJson(request));
  return JsonText(json) + "\n";
}

std::string RenderLayoutsText(const std::vector<LayoutRequest>& requests) {
  return Join(requests, "\n", [](const LayoutRequest& request) {
    const bool is_pair = request.before != nullptr && request.before->name != request.after->name;
    const std::string before = is_pair ? OneLine(PathText(request.before->name)) + " -> " : "";
    const std::string name = before + OneLine(PathText(request.after->name));
    return name + (request.tables.empty() ? ": no table\n" : ":\n" + RenderLayoutText(request));
  });
}

std::string RenderLayoutsJson(const std::vector<LayoutRequest>& requests) {
  Json json = HeaderToJson(kJsonVersion, "layout");
  Json& layouts = json["layouts"] = Json::array();
  for (const LayoutRequest& request : requests) layouts.push_back(FileJson(request));
  return JsonText(json) + "\n";
}

}  // namespace korvel
