// The cases as tables, and which of them a quick run skips.
#include "process/cases.h"

namespace bench {
namespace {

struct ShapeRow {
  const char* name;
  Shape shape;
  enum Extent { kOnlyInFull, kPlain, kEveryKind } extent;  // what a quick run measures of it
};

constexpr ShapeRow kShapes[] = {
    {"1 x 20", {1, 20, 0}, ShapeRow::kPlain},
    {"100 x 100", {100, 100, 0}, ShapeRow::kPlain},
    {"1000 x 100", {1000, 100, 0}, ShapeRow::kEveryKind},
    {"10000 x 100", {10000, 100, 0}, ShapeRow::kOnlyInFull},
    {"1 x 1000", {1, 1000, 0}, ShapeRow::kOnlyInFull},
    {"1 x 10000", {1, 10000, 0}, ShapeRow::kPlain},
    {"1 x 100000", {1, 100000, 0}, ShapeRow::kPlain},
    {"1 x 1000000", {1, 1000000, 0}, ShapeRow::kOnlyInFull},
    {"20 levels", {1, 2, 20}, ShapeRow::kPlain},
    {"28 levels", {1, 2, 28}, ShapeRow::kPlain},
    {"60 levels", {1, 2, 60}, ShapeRow::kPlain},
};

struct KindRow {
  const char* name;
  Kind kind;
};

constexpr KindRow kKinds[] = {{"identical", Kind::kIdentical},
                              {"one added", Kind::kOneAdded},
                              {"one refused", Kind::kOneRefused},
                              {"a tenth refused", Kind::kTenthRefused}};

bool IsMeasured(const ShapeRow& row, Kind kind, qmx::Protocol protocol, bool all) {
  // Each change is reported: how many may a table have?
  if (kind == Kind::kTenthRefused) return row.shape.metas == 1 && row.shape.fields >= 1000 && row.shape.fields <= 10000;
  const bool plain = kind == Kind::kIdentical && protocol == qmx::Protocol::kQmx;
  if (row.shape.levels > 0 && kind != Kind::kIdentical) return false;
  return all || row.extent == ShapeRow::kEveryKind || (row.extent == ShapeRow::kPlain && plain);
}

const char* NameOf(Kind kind) {
  for (const KindRow& row : kKinds) {
    if (row.kind == kind) return row.name;
  }
  return "";
}

}  // namespace

std::string NameOf(const Case& measured) {
  return measured.shape_name + ", " + NameOf(measured.kind) + ", " + (measured.protocol == qmx::Protocol::kTlv ? "TLV" : "QMX") +
         ", " + (measured.form == Form::kXml ? "XML" : "image");
}

std::vector<Case> Cases(bool all) {
  std::vector<Case> cases;
  for (const ShapeRow& row : kShapes) {
    for (const KindRow& kind : kKinds) {
      for (const qmx::Protocol protocol : {qmx::Protocol::kQmx, qmx::Protocol::kTlv}) {
        if (!IsMeasured(row, kind.kind, protocol, all)) continue;
        for (const Form form : {Form::kXml, Form::kImage}) cases.push_back({row.name, row.shape, kind.kind, protocol, form});
      }
    }
  }
  return cases;
}

}  // namespace bench
