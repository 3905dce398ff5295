#!/usr/bin/env python3
"""Differential test of the in-memory OCI's SQL DATE arithmetic against PostgreSQL.

Runs date expressions through the SQL driver (SELECT ... FROM DUAL on the in-memory
database) and through a throw-away PostgreSQL 15 server, where the two agree by definition:

- DATE + n and DATE - n, n a number of days whose fraction is a whole number of seconds
  (multiples of 0.0125 day, 18 minutes, are exact decimals): timestamp +/- n * 1 day;
- DATE - DATE: the difference in seconds over 86400, which Oracle keeps to 38-40
  significant digits and PostgreSQL computes exactly;
- ADD_MONTHS(d, n) for days of the month up to 27 (28 February is the last day of its
  month in most years, which ADD_MONTHS takes to the last day of the new month): date +
  n months;
- TRUNC(d): date_trunc('day'); LAST_DAY(d): the month's last day, time kept.

Dates and results stay within 1583..9999, where both calendars are Gregorian. Exits 77 (skipped) when
PostgreSQL 15 is not installed.
"""

import argparse
import decimal
import os
import random
import signal
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import pg_differential as pg  # noqa: E402  (the server and helpers of the value test)

decimal.getcontext().prec = 200
D = decimal.Decimal
MASK = "YYYY-MM-DD HH24:MI:SS"


def random_date(rng):
    year = rng.randint(1700, 9900)
    month = rng.randint(1, 12)
    day = rng.randint(1, 28)
    return "%04d-%02d-%02d %02d:%02d:%02d" % (year, month, day, rng.randint(0, 23),
                                              rng.randint(0, 59), rng.randint(0, 59))


def random_days(rng):
    whole = rng.randint(0, 30000) if rng.random() < 0.5 else rng.randint(0, 40)
    value = D(whole) + D("0.0125") * rng.randint(0, 79)
    return -value if rng.random() < 0.5 else value


def ora_date(text):
    return "to_date('%s', '%s')" % (text, MASK)


def pg_ts(text):
    return "timestamp '%s'" % text


def cases(rng, count):
    out = []
    while len(out) < count:
        kind = rng.choice(["plus", "minus", "diff", "add_months", "trunc", "last_day"])
        d = random_date(rng)
        if kind in ("plus", "minus"):
            n = random_days(rng)
            op = "+" if kind == "plus" else "-"
            ours = "to_char(%s %s (%s), '%s')" % (ora_date(d), op, pg.plain(n), MASK)
            theirs = "to_char(%s %s (%s::numeric * interval '1 day'), '%s')" % (
                pg_ts(d), op, pg.plain(n), MASK)
            out.append((kind, d, str(n), ours, theirs))
        elif kind == "diff":
            e = random_date(rng)
            ours = "(%s - %s)" % (ora_date(d), ora_date(e))
            theirs = ("(round(extract(epoch from (%s - %s))::numeric, 120) / 86400)::text" %
                      (pg_ts(d), pg_ts(e)))
            out.append((kind, d, e, ours, theirs))
        elif kind == "add_months":
            if int(d[8:10]) > 27:
                continue
            n = rng.randint(-900, 900)
            ours = "to_char(add_months(%s, %d), '%s')" % (ora_date(d), n, MASK)
            theirs = "to_char(%s + (%d * interval '1 month'), '%s')" % (pg_ts(d), n, MASK)
            out.append((kind, d, str(n), ours, theirs))
        elif kind == "trunc":
            ours = "to_char(trunc(%s), '%s')" % (ora_date(d), MASK)
            theirs = "to_char(date_trunc('day', %s), '%s')" % (pg_ts(d), MASK)
            out.append((kind, d, "", ours, theirs))
        else:
            ours = "to_char(last_day(%s), '%s')" % (ora_date(d), MASK)
            theirs = ("to_char(date_trunc('month', %s) + interval '1 month' - interval '1 day' "
                      "+ (%s - date_trunc('day', %s)), '%s')" % (pg_ts(d), pg_ts(d), pg_ts(d),
                                                                MASK))
            out.append((kind, d, "", ours, theirs))
    return out


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--driver", required=True)
    parser.add_argument("--count", type=int, default=2000)
    parser.add_argument("--seed", type=int, default=1124)
    args = parser.parse_args()
    if not pg.installed():
        pg.skip("PostgreSQL 15 is not installed in " + pg.PG_BIN)
    rng = random.Random(args.seed)
    all_cases = cases(rng, args.count)

    # The driver runs SELECT (a) op (b) FROM DUAL; `|| ''` leaves a text as it is and turns
    # the number of a difference into its text.
    lines = "".join("%s\t||\t''\n" % c[3] for c in all_cases)
    driver = subprocess.run([args.driver], input=lines, capture_output=True, text=True)
    if driver.returncode != 0:
        print("driver failed: " + driver.stderr)
        return 1
    ours = driver.stdout.split("\n")[:-1]
    if len(ours) != len(all_cases):
        print("driver answered %d lines for %d cases" % (len(ours), len(all_cases)))
        return 1

    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    theirs = pg.select_all([c[4] for c in all_cases])

    failures = 0
    for (kind, a, b, _, _), mine, their in zip(all_cases, ours, theirs):
        if kind == "diff":
            same = not mine.startswith("ERR") and any(
                D(mine) == pg.round_significant(D(their), k) for k in (38, 39, 40))
        else:
            same = mine == their
        if not same:
            failures += 1
            if failures <= 25:
                print("MISMATCH %s %s %s: ocimem %r, PostgreSQL %r" % (kind, a, b, mine, their))
    print("%d comparisons, %d mismatches" % (len(all_cases), failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
