#!/usr/bin/env python3
"""Differential test of the in-memory OCI's SQL interval arithmetic against PostgreSQL.

Runs expressions through the SQL driver (SELECT ... FROM DUAL on the in-memory database)
and through a throw-away PostgreSQL 15 server, where the two agree by definition:

- TIMESTAMP + and - INTERVAL DAY TO SECOND (days, hours, minutes, seconds and microseconds):
  timestamp +/- interval of the same days and time;
- DATE + and - INTERVAL YEAR TO MONTH for days of the month up to 28, which every month
  has (PostgreSQL takes a missing day to the month's last, Oracle refuses it);
- TIMESTAMP - TIMESTAMP as days and time: PostgreSQL's justified interval.

Dates and results stay within 1583..9999, where both calendars are Gregorian. Exits 77
(skipped) when PostgreSQL 15 is not installed.
"""

import argparse
import os
import random
import signal
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import pg_differential as pg  # noqa: E402  (the server and helpers of the value test)

ORA_MASK = "YYYY-MM-DD HH24:MI:SS.FF6"
PG_MASK = "YYYY-MM-DD HH24:MI:SS.US"


def random_stamp(rng):
    return "%04d-%02d-%02d %02d:%02d:%02d.%06d" % (
        rng.randint(1700, 9800), rng.randint(1, 12), rng.randint(1, 28), rng.randint(0, 23),
        rng.randint(0, 59), rng.randint(0, 59), rng.randint(0, 999999))


def random_day_second(rng):
    days = rng.randint(0, 40000) if rng.random() < 0.3 else rng.randint(0, 40)
    return (days, rng.randint(0, 23), rng.randint(0, 59), rng.randint(0, 59),
            rng.randint(0, 999999))


def cases(rng, count):
    out = []
    while len(out) < count:
        kind = rng.choice(["ts_ds", "date_ym", "ts_diff"])
        a = random_stamp(rng)
        op = rng.choice(["+", "-"])
        if kind == "ts_ds":
            d, h, m, s, us = random_day_second(rng)
            ours = "to_char(timestamp '%s' %s interval '%d %d:%d:%d.%06d' day(5) to second, " \
                   "'%s')" % (a, op, d, h, m, s, us, ORA_MASK)
            theirs = "to_char(timestamp '%s' %s interval '%d days %d:%d:%d.%06d', '%s')" % (
                a, op, d, h, m, s, us, PG_MASK)
            out.append((kind, a, "%s %d %d:%d:%d.%06d" % (op, d, h, m, s, us), ours, theirs))
        elif kind == "date_ym":
            day = a[:10]
            years = rng.randint(0, 70)
            months = rng.randint(0, 11)
            ours = "to_char(date '%s' %s interval '%d-%d' year to month, 'YYYY-MM-DD')" % (
                day, op, years, months)
            theirs = "to_char(date '%s' %s interval '%d years %d months', 'YYYY-MM-DD')" % (
                day, op, years, months)
            out.append((kind, day, "%s %d-%d" % (op, years, months), ours, theirs))
        else:
            b = random_stamp(rng)
            ours = "extract(day from timestamp '%s' - timestamp '%s') || ' ' || " \
                   "extract(hour from timestamp '%s' - timestamp '%s') || ':' || " \
                   "extract(minute from timestamp '%s' - timestamp '%s') || ':' || " \
                   "extract(second from timestamp '%s' - timestamp '%s')" % ((a, b) * 4)
            diff = "justify_hours(timestamp '%s' - timestamp '%s')" % (a, b)
            theirs = ("extract(day from %s)::text || ' ' || extract(hour from %s)::text || ':' "
                      "|| extract(minute from %s)::text || ':' || "
                      "trim_scale(extract(second from %s))::text" % ((diff,) * 4))
            out.append((kind, a, b, ours, theirs))
    return out


def normalise_seconds(text):
    # Oracle writes .5 where PostgreSQL writes 0.5, and -.5 for -0.5.
    parts = text.split(":")
    sec = parts[-1]
    if sec.startswith("."):
        sec = "0" + sec
    elif sec.startswith("-."):
        sec = "-0" + sec[1:]
    return ":".join(parts[:-1] + [sec])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--driver", required=True)
    parser.add_argument("--count", type=int, default=2000)
    parser.add_argument("--seed", type=int, default=1125)
    args = parser.parse_args()
    if not pg.installed():
        pg.skip("PostgreSQL 15 is not installed in " + pg.PG_BIN)
    rng = random.Random(args.seed)
    all_cases = cases(rng, args.count)

    # The driver runs SELECT (a) op (b) FROM DUAL; `|| ''` leaves a text as it is.
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
        if kind == "ts_diff":
            same = normalise_seconds(mine) == normalise_seconds(their)
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
