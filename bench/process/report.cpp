// Tables of figures. Figures that were not measured are left out, and so are their aims.
#include "process/report.h"

#include <unistd.h>

#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>

#include "library/measure.h"

namespace bench {
namespace {

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, value < 1 ? "%.3f" : value < 100 ? "%.2f" : "%.0f", value);
  return text;
}

std::string Line(const std::vector<std::string>& cells) {
  std::string line = "|";
  for (const std::string& cell : cells) line += " " + cell + " |";
  return line + "\n";
}

std::string Head(const std::vector<std::string>& cells) {
  return Line(cells) + Line(std::vector<std::string>(cells.size(), "---"));
}

std::string CaseTable(const std::vector<Result>& results) {
  std::string text = Head({"case", "files MB", "wall ms", "cpu ms", "peak MB", "reading: wall ms", "cpu ms", "nothing: shared ms",
                           "static ms", "wall / reading", "cpu / reading", "wall / nothing shared", "rounds"});
  for (const Result& result : results) {
    text += Line({NameOf(result.measured), Number(result.files_mb), Number(result.tool.wall_ms), Number(result.tool.cpu_ms),
                  Number(result.tool.peak_mb), Number(result.read.wall_ms), Number(result.read.cpu_ms),
                  Number(result.nothing_shared.wall_ms), Number(result.nothing_static.wall_ms),
                  Number(result.tool.wall_ms / result.read.wall_ms), Number(result.tool.cpu_ms / result.read.cpu_ms),
                  Number(result.tool.wall_ms / result.nothing_shared.wall_ms), std::to_string(result.rounds)});
  }
  return text;
}

// The family of a case for fitting growth; empty for cases that are too small, where starting the process takes most of the time.
std::string Family(const Case& measured) {
  constexpr int kMinFields = 10000;
  if (measured.shape.levels > 0 || measured.shape.metas * measured.shape.fields < kMinFields) return "";
  const std::string name = NameOf(measured);
  return (measured.shape.metas == 1 ? "fields" : "metas") + name.substr(name.find(','));
}

// Exponents of processor time by family.
std::map<std::string, double> Exponents(const std::vector<Result>& results) {
  Growth growth;
  std::map<std::string, int> members;
  for (const Result& result : results) {
    const std::string family = Family(result.measured);
    if (family.empty()) continue;
    growth.Record(family, result.measured.shape.metas * result.measured.shape.fields, result.tool.cpu_ms);
    ++members[family];
  }
  std::map<std::string, double> exponents;
  for (const auto& [family, number] : members) {
    if (number > 1) exponents[family] = growth.Exponent(family);
  }
  return exponents;
}

std::string ExponentTable(const std::map<std::string, double>& exponents) {
  std::string text = Head({"growth of processor time in", "exponent"});
  for (const auto& [family, exponent] : exponents) text += Line({family, Number(exponent)});
  return text;
}

// An aim for one shape, unchanged, in the record format.
struct Aim {
  const char* shape;
  Form form;
  const char* what;
  double (*figure)(const Result&);
  double limit;
};

constexpr Aim kAims[] = {
    {"1 x 20", Form::kXml, "wall / nothing shared", [](const Result& r) { return r.tool.wall_ms / r.nothing_shared.wall_ms; },
     1.3},
    {"1000 x 100", Form::kXml, "cpu / reading", [](const Result& r) { return r.tool.cpu_ms / r.read.cpu_ms; }, 1.3},
    {"1000 x 100", Form::kXml, "wall / reading", [](const Result& r) { return r.tool.wall_ms / r.read.wall_ms; }, 0.8},
    {"1000 x 100", Form::kXml, "peak MB", [](const Result& r) { return r.tool.peak_mb; }, 64},
    {"1000 x 100", Form::kImage, "wall ms", [](const Result& r) { return r.tool.wall_ms; }, 5},
    {"1000 x 100", Form::kImage, "peak MB above the files", [](const Result& r) { return r.tool.peak_mb - r.files_mb; }, 5},
    {"60 levels", Form::kXml, "wall / nothing shared", [](const Result& r) { return r.tool.wall_ms / r.nothing_shared.wall_ms; },
     1.3},
};
constexpr double kMaxExponent = 1.1;

const Result* Find(const std::vector<Result>& results, const Aim& aim) {
  for (const Result& result : results) {
    const Case& measured = result.measured;
    if (measured.shape_name == aim.shape && measured.form == aim.form && measured.kind == Kind::kIdentical &&
        measured.protocol == qmx::Protocol::kQmx) {
      return &result;
    }
  }
  return nullptr;
}

std::string AimLine(const std::string& what, double reached, double limit) {
  return Line({what, Number(reached), Number(limit), reached <= limit ? "yes" : "no"});
}

std::string AimTable(const std::vector<Result>& results, const std::map<std::string, double>& exponents) {
  std::string text = Head({"aim", "reached", "at most", "met"});
  for (const Aim& aim : kAims) {
    const Result* const result = Find(results, aim);
    if (result != nullptr) text += AimLine(NameOf(result->measured) + ": " + aim.what, aim.figure(*result), aim.limit);
  }
  for (const auto& [family, exponent] : exponents) text += AimLine("exponent: " + family, exponent, kMaxExponent);
  return text;
}

nlohmann::ordered_json JsonOf(const Cost& cost) {
  return {{"wall_ms", cost.wall_ms}, {"cpu_ms", cost.cpu_ms}, {"peak_mb", cost.peak_mb}};
}

}  // namespace

std::string Markdown(const std::vector<Result>& results) {
  const std::map<std::string, double> exponents = Exponents(results);
  const std::string growth = exponents.empty() ? "" : ExponentTable(exponents) + "\n";
  return CaseTable(results) + "\n" + growth + AimTable(results, exponents);
}

std::string Json(const std::vector<Result>& results) {
  nlohmann::ordered_json document;
  document["cores"] = ::sysconf(_SC_NPROCESSORS_ONLN);
  document["cases"] = nlohmann::ordered_json::array();
  for (const Result& result : results) {
    document["cases"].push_back({{"case", NameOf(result.measured)},
                                 {"rounds", result.rounds},
                                 {"files_mb", result.files_mb},
                                 {"tool", JsonOf(result.tool)},
                                 {"reading", JsonOf(result.read)},
                                 {"nothing_shared", JsonOf(result.nothing_shared)},
                                 {"nothing_static", JsonOf(result.nothing_static)}});
  }
  document["exponents"] = Exponents(results);
  return document.dump(2) + "\n";
}

}  // namespace bench
