#!/usr/bin/env python3
"""Throughput of the varnadp command beside PostgreSQL 15's COPY, same rows.

Usage: command_vs_postgres.py VARNADP [--orders N] [--notes N] [--data DIR] [--runs K]

Generates the reference orders and notes (DIR/generate.py, default
../shared/bench), then measures, each the best of K runs of wall-clock time:
  - varnadp encode (JSON Lines to the stream) and decode (the stream to JSON
    Lines) with --jobs 1 and --jobs 2;
  - on a throw-away PostgreSQL 15 server (unix socket, fsync off), the same
    rows held as composite types (ref_order_t with a ref_addr_t and an array of
    ref_line_t; ref_note_t with a text array): COPY ... TO STDOUT and
    COPY ... FROM STDIN of that table's text, through psql.
Prints a table of records/s and MB/s (MB of the stream or of COPY's text).
"""
import argparse
import json
import os
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "ocimem", "values"))
from pg_differential import Server, installed  # noqa: E402  (the same throw-away server)

PG_TYPES = """
CREATE TYPE ref_addr_t AS (street varchar(60), city varchar(40), zip char(5), country varchar(2));
CREATE TYPE ref_line_t AS (sku varchar(20), qty numeric(9), price numeric(12,2), note varchar(100));
CREATE TYPE ref_order_t AS (id numeric(12), customer varchar(80), email varchar(100), created timestamp(0),
  shipped timestamp(6), amount numeric(14,2), discount numeric, status char(1), priority numeric(3),
  token bytea, ship_to ref_addr_t, lines ref_line_t[]);
CREATE TYPE ref_note_t AS (id numeric(12), title varchar(200), body varchar(4000), tags varchar(30)[]);
CREATE TABLE orders (o ref_order_t);
CREATE TABLE notes (n ref_note_t);
CREATE TABLE staging (doc jsonb);
"""


def lower_keys(value):
    if isinstance(value, dict):
        return {k.lower(): lower_keys(v) for k, v in value.items()}
    if isinstance(value, list):
        return [lower_keys(v) for v in value]
    return value


def best_of(runs, argv, **kwargs):
    best = None
    for _ in range(runs):
        start = time.perf_counter()
        subprocess.run(argv, check=True, **kwargs)
        elapsed = time.perf_counter() - start
        best = elapsed if best is None else min(best, elapsed)
    return best


def load_postgres(server, table, column, pg_type, json_path, tmp):
    # The rows go in through jsonb (not timed): keys lowered to the composite's names.
    staging = os.path.join(tmp, table + ".staging")
    with open(json_path) as src, open(staging, "w") as dst:
        for line in src:
            # CSV with a quote and a delimiter no JSON text holds: each line is one jsonb value.
            dst.write(json.dumps(lower_keys(json.loads(line)), ensure_ascii=False) + "\n")
    os.chmod(tmp, 0o755)
    os.chmod(staging, 0o644)
    server.query("TRUNCATE staging;\n\\copy staging FROM '%s' WITH (FORMAT csv, QUOTE E'\\x01', DELIMITER E'\\x02')\n"
                 % staging)
    fix = ", %s.token = decode(s.doc->>'token', 'hex')" % column if table == "orders" else ""
    server.query("INSERT INTO %s SELECT jsonb_populate_record(NULL::%s, doc) FROM staging;\n" % (table, pg_type))
    if fix:
        server.query("UPDATE orders o SET o.token = decode(s.doc->>'token', 'hex') FROM staging s "
                     "WHERE (o.o).id = (s.doc->>'id')::numeric;\n")
    server.query("TRUNCATE staging;\nVACUUM ANALYZE %s;\n" % table)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("varnadp")
    parser.add_argument("--orders", type=int, default=100000)
    parser.add_argument("--notes", type=int, default=20000)
    parser.add_argument("--data", default=os.path.join(HERE, "..", "..", "shared", "bench"))
    parser.add_argument("--runs", type=int, default=3)
    args = parser.parse_args()
    schema = os.path.join(args.data, "reference.sql")
    tmp = tempfile.mkdtemp(prefix="varnadp-bench-")
    rows = []
    sets = (("orders", "ref_order_t", args.orders, "o"), ("notes", "ref_note_t", args.notes, "n"))
    files = {}
    for name, type_name, count, _ in sets:
        json_path = os.path.join(tmp, name + ".jsonl")
        subprocess.run([sys.executable, os.path.join(args.data, "generate.py"), type_name, str(count), json_path],
                       check=True)
        stream = os.path.join(tmp, name + ".txt")
        subprocess.run([args.varnadp, "encode", "--schema", schema, "--type", type_name, json_path, "-o", stream],
                       check=True)
        files[name] = (json_path, stream)
        mb = os.path.getsize(stream) / 1e6
        for jobs in ("1", "2"):
            common = ["--schema", schema, "--type", type_name, "--jobs", jobs, "-o", os.devnull]
            t = best_of(args.runs, [args.varnadp, "encode"] + common + [json_path])
            rows.append((name, "varnadp encode --jobs " + jobs, count, t, mb))
            t = best_of(args.runs, [args.varnadp, "decode"] + common + [stream])
            rows.append((name, "varnadp decode --jobs " + jobs, count, t, mb))
    if installed():
        server = Server()
        try:
            server.start()
            server.query(PG_TYPES)
            for name, type_name, count, column in sets:
                load_postgres(server, name, column, type_name, files[name][0], tmp)
                text = os.path.join(tmp, name + ".copy")
                psql = server.psql_args()
                with open(text, "wb") as out:
                    subprocess.run(psql + ["-c", "COPY %s TO STDOUT" % name], stdout=out, check=True)
                mb = os.path.getsize(text) / 1e6
                with open(os.devnull, "wb") as sink:
                    t = best_of(args.runs, psql + ["-c", "COPY %s TO STDOUT" % name], stdout=sink)
                rows.append((name, "PostgreSQL COPY TO STDOUT", count, t, mb))
                best = None
                for _ in range(args.runs):
                    server.query("TRUNCATE %s;\n" % name)
                    with open(text, "rb") as src:
                        start = time.perf_counter()
                        subprocess.run(psql + ["-c", "COPY %s FROM STDIN" % name], stdin=src, check=True)
                        elapsed = time.perf_counter() - start
                    best = elapsed if best is None else min(best, elapsed)
                rows.append((name, "PostgreSQL COPY FROM STDIN", count, best, mb))
        finally:
            server.stop()
    else:
        print("PostgreSQL 15 is not installed: its rows are left out")
    print("| records | what | count | seconds | records/s | MB/s |")
    print("|---|---|---|---|---|---|")
    for name, what, count, seconds, mb in rows:
        print("| %s | %s | %d | %.3f | %s | %.1f |" % (name, what, count, seconds,
                                                       format(int(count / seconds), ","), mb / seconds))
    return 0


if __name__ == "__main__":
    sys.exit(main())
