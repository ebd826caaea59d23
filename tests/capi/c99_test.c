/* A C99 program that uses every function once. Prints what it finds; the last line is "done". */
#include <korvelcheck/korvelcheck.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void require(int holds, const char* what) {
  if (holds) return;
  printf("failed: %s\n", what);
  exit(1);
}

static void use_library(void) {
  const char* page = NULL;
  require(strcmp(kc_version(), "") != 0, "kc_version");
  require(strstr(kc_build_info(), "\"abi\": 0") != NULL, "kc_build_info");
  require(kc_format_name(0) != NULL, "kc_format_name");
  require(kc_explain("field.size", &page, NULL) == KC_OK && strstr(page, "field.size") != NULL, "kc_explain");
}

static void use_schema(const kc_schema* schema) {
  kc_schema_info info;
  const void* image = NULL;
  size_t size = 0;
  kc_schema* copy = NULL;
  require(kc_schema_get(schema, &info, sizeof info) == KC_OK && info.table_count > 0, "kc_schema_get");
  require(kc_schema_table(schema, 0) != NULL && kc_schema_table(schema, (size_t)info.table_count) == NULL, "kc_schema_table");
  require(kc_schema_image(schema, &image, &size, NULL) == KC_OK, "kc_schema_image");
  require(kc_schema_load("copy", image, size, &copy, NULL) == KC_OK, "kc_schema_load");
  kc_schema_free(copy);
}

static void use_report(const kc_report* report) {
  kc_report_info info;
  kc_table table;
  kc_finding finding;
  kc_affected affected;
  kc_fix fix;
  const char* text = NULL;
  size_t i, j, size = 0;
  require(kc_report_get(report, &info, sizeof info) == KC_OK, "kc_report_get");
  for (i = 0; kc_report_table(report, i, &table, sizeof table) == KC_OK; ++i) printf("table %s\n", table.name);
  require(i == info.table_count, "kc_report_table");
  for (i = 0; kc_report_finding(report, i, &finding, sizeof finding) == KC_OK; ++i) {
    printf("finding %s\n", finding.rule);
    for (j = 0; kc_report_affected(report, i, j, &affected, sizeof affected) == KC_OK; ++j)
      printf("affected %s\n", affected.path);
    for (j = 0; kc_report_fix(report, i, j, &fix, sizeof fix) == KC_OK; ++j) printf("fix %s\n", fix.text);
  }
  require(i == info.finding_count, "kc_report_finding");
  require(kc_report_text(report, "json", &text, &size, NULL) == KC_OK && size == strlen(text), "kc_report_text");
}

static void use_error(void) {
  kc_schema* schema = NULL;
  kc_error* error = NULL;
  kc_fault fault;
  require(kc_schema_load("bad", "<x/>", 4, &schema, &error) == KC_ERROR_INPUT, "kc_schema_load of a bad schema");
  require(kc_error_fault(error, 0, &fault, sizeof fault) == KC_OK && fault.location.line == 1, "kc_error_fault");
  require(strcmp(kc_error_message(error), fault.message) == 0, "kc_error_message");
  kc_error_free(error);
}

int main(int argc, char** argv) {
  kc_schema *old_schema = NULL, *new_schema = NULL;
  kc_settings* settings = NULL;
  kc_report* report = NULL;
  require(argc == 3, "usage: c99_test OLD NEW");
  use_library();
  use_error();
  require(kc_schema_load_file(argv[1], &old_schema, NULL) == KC_OK, "kc_schema_load_file");
  require(kc_schema_load_file(argv[2], &new_schema, NULL) == KC_OK, "kc_schema_load_file");
  use_schema(old_schema);
  require(kc_settings_new(&settings, NULL) == KC_OK, "kc_settings_new");
  require(kc_settings_set(settings, NULL, "fail-on", "warning", NULL) == KC_OK, "kc_settings_set");
  require(kc_check(old_schema, new_schema, NULL, 0, settings, &report, NULL) == KC_OK, "kc_check");
  use_report(report);
  kc_report_free(report);
  require(kc_lint(new_schema, settings, &report, NULL) == KC_OK, "kc_lint");
  kc_report_free(report);
  kc_settings_free(settings);
  kc_schema_free(new_schema);
  kc_schema_free(old_schema);
  printf("done\n");
  return 0;
}
