#!/usr/bin/env python3
"""Tests HTML reports in headless Chromium: contents, filter, keys, accessibility.

    tests/browser/html_test.py KORVELCHECK SOURCE_DIRECTORY OUTPUT_DIRECTORY

Writes the pages and screenshots to the output directory. Exits with 77 if there is no browser, or fails if KORVEL_NEED_BROWSER
is set, as in CI.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    MISSING = None
except ImportError:
    MISSING = "python3-selenium"

KORVELCHECK, SOURCE, OUTPUT = None, None, None
DRIVER = None

# Names that would be markup in a page without escaping.
HOSTILE = {
    "markup": "&lt;script&gt;window.broken=1&lt;/script&gt;",
    "attribute": "&quot; autofocus onfocus=&quot;window.broken=2",
    "quote": "&apos;&gt;&lt;img src=x onerror=window.broken=3&gt;",
    "comment": "--&gt;&lt;!--",
    "entity": "&amp;lt;b&amp;gt;",
    "style": "&lt;/style&gt;&lt;style&gt;*{display:none}",
    "turned": "\u202egnirts",
    "tab": "a&#9;b&#10;c",
}


def library(version, tables):
    return f'<metalib name="mall" version="{version}" protocol="QMX">\n{tables}</metalib>\n'


def hostile_pair():
    """Every field changes its type, so each name appears in findings, changes, sources and pictures."""
    def table(kind, keys):
        fields = "".join(f'    <entry name="{name}" type="{kind}"/>\n' for name in HOSTILE.values())
        return f'  <meta name="t&lt;b&gt;">\n    <entry name="uid" type="{keys}"/>\n{fields}    <primarykey entries="uid"/>\n  </meta>\n'
    return library(1, table("uint32", "uint32")), library(2, table("uint64", "uint64"))


def wide_pair(fields=10_000, step=100):
    """A table of many fields; every hundredth has a refused change."""
    def table(is_new):
        lines = ['  <meta name="wide">', '    <entry name="uid" type="uint64"/>']
        for i in range(fields):
            kind = "uint8" if is_new and i % step == 0 else "uint32"
            lines.append(f'    <entry name="field_{i:05}" type="{kind}"/>')
        return "\n".join(lines + ['    <primarykey entries="uid"/>', "  </meta>", ""])
    return library(1, table(False)), library(2, table(True))


def many_pair(tables=500):
    """Tables with a wider key and a removed field each."""
    def table(number, is_new):
        lines = [f'  <meta name="table_{number:03}">', f'    <entry name="uid" type="{"uint64" if is_new else "uint32"}"/>',
                 '    <entry name="note" type="uint32"/>', '    <entry name="total" type="uint32"/>']
        return "\n".join(lines[:2 if is_new and number % 2 else 3] + lines[3:] + ['    <primarykey entries="uid"/>', "  </meta>", ""])
    return [library(version, "".join(table(i, version == 2) for i in range(tables))) for version in (1, 2)]


def shop(old, new):
    return SOURCE / "examples/shop" / old, SOURCE / "examples/shop" / new


def make_page(name, old, new, expected):
    """Writes a report and returns its path. `old` and `new` are paths or texts.

    The pages show relative paths, so that their layout does not depend on the directory of the build.
    """
    for role, schema in (("old", old), ("new", new)):
        text = schema if isinstance(schema, str) else schema.read_text(encoding="utf-8")
        (OUTPUT / f"{name}-{role}.xml").write_text(text, encoding="utf-8")
    page = OUTPUT / f"{name}.html"
    run = subprocess.run([KORVELCHECK, "check", f"{name}-old.xml", f"{name}-new.xml", "--format", "html", "-o", page.name],
                         capture_output=True, text=True, cwd=OUTPUT)
    assert run.returncode == expected, run
    return page


def open_browser():
    options = webdriver.ChromeOptions()
    options.binary_location = shutil.which("chromium")
    for argument in ("--headless=new", "--disable-gpu", "--disable-dev-shm-usage", "--window-size=1280,1000", "--hide-scrollbars"):
        options.add_argument(argument)
    if os.geteuid() == 0:
        options.add_argument("--no-sandbox")
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)


# The contrast between each text and its background: [text, ratio] for ratios below 4.5.
CONTRAST = """
const channels = (colour) => (colour.match(/[\\d.]+/g) || []).map(Number);
const light = (rgb) => {
  const [r, g, b] = rgb.map((c) => c / 255).map((c) => (c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4));
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const behind = (element) => {
  for (let at = element; at; at = at.parentElement) {
    const [r, g, b, a = 1] = channels(getComputedStyle(at).backgroundColor);
    if (a === 1) return [r, g, b];
    if (a > 0) throw new Error('translucent: ' + at.outerHTML.slice(0, 80));
  }
  throw new Error('no background');
};
const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
const bad = [];
let looked = 0;
while (walker.nextNode()) {
  const text = walker.currentNode.textContent.trim();
  const element = walker.currentNode.parentElement;
  if (!text || element.closest('script, style, title, desc') || !element.getClientRects().length) continue;
  const style = getComputedStyle(element);
  const front = channels(element.closest('svg') ? style.fill : style.color).slice(0, 3);
  const lights = [light(front), light(behind(element))].sort((a, b) => b - a);
  const ratio = (lights[0] + 0.05) / (lights[1] + 0.05);
  ++looked;
  if (ratio < 4.5) bad.push([text.slice(0, 40), ratio.toFixed(2), element.className]);
}
return [looked, bad];
"""


class Browser(unittest.TestCase):
    def open(self, page):
        DRIVER.get(page.as_uri())

    def all(self, selector):
        return DRIVER.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return DRIVER.find_element(By.CSS_SELECTOR, selector)

    def command(self, name, **parameters):
        return DRIVER.execute_cdp_cmd(name, parameters)

    def shown(self):
        return DRIVER.execute_script("return [...document.querySelectorAll('.item')].filter((e) => e.offsetParent).map((e) => e.id)")

    def focused(self):
        return DRIVER.execute_script("return document.activeElement.id || document.activeElement.className")

    def type(self, *keys):
        DRIVER.switch_to.active_element.send_keys(*keys)

    def resize(self, width, height=900):
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=width < 500)

    def scheme(self, value, media=""):
        self.command("Emulation.setEmulatedMedia", media=media, features=[{"name": "prefers-color-scheme", "value": value}])

    def is_visible(self, element):
        return DRIVER.execute_script("return arguments[0].checkVisibility()", element)

    def top_of(self, selector):
        return DRIVER.execute_script("return document.querySelector(arguments[0]).getBoundingClientRect().top", selector)

    def tearDown(self):
        self.command("Emulation.clearDeviceMetricsOverride")
        self.scheme("light")
        self.assertEqual(DRIVER.get_log("browser"), [], "messages in the console")


class Refused(Browser):
    def setUp(self):
        self.open(PAGES["refused"])

    def test_shows_the_verdict_first(self):
        self.assertIn("verdict: refused", self.one("header p").text)
        self.assertTrue(DRIVER.title.startswith("refused"))
        self.assertGreaterEqual(len(self.all("article.item.refused")), 1)
        self.assertGreaterEqual(len(self.all("li.item.allowed")), 2)

    def test_every_link_has_one_target(self):
        ids = DRIVER.execute_script("return [...document.querySelectorAll('[id]')].map((e) => e.id)")
        self.assertEqual(len(ids), len(set(ids)))
        links = DRIVER.execute_script("return [...document.querySelectorAll('a')].map((e) => e.getAttribute('href'))")
        self.assertGreater(len(links), 10)
        for link in links:
            self.assertIn(link.removeprefix("#"), ids)

    def test_findings_and_lines_are_linked_both_ways(self):
        line = self.one("article.item dd a").get_attribute("href").split("#")[1]
        back = self.all(f"tr:has([id='{line}']) a.mark")
        self.assertIn("f1", [link.get_attribute("href").split("#")[1] for link in back])
        back[0].click()
        self.assertEqual(self.focused(), "f1")

    def test_filters_by_status_and_text(self):
        everything = self.shown()
        self.one("input[value=allowed]").click()
        self.assertEqual(self.shown(), [item for item in everything if item.startswith("c")])
        self.one("input[value=waived]").click()
        self.assertEqual(self.shown(), [])
        self.one("input[value=all]").click()
        self.one("#search").send_keys("POSTCODE size")
        self.assertEqual(self.shown(), ["f1"])
        self.assertEqual(self.one("#count").text, f"1 of {len(everything)} shown")
        self.type(Keys.ESCAPE)
        self.assertEqual(self.shown(), everything)

    def test_link_to_hidden_item_shows_it(self):
        self.one("input[value=allowed]").click()
        self.assertNotIn("f1", self.shown())
        DRIVER.execute_script("location.hash = '#f1'")
        self.assertIn("f1", self.shown())

    def test_keys_go_through_the_findings(self):
        items = self.shown()
        for key in "nj":
            self.type(key)
        self.assertEqual(self.focused(), items[1])
        self.type("p")
        self.assertEqual(self.focused(), items[0])
        self.type("k")
        self.assertEqual(self.focused(), items[0], "it is the first")
        self.type("/")
        self.assertEqual(self.focused(), "search")
        self.type("n")
        self.assertEqual(self.one("#search").get_attribute("value"), "n", "keys typed into the search box are text")

    def test_first_tab_stop_is_the_skip_link(self):
        self.type(Keys.TAB)
        self.assertEqual(self.focused(), "skip")
        self.assertGreaterEqual(self.one(".skip").location["x"], 0)
        self.type(Keys.ENTER)
        self.assertEqual(self.focused(), "main")
        self.type(Keys.TAB)
        outline = DRIVER.execute_script("return getComputedStyle(document.activeElement).outlineWidth")
        self.assertEqual(outline, "3px")

    def test_tab_order_is_the_order_of_the_page(self):
        order = DRIVER.execute_script("""
            return [...document.querySelectorAll('a, input, summary, [tabindex="0"]')].map((e) => e.tabIndex)""")
        self.assertEqual(set(order), {0}, "no element changes the tab order")

    def test_pictures_have_descriptions(self):
        for picture in self.all("svg[role=img]"):
            for name in picture.get_attribute("aria-labelledby").split():
                text = DRIVER.execute_script("return document.getElementById(arguments[0]).textContent", name)
                self.assertTrue(text)
        self.assertGreaterEqual(len(self.all("svg[role=img]")), 1)

    def test_statuses_have_signs_besides_colors(self):
        for status, sign in (("refused", "\u2717"), ("allowed", "\u2713")):
            for badge in self.all(f".badge.{status}"):
                self.assertIn(sign, badge.text)
                self.assertIn(status, badge.text)

    def test_is_readable_without_script(self):
        self.command("Emulation.setScriptExecutionDisabled", value=True)
        try:
            self.open(PAGES["refused"])
            body = self.one("body").text
            self.assertIn("verdict: refused", body)
            self.assertIn("postcode", body)
            self.assertNotIn("of 0 shown", body)
            self.assertFalse(self.one("#filter").is_displayed())
            self.assertTrue(self.one("#f1").is_displayed())
        finally:
            self.command("Emulation.setScriptExecutionDisabled", value=False)

    def test_fits_wide_and_narrow_windows(self):
        for width in (1280, 768, 390):
            self.resize(width)
            found = DRIVER.execute_script("return document.documentElement.scrollWidth")
            self.assertLessEqual(found, width)

    def test_wide_parts_say_that_they_scroll(self):
        for width, hint in ((1280, "none"), (390, '"scrolls sideways \u2192"')):
            self.resize(width)
            scroll = self.one(".scroll")
            found = DRIVER.execute_script("return [getComputedStyle(arguments[0], '::before').content, "
                                          "arguments[0].scrollWidth > arguments[0].clientWidth]", scroll)
            self.assertEqual(found, [hint, width == 390])

    def test_rules_are_explained_in_the_page(self):
        link = self.one("article.item .result a")
        section = self.one("[id='" + link.get_attribute("href").split("#")[1] + "']")
        self.assertIn(link.text, section.text)
        self.assertIn("Allowed instead", section.text)

    def test_print_shows_everything(self):
        closed = self.one("main details:not([open]) td")
        self.assertFalse(self.is_visible(closed))
        self.scheme("light", "print")
        self.assertTrue(self.is_visible(closed))
        for hidden in ("nav", "form"):
            self.assertFalse(self.one(hidden).is_displayed())
        looked, bad = DRIVER.execute_script(CONTRAST)
        self.assertGreater(looked, 100)
        self.assertEqual(bad, [])

    def test_text_has_contrast_in_both_schemes(self):
        for scheme in ("light", "dark"):
            self.scheme(scheme)
            looked, bad = DRIVER.execute_script(CONTRAST)
            self.assertGreater(looked, 100)
            self.assertEqual(bad, [], scheme)

    def test_screenshots(self):
        for name, width, scheme, media in (("wide-light", 1280, "light", ""), ("wide-dark", 1280, "dark", ""),
                                           ("tablet", 768, "light", ""), ("narrow", 390, "light", ""),
                                           ("printed", 1280, "light", "print")):
            self.scheme(scheme, media)
            self.resize(width)
            height = DRIVER.execute_script("return document.documentElement.scrollHeight")
            self.resize(width, min(height, 6000))
            path = OUTPUT / f"report-{name}.png"
            self.assertTrue(DRIVER.save_screenshot(str(path)))
            self.assertGreater(path.stat().st_size, 10_000)


class Many(Browser):
    def setUp(self):
        self.open(PAGES["many"])

    def test_first_screen_shows_the_first_finding(self):
        for width, height in ((1280, 800), (768, 1024), (390, 844)):
            self.resize(width, height)
            self.assertLess(self.top_of("#f1 .problem"), height - 100, width)

    def test_lists_of_tables_and_rules_open(self):
        for label, items in (("tables", 500), ("rules", 2)):
            summary = self.one(f"nav[aria-label={label}] summary")
            links = self.all(f"nav[aria-label={label}] li")
            self.assertEqual(len(links), items)
            self.assertFalse(self.is_visible(links[0]))
            summary.click()
            self.assertTrue(self.is_visible(links[0]))
        self.assertEqual([link.text.split()[:2] for link in links], [["500", "primary-key.size"], ["250", "field.missing"]])

    def test_search_also_applies_to_the_list_of_tables(self):
        self.one("nav[aria-label=tables] summary").click()
        self.one("#search").send_keys("table_123")
        shown = [link.text for link in self.all("nav[aria-label=tables] a") if link.is_displayed()]
        self.assertEqual(shown, ["table_123"])


class Others(Browser):
    def test_allowed_change(self):
        self.open(PAGES["allowed"])
        self.assertIn("verdict: allowed", self.one("header p").text)
        self.assertEqual(self.all("article.item"), [])

    def test_names_do_not_become_markup(self):
        self.open(PAGES["hostile"])
        self.assertIsNone(DRIVER.execute_script("return window.broken"))
        self.assertEqual(self.all("img, b, svg script"), [])
        self.assertEqual(len(self.all("script")), 1)
        self.assertEqual(len(self.all("style")), 1)
        text = self.one("main").text
        for name in ("<script>window.broken=1</script>", "'><img src=x onerror=window.broken=3>", "--><!--", "&lt;b&gt;"):
            self.assertIn(name, text)
        self.assertNotIn("\u202e", text)

    def test_injected_scripts_do_not_run(self):
        self.open(PAGES["allowed"])
        DRIVER.execute_script("const s = document.createElement('script'); s.textContent = 'window.broken = 1'; document.body.append(s)")
        self.assertIsNone(DRIVER.execute_script("return window.broken"))
        self.assertIn("Content Security Policy", DRIVER.get_log("browser")[0]["message"])

    def test_wide_table_fits_a_page(self):
        self.open(PAGES["large"])
        self.assertIn("Only lines near a finding or change are shown", self.one("main").text)
        self.assertLess(DRIVER.execute_script("return document.querySelectorAll('*').length"), 300_000)
        for item in ("f1", "f2"):
            self.type("n")
            self.assertEqual(self.focused(), item)


def need(reason):
    print(f"html_test: {reason}", file=sys.stderr)
    sys.exit(1 if os.environ.get("KORVEL_NEED_BROWSER") else 77)


if __name__ == "__main__":
    for program in ("chromium", "chromedriver"):
        MISSING = MISSING or (None if shutil.which(program) else program)
    if MISSING:
        need(f"{MISSING} is missing")
    KORVELCHECK, SOURCE, OUTPUT = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3]).resolve()
    OUTPUT.mkdir(parents=True, exist_ok=True)
    PAGES = {
        "refused": make_page("refused", *shop("v6.xml", "v7-several-changes.xml"), 1),
        "allowed": make_page("allowed", *shop("v6.xml", "v7.xml"), 0),
        "hostile": make_page("hostile", *hostile_pair(), 1),
        "large": make_page("large", *wide_pair(), 1),
        "many": make_page("many", *many_pair(), 1),
    }
    # A separate profile, so that the user's profile is neither read nor written.
    with tempfile.TemporaryDirectory() as home:
        os.environ["HOME"] = home
        DRIVER = open_browser()
        try:
            ran = unittest.main(argv=sys.argv[:1], exit=False)
        finally:
            DRIVER.quit()
    sys.exit(0 if ran.result.wasSuccessful() else 1)
