/* Checks whether the tables of one schema file may become those of another, and prints what is refused: embed OLD NEW */
#include <korvelcheck/korvelcheck.h>
#include <stdio.h>

static void print_findings(const kc_report* report) {
  kc_finding finding;
  for (size_t i = 0; kc_report_finding(report, i, &finding, sizeof finding) == KC_OK; ++i) {
    if (finding.level != KC_LEVEL_REFUSED) continue;
    printf("%s:%llu:%llu: refused [%s] %s\n", finding.location.file, (unsigned long long)finding.location.line,
           (unsigned long long)finding.location.column, finding.rule, finding.summary);
    printf("  path: %s\n  checker: %s\n  suggestion: %s\n", finding.path, finding.text, finding.suggestion);
  }
}

int main(int argc, char** argv) {
  kc_schema *old_schema = NULL, *new_schema = NULL;
  kc_report* report = NULL;
  kc_error* error = NULL;
  kc_report_info info;
  int exit_code = 2;

  if (argc != 3) {
    fprintf(stderr, "usage: embed OLD NEW\n");
    return exit_code;
  }
  if (kc_schema_load_file(argv[1], &old_schema, &error) == KC_OK && kc_schema_load_file(argv[2], &new_schema, &error) == KC_OK &&
      kc_check(old_schema, new_schema, NULL, 0, NULL, &report, &error) == KC_OK &&
      kc_report_get(report, &info, sizeof info) == KC_OK) {
    print_findings(report);
    printf("%s: %s\n", info.verdict == KC_VERDICT_ALLOWED ? "allowed" : "refused", info.summary);
    exit_code = info.passes ? 0 : 1;
  } else {
    fprintf(stderr, "%s\n", kc_error_message(error));
  }
  kc_report_free(report);
  kc_schema_free(new_schema);
  kc_schema_free(old_schema);
  kc_error_free(error);
  return exit_code;
}
