#!/usr/bin/env python3
"""Tests the Python package: package_test.py SOURCE_DIRECTORY KORVELCHECK LIBRARY"""

import concurrent.futures
import copy
import dataclasses
import doctest
import gc
import os
import pathlib
import pickle
import shutil
import subprocess
import sys
import tempfile
import threading
import unittest

from support import SOURCE, package_directory

PACKAGE = package_directory()
sys.path.insert(0, str(PACKAGE))
import korvelcheck  # noqa: E402

OLD = """<metalib name="shop" version="1" protocol="QMX">
  <meta name="orders"><entry name="uid" type="uint32"/><primarykey entries="uid"/></meta>
  <meta name="stock"><entry name="id" type="uint32"/><primarykey entries="id"/></meta>
</metalib>
""".encode()
NEW = OLD.replace(b'name="uid" type="uint32"', b'name="uid" type="uint64"').replace(b'version="1"', b'version="2"')


def schema(data, name="shop.xml"):
    return korvelcheck.Schema.parse(name, data)


class Check(unittest.TestCase):
    def test_refused_change(self):
        report = korvelcheck.check(schema(OLD, "old.xml"), schema(NEW, "new.xml"))
        self.assertEqual((report.verdict, report.allowed), ("refused", False))
        self.assertEqual([(table.name, table.status, table.code) for table in report.tables], [("orders", "refused", -3), ("stock", "allowed", 0)])
        [finding] = report.findings
        self.assertEqual((finding.level, finding.table, finding.rule), ("refused", "orders", "primary-key.size"))
        self.assertEqual(str(finding.location), "new.xml:2:47")
        self.assertEqual(str(finding.old_location), "old.xml:2:47")
        self.assertEqual(finding.changes, ("type of uid: uint32 -> uint64",))
        self.assertRegex(finding.fingerprint, "^[0-9a-f]{16}$")

    def test_fix_makes_the_change_allowed(self):
        [finding] = korvelcheck.check(schema(OLD), schema(NEW)).findings
        fixed = NEW
        for edit in reversed(finding.fix):
            fixed = fixed[: edit.offset] + edit.text.encode() + fixed[edit.offset + edit.length :]
        self.assertTrue(korvelcheck.check(schema(OLD), schema(fixed)).allowed)

    def test_chosen_tables(self):
        report = korvelcheck.check(schema(OLD), schema(NEW), tables=["stock"])
        self.assertTrue(report.allowed)
        self.assertEqual([table.name for table in report.tables], ["stock"])

    def test_wrong_tables(self):
        for tables, error in ((["nothing"], korvelcheck.SchemaError), ([], ValueError), ("orders", TypeError), (["a\0b"], ValueError)):
            with self.assertRaises(error):
                korvelcheck.check(schema(OLD), schema(OLD), tables=tables)

    def test_removed_table(self):
        report = korvelcheck.check(schema(OLD), schema(OLD[: OLD.index(b"  <meta name=\"stock")] + b"</metalib>\n"))
        self.assertEqual([table.name for table in report.tables if table.removed], ["stock"])

    def test_removed_field_is_reported_where_it_was(self):
        old = OLD.replace(b"<primarykey", b'<entry name="note" type="uint32"/><primarykey', 1)
        [finding] = korvelcheck.check(schema(old, "old.xml"), schema(OLD, "new.xml")).findings
        self.assertEqual((finding.rule, str(finding.location)), ("field.missing", "old.xml:2:56"))

    def test_other_tables_of_a_shared_structure(self):
        def library(kind):
            fields = "".join(f'<entry name="{name}" type="{kind}"/>' for name in "ab")
            tables = "".join(f'<meta name="t{i}"><entry name="id" type="uint32"/><entry name="x" type="x"/><primarykey entries="id"/></meta>\n'
                             for i in range(10))
            return f'<metalib name="m" version="1" protocol="QMX"><meta name="x">{fields}</meta>\n{tables}</metalib>'.encode()
        tables = [f"t{i}" for i in range(10)]
        report = korvelcheck.check(schema(library("uint32")), schema(library("uint8")), tables=tables)
        paths = [[other.path for other in finding.also] for finding in report.findings]
        self.assertEqual(paths, [[f"t{i}.x.{name}" for i in range(1, 10)] for name in "ab"])

    def test_warnings_may_fail(self):
        case = SOURCE / "tests/cases/warnings/key-members-allowed"
        report = korvelcheck.check(case / "old.xml", case / "new.xml", settings={"fail-on": "warning"})
        self.assertEqual((report.allowed, report.passes), (True, False))
        self.assertTrue(korvelcheck.check(case / "old.xml", case / "new.xml").passes)

    def test_left_out_findings_are_counted(self):
        both = NEW.replace(b'name="id" type="uint32"', b'name="id" type="uint64"')
        report = korvelcheck.check(schema(OLD), schema(both), settings={"max-findings": "1"})
        self.assertEqual((len(report.findings), report.left_out), (1, 1))

    def test_warning(self):
        case = SOURCE / "tests/cases/warnings/key-members-allowed"
        report = korvelcheck.check(case / "old.xml", case / "new.xml")
        self.assertTrue(report.allowed)
        [warning] = report.warnings
        self.assertEqual((warning.level, warning.rule, warning.code), ("warning", "advice.key-members", 0))

    def test_settings(self):
        for key, value in (("created-as", "tlv"), ("server-version", "3.29.0"), ("whitelist", "a;b")):
            korvelcheck.check(schema(OLD), schema(OLD), settings={key: value}, table_settings={"orders": {key: value}})
        for settings in ({"unknown": "1"}, {"type": "heap"}, {"list-num": "many"}):
            with self.assertRaises(korvelcheck.ArgumentError):
                korvelcheck.check(schema(OLD), schema(OLD), settings=settings)

    def test_formats(self):
        report = korvelcheck.check(schema(OLD), schema(NEW))
        self.assertEqual(report.render("json"), report.json)
        self.assertIn("verdict: refused", report.render("text"))
        self.assertIn("<html", report.render("html"))
        with self.assertRaisesRegex(korvelcheck.ArgumentError, "xls"):
            report.render("xls")

    def test_report_is_a_value(self):
        reports = [korvelcheck.check(schema(OLD), schema(NEW)) for _ in range(2)]
        self.assertEqual(*reports)
        self.assertEqual(hash(reports[0].findings), hash(reports[1].findings))
        with self.assertRaises(dataclasses.FrozenInstanceError):
            reports[0].verdict = "allowed"

    def test_reports_can_be_copied_and_sent(self):
        report = korvelcheck.check(schema(OLD), schema(NEW))
        self.assertEqual(copy.deepcopy(report), report)
        self.assertEqual(dataclasses.asdict(report)["verdict"], "refused")
        sent = pickle.loads(pickle.dumps(report))
        self.assertEqual(sent, report)
        with self.assertRaises(RuntimeError):
            sent.render("html")

    def test_report_outlives_its_schemas(self):
        report = korvelcheck.check(schema(OLD), schema(NEW))
        gc.collect()
        self.assertIn("uint64", report.render("html"))


class Errors(unittest.TestCase):
    def test_faults_have_locations(self):
        with self.assertRaises(korvelcheck.SchemaError) as caught:
            schema(OLD.replace(b'type="uint32"', b'type="unit32"'))
        faults = caught.exception.faults
        self.assertEqual([(fault.file, fault.line, fault.column) for fault in faults], [("shop.xml", 2, 47), ("shop.xml", 3, 45)])
        self.assertIn("uint32", faults[0].message)
        self.assertEqual(str(caught.exception).splitlines(), [str(fault) for fault in faults])

    def test_missing_file(self):
        with self.assertRaisesRegex(korvelcheck.SchemaError, "no/such.xml"):
            korvelcheck.Schema("no/such.xml")

    def test_unknown_rule(self):
        with self.assertRaisesRegex(korvelcheck.ArgumentError, "no.rule"):
            korvelcheck.explain("no.rule")

    def test_errors_can_be_sent(self):
        with self.assertRaises(korvelcheck.SchemaError) as caught:
            korvelcheck.Schema("no/such.xml")
        sent = pickle.loads(pickle.dumps(caught.exception))
        self.assertEqual((type(sent), str(sent), sent.faults), (korvelcheck.SchemaError, str(caught.exception), caught.exception.faults))

    def test_wrong_types(self):
        with self.assertRaises(TypeError):
            korvelcheck.check(schema(OLD), schema(OLD), settings={"max-findings": 1})
        with self.assertRaises(TypeError):
            korvelcheck.check(schema(OLD), schema(OLD), tables=[b"orders"])
        with self.assertRaises(TypeError):
            schema("text")

    def test_zero_byte_does_not_end_a_path(self):
        path = SOURCE / "examples/shop/v6.xml"
        with self.assertRaises(ValueError):
            korvelcheck.Schema(f"{path}\0.new")

    def test_all_are_errors_of_the_package(self):
        for name in ("ArgumentError", "InternalError", "SchemaError"):
            self.assertTrue(issubclass(getattr(korvelcheck, name), korvelcheck.Error))


class Schemas(unittest.TestCase):
    def test_names_and_tables(self):
        one = schema(OLD)
        self.assertEqual((one.name, one.library, one.version, one.is_image, one.tables), ("shop.xml", "shop", 1, False, ("orders", "stock")))

    def test_image_is_the_same_schema(self):
        image = schema(schema(OLD).image(), "shop.kqm")
        self.assertTrue(image.is_image)
        self.assertEqual(image.image(), schema(OLD).image())
        self.assertEqual(korvelcheck.check(image, schema(NEW)).verdict, "refused")

    def test_copy_is_the_same_schema(self):
        one = schema(OLD)
        other = copy.copy(one)
        del one
        gc.collect()
        self.assertEqual((other.name, copy.deepcopy(other).tables), ("shop.xml", ("orders", "stock")))
        with self.assertRaises(TypeError):
            pickle.dumps(other)

    def test_can_be_used_while_the_interpreter_exits(self):
        program = ("import atexit, korvelcheck\nshop = 'examples/shop/'\natexit.register(lambda: print(report.render('text')[:8]))\n"
                   "report = korvelcheck.check(shop + 'v6.xml', shop + 'v7.xml')\n")
        done = subprocess.run([sys.executable, "-B", "-c", program], cwd=SOURCE, env={"PYTHONPATH": str(PACKAGE)}, capture_output=True,
                              text=True, check=False)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "verdict:\n", ""))

    def test_file_that_shrinks_does_no_harm(self):
        with tempfile.TemporaryDirectory() as directory:
            path = pathlib.Path(directory, "shop.kqm")
            path.write_bytes(schema(OLD).image())
            loaded = korvelcheck.Schema(path)
            os.truncate(path, 0)
            self.assertEqual(loaded.image(), schema(OLD).image())

    def test_lint(self):
        self.assertTrue(korvelcheck.lint(schema(OLD)).allowed)


class Library(unittest.TestCase):
    def test_threads_share_schemas(self):
        old, new = schema(OLD), schema(NEW)
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            texts = {report.json for report in pool.map(lambda _: korvelcheck.check(old, new), range(200))}
        self.assertEqual(len(texts), 1)

    def test_interpreter_lock_is_released(self):
        """Another thread runs during a large check."""
        fields = "".join(f'<entry name="f{i}" type="uint32"/>' for i in range(20_000))
        data = OLD.replace(b"<primarykey", fields.encode() + b"<primarykey", 1)
        old, new = schema(data), schema(data.replace(b'name="uid" type="uint32"', b'name="uid" type="uint64"'))
        ran, done = threading.Event(), threading.Event()
        counted = []

        def count():
            ran.set()
            while not done.is_set():
                counted.append(1)

        thread = threading.Thread(target=count)
        thread.start()
        ran.wait()
        before = len(counted)
        korvelcheck.check(old, new)
        after = len(counted)
        done.set()
        thread.join()
        self.assertGreater(after, before)

    def test_version(self):
        self.assertEqual(korvelcheck.version(), korvelcheck.build_info()["version"])

    def test_explain(self):
        self.assertTrue(korvelcheck.explain("primary-key.size").startswith("# primary-key.size\n"))


class Style(unittest.TestCase):
    def test_types(self):
        if not shutil.which("mypy"):
            self.skipTest("mypy is missing")
        done = subprocess.run(["mypy", "--strict", "--cache-dir", os.devnull, SOURCE / "python/korvelcheck"], capture_output=True, text=True,
                              check=False)
        self.assertEqual(done.returncode, 0, done.stdout)

    def test_examples_in_documentation(self):
        os.chdir(SOURCE)
        tested = 0
        for name in sorted(name for name in sys.modules if name.split(".")[0] == "korvelcheck"):
            result = doctest.testmod(sys.modules[name])
            self.assertEqual(result.failed, 0, name)
            tested += result.attempted
        self.assertGreater(tested, 5)


if __name__ == "__main__":
    ran = unittest.main(argv=["package_test.py"], exit=False)
    shutil.rmtree(PACKAGE)
    sys.exit(0 if ran.result.wasSuccessful() else 1)
