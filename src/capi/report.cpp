// Reports as structs and as text. Tested by tests/capi/check_test.cpp and same_answer_test.cpp.
#include <algorithm>
#include <cstdint>
#include <map>
#include <mutex>

#include "base/text.h"
#include "capi/call.h"
#include "capi/check.h"
#include "capi/records.h"
#include "report/render/render.h"

// Not moved: the records borrow the report, which borrows the schemas.
struct kc_report {
  explicit kc_report(korvel::capi::Request about)
      : request(std::move(about)), report(RunCheck(request, InputsOf(request))), records(report) {}

  const korvel::capi::Request request;
  const korvel::Report report;
  const korvel::capi::Records records;
  std::mutex mutex = {};
  std::map<const korvel::Format*, std::string> texts = {};  // of the formats that were wanted
};

namespace korvel::capi {
namespace {

const Format& FindFormat(const std::string& name) {
  for (const Format& format : Formats()) {
    if (name == format.name) return format;
  }
  throw ArgumentError{"kc_report_text: unknown format " + Quote(name) + "; kc_format_name lists them"};
}

// A format that shows whole files needs texts that images do not have.
std::string Render(const kc_report& report, const Format& format) {
  const auto is_image = [](const auto& schema) { return schema->is_image; };
  if (!format.shows_sources || std::ranges::none_of(report.request.schemas, is_image)) return format.Render(report.report, false);
  const std::vector<Input> inputs = InputsWithText(report.request);
  std::vector<const Input*> borrowed;
  borrowed.reserve(inputs.size());
  for (const Input& input : inputs) borrowed.push_back(&input);
  return format.Render(RunCheck(report.request, borrowed), false);
}

const std::string& TextIn(kc_report& report, const Format& format) {
  const std::scoped_lock lock(report.mutex);
  const auto known = report.texts.find(&format);
  if (known != report.texts.end()) return known->second;
  return report.texts.emplace(&format, Render(report, format)).first->second;
}

std::vector<std::string> TablesOf(const char* const* tables, std::size_t count) {
  if (count > 0) Require(tables, "kc_check", "tables");
  if (count > PTRDIFF_MAX / sizeof(*tables)) throw ArgumentError{"kc_check: table_count is too large"};
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) {
    Require(tables[i], "kc_check", "an element of tables");
    names.emplace_back(tables[i]);
  }
  if (tables != nullptr && count == 0) throw ArgumentError{"kc_check: tables is empty; allowed: NULL for all tables"};
  return names;
}

CheckSettings SettingsOf(const kc_settings* settings) { return settings == nullptr ? CheckSettings() : settings->values; }

}  // namespace
}  // namespace korvel::capi

using korvel::capi::Call;
using korvel::capi::Clear;
using korvel::capi::FillElement;
using korvel::capi::Require;

int kc_check(const kc_schema* old_schema, const kc_schema* new_schema, const char* const* tables, size_t table_count,
             const kc_settings* settings, kc_report** report, kc_error** error) {
  if (report != nullptr) *report = nullptr;
  return Call(error, [&] {
    Require(report, "kc_check", "report");
    Require(old_schema, "kc_check", "old_schema");
    Require(new_schema, "kc_check", "new_schema");
    *report = new kc_report({.schemas = {old_schema->loaded, new_schema->loaded},
                             .tables = korvel::capi::TablesOf(tables, table_count),
                             .settings = korvel::capi::SettingsOf(settings)});
  });
}

int kc_lint(const kc_schema* schema, const kc_settings* settings, kc_report** report, kc_error** error) {
  if (report != nullptr) *report = nullptr;
  return Call(error, [&] {
    Require(report, "kc_lint", "report");
    Require(schema, "kc_lint", "schema");
    *report = new kc_report({.schemas = {schema->loaded}, .tables = {}, .settings = korvel::capi::SettingsOf(settings)});
  });
}

int kc_report_get(const kc_report* report, kc_report_info* info, size_t size) {
  return report == nullptr ? Clear(info, size, KC_ERROR_ARGUMENT) : korvel::capi::Fill(report->records.info(), info, size);
}

int kc_report_table(const kc_report* report, size_t index, kc_table* table, size_t size) {
  if (report == nullptr) return Clear(table, size, KC_ERROR_ARGUMENT);
  const auto same = [](const kc_table& one) { return one; };
  return FillElement(report->records.tables(), index, same, table, size);
}

int kc_report_finding(const kc_report* report, size_t index, kc_finding* finding, size_t size) {
  if (report == nullptr) return Clear(finding, size, KC_ERROR_ARGUMENT);
  const auto finding_of = [](const korvel::capi::FindingRecord& one) { return one.finding; };
  return FillElement(report->records.findings(), index, finding_of, finding, size);
}

namespace {

// An element of a list that a finding has.
template <class Element>
int FillPart(const kc_report* report, size_t finding, std::vector<Element> korvel::capi::FindingRecord::*list, size_t index,
             Element* to, size_t size) {
  if (report == nullptr) return Clear(to, size, KC_ERROR_ARGUMENT);
  static const std::vector<Element> kNone;
  const auto& findings = report->records.findings();
  const auto same = [](const Element& one) { return one; };
  return FillElement(finding < findings.size() ? findings[finding].*list : kNone, index, same, to, size);
}

}  // namespace

int kc_report_affected(const kc_report* report, size_t finding, size_t index, kc_affected* affected, size_t size) {
  return FillPart(report, finding, &korvel::capi::FindingRecord::affected, index, affected, size);
}

int kc_report_fix(const kc_report* report, size_t finding, size_t index, kc_fix* fix, size_t size) {
  return FillPart(report, finding, &korvel::capi::FindingRecord::fixes, index, fix, size);
}

int kc_report_text(const kc_report* report, const char* format, const char** text, size_t* size, kc_error** error) {
  if (text != nullptr) *text = nullptr;
  if (size != nullptr) *size = 0;
  return Call(error, [&] {
    Require(report, "kc_report_text", "report");
    Require(format, "kc_report_text", "format");
    Require(text, "kc_report_text", "text");
    // The texts are a cache: to the caller, the report does not change.
    const std::string& whole = korvel::capi::TextIn(const_cast<kc_report&>(*report), korvel::capi::FindFormat(format));
    *text = whole.c_str();
    if (size != nullptr) *size = whole.size();
  });
}

void kc_report_free(kc_report* report) { delete report; }
