// Checks whether the tables of one schema file may become those of another, and prints what is refused: embed OLD NEW
package main

// #cgo pkg-config: korvelcheck
// #include <korvelcheck/korvelcheck.h>
// #include <stdlib.h>
import "C"

import (
	"errors"
	"fmt"
	"os"
	"unsafe"
)

func load(path string) (*C.kc_schema, error) {
	name := C.CString(path)
	defer C.free(unsafe.Pointer(name))
	var schema *C.kc_schema
	var fault *C.kc_error
	if C.kc_schema_load_file(name, &schema, &fault) != C.KC_OK {
		defer C.kc_error_free(fault)
		return nil, errors.New(C.GoString(C.kc_error_message(fault)))
	}
	return schema, nil
}

// Prints what is refused, and returns whether the change is allowed.
func check(oldPath, newPath string) (bool, error) {
	oldSchema, err := load(oldPath)
	if err != nil {
		return false, err
	}
	defer C.kc_schema_free(oldSchema)
	newSchema, err := load(newPath)
	if err != nil {
		return false, err
	}
	defer C.kc_schema_free(newSchema)

	var report *C.kc_report
	var fault *C.kc_error
	if C.kc_check(oldSchema, newSchema, nil, 0, nil, &report, &fault) != C.KC_OK {
		defer C.kc_error_free(fault)
		return false, errors.New(C.GoString(C.kc_error_message(fault)))
	}
	defer C.kc_report_free(report)

	var finding C.kc_finding
	for i := C.size_t(0); C.kc_report_finding(report, i, &finding, C.sizeof_kc_finding) == C.KC_OK; i++ {
		if finding.level == C.KC_LEVEL_REFUSED {
			fmt.Printf("%s:%d: %s\n  suggestion: %s\n", C.GoString(finding.location.file), finding.location.line,
				C.GoString(finding.summary), C.GoString(finding.suggestion))
		}
	}
	var info C.kc_report_info
	if C.kc_report_get(report, &info, C.sizeof_kc_report_info) != C.KC_OK {
		return false, errors.New("the report cannot be read")
	}
	return info.verdict == C.KC_VERDICT_ALLOWED, nil
}

func main() {
	if len(os.Args) != 3 {
		fmt.Fprintln(os.Stderr, "usage: embed OLD NEW")
		os.Exit(2)
	}
	allowed, err := check(os.Args[1], os.Args[2])
	if err != nil {
		fmt.Fprintln(os.Stderr, err)
		os.Exit(2)
	}
	if !allowed {
		os.Exit(1)
	}
}
