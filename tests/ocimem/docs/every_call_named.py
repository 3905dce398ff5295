#!/usr/bin/env python3
"""Every call the in-memory OCI's headers declare is named in docs/ocimem.md.

The headers are the promise a program compiles against; the document is where a user
reads what each call does here. A call declared but not described fails this test.
"""

import pathlib
import re
import sys


def declared_calls(include_dir):
    calls = set()
    pattern = re.compile(r"\b(OCI[A-Za-z0-9_]+)\s*\(")
    for header in sorted(include_dir.glob("*.h")):
        text = header.read_text()
        text = re.sub(r"/\*.*?\*/", " ", text, flags=re.S)
        text = re.sub(r"//[^\n]*", " ", text)
        for statement in text.split(";"):
            # A prototype: a return type, the name, its parameter list; no typedef or macro.
            statement = statement.strip()
            if statement.startswith("typedef") or statement.startswith("#"):
                continue
            lines = [l for l in statement.split("\n") if not l.lstrip().startswith("#")]
            statement = " ".join(lines).strip()
            m = pattern.search(statement)
            if m and re.match(r"^[A-Za-z_][A-Za-z0-9_ \*]*\b" + m.group(1) + r"\s*\(", statement):
                calls.add(m.group(1))
    return calls


def main():
    root = pathlib.Path(sys.argv[1])
    calls = declared_calls(root / "ocimem" / "include")
    doc = (root / "docs" / "ocimem.md").read_text()
    named = set(re.findall(r"`(OCI[A-Za-z0-9_]+)`", doc))
    missing = sorted(calls - named)
    print("%d calls declared, %d named in docs/ocimem.md" % (len(calls), len(calls & named)))
    for name in missing:
        print("not in docs/ocimem.md: " + name)
    if not calls:
        print("no declarations found")
        return 1
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
