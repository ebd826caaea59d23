#!/usr/bin/env python3
"""Does what docs/editors.md says in the editors: editors_test.py SOURCE_DIRECTORY KORVELCHECK

The tests of Emacs, a large package, are skipped without it.
"""

import json
import os
import re
import shutil
import unittest

from repository import GROWN, OLD, SOURCE, WIDE_KEY, Repository

INSTALLED = "/usr/local/share/korvelcheck"
DIRECTORIES = {"qmx.rng": "docs", "qmx.rnc": "docs", "korvelcheck.lua": "editors/nvim"}
KEY_REFUSED = "[primary-key.size] the size of a primary key field changed"
KEY_SUGGESTED = "  suggestion: keep uid as it is; add a new field uid_2 (uint64, version 2) for the new values; the key does not change"

WAIVER = '\n[[waivers]]\ntable = "orders"\nrule = "primary-key.size"\nentry = "uid"\nreason = "empty"\nuntil = 2099-01-01\n'

with open(os.path.join(SOURCE, "docs/editors.md"), encoding="utf-8") as page:
    PAGE = page.read()


def blocks(language):
    """The code blocks of the page in a language, with the paths of the sources of installed files."""
    def source(found):
        return os.path.join(SOURCE, DIRECTORIES[found[1]], found[1])
    return [re.sub(INSTALLED + r"/([\w.]+)", source, found) for found in re.findall(rf"```{language}\n(.*?)```", PAGE, re.DOTALL)]


class EditorTest(Repository):
    """A project with an empty home directory."""

    def setUp(self):
        super().setUp()
        self.write('[schemas]\npaths = ["schemas/*.xml"]\nagainst = "git:HEAD"\n', "korvelcheck.toml")

    def configure(self, name, text):
        path = self.path(name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)


class VimTest:
    """The same lines, in vim and in Neovim."""

    LIST = "map(getqflist(), {_, item -> [item.bufnr ? bufname(item.bufnr) : '', item.lnum, item.col, item.type, item.text]})"

    def setUp(self):
        super().setUp()
        compiler, plugin = blocks("vim")
        self.configure(f"{self.CONFIGURATION}/compiler/korvelcheck.vim", compiler)
        self.configure(f"{self.CONFIGURATION}/after/ftplugin/xml.vim", plugin)
        self.configure(".vimrc", "filetype plugin on\n")

    def make(self, arguments, file=Repository.SCHEMA_FILE):
        """What the page calls the list of locations after :make, and the line of the cursor."""
        out = self.path("out")
        name = file.replace(" ", "\\ ")
        save = f"call writefile([json_encode([{self.LIST}, line('.')])], '{out}')"
        script = [f"edit {name}", "set autowrite", f"silent make {arguments}", save]
        command = [*self.COMMAND, *(word for line in script for word in ("-c", line)), "-c", "qall!"]
        done = self.run_in(self.repository, command)
        self.assertEqual(done.returncode, 0, done.stdout)
        with open(out, encoding="utf-8") as file:
            return json.load(file)

    def test_goes_to_refused_change(self):
        self.write(WIDE_KEY)
        items, line = self.make("check")
        self.assertEqual([item for item in items if item[0]], [
            [self.SCHEMA_FILE, 2, 3, "E", "table orders: -3 ERROR_VALUE_FIELD"],
            [self.SCHEMA_FILE, 3, 29, "E", KEY_REFUSED],
        ])  # fmt: skip
        self.assertEqual(line, 2)
        self.assertIn(["", 0, 0, "", KEY_SUGGESTED], items)

    def test_goes_to_fault_of_a_file(self):
        self.write(OLD.replace("uint32", "unit32"))
        items, line = self.make("lint %:S")
        self.assertEqual([item[:4] for item in items], [[self.SCHEMA_FILE, 3, 29, "E"]])
        self.assertIn("did you mean 'uint32'?", items[0][4])
        self.assertEqual(line, 3)

    def test_marks_waived_findings(self):
        self.write(WIDE_KEY)
        with open(os.path.join(self.repository, "korvelcheck.toml"), "a", encoding="utf-8") as file:
            file.write(WAIVER)
        items, _ = self.make("check")
        self.assertIn([self.SCHEMA_FILE, 3, 29, "I", KEY_REFUSED], items)

    def test_marks_notes_and_warnings(self):
        with open(os.path.join(self.repository, "korvelcheck.toml"), "a", encoding="utf-8") as file:
            file.write(WAIVER)
        self.write(GROWN.replace('version="2" protocol', 'version="1" protocol'))
        items, _ = self.make("check")
        self.assertEqual([[item[0], item[3]] for item in items if item[0]], [[self.SCHEMA_FILE, "N"], ["korvelcheck.toml", "W"]])

    def test_goes_to_fault_of_the_project_file(self):
        self.write("[schema]\n", "korvelcheck.toml")
        items, _ = self.make("check")
        self.assertEqual([item[:4] for item in items], [["korvelcheck.toml", 1, 2, "E"]])

    def test_shows_why_a_call_failed(self):
        items, _ = self.make("check --against git:nowhere")
        self.assertEqual(items, [["", 0, 0, "", "korvelcheck: git:nowhere: unknown revision 'nowhere'"]])

    def test_leaves_other_xml_files_alone(self):
        self.write("<project/>\n", "build.xml")
        items, _ = self.make("--version", "build.xml")
        self.assertNotIn("korvelcheck", json.dumps(items))


class Neovim(VimTest, EditorTest):
    CONFIGURATION = ".config/nvim"
    COMMAND = ["nvim", "--headless"]


class Vim(VimTest, EditorTest):
    CONFIGURATION = ".vim"
    COMMAND = ["vim", "-es", "-N", "-u", "~/.vimrc"]


@unittest.skipUnless(shutil.which("emacs"), "Emacs is not installed")
class Emacs(EditorTest):
    """The test plays the part of the keys: it calls what they are bound to."""

    def setUp(self):
        super().setUp()
        (init,) = blocks("elisp")
        self.configure(".emacs.d/init.el", init)
        self.configure(".emacs.d/korvelcheck.xml", blocks("xml")[0])

    def emacs(self, text, expression):
        """The value of an expression at the end of a schema file, after validation."""
        self.write(text)
        script = f"""(progn
            (load "~/.emacs.d/init.el")
            (find-file "{self.SCHEMA_FILE}")
            (rng-validate-while-idle (current-buffer))
            (goto-char (point-max))
            (princ {expression}))"""
        done = self.run_in(self.repository, ["emacs", "--batch", "-Q", "--eval", script])
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout.strip().splitlines()[-1]

    def completions(self, text):
        table = "(let ((found (rng-completion-at-point))) (all-completions (buffer-substring (nth 0 found) (nth 1 found)) (nth 2 found)))"
        return set(re.sub("[()]", "", self.emacs(text, table)).split())

    def test_validates_with_the_grammar(self):
        self.assertEqual(self.emacs(OLD, "(list major-mode rng-error-count)"), "(nxml-mode 0)")
        self.assertEqual(self.emacs(OLD.replace("uint32", "string"), "rng-error-count"), "1")

    def test_has_the_keys(self):
        keys = ("C-M-i", "C-c C-n", "M-g n", "M-g p")
        bound = self.emacs(OLD, f"(mapcar (lambda (key) (key-binding (kbd key))) (quote ({' '.join(json.dumps(key) for key in keys)})))")
        self.assertEqual(bound, "(completion-at-point rng-next-error next-error previous-error)")
        self.assertLessEqual(set(keys), set(re.findall(r"`(C-[^`]*|M-g .)`", PAGE)))

    def test_goes_to_faults(self):
        text = OLD.replace('type="uint32"', 'type="string" size="0"')
        self.assertEqual(self.emacs(text, "(progn (goto-char (point-min)) (rng-next-error 1) (line-number-at-pos))"), "3")

    def test_completes(self):
        library = '<metalib name="m" version="1"'
        entry = library + '><meta name="t"><entry name="a" '
        self.assertEqual(self.completions(library + ' protocol="'), {"QMX", "TLV"})
        self.assertLessEqual({"type", "id", "version", "count", "refer", "customattr2", "desc", "size"}, self.completions(entry))
        self.assertEqual(self.completions(entry + 'type="u'), {"uint8", "uint16", "uint32", "uint64"})
        self.assertLessEqual({"entry", "primarykey", "splittablekey", "index"}, self.completions(library + '><meta name="t"><'))

    def test_goes_to_refused_changes(self):
        check = """(progn
            (require 'compile)
            (let ((process (get-buffer-process (compile "korvelcheck check"))))
              (while (process-live-p process) (accept-process-output process)))
            (next-error) (next-error)
            (list (line-number-at-pos) (current-column)))"""
        self.assertEqual(self.emacs(WIDE_KEY, check), "(3 28)")


class OtherEditors(EditorTest):
    def test_the_matcher_of_vs_code_finds_locations(self):
        pattern = json.loads(blocks("json")[0])["tasks"][0]["problemMatcher"]["pattern"]
        self.write(WIDE_KEY)
        printed = self.run_in(self.repository, ["korvelcheck", "check"]).stdout
        keys = ("file", "line", "column", "severity", "code", "message")
        found = [[match[pattern[key]] for key in keys] for match in re.finditer(pattern["regexp"], printed, re.MULTILINE)]
        self.assertEqual(found, [
            [self.SCHEMA_FILE, "2", "3", "refused", None, "table orders: -3 ERROR_VALUE_FIELD"],
            [self.SCHEMA_FILE, "3", "29", "refused", "primary-key.size", KEY_REFUSED.split("] ")[1]],
        ])  # fmt: skip

    def test_the_reader_ignores_the_line_with_the_grammar(self):
        line = blocks("xml")[1]
        self.write(line + OLD)
        self.assertEqual(self.run_in(self.repository, ["korvelcheck", "lint"]).returncode, 0)
        grammar = re.search('href="file://([^"]+)"', line)[1]
        done = self.run_in(self.repository, ["xmllint", "--noout", "--relaxng", grammar, self.SCHEMA_FILE])
        self.assertEqual(done.returncode, 0, done.stdout)


if __name__ == "__main__":
    unittest.main(argv=["editors_test"])
