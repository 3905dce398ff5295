#!/usr/bin/env python3
"""Differential test of the in-memory OCI's SQL NUMBER arithmetic against PostgreSQL.

Runs `a op b` for random operands through the SQL driver (SELECT a op b FROM DUAL) and
through a throw-away PostgreSQL 15 server (numeric), where the two agree by definition:
sums, differences and products whose exact value has at most 38 significant digits are
exact in both; a quotient must be PostgreSQL's quotient (taken to 120 places) rounded to the
digits the NUMBER keeps, which are at least 38 significant ones. Division by zero must be
ORA-01476 here and an error there. Exits 77 (skipped) when PostgreSQL 15 is not installed.
"""

import argparse
import decimal
import os
import random
import signal
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import pg_differential as pg  # noqa: E402  (the server and helpers of the value test)

decimal.getcontext().prec = 200
D = decimal.Decimal


def random_operand(rng):
    digits = rng.randint(1, 19)
    text = "".join(rng.choice("0123456789") for _ in range(digits)).lstrip("0") or "0"
    point = rng.randint(0, len(text))
    value = D(text) / (D(10) ** point) if text != "0" else D(0)
    value = value * (D(10) ** rng.randint(-12, 12))
    if rng.random() < 0.5:
        value = -value
    if rng.random() < 0.05:
        value = D(0)
    return value


def significant(d):
    t = d.normalize().as_tuple()
    return 0 if d == 0 else len(t.digits)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--driver", required=True)
    parser.add_argument("--count", type=int, default=2000)
    parser.add_argument("--seed", type=int, default=20261124)
    args = parser.parse_args()
    if not pg.installed():
        pg.skip("PostgreSQL 15 is not installed in " + pg.PG_BIN)
    rng = random.Random(args.seed)
    cases = []
    while len(cases) < args.count:
        a = random_operand(rng)
        b = random_operand(rng)
        op = rng.choice("+-*/")
        if op != "/":
            exact = a + b if op == "+" else a - b if op == "-" else a * b
            if significant(exact) > 38:
                continue
        cases.append((a, op, b))

    import subprocess
    lines = "".join("%s\t%s\t%s\n" % (pg.plain(a), op, pg.plain(b)) for a, op, b in cases)
    driver = subprocess.run([args.driver], input=lines, capture_output=True, text=True)
    if driver.returncode != 0:
        print("driver failed: " + driver.stderr)
        return 1
    ours = driver.stdout.split("\n")[:-1]
    if len(ours) != len(cases):
        print("driver answered %d lines for %d cases" % (len(ours), len(cases)))
        return 1

    queries = []
    for a, op, b in cases:
        if op == "/":
            if b == 0:
                queries.append("'ZERO'")
            else:
                # The dividend's 120 places make PostgreSQL carry the quotient that far.
                queries.append("(round(%s::numeric, 120) / %s::numeric)::text" %
                               (pg.q(pg.plain(a)), pg.q(pg.plain(b))))
        else:
            queries.append("(%s::numeric %s %s::numeric)::text" %
                           (pg.q(pg.plain(a)), op, pg.q(pg.plain(b))))
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    theirs = pg.select_all(queries)

    failures = 0
    for (a, op, b), mine, their in zip(cases, ours, theirs):
        if op == "/" and b == 0:
            same = mine == "ERR 1476"
        elif mine.startswith("ERR"):
            same = False
        elif op != "/":
            same = D(mine) == D(their)
        else:
            got = D(mine)
            exact = D(their)
            # Rounded once, half away from zero, to the 39 or 40 significant digits that 20
            # base-100 digits hold (38 allowed for the alignment of the first pair).
            same = any(got == pg.round_significant(exact, k) for k in (38, 39, 40))
        if not same:
            failures += 1
            if failures <= 25:
                print("MISMATCH %s %s %s: ocimem %r, PostgreSQL %r" %
                      (pg.plain(a), op, pg.plain(b), mine, their))
    print("%d comparisons, %d mismatches" % (len(cases), failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
