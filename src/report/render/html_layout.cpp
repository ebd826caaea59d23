// Draws layouts as SVG. Offsets and sizes come from layout.cpp. Tested by tests/report/html_test.cpp and tests/browser.
#include "report/render/html_layout.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "base/characters.h"
#include "report/render/html_text.h"
#include "report/result/layout.h"
#include "report/result/words.h"

namespace korvel {
namespace {

// Sizes of the picture, in its own units.
constexpr double kWidth = 960;
constexpr double kMinWidth = 5;  // of a field
constexpr double kBar = 40;      // height of a record
constexpr double kOldTop = 22;   // below the caption
constexpr double kNewTop = 122;
constexpr double kHeight = 184;
constexpr double kCharacter = 6.7;  // of a label

constexpr std::size_t kManyFields = 40;  // of more fields, neighbors with the same change are drawn as one block
constexpr std::size_t kMaxBlocks = 150;
constexpr std::size_t kMaxRows = 200;      // of the table below
constexpr std::size_t kMaxDescribed = 20;  // changes in the description

// One side of a block.
struct Piece {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  double x = 0;
  double width = 0;
};

// A field, or several neighbors with the same change. The word of its change is also the CSS class and the name of the pattern.
struct Block {
  std::string name;
  std::size_t fields = 1;
  FieldChange change;
  std::string what;
  bool on_old;
  bool on_new;
  Piece before;
  Piece after;
};

Block BlockOf(const FieldPair& pair, bool tlv) {
  Block block{pair.Either().name,
              1,
              ChangeOf(pair, tlv),
              DescribeChange(pair, tlv),
              pair.before != nullptr,
              pair.after != nullptr,
              {},
              {}};
  if (block.on_old) block.before = {pair.before->offset, pair.before->size};
  if (block.on_new) block.after = {pair.after->offset, pair.after->size};
  return block;
}

// Whether `next` follows `block` on both sides and has the same change.
bool Joins(const Block& block, const Block& next) {
  if (block.change != next.change || block.change == FieldChange::kChanged) return false;
  const auto follows = [](const Piece& piece, const Piece& after) { return piece.offset + piece.size == after.offset; };
  return (!block.on_old || follows(block.before, next.before)) && (!block.on_new || follows(block.after, next.after));
}

std::vector<Block> BlocksOf(const std::vector<FieldPair>& pairs, bool tlv) {
  std::vector<Block> blocks;
  const bool join = std::ranges::count(pairs, std::size_t{1}, &FieldPair::level) > static_cast<std::ptrdiff_t>(kManyFields);
  for (const FieldPair& pair : pairs) {
    if (pair.level != 1) continue;
    Block block = BlockOf(pair, tlv);
    if (!join || blocks.empty() || !Joins(blocks.back(), block)) {
      blocks.push_back(std::move(block));
      continue;
    }
    Block& last = blocks.back();
    ++last.fields;
    last.before.size += block.before.size;
    last.after.size += block.after.size;
  }
  return blocks;
}

// --- Scale ---

double WidthOf(std::uint64_t size, double scale) { return std::max(kMinWidth, static_cast<double>(size) * scale); }

// The widest scale at which both records fit, by bisection.
double ScaleFor(const std::vector<Block>& blocks) {
  const auto widest = [&](double scale) {
    double before = 0;
    double after = 0;
    for (const Block& block : blocks) {
      if (block.on_old) before += WidthOf(block.before.size, scale);
      if (block.on_new) after += WidthOf(block.after.size, scale);
    }
    return std::max(before, after);
  };
  double low = 0;
  double high = kWidth;  // a record of one byte
  for (int i = 0; i < 100; ++i) {
    const double middle = (low + high) / 2;
    (widest(middle) <= kWidth ? low : high) = middle;
  }
  return low;
}

// Positions all blocks side by side in the order of their offsets. Returns how many are drawn wider than to scale.
std::size_t PlaceBlocks(std::vector<Block>& blocks, double scale) {
  std::size_t widened = 0;
  const auto place = [&](bool Block::*on, Piece Block::*piece) {
    std::vector<Block*> order;
    for (Block& block : blocks) {
      if (block.*on) order.push_back(&block);
    }
    std::ranges::stable_sort(order, {}, [&](const Block* block) { return (block->*piece).offset; });
    double x = 0;
    for (Block* const block : order) {
      Piece& at = block->*piece;
      at.x = x;
      at.width = WidthOf(at.size, scale);
      x += at.width;
      if (static_cast<double>(at.size) * scale < kMinWidth) ++widened;
    }
  };
  place(&Block::on_old, &Block::before);
  place(&Block::on_new, &Block::after);
  return widened;
}

// --- Drawing ---

// "12.5", independent of the locale.
std::string Number(double value) {
  const auto tenths = std::llround(value * 10);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

std::string LabelOf(const Block& block) { return block.fields == 1 ? block.name : Counted(block.fields, "field"); }

std::string Attribute(const char* name, double value) { return std::string(" ") + name + "=\"" + Number(value) + "\""; }

// A piece of a record, with its label if there is room.
std::string Rectangle(const Block& block, const Piece& piece, double top) {
  const FieldChangeWords words = WordsOf(block.change);
  const std::string label = LabelOf(block);
  std::string html = "<g class=\"" + std::string(words.word) + "\"><title>" + Html(label) + ": " + Counted(piece.size, "byte") +
                     " at " + std::to_string(piece.offset) + (block.what.empty() ? "" : ", " + Html(block.what)) + "</title>";
  const std::string box =
      Attribute("x", piece.x) + Attribute("y", top) + Attribute("width", piece.width) + Attribute("height", kBar);
  html += "<rect class=\"box\"" + box + "/><rect" + box + " fill=\"url(#hatch-" + words.word + ")\"/>";
  const double needed = static_cast<double>(CharacterCount(label) + 2) * kCharacter + 8;
  if (needed <= piece.width) {
    html += "<text" + Attribute("x", piece.x + piece.width / 2) + Attribute("y", top + kBar / 2 + 4) + ">" + words.sign + " " +
            Html(label) + "</text>";
  }
  return html + "</g>\n";
}

// Connects the old and the new position of a field.
std::string Bridge(const Block& block) {
  if (!block.on_old || !block.on_new) return "";
  const auto point = [](double x, double y) { return Number(x) + "," + Number(y); };
  const double top = kOldTop + kBar;
  return "<polygon class=\"bridge " + std::string(WordsOf(block.change).word) + "\" points=\"" + point(block.before.x, top) +
         " " + point(block.before.x + block.before.width, top) + " " + point(block.after.x + block.after.width, kNewTop) + " " +
         point(block.after.x, kNewTop) + "\"/>\n";
}

std::string Caption(double y, const std::string& text) {
  return "<text class=\"caption\" x=\"0\"" + Attribute("y", y) + ">" + text + "</text>\n";
}

// The picture in words, for screen readers.
std::string Description(const std::vector<Block>& blocks) {
  std::string text;
  std::size_t listed = 0;
  for (const Block& block : blocks) {
    if (block.change == FieldChange::kSame) continue;
    if (++listed > kMaxDescribed) continue;
    text += LabelOf(block) + ": " + block.what + ". ";
  }
  if (listed > kMaxDescribed) text += "And " + std::to_string(listed - kMaxDescribed) + " more. ";
  return text.empty() ? "No field changed its offset or size." : text;
}

std::string Picture(const TableLayout& before, const TableLayout& after, std::vector<Block> blocks, const std::string& id) {
  const std::size_t widened = PlaceBlocks(blocks, ScaleFor(blocks));
  std::string html =
      "<div class=\"scroll\" role=\"region\" aria-label=\"picture of the record\" tabindex=\"0\">\n<svg class=\"layout\" "
      "viewBox=\"0 0 " +
      Number(kWidth) + " " + Number(kHeight) + "\" role=\"img\" aria-labelledby=\"" + id + "t " + id + "d\">\n<title id=\"" + id +
      "t\">The record of " + Html(before.table) + ", old and new</title>\n<desc id=\"" + id + "d\">" + Html(Description(blocks)) +
      "</desc>\n";
  for (const Block& block : blocks) html += Bridge(block);
  html += Caption(kOldTop - 7, "old record: " + Counted(before.size, "byte"));
  html += Caption(kNewTop + kBar + 17, "new record: " + Counted(after.size, "byte"));
  for (const Block& block : blocks) {
    if (block.on_old) html += Rectangle(block, block.before, kOldTop);
    if (block.on_new) html += Rectangle(block, block.after, kNewTop);
  }
  html += "</svg>\n</div>\n";
  html += "<p class=\"note\">Drawn to scale";
  if (widened > 0) html += "; " + Counted(widened, "piece") + " drawn wider to be visible";
  html += ".</p>\n";
  return html;
}

// --- Table ---

std::string Cell(const FieldLayout* field, bool tlv) {
  if (field == nullptr) return "<td></td><td></td>";
  const std::string offset = tlv ? "\u2013" : (field->in_element ? "+" : "") + std::to_string(field->offset);
  return "<td class=\"n\">" + offset + "</td><td class=\"n\">" + std::to_string(field->size) + "</td>";
}

std::string Rows(const std::vector<FieldPair>& pairs, bool tlv) {
  std::string rows;
  std::size_t number = 0;
  for (const FieldPair& pair : pairs) {
    const FieldChange change = ChangeOf(pair, tlv);
    if (change == FieldChange::kSame || ++number > kMaxRows) continue;
    const FieldChangeWords words = WordsOf(change);
    rows += "<tr><td>" + std::string(words.sign) + "</td><td>" + Code(pair.Either().path) + "</td>" + Cell(pair.before, tlv) +
            Cell(pair.after, tlv) + "<td>" + Html(DescribeChange(pair, tlv)) + "</td></tr>\n";
  }
  const std::size_t left_out = number > kMaxRows ? number - kMaxRows : 0;
  if (left_out > 0)
    rows += "<tr><td colspan=\"7\">and " + std::to_string(left_out) + " more: run korvelcheck layout to list all</td></tr>\n";
  return rows;
}

std::string Table(const std::vector<FieldPair>& pairs, bool tlv) {
  return "<details><summary>Fields that moved or changed, in bytes</summary>\n<div class=\"scroll\" role=\"region\" "
         "aria-label=\"fields that moved or changed\" tabindex=\"0\">\n<table class=\"fields\">\n<thead><tr><th></th>"
         "<th scope=\"col\">field</th><th scope=\"col\">old offset</th><th scope=\"col\">size</th><th scope=\"col\">new "
         "offset</th>"
         "<th scope=\"col\">size</th><th scope=\"col\">change</th></tr></thead>\n<tbody>\n" +
         Rows(pairs, tlv) + "</tbody></table></div></details>\n";
}

}  // namespace

std::string LayoutPatterns() {
  const auto pattern = [](const char* name, const char* path) {
    return "<pattern id=\"hatch-" + std::string(name) + "\" class=\"" + name +
           "\" width=\"12\" height=\"12\" patternUnits=\"userSpaceOnUse\"><path d=\"" + path + "\"/></pattern>";
  };
  return "<svg class=\"patterns\" width=\"0\" height=\"0\" aria-hidden=\"true\" focusable=\"false\"><defs>" +
         pattern("same", "M0,0") + pattern("moved", "M6,0V12") + pattern("changed", "M0,6H12M6,0V12") +
         pattern("added", "M-2,2L2,-2M0,12L12,0M10,14L14,10") + pattern("removed", "M-2,10L2,14M0,0L12,12M10,-2L14,2") +
         "</defs></svg>\n";
}

std::string LayoutLegend() {
  std::string html = "<p class=\"legend\">Record layouts: ";
  for (const FieldChange change :
       {FieldChange::kSame, FieldChange::kMoved, FieldChange::kChanged, FieldChange::kAdded, FieldChange::kRemoved}) {
    const FieldChangeWords words = WordsOf(change);
    html += "<span><svg class=\"swatch\" width=\"28\" height=\"16\" aria-hidden=\"true\" focusable=\"false\"><g class=\"" +
            std::string(words.word) +
            "\"><rect class=\"box\" width=\"28\" height=\"16\"/><rect width=\"28\" height=\"16\" fill=\"url(#hatch-" +
            words.word + ")\"/></g></svg> " + Html(words.sign) + " " + words.word + "</span> ";
  }
  return html + "</p>\n";
}

std::string LayoutSection(const TableResult& table, const std::string& id) {
  const TableLayout before = LayoutOf(*table.first, table.table);
  const TableLayout after = LayoutOf(*table.second, table.table);
  const bool tlv = before.tlv && after.tlv;
  const std::vector<FieldPair> pairs = PairFields(before, after);
  const bool changed =
      std::ranges::any_of(pairs, [&](const FieldPair& pair) { return ChangeOf(pair, tlv) != FieldChange::kSame; });
  std::string html = "<h3>Layout of the record</h3>\n";
  if (!changed)
    return html + "<p>Unchanged: " + Counted(after.size, "byte") + " in " + Counted(after.own_fields, "field") + ".</p>\n";
  if (tlv) html += "<p class=\"note\">TLV records: sizes are those of the packed form; fields have no fixed offset.</p>\n";
  std::vector<Block> blocks = BlocksOf(pairs, tlv);
  if (before.is_union || after.is_union) {
    html += "<p class=\"note\">No picture of a union: all fields start at offset 0.</p>\n";
  } else if (blocks.size() > kMaxBlocks) {
    html += "<p class=\"note\">No picture: more than " + std::to_string(kMaxBlocks) + " blocks.</p>\n";
  } else {
    html += Picture(before, after, std::move(blocks), id);
  }
  return html + Table(pairs, tlv);
}

}  // namespace korvel
