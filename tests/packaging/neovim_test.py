#!/usr/bin/env python3
"""Does what docs/editors.md says about Neovim with the language server: neovim_test.py SOURCE_DIRECTORY KORVELCHECK

Types real keys in a terminal and reads its screen.
"""

import html
import re
import unittest
import urllib.request

from editors_test import PAGE, EditorTest, blocks
from terminal import Terminal

SHOP = """<metalib name="shop" version="1" protocol="QMX">
  <meta name="orders">
    <entry name="uid" type="uint32"/>
    <entry name="price" type="int64"/>
    <primarykey entries="uid"/>
  </meta>
</metalib>
"""
REFUSED = "a field's size was reduced: orders.price"
SUGGESTED = "suggestion: keep price as it is; add a new field price_2 (int32, version 2) for the new values"

# Requests are lost before the server has started.
READY = """
local function is_ready()
  local client = vim.lsp.get_active_clients()[1]
  return client and client.initialized
end
vim.api.nvim_create_user_command('Ready', function()
  if vim.wait(100000, is_ready) then print('the server answers') end
end, {})
"""


class Neovim(EditorTest):
    def setUp(self):
        super().setUp()
        (install,) = blocks("sh")
        self.assertEqual(self.run_in(self.directory, ["sh", "-eu", "-c", install]).returncode, 0)
        [keys] = blocks("lua")
        self.configure(".config/nvim/plugin/language_server_keys.lua", keys)
        self.configure(".config/nvim/plugin/ready.lua", READY)
        self.commit(SHOP)

    def edit(self, *arguments, size=()):
        terminal = Terminal(["nvim", *arguments], self.repository, self.environment, *size)
        self.addCleanup(terminal.close)
        return terminal

    def edit_unchanged(self, *size):
        terminal = self.edit(self.SCHEMA_FILE, size=size)
        terminal.wait(lambda screen: 'type="int64"' in screen)
        terminal.type(":Ready\r")
        terminal.wait(lambda screen: "the server answers" in screen)
        return terminal

    def edit_refused(self, *size):
        """The field is narrower than in the baseline, and the reason is on the screen."""
        terminal = self.edit_unchanged(*size)
        terminal.type("/int64\rcwint32\x1b")
        terminal.wait(lambda screen: REFUSED in screen)
        return terminal

    def select(self, terminal, action):
        """Lists the fixes for the next mark and selects one."""
        terminal.type("gg]d")
        terminal.wait(lambda screen: SUGGESTED in screen)
        terminal.type("gra")
        screen = terminal.wait(lambda screen: "Type number and <Enter>" in screen)
        number = re.search(rf"^(\d): {action}", screen, re.MULTILINE)
        self.assertIsNotNone(number, screen)
        terminal.type(number[1] + "\r")

    def test_shows_and_fixes_a_refused_change(self):
        terminal = self.edit_refused()
        self.assertRegex(terminal.text(), r'(?m)^E .*type="int32".* ' + REFUSED)
        self.select(terminal, "Fix: keep price as it is; ")
        screen = terminal.wait(lambda screen: "price_2" in screen and REFUSED not in screen)
        self.assertNotRegex(screen, "(?m)^E ")
        terminal.type(":wq\r")
        terminal.wait_for_exit()
        fixed = SHOP.replace("version=\"1\"", "version=\"2\"").replace(
            "    <primarykey", '    <entry name="price_2" type="int32" version="2"/>\n    <primarykey')
        self.assertEqual(self.read(f"repository/{self.SCHEMA_FILE}"), fixed)
        self.assertEqual(self.run_in(self.repository, ["korvelcheck", "check"]).returncode, 0)

    def test_waives_a_refused_change(self):
        terminal = self.edit_refused()
        self.select(terminal, "Waive until ")
        terminal.wait(lambda screen: re.search(r"(?m)^I .*type=\"int32\"", screen))
        terminal.type(":wall\r:quit\r")
        terminal.wait_for_exit()
        self.assertEqual(self.run_in(self.repository, ["korvelcheck", "check"]).returncode, 0)

    def test_shows_the_message_of_a_line(self):
        terminal = self.edit_refused()
        terminal.type("\x17d")
        terminal.wait(lambda screen: SUGGESTED in screen)

    def test_shows_what_is_under_the_cursor(self):
        terminal = self.edit_unchanged()
        terminal.type("/price\rK")
        terminal.wait(lambda screen: "8 bytes" in screen and "offset 4" in screen)

    def test_renames_what_is_new(self):
        zone = '    <entry name="zone" type="uint32" version="2"/>\n'
        by_zone = '    <index name="by_zone">\n      <column entry="zone"/>\n    </index>\n'
        self.write(SHOP.replace('version="1"', 'version="2"').replace("    <primarykey", zone + "    <primarykey")
                   .replace("  </meta>", by_zone + "  </meta>"))
        terminal = self.edit_unchanged()
        terminal.type("/zone\rgrn")
        terminal.wait(lambda screen: "New Name: zone" in screen)
        terminal.type("2\r")
        terminal.wait(lambda screen: screen.count('"zone2"') == 2)

    def test_goes_to_the_definition(self):
        terminal = self.edit_unchanged()
        terminal.type("/entries=.uid\rf\"lgd")
        terminal.wait(lambda screen: re.search(r" 3,\d+ ", screen))

    def test_shows_summary_and_report_of_a_table(self):
        terminal = self.edit_refused()
        terminal.wait(lambda screen: re.search(r'(?m)<meta name="orders">.* 8 bytes, 1 refused$', screen))
        terminal.type("/<meta name\rgrx")
        screen = terminal.wait(lambda screen: re.search(r"file://\S+\.html", screen))
        with urllib.request.urlopen(re.search(r"file://\S+\.html", screen)[0]) as page:
            self.assertIn("a field's size was reduced", html.unescape(page.read().decode()))

    def test_shows_summaries_of_all_windows(self):
        self.write(SHOP.replace("int64", "int16"), "other.xml")
        terminal = self.edit(self.SCHEMA_FILE, "-O", "other.xml")
        terminal.wait(lambda screen: re.search(r'(?m)<meta name="orders"> 12 bytes .*<meta name="orders"> 6 bytes$', screen))
        terminal.type(":echo 'clients:' luaeval('#vim.lsp.get_active_clients()')\r")
        terminal.wait(lambda screen: "clients: 1" in screen)

    def test_completes(self):
        terminal = self.edit_unchanged()
        terminal.type("/uint32\rcwui\x18\x0f")
        terminal.wait(lambda screen: all(f"uint{bits} " in screen for bits in (8, 16, 32, 64)))

    def test_checks_the_project_file(self):
        terminal = self.edit("korvelcheck.toml")
        terminal.wait(lambda screen: "paths" in screen)
        terminal.type("/paths\rcwpath\x1b")
        terminal.wait(lambda screen: "did you mean 'paths'?" in screen)

    def test_recognizes_a_new_file_when_it_is_written(self):
        terminal = self.edit("schemas/new.xml")
        terminal.type("i" + SHOP.replace("uint32", "unit32") + "\x1b:w\r")
        terminal.wait(lambda screen: "unknown type 'unit32'" in screen)

    def test_leaves_other_xml_files_alone(self):
        self.write("<project/>\n", "build.xml")
        terminal = self.edit("build.xml")
        terminal.type(":echo 'clients:' luaeval('#vim.lsp.get_active_clients()')\r")
        terminal.wait(lambda screen: "clients: 0" in screen)

    def test_lists_each_key(self):
        [keys] = blocks("lua")
        self.assertEqual(re.findall(r"'n', '(.+?)'", keys), re.findall(r"(?m)^\| `([^C]\S*)` \|", PAGE.split("\n## ")[1]))


if __name__ == "__main__":
    unittest.main(argv=["neovim_test"])
