#!/usr/bin/env python3
"""Every C entry point the in-memory OCI exports catches every exception.

A C caller cannot take an exception: memory that could not be had must come back as
ORA-04030 (or the status Oracle gives a call without an error handle), never as
std::bad_alloc. Each exported function is therefore written as a function-try-block,

    sword OCIX(...) try {
      ...
    } catch (...) {
      return ocimem::OutOfMemory(err);
    }

This test reads the library's exported functions (nm -D) and the definitions under
ocimem/src, and fails for an export whose definition is not guarded that way, and for an
export whose definition it cannot find.

Usage: every_entry_guarded.py <project root> <libocimem.so> <nm>
"""

import pathlib
import re
import subprocess
import sys

DEFINITION = re.compile(
    r'^((?:extern\s+"\s*"\s+)?[A-Za-z_][\w \*]*?[\s\*])((?:OCI|ocimem)\w*)\s*\(', re.M)


def blank_comments_and_literals(text):
    """The text with comments and literal contents blanked, offsets kept."""
    out = list(text)
    i, n = 0, len(text)
    while i < n:
        if text.startswith("//", i):
            j = text.find("\n", i)
            j = n if j < 0 else j
        elif text.startswith("/*", i):
            j = text.find("*/", i) + 2
        elif text[i] in "\"'":
            quote, j = text[i], i + 1
            while text[j] != quote:
                j += 2 if text[j] == "\\" else 1
            for k in range(i + 1, j):
                out[k] = " "
            i = j + 1
            continue
        else:
            i += 1
            continue
        for k in range(i, j):
            if out[k] != "\n":
                out[k] = " "
        i = j
    return "".join(out)


def closing(text, i, open_char, close_char):
    depth = 0
    while True:
        if text[i] == open_char:
            depth += 1
        elif text[i] == close_char:
            depth -= 1
            if depth == 0:
                return i
        i += 1


def definitions(src_dir):
    """name -> (file, guarded) for every OCI*/ocimem* function defined under src_dir."""
    found = {}
    for path in sorted(src_dir.rglob("*.cc")):
        text = blank_comments_and_literals(path.read_text())
        for m in DEFINITION.finditer(text):
            if m.group(1).strip() in ("return", "else"):
                continue
            after = closing(text, m.end() - 1, "(", ")") + 1
            rest = text[after:].lstrip()
            if rest.startswith(";"):
                continue  # a declaration
            guarded = False
            if rest.startswith("try"):
                body = text.index("{", after)
                handler = text[closing(text, body, "{", "}") + 1:].lstrip()
                guarded = re.match(r"catch\s*\(\s*\.\.\.\s*\)\s*\{", handler) is not None
            found[m.group(2)] = (path, guarded)
    return found


def exported_functions(library, nm):
    listing = subprocess.run([nm, "-D", "--defined-only", library], check=True,
                             capture_output=True, text=True).stdout
    return sorted(line.split()[2] for line in listing.splitlines()
                  if len(line.split()) == 3 and line.split()[1] == "T")


def main():
    root, library, nm = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
    found = definitions(root / "ocimem" / "src")
    exports = exported_functions(library, nm)
    failures = []
    for name in exports:
        if name not in found:
            failures.append("no definition found for the export " + name)
        elif not found[name][1]:
            failures.append("%s: %s is not a function-try-block with catch (...)"
                            % (found[name][0].relative_to(root), name))
    print("%d exported functions, %d guarded" % (len(exports), len(exports) - len(failures)))
    for failure in failures:
        print(failure)
    if not exports:
        print("no exported functions found")
        return 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
