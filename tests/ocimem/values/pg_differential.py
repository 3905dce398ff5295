#!/usr/bin/env python3
"""Differential test of the in-memory OCI value conversions against PostgreSQL.

Starts a throw-away PostgreSQL 15 server (unix socket in a temporary directory),
compares the driver's results with to_char / to_number / to_date / to_timestamp
over random values, for the masks and ranges where oracle-datatypes.md section 9
says the two agree, and always stops the server. Exits 77 (skipped) when
PostgreSQL 15 is not installed; once it is, a server that cannot be started is a
failure.
"""

import argparse
import decimal
import os
import pwd
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SKIP = 77
PG_BIN = os.environ.get("PG_BIN", "/usr/lib/postgresql/15/bin")
MONTHS = ["JAN", "FEB", "MAR", "APR", "MAY", "JUN", "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"]

decimal.getcontext().prec = 200


def skip(message):
    print("SKIPPED: " + message)
    sys.exit(SKIP)


def fail(message):
    print("FAILED: " + message)
    sys.exit(1)


def installed():
    return all(os.access(os.path.join(PG_BIN, name), os.X_OK)
               for name in ("initdb", "postgres", "psql"))


class Server:
    """A private postgres instance; stop() is safe to call more than once."""

    def __init__(self):
        self.proc = None
        self.prefix = []
        user = None
        if os.geteuid() == 0:
            try:
                user = pwd.getpwnam("postgres")
            except KeyError:
                fail("running as root and there is no postgres user to run the server")
            self.prefix = ["runuser", "-u", "postgres", "--"]
        self.tmp = tempfile.mkdtemp(prefix="ocimem-pg-")
        if user is not None:
            os.chown(self.tmp, user.pw_uid, user.pw_gid)
        self.data = os.path.join(self.tmp, "data")

    def start(self):
        initdb = os.path.join(PG_BIN, "initdb")
        postgres = os.path.join(PG_BIN, "postgres")
        r = subprocess.run(self.prefix + [initdb, "-D", self.data, "-A", "trust", "-U", "postgres",
                                          "--no-sync", "-E", "UTF8", "--locale=C"],
                           capture_output=True, text=True)
        if r.returncode != 0:
            fail("initdb failed: " + r.stderr.strip()[-400:])
        self.proc = subprocess.Popen(
            self.prefix + [postgres, "-D", self.data, "-k", self.tmp, "-c", "listen_addresses=",
                           "-c", "fsync=off", "-p", "54329"],
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        for _ in range(100):
            if self.proc.poll() is not None:
                fail("postgres exited: " + self.proc.stderr.read().strip()[-400:])
            probe = subprocess.run(self.psql_args() + ["-c", "select 1"], capture_output=True,
                                   text=True)
            if probe.returncode == 0:
                return
            time.sleep(0.1)
        fail("postgres did not accept connections")

    def psql_args(self):
        return [os.path.join(PG_BIN, "psql"), "-X", "-q", "-A", "-t", "-h", self.tmp, "-p",
                "54329", "-U", "postgres", "-d", "postgres", "-v", "ON_ERROR_STOP=1"]

    def query(self, sql):
        r = subprocess.run(self.psql_args() + ["-F", "\t", "-f", "-"], input=sql,
                           capture_output=True, text=True)
        if r.returncode != 0:
            raise RuntimeError("psql failed: " + r.stderr)
        return r.stdout.split("\n")[:-1]

    def stop(self):
        if self.proc is not None and self.proc.poll() is None:
            self.proc.send_signal(signal.SIGINT)
            try:
                self.proc.wait(timeout=20)
            except subprocess.TimeoutExpired:
                self.proc.kill()
                self.proc.wait()
        shutil.rmtree(self.tmp, ignore_errors=True)


def q(text):
    return "'" + text.replace("'", "''") + "'"


def rounded_fits(value, n, m):
    """The rounded value fits n integer digits, and is not a negative rounding to zero."""
    r = value.quantize(decimal.Decimal(1).scaleb(-m), rounding=decimal.ROUND_HALF_UP)
    if r == 0 and value < 0:
        return False
    return abs(r) < decimal.Decimal(10) ** n


def random_decimal(rng, max_int, max_frac):
    int_digits = rng.randint(0, max_int)
    frac_digits = rng.randint(0, max_frac)
    if int_digits + frac_digits == 0:
        int_digits = 1
    text = "".join(rng.choice("0123456789") for _ in range(int_digits)) or "0"
    if frac_digits:
        text += "." + "".join(rng.choice("0123456789") for _ in range(frac_digits))
    if rng.random() < 0.4:
        text = "-" + text
    return decimal.Decimal(text)


def plain(d):
    return format(d, "f")


def round_significant(d, k):
    """d rounded half away from zero to k significant digits."""
    if d == 0:
        return d
    shift = d.adjusted() - k + 1
    return d.quantize(decimal.Decimal(1).scaleb(shift), rounding=decimal.ROUND_HALF_UP)


def select_all(expressions):
    """The text of SELECT e for each expression, from a throw-away server."""
    server = Server()
    try:
        server.start()
        values = []
        for i in range(0, len(expressions), 200):
            values.extend(server.query("".join("select %s;\n" % e
                                               for e in expressions[i:i + 200])))
        return values
    finally:
        server.stop()


def number_cases(rng, count):
    masks = [("FM99999999.99", 8, 2), ("FM99999", 5, 0), ("FM9999999", 7, 0),
             ("FM" + "9" * 28 + "." + "9" * 29, 28, 29)]
    cases = []
    while len(cases) < count:
        mask, n, m = rng.choice(masks)
        value = random_decimal(rng, n + 1, min(m + 3, 35))
        digits = len(value.as_tuple().digits)
        if digits > 38 or not rounded_fits(value, n, m):
            continue
        cases.append((mask, value))
    return cases


def text_number_cases(rng, count):
    cases = []
    for _ in range(count):
        int_part = str(rng.randint(0, 10 ** rng.randint(1, 15)))
        if rng.random() < 0.3 and len(int_part) > 3:
            groups = []
            while int_part:
                groups.insert(0, int_part[-3:])
                int_part = int_part[:-3]
            int_part = ",".join(groups)
        text = int_part
        if rng.random() < 0.6:
            text += "." + "".join(rng.choice("0123456789") for _ in range(rng.randint(1, 10)))
        sign = rng.choice(["", "-", "+", "trailing-", "trailing+"])
        if sign.startswith("trailing"):
            text += sign[-1]
        else:
            text = sign + text
        cases.append(text)
    return cases


def random_date(rng):
    while True:
        y = rng.randint(1, 9999)
        mo = rng.randint(1, 12)
        d = rng.randint(1, 31)
        try:
            import datetime
            datetime.date(y, mo, d)
        except ValueError:
            continue
        if y == 1582 and mo == 10 and 5 <= d <= 14:
            continue
        # Julian and Gregorian years disagree on some 29 Februaries only.
        if mo == 2 and d == 29 and y < 1583:
            continue
        return y, mo, d, rng.randint(0, 23), rng.randint(0, 59), rng.randint(0, 59)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--driver", required=True)
    parser.add_argument("--count", type=int, default=400)
    parser.add_argument("--seed", type=int, default=20261122)
    parser.add_argument("--show", type=int, default=0, help="print the first N comparisons")
    args = parser.parse_args()
    if not installed():
        skip("PostgreSQL 15 is not installed in " + PG_BIN)
    rng = random.Random(args.seed)

    commands = []   # driver input lines
    queries = []    # SQL expressions, same order
    kinds = []      # how to compare

    for mask, value in number_cases(rng, args.count):
        commands.append("N2T\t%s\t%s" % (mask, plain(value)))
        queries.append("to_char(%s::numeric, %s)" % (q(plain(value)), q(mask)))
        kinds.append("text")
    for text in text_number_cases(rng, args.count):
        mask = "".join("9" if c.isdigit() else ("S" if c in "+-" else c) for c in text)
        commands.append("T2N\t%s" % text)
        queries.append("to_number(%s, %s)::text" % (q(text), q(mask)))
        kinds.append("numeric")
    for _ in range(args.count):
        y, mo, d, h, mi, s = random_date(rng)
        literal = "%04d-%02d-%02d %02d:%02d:%02d" % (y, mo, d, h, mi, s)
        for mask in ("YYYY-MM-DD HH24:MI:SS", "DD-MON-YY"):
            commands.append("D2T\t%s\t%d %d %d %d %d %d" % (mask, y, mo, d, h, mi, s))
            queries.append("to_char(%s::timestamp, %s)" % (q(literal), q(mask)))
            kinds.append("text")
    for _ in range(args.count):
        y, mo, d, h, mi, s = random_date(rng)
        if rng.random() < 0.5:
            text = "%04d-%02d-%02d %02d:%02d:%02d" % (y, mo, d, h, mi, s)
        else:
            text = "%d-%d-%d %d:%d:%d" % (y, mo, d, h, mi, s)
        mask = "YYYY-MM-DD HH24:MI:SS"
        commands.append("T2D\t%s\t%s" % (mask, text))
        queries.append("to_char(to_timestamp(%s, %s), 'YYYY-MM-DD HH24:MI:SS')" % (q(text), q(mask)))
        kinds.append("text")
        yy = rng.randint(0, 69)
        short = "%02d-%s-%02d" % (d if d <= 28 else 28, rng.choice(MONTHS), yy)
        commands.append("T2D\tDD-MON-YY\t%s" % short)
        queries.append("to_char(to_date(%s, 'DD-MON-YY'), 'YYYY-MM-DD') || ' 00:00:00'" % q(short))
        kinds.append("text")
    for _ in range(args.count):
        y, mo, d, h, mi, s = random_date(rng)
        if y < 1583:
            continue
        micros = rng.randint(0, 999999)
        digits = rng.randint(1, 6)
        mask = "YYYY-MM-DD HH24:MI:SS.FF%d" % digits
        literal = "%04d-%02d-%02d %02d:%02d:%02d.%06d" % (y, mo, d, h, mi, s, micros)
        commands.append("TS2T\t%s\t9\t%d %d %d %d %d %d %d" % (mask, y, mo, d, h, mi, s, micros * 1000))
        queries.append("to_char(%s::timestamp, %s)" % (q(literal), q(mask)))
        kinds.append("text")

    driver = subprocess.run([args.driver], input="\n".join(commands) + "\n", capture_output=True,
                            text=True)
    if driver.returncode != 0:
        print("driver failed: " + driver.stderr)
        return 1
    ours = driver.stdout.split("\n")[:-1]
    if len(ours) != len(commands):
        print("driver answered %d lines for %d commands" % (len(ours), len(commands)))
        return 1

    # A timeout (SIGTERM) must still stop the server.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    server = Server()
    try:
        server.start()
        theirs = []
        batch = 200
        for i in range(0, len(queries), batch):
            sql = "".join("select %s;\n" % e for e in queries[i:i + batch])
            theirs.extend(server.query(sql))
    finally:
        server.stop()

    for cmd, a, b in list(zip(commands, ours, theirs))[:args.show]:
        print("%r -> ocimem %r, PostgreSQL %r" % (cmd, a, b))
    failures = 0
    for cmd, kind, a, b in zip(commands, kinds, ours, theirs):
        if kind == "numeric":
            same = not a.startswith("ERR") and decimal.Decimal(a) == decimal.Decimal(b)
        else:
            same = a == b
        if not same:
            failures += 1
            if failures <= 25:
                print("MISMATCH %r: ocimem %r, PostgreSQL %r" % (cmd, a, b))
    print("%d comparisons, %d mismatches" % (len(commands), failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
