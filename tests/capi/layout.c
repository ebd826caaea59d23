/* Prints where the members of the public structs are (STRUCT.MEMBER OFFSET SIZE and STRUCT size SIZE), and the constants. */
#include <korvelcheck/korvelcheck.h>
#include <stdio.h>

#define MEMBER(type, member) \
  printf("%s.%s %lu %lu\n", #type, #member, (unsigned long)offsetof(type, member), (unsigned long)sizeof(((type*)0)->member))
#define CONSTANT(name) printf("%s %d\n", #name, (int)(name))
#define SIZE(type) printf("%s size %lu\n", #type, (unsigned long)sizeof(type))

static void print_location(void) {
  SIZE(kc_location);
  MEMBER(kc_location, file);
  MEMBER(kc_location, line);
  MEMBER(kc_location, column);
  MEMBER(kc_location, end_line);
  MEMBER(kc_location, end_column);
}

static void print_schema_info(void) {
  SIZE(kc_schema_info);
  MEMBER(kc_schema_info, name);
  MEMBER(kc_schema_info, library);
  MEMBER(kc_schema_info, version);
  MEMBER(kc_schema_info, is_image);
  MEMBER(kc_schema_info, table_count);
}

static void print_report_info(void) {
  SIZE(kc_report_info);
  MEMBER(kc_report_info, verdict);
  MEMBER(kc_report_info, passes);
  MEMBER(kc_report_info, table_count);
  MEMBER(kc_report_info, finding_count);
  MEMBER(kc_report_info, left_out_count);
  MEMBER(kc_report_info, summary);
}

static void print_table(void) {
  SIZE(kc_table);
  MEMBER(kc_table, name);
  MEMBER(kc_table, status);
  MEMBER(kc_table, code);
  MEMBER(kc_table, code_name);
  MEMBER(kc_table, rule);
  MEMBER(kc_table, summary);
  MEMBER(kc_table, text);
  MEMBER(kc_table, is_removed);
  MEMBER(kc_table, location);
}

static void print_finding(void) {
  SIZE(kc_finding);
  MEMBER(kc_finding, level);
  MEMBER(kc_finding, code);
  MEMBER(kc_finding, table);
  MEMBER(kc_finding, rule);
  MEMBER(kc_finding, summary);
  MEMBER(kc_finding, text);
  MEMBER(kc_finding, change);
  MEMBER(kc_finding, path);
  MEMBER(kc_finding, suggestion);
  MEMBER(kc_finding, fingerprint);
  MEMBER(kc_finding, has_alternative);
  MEMBER(kc_finding, fix_count);
  MEMBER(kc_finding, affected_count);
  MEMBER(kc_finding, location);
  MEMBER(kc_finding, old_location);
  MEMBER(kc_finding, new_location);
}

static void print_parts(void) {
  SIZE(kc_affected);
  MEMBER(kc_affected, table);
  MEMBER(kc_affected, path);
  SIZE(kc_fix);
  MEMBER(kc_fix, offset);
  MEMBER(kc_fix, length);
  MEMBER(kc_fix, text);
}

static void print_fault(void) {
  SIZE(kc_fault);
  MEMBER(kc_fault, rule);
  MEMBER(kc_fault, text);
  MEMBER(kc_fault, allowed);
  MEMBER(kc_fault, message);
  MEMBER(kc_fault, location);
}

static void print_constants(void) {
  CONSTANT(KC_OK);
  CONSTANT(KC_ERROR_ARGUMENT);
  CONSTANT(KC_ERROR_INPUT);
  CONSTANT(KC_ERROR_MEMORY);
  CONSTANT(KC_ERROR_INTERNAL);
  CONSTANT(KC_END);
  CONSTANT(KC_VERDICT_ALLOWED);
  CONSTANT(KC_VERDICT_REFUSED);
  CONSTANT(KC_TABLE_ALLOWED);
  CONSTANT(KC_TABLE_REFUSED);
  CONSTANT(KC_TABLE_NEW);
  CONSTANT(KC_LEVEL_REFUSED);
  CONSTANT(KC_LEVEL_WARNING);
  CONSTANT(KC_LEVEL_NOTE);
}

int main(void) {
  print_location();
  print_schema_info();
  print_report_info();
  print_table();
  print_finding();
  print_parts();
  print_fault();
  print_constants();
  return 0;
}
