/* The schema-change checker of the Korvel table store, for programs in any language that can call C.
 *
 *   kc_schema *old_schema = NULL, *new_schema = NULL;
 *   kc_report *report = NULL;
 *   kc_error *error = NULL;
 *   if (kc_schema_load_file("orders_v6.xml", &old_schema, &error) == KC_OK &&
 *       kc_schema_load_file("orders_v7.xml", &new_schema, &error) == KC_OK &&
 *       kc_check(old_schema, new_schema, NULL, 0, NULL, &report, &error) == KC_OK) {
 *     ... kc_report_get, kc_report_table, kc_report_finding, kc_report_text ...
 *   } else {
 *     fprintf(stderr, "%s\n", kc_error_message(error));
 *   }
 *   kc_report_free(report); kc_schema_free(new_schema); kc_schema_free(old_schema); kc_error_free(error);
 *
 * Common to all functions:
 *
 * Results. A function that can fail returns KC_OK or one of the results below, and never changes an output on failure except as
 * follows: a handle or string becomes NULL, a size 0, a struct all zeros. NULL for a required argument is KC_ERROR_ARGUMENT.
 *
 * Errors. The last argument, `error`, may be NULL. Otherwise it is set to NULL on success and to a new error on failure, also
 * when memory runs out; the previous value is overwritten, not freed. The caller frees the error.
 *
 * Ownership. The caller frees every handle that it gets, in any order: reports keep what they need of their schemas, settings are
 * copied. NULL may be freed. Strings and bytes that a function gives out belong to the handle that it was called with and are
 * valid until that handle is freed, unless said otherwise. Arguments are borrowed for the call.
 *
 * Strings are null-terminated and never NULL in a filled struct. Names come from schemas as they are: they may contain newlines
 * and, from images, invalid UTF-8. Everything else is UTF-8. Escape names before you print them, or print a report format.
 *
 * Structs. Functions that fill a struct take its size: sizeof in the caller. Later versions only append members. Members that the
 * library does not know are set to zero; members that the caller does not know are left out. A size of 0 or above KC_MAX_STRUCT
 * is KC_ERROR_ARGUMENT and changes nothing. In a struct of zeros, no change is allowed: 0 is no verdict.
 *
 * Threads. Schemas, reports and errors never change: threads may use one at once, except to free it. Settings must not be changed
 * while another thread uses them. There is no other shared state. A large check starts threads of its own, at most one for each
 * processor, and waits for them. A thread must not be cancelled inside a call. A stack of 128 KiB suffices for every call.
 *
 * The library prints nothing, reads no environment variable (its XML parser, expat, reads EXPAT_... for debugging), changes no
 * process-wide state and starts no other program. It reads files in kc_schema_load_file only. Report formats that name files for
 * a service (sarif, github, gitlab, ...) look up where the repository of the working directory begins. */
#ifndef KORVELCHECK_KORVELCHECK_H
#define KORVELCHECK_KORVELCHECK_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define KC_API __attribute__((visibility("default")))
#else
#define KC_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A schema library: tables and the structures that they contain. */
typedef struct kc_schema kc_schema;
/* What a check must know besides the schemas. */
typedef struct kc_settings kc_settings;
/* What a check found out. */
typedef struct kc_report kc_report;
/* Why a call failed. */
typedef struct kc_error kc_error;

/* Results. */
enum {
  KC_OK = 0,
  KC_ERROR_ARGUMENT = 1, /* the call is wrong: NULL, an unknown key, value or format */
  KC_ERROR_INPUT = 2,    /* a schema cannot be read or is not valid, a table is unknown, nothing can be compared */
  KC_ERROR_MEMORY = 3,   /* out of memory; the handles of the call can still be used and freed */
  KC_ERROR_INTERNAL = 4, /* a fault of the library */
  KC_END = 5             /* the position is past the last element; no error is set */
};

/* Largest size of a struct that a function accepts, in bytes. */
#define KC_MAX_STRUCT 4096

/* The checker's verdict about all compared tables. Later versions may add others: only the first one means allowed. */
enum { KC_VERDICT_ALLOWED = 1, KC_VERDICT_REFUSED = 2 };

/* The status of a table. */
enum {
  KC_TABLE_ALLOWED = 1,
  KC_TABLE_REFUSED = 2,
  KC_TABLE_NEW = 3 /* only in the new schema: nothing to compare it with */
};

/* The level of a finding. */
enum {
  KC_LEVEL_REFUSED = 1, /* the checker refuses the change */
  KC_LEVEL_WARNING = 2, /* allowed, but records may not read back */
  KC_LEVEL_NOTE = 3     /* probably a mistake, or of interest */
};

/* Where something is in a schema file. This struct never grows. */
typedef struct kc_location {
  const char* file;    /* the name of the schema; "" for no location at all */
  uint64_t line;       /* from 1; 0 in an image, which has no lines: then the other numbers are 0, too */
  uint64_t column;     /* from 1, in characters */
  uint64_t end_line;   /* of the end, which is past the last character */
  uint64_t end_column; /* likewise */
} kc_location;

/* --- Schemas --- */

typedef struct kc_schema_info {
  const char* name;    /* as given to kc_schema_load, or the path */
  const char* library; /* the name of the schema library */
  int32_t version;     /* of the schema library */
  int32_t is_image;    /* 1: loaded from an image, 0: from a schema file in XML */
  uint64_t table_count;
} kc_schema_info;

/* Loads the schema in bytes [0, size) of `data`, a schema file in XML or an image; the first bytes decide. Copies the bytes.
 * `name` is used in messages and locations, and identifies the schema in fingerprints of findings: keep it when a schema moves to
 * another machine. The fingerprints are those of the program if `name` is the path of the schema file from the directory of the
 * project file, or without one from the working directory, as in "schemas/orders.xml": relative, and without symbolic links to
 * directories. No file is looked up, so other paths to the same file give other fingerprints: of a name that is absolute or leads
 * out with "..", only the last part counts. `data` may be NULL if `size` is 0; that is an invalid schema. KC_ERROR_INPUT: all
 * faults of the schema, with lines and columns. Linear in the size. */
KC_API int kc_schema_load(const char* name, const void* data, size_t size, kc_schema** schema, kc_error** error);

/* The same for the regular file at `path`. The file is read, not mapped: if it shrinks or changes later, the schema stays as it
 * is; if it changes while it is read, the call fails. Pipes and devices are refused, "-" is a file of that name. Below the
 * working directory, the path from there identifies the schema in fingerprints, elsewhere only the file name. */
KC_API int kc_schema_load_file(const char* path, kc_schema** schema, kc_error** error);

KC_API int kc_schema_get(const kc_schema* schema, kc_schema_info* info, size_t size);

/* The name of a table, from 0 in the order of their declaration. NULL past the last one, and for a NULL schema. */
KC_API const char* kc_schema_table(const kc_schema* schema, size_t index);

/* The schema as an image: the bytes that `korvelcheck compile` writes. Equal schemas give equal bytes. Made by the first call,
 * then kept with the schema. KC_ERROR_INPUT: the schema is too large for an image. */
KC_API int kc_schema_image(const kc_schema* schema, const void** data, size_t* size, kc_error** error);

KC_API void kc_schema_free(kc_schema* schema);

/* --- Settings --- */

/* Settings without a value: what they do not say comes from the attributes of the old schema's tables, else a default applies. */
KC_API int kc_settings_new(kc_settings** settings, kc_error** error);

/* Sets a setting by the key and value of the project file (docs/project-file.md), as strings. `table` NULL: for every table; a
 * setting of a single table takes precedence. A later value replaces an earlier one.
 *
 *   type            "generic" or "list"
 *   created-as      "qmx" or "tlv": the protocol that the table was created in
 *   server-version  "3.29.0": the oldest server that runs the table; without it, field lengths are not checked
 *   whitelist       "a;b": fields that may exceed the length limit
 *   list-num        "100": the list length on the server
 *
 * Only for `table` NULL:
 *
 *   fail-on         "refused", the default, or "warning": what makes kc_report_info.passes 0
 *   max-findings    "1000", the default: how many findings a report lists
 *
 * A check fails with KC_ERROR_INPUT if a table with settings is in none of its schemas. KC_ERROR_ARGUMENT: an unknown key, or a
 * value that is not allowed; then the settings stay as they were. */
KC_API int kc_settings_set(kc_settings* settings, const char* table, const char* key, const char* value, kc_error** error);

KC_API void kc_settings_free(kc_settings* settings);

/* --- Checks --- */

/* Checks whether the tables of `old_schema` may become those of `new_schema`. Checks the `table_count` tables that `tables`
 * names, each once; all tables of both schemas if `tables` is NULL and `table_count` is 0. A table that only the old schema has
 * is refused as removed. `settings` may be NULL.
 *
 * KC_OK means that there is a report, not that the change is allowed: see kc_report_info. KC_ERROR_INPUT: a table that is named
 * in `tables` or in the settings is in neither schema, or nothing can be compared because no wanted table is in the old schema.
 * Checking allowed tables is linear in their size; a refused table is checked again for each part of its change. */
KC_API int kc_check(const kc_schema* old_schema, const kc_schema* new_schema, const char* const* tables, size_t table_count,
                    const kc_settings* settings, kc_report** report, kc_error** error);

/* Checks whether the checker accepts every table of one schema as it is: a table that it does not accept can never be changed.
 * KC_ERROR_INPUT: the schema has no table. Otherwise as kc_check. */
KC_API int kc_lint(const kc_schema* schema, const kc_settings* settings, kc_report** report, kc_error** error);

/* --- Reports --- */

typedef struct kc_report_info {
  int32_t verdict; /* KC_VERDICT_...: of the checker alone */
  int32_t passes;  /* 1: nothing is refused, and with fail-on = warning there is no warning; else 0 */
  uint64_t table_count;
  uint64_t finding_count;  /* listed ones, of all levels */
  uint64_t left_out_count; /* findings that are not listed, because there are more than max-findings */
  const char* summary;     /* "1 table refused, 2 allowed; 3 compared, 0 new, 0 removed" */
} kc_report_info;

KC_API int kc_report_get(const kc_report* report, kc_report_info* info, size_t size);

typedef struct kc_table {
  const char* name;
  int32_t status;        /* KC_TABLE_... */
  int32_t code;          /* the checker's result code: 0 if allowed or new, else negative */
  const char* code_name; /* "ERROR_PRIMARYKEY_FIELD" */
  const char* rule;      /* that refused; "" if allowed or new */
  const char* summary;   /* what is refused, in plain words; "" if allowed or new */
  const char* text;      /* the checker's own text; "" if allowed or new */
  int32_t is_removed;    /* 1: the new schema has no such table */
  kc_location location;  /* of the table in the new schema; of a removed one in the old schema */
} kc_table;

/* Fills in a table, from 0 in the order of the report. KC_END past the last one. Constant time, like all functions below that
 * fill a struct. */
KC_API int kc_report_table(const kc_report* report, size_t index, kc_table* table, size_t size);

typedef struct kc_finding {
  int32_t level;            /* KC_LEVEL_... */
  int32_t code;             /* of the checker, about this finding alone; 0 for a warning or note */
  uint64_t table;           /* position of the table; of the first, if kc_report_affected lists others */
  const char* rule;         /* "primary-key.size"; kc_explain gives its page */
  const char* summary;      /* what is wrong, in plain words */
  const char* text;         /* the checker's own text; "" for a warning or note */
  const char* change;       /* what changed, a line for each change; "" if no single change is to blame */
  const char* path;         /* of the element: "orders.items[].price" */
  const char* suggestion;   /* what to do instead; may have several lines */
  const char* fingerprint;  /* identifies the finding across runs, 16 hexadecimal digits */
  int32_t has_alternative;  /* 1: there is something to do instead of leaving the change out */
  uint64_t fix_count;       /* of kc_report_fix */
  uint64_t affected_count;  /* of kc_report_affected */
  kc_location location;     /* where to report it: in the new schema, or in the old one for something that was removed */
  kc_location old_location; /* of the element in the old schema, if it is there */
  kc_location new_location; /* of the element in the new schema; of a removed one, that of its structure */
} kc_finding;

/* Fills in a finding, from 0: for each table its refusals, then its warnings and notes. A finding that several tables share,
 * because they contain the same structure, is listed once. KC_END past the last one. */
KC_API int kc_report_finding(const kc_report* report, size_t index, kc_finding* finding, size_t size);

typedef struct kc_affected {
  uint64_t table;   /* position of a table */
  const char* path; /* of the element in that table; "" for a change of the library */
} kc_affected;

/* Fills in another table and path that share a finding, from 0. KC_END past the last finding or element. */
KC_API int kc_report_affected(const kc_report* report, size_t finding, size_t index, kc_affected* affected, size_t size);

typedef struct kc_fix {
  uint64_t offset;  /* bytes from the start of the new schema file */
  uint64_t length;  /* bytes that are replaced */
  const char* text; /* what replaces them */
} kc_fix;

/* Fills in a part of the fix of a finding, from 0 in the order of the file: after all of them, the checker allows the change. A
 * finding that no change of the file fixes has none. KC_END past the last finding or part. */
KC_API int kc_report_fix(const kc_report* report, size_t finding, size_t index, kc_fix* fix, size_t size);

/* The report in a format of kc_format_name: the bytes that the program prints for schema files of the same names without a
 * project file, except that a text does not name the call that fixes the file. `size` may be NULL. Made by the first call for
 * each format, then kept with the report. */
KC_API int kc_report_text(const kc_report* report, const char* format, const char** text, size_t* size, kc_error** error);

KC_API void kc_report_free(kc_report* report);

/* --- Errors --- */

/* All lines of the error, joined by newlines. "" for NULL. */
KC_API const char* kc_error_message(const kc_error* error);

typedef struct kc_fault {
  const char* rule;     /* "schema.invalid"; "" for an error that is not about a schema */
  const char* text;     /* what is wrong */
  const char* allowed;  /* what would be right; may be "" */
  const char* message;  /* the whole fault on one line, with its location */
  kc_location location; /* end_line and end_column are 0 */
} kc_fault;

/* Fills in a fault, from 0: a schema file is reported with all of its faults. There is at least one. KC_END past the last one.
 */
KC_API int kc_error_fault(const kc_error* error, size_t index, kc_fault* fault, size_t size);

KC_API void kc_error_free(kc_error* error);

/* --- The library --- */

/* "0.1.0". The string is valid until the library is unloaded, like all strings below. */
KC_API const char* kc_version(void);

/* Version and build as a JSON object: "version", "abi" (the number in the name of the shared library), "report_version" (of the
 * JSON report), "image_version" (of images), "compiler" and "build_type". Later versions may add members. */
KC_API const char* kc_build_info(void);

/* The name of a report format, from 0: "text", "json", "sarif", ... NULL past the last one. */
KC_API const char* kc_format_name(size_t index);

/* The page about a rule in Markdown, as `korvelcheck explain RULE --format markdown` prints it: what the rule protects, an
 * example, what is allowed instead. KC_ERROR_ARGUMENT: unknown rule. */
KC_API int kc_explain(const char* rule, const char** page, kc_error** error);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif
