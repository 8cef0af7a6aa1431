"""The folders of the library stand on each other: none includes one above it, so there is no cycle."""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).parents[2]
# From the ground up; folders of one floor do not know each other. "" is the facade, Pravik.h and Pravik.cpp.
FLOORS = [["Platform"], ["Records"], ["Utils"], ["Async"], ["Core", "Parsers"], ["Reading"], [""], ["UI"]]
FLOOR = {folder: number for number, floor in enumerate(FLOORS) for folder in floor}
INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)


def folder(path):
    return path.split("/")[0] if "/" in path else ""


def includes(top):
    for source in sorted((ROOT / top).rglob("*.[hc]*")):
        if source.suffix in (".h", ".cpp", ".c"):
            for included in INCLUDE.findall(source.read_text(encoding="utf-8")):
                yield source.relative_to(ROOT / top).as_posix(), included


class Tree(unittest.TestCase):
    def test_no_folder_of_the_library_includes_one_above_or_beside_it(self):
        for source, included in includes("src"):
            self.assertIn(folder(included), FLOOR, f"{source} includes {included}, which is not of the library")
            if folder(source) != folder(included):
                self.assertLess(FLOOR[folder(included)], FLOOR[folder(source)], f"{source} includes {included}")

    def test_backends_include_no_program_and_programs_not_each_other_but_the_tool(self):
        for source, included in includes("backends"):
            self.assertNotIn(folder(included), ("apps", "c"), f"backends/{source} includes {included}")
        for source, included in includes("apps/pravik"):
            self.assertFalse(included.startswith(("apps/scanner", "c/")), f"apps/pravik/{source} includes {included}")

    def test_the_facade_stands_alone_at_the_root(self):
        files = {path.name for path in (ROOT / "src").iterdir() if path.is_file()}
        self.assertEqual(files, {"Pravik.h", "Pravik.cpp", "CMakeLists.txt"})


if __name__ == "__main__":
    unittest.main()
