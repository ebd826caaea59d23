#!/usr/bin/env python3
"""Installs a build tree, and builds programs with the installation: install_test.py SOURCE BUILD_TREE [TEST...]

The examples are built with CMake, gcc and pkg-config by tests/documents, which runs docs/embedding.md.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE, BUILD = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
COMPILERS = [compiler for compiler in ("g++", "clang++") if shutil.which(compiler)]
OTHER_COMPILER = COMPILERS[-1]  # docs/embedding.md uses gcc
WARNINGS = "-std=c++17 -pedantic-errors -Wall -Wextra -Wconversion -Wshadow -Werror".split()
COMPONENTS = ["korvelcheck-core", "korvelcheck-qmx", "korvelcheck-vesk"]
CHECKER_HEADERS = ["check_table.h", "modify_table.h", "refusal_row.h", "result_codes.h", "text_helpers.h"]

SHOP = SOURCE / "examples/shop"
CHANGE = [SHOP / "v6.xml", SHOP / "v7-wider-key.xml", "orders"]
REFUSAL = "refused: -3 ERROR_VALUE_FIELD: The size of primarykey can't be modified! entry:'order_no' metaname:'orders'\n"
FIND_PACKAGE = """cmake_minimum_required(VERSION 3.16)
project(find LANGUAGES CXX)
find_package(korvelcheck ARGUMENTS)
foreach(name core qmx vesk korvelcheck)
  if(TARGET korvelcheck::${name})
    list(APPEND found ${name})
  endif()
endforeach()
message(STATUS "${found}")
"""
# Prints the rule that refused.
RULE = """#include <cstdio>

#include "common/modify_table.h"
#include "common/refusal_row.h"

int main() {
  ModifyTable checker;
  checker.ComparePrimaryKey(nullptr, nullptr, nullptr);
  const korvel::RefusalRow* const rule = checker.GetRefusal();
  std::printf("%s: %s", rule->id, rule->summary);
}
"""
# Calls the main function of an example that was compiled into a library.
CALLER = "int Check(int, char**);\nint main(int argc, char** argv) { return Check(argc, argv); }\n"


def run(*command, cwd=None, status=0):
    """The output of a command that ends with this status."""
    done = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != status:
        raise AssertionError(f"status {done.returncode}: {command}\n{done.stdout}")
    return done.stdout


class Installed(unittest.TestCase):
    """An installation that was moved: nothing in it may depend on where it was."""

    @classmethod
    def setUpClass(cls):
        cls.home = pathlib.Path(tempfile.mkdtemp()).resolve()
        cls.addClassCleanup(shutil.rmtree, cls.home)
        first = cls.home / "first"
        run("cmake", "--install", BUILD, "--prefix", first)
        cls.prefix = first.rename(cls.home / "moved")
        for example in ("embed-cpp", "embed-own-store"):
            shutil.copytree(SOURCE / "examples" / example, cls.home / example)

    def pkg_config(self, *arguments):
        os.environ["PKG_CONFIG_PATH"] = str(self.prefix / "lib/pkgconfig")
        return run("pkg-config", *arguments).split()

    def archives(self):
        return sorted((self.prefix / "lib").glob("*.a"))


class Files(Installed):
    def test_installs_public_headers_only(self):
        installed = {str(path.relative_to(self.prefix / "include")) for path in self.prefix.glob("include/**/*.h")}
        public = {str(path.relative_to(SOURCE / "include")) for path in SOURCE.glob("include/*/*.h")}
        public = {path if path.startswith("korvelcheck/") else f"korvelcheck/{path}" for path in public}
        self.assertEqual(installed, public | {f"korvelcheck/common/{name}" for name in CHECKER_HEADERS})
        self.assertEqual(os.listdir(self.prefix / "include"), ["korvelcheck"])

    def test_each_header_compiles_by_itself_as_cpp17(self):
        headers = self.prefix / "include/korvelcheck"
        for path in sorted(headers.glob("**/*.h")):
            for compiler in COMPILERS:
                run(compiler, *WARNINGS, "-fsyntax-only", "-I", headers, "-include", path, "-x", "c++", os.devnull)

    def test_names_no_directory_of_the_build(self):
        texts = [*self.prefix.glob("lib/cmake/**/*.cmake"), *self.prefix.glob("lib/pkgconfig/*.pc"), *self.archives()]
        self.assertGreater(len(texts), 10)
        for path in texts:
            for directory in (SOURCE, BUILD, self.home):
                self.assertNotIn(os.fsencode(directory) + b"/", path.read_bytes(), path)

    def test_archives_contain_ordinary_code_only(self):
        self.assertEqual(len(self.archives()), 4)
        for archive in self.archives():
            sections = run("readelf", "--section-headers", "--wide", archive)
            self.assertIn(".text", sections)
            self.assertNotIn("lto_", sections)
            self.assertNotIn("__gnu_lto", run("nm", archive))

    def test_checker_needs_only_what_a_store_provides(self):
        core = self.prefix / "lib/libkorvelcheck-core.a"
        needed = set(re.findall(r"U ((?:qmx|vesk|XML|korvel)\w+)", run("nm", core)))
        declared = set()
        for header in ("qmx/qmx_metalib_kernel.h", "vesk/vesk_category.h"):
            text = (self.prefix / "include/korvelcheck" / header).read_text(encoding="utf-8")
            declared |= set(re.findall(r"^\w.* \*?((?:qmx|vesk)_\w+)\(", text, re.MULTILINE))
        self.assertEqual(needed, declared - {"qmx_get_meta_num", "qmx_get_meta_by_index"})

    def test_readme_shows_the_example(self):
        readme = (SOURCE / "README.md").read_text(encoding="utf-8")
        shown = re.findall(r"^```cpp\n(.*?)^```$", readme, re.MULTILINE | re.DOTALL)
        self.assertEqual(shown, [(SOURCE / "examples/embed-cpp/main.cpp").read_text(encoding="utf-8")])


class Programs(Installed):
    def test_cmake_with_another_compiler(self):
        for example in ("embed-cpp", "embed-own-store"):
            build = self.home / f"build-{example}"
            run("cmake", "-S", self.home / example, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}",
                f"-DCMAKE_CXX_COMPILER={OTHER_COMPILER}", f"-DCMAKE_CXX_FLAGS={' '.join(WARNINGS)}",
                "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON")  # fmt: skip
            self.assertNotIn(str(SOURCE), (build / "compile_commands.json").read_text(encoding="utf-8"))
            run("cmake", "--build", build)
        self.assertEqual(run(self.home / "build-embed-cpp/embed_cpp", *CHANGE, cwd=self.home, status=1), REFUSAL)
        log = (self.home / "embed_cpp.log").read_text(encoding="utf-8")
        self.assertRegex(log, r"ERROR src/common/modify_table_record.cpp:\d+ CompareEntryValueField: The size of primarykey")
        self.assertIn(REFUSAL, run(self.home / "build-embed-own-store/embed_own_store", status=1))

    def find_package(self, arguments, status):
        project = self.home / "find"
        shutil.rmtree(project, ignore_errors=True)
        project.mkdir()
        (project / "CMakeLists.txt").write_text(FIND_PACKAGE.replace("ARGUMENTS", arguments), encoding="utf-8")
        return run("cmake", "-S", project, "-B", project / "build", f"-DCMAKE_PREFIX_PATH={self.prefix}", status=status)

    def test_components(self):
        self.assertIn("-- core;qmx;vesk;korvelcheck\n", self.find_package("0.1 CONFIG REQUIRED", 0))
        core = self.find_package("0.1.0 CONFIG REQUIRED COMPONENTS core", 0)
        self.assertIn("-- core\n", core)
        self.assertNotIn("EXPAT", core)
        self.assertNotIn("EXPAT", self.find_package("0.1 CONFIG REQUIRED COMPONENTS korvelcheck", 0))
        self.assertIn("no component 'other'", self.find_package("0.1 CONFIG REQUIRED COMPONENTS core other", 1))
        for version in ("0.2", "1.0"):
            self.assertIn(f'requested version "{version}"', self.find_package(f"{version} CONFIG REQUIRED", 1))

    def test_every_object_goes_into_a_shared_library(self):
        main = self.home / "embed-cpp/main.cpp"
        caller = self.home / "caller.cpp"
        caller.write_text(CALLER, encoding="utf-8")
        options = self.pkg_config("--cflags", "--libs", *COMPONENTS)
        for compiler in COMPILERS:
            library, program = self.home / f"libstore-{compiler}.so", self.home / f"caller-{compiler}"
            run(compiler, *WARNINGS, "-fPIC", "-shared", "-Wl,-z,defs", "-Dmain=Check", main, "-Wl,--whole-archive", *options,
                "-Wl,--no-whole-archive", "-o", library)  # fmt: skip
            run(compiler, *WARNINGS, caller, library, "-o", program)
            self.assertEqual(run(program, *CHANGE, cwd=self.home, status=1), REFUSAL)

    def test_names_the_rule_that_refused(self):
        program = self.home / "rule"
        source = program.with_suffix(".cpp")
        source.write_text(RULE, encoding="utf-8")
        run("g++", *WARNINGS, source, *self.pkg_config("--cflags", "--libs", *COMPONENTS), "-o", program)
        self.assertEqual(run(program), "arguments.meta: a structure is missing, or a field no longer holds a structure")

    def test_checker_alone_with_pkg_config(self):
        sources = sorted((self.home / "embed-own-store").glob("*.cpp"))
        for compiler in COMPILERS:
            program = self.home / f"own-store-{compiler}"
            depends = self.home / "own-store.d"
            run(compiler, *WARNINGS, *sources, *self.pkg_config("--cflags", "--libs", "korvelcheck-core"), "-o", program)
            run(compiler, "-std=c++17", *self.pkg_config("--cflags", "korvelcheck-core"), "-M", sources[0], "-MF", depends)
            self.assertNotIn(str(SOURCE), depends.read_text(encoding="utf-8"))
            self.assertIn(REFUSAL, run(program, status=1))


PARENT = """cmake_minimum_required(VERSION 3.25)
project(store VERSION 3.1 LANGUAGES CXX)
include(GNUInstallDirs)
find_package(Threads REQUIRED)

function(settings result)
  get_cmake_property(names VARIABLES)
  list(FILTER names INCLUDE REGEX "^(CMAKE|BUILD)_")
  foreach(name IN LISTS names)
    string(REPLACE ";" " " value "${${name}}")
    list(APPEND settings "${name}=${value}")
  endforeach()
  foreach(property COMPILE_OPTIONS COMPILE_DEFINITIONS INCLUDE_DIRECTORIES LINK_OPTIONS TESTS)
    get_property(value DIRECTORY PROPERTY ${property})
    list(APPEND settings "${property}=${value}")
  endforeach()
  set(${result} "${settings}" PARENT_SCOPE)
endfunction()

settings(before)
add_subdirectory(korvelcheck)
settings(after)
list(REMOVE_ITEM after ${before})
message(STATUS "changed settings: '${after}'")

add_library(check SHARED embed-cpp/main.cpp)
target_compile_definitions(check PRIVATE main=Check)
target_link_libraries(check PRIVATE korvelcheck::core korvelcheck::qmx korvelcheck::vesk)
add_executable(embed_cpp caller.cpp)
target_link_libraries(embed_cpp PRIVATE check)
add_executable(embed_own_store embed-own-store/main.cpp embed-own-store/metadata.cpp embed-own-store/log.cpp)
target_link_libraries(embed_own_store PRIVATE korvelcheck::core)
"""


class Subdirectory(unittest.TestCase):
    def test_builds_without_program_and_tests_and_changes_no_setting(self):
        home = pathlib.Path(tempfile.mkdtemp()).resolve()
        self.addCleanup(shutil.rmtree, home)
        (home / "CMakeLists.txt").write_text(PARENT, encoding="utf-8")
        (home / "caller.cpp").write_text(CALLER, encoding="utf-8")
        (home / "korvelcheck").symlink_to(SOURCE)
        for example in ("embed-cpp", "embed-own-store"):
            shutil.copytree(SOURCE / "examples" / example, home / example)
        build = home / "build"
        configured = run("cmake", "-G", "Ninja", "-S", home, "-B", build, f"-DCMAKE_CXX_COMPILER={OTHER_COMPILER}", "-DCMAKE_CXX_STANDARD=17",
            "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror", "-DCMAKE_UNITY_BUILD=ON")  # fmt: skip
        self.assertIn("changed settings: ''\n", configured)
        targets = run("ninja", "-C", build, "-t", "targets", "all")
        self.assertNotRegex(targets, r"(?i)gtest|korvel_tool|korvel_report|_test\b|ctest|Nightly")
        run("ninja", "-C", build)
        self.assertEqual(run(build / "embed_cpp", *CHANGE, cwd=home, status=1), REFUSAL)
        self.assertIn(REFUSAL, run(build / "embed_own_store", status=1))


class CoreOnly(unittest.TestCase):
    """An installation of the checker alone."""

    @classmethod
    def setUpClass(cls):
        cls.home = pathlib.Path(tempfile.mkdtemp()).resolve()
        cls.addClassCleanup(shutil.rmtree, cls.home)
        cls.prefix = cls.home / "prefix"
        run("cmake", "-G", "Ninja", "-S", SOURCE, "-B", cls.home / "build", "-DKORVEL_CORE_ONLY=ON", "-DCMAKE_BUILD_TYPE=Debug")
        run("ninja", "-C", cls.home / "build")
        run("cmake", "--install", cls.home / "build", "--prefix", cls.prefix)

    def test_installs_what_the_checker_needs(self):
        headers = self.prefix / "include/korvelcheck"
        installed = {str(path.relative_to(headers)) for path in self.prefix.glob("include/**/*.h")}
        store = {"qmx/qmx_metalib_kernel.h", "qmx/qmx_types.h", "vesk/closed_category.h", "vesk/vesk_category.h", "vesk/vesk_event.h"}
        self.assertEqual(installed, store | {f"common/{name}" for name in CHECKER_HEADERS})
        for path in installed:
            run(OTHER_COMPILER, *WARNINGS, "-fsyntax-only", "-I", headers, "-include", path, "-x", "c++", os.devnull)
        self.assertEqual(os.listdir(self.prefix / "lib/pkgconfig"), ["korvelcheck-core.pc"])

    def test_every_example_works(self):
        examples = self.prefix / "share/doc/korvelcheck/examples"
        self.assertEqual(os.listdir(examples), ["embed-own-store"])
        build = self.home / "build-example"
        run("cmake", "-S", examples / "embed-own-store", "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run("cmake", "--build", build)
        self.assertIn(REFUSAL, run(build / "embed_own_store", status=1))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
