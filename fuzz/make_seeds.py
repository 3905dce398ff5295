#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets into fuzz/corpus/<target>/.

- ocimem_sql: every SQL statement written as a string literal in the in-memory
  OCI's SQL tests (adjacent literals joined), up to eight per seed, cut at ";".
- release_scan: streams with releases, group marks and delimiters, with the
  default special strings and with others.
- ocimem_values: texts and masks of each parser from the value tests' cases.
- read_stream: records written by the varnadp command from JSON (give the
  command with --varnadp); the schema is the one the target creates.

Run from anywhere: python3 fuzz/make_seeds.py [--varnadp build/tools/varnadp/varnadp]
"""
import argparse
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
SQL_START = re.compile(r"^\s*(SELECT|INSERT|UPDATE|DELETE|CREATE|ALTER|DROP|MERGE|COMMIT|ROLLBACK|"
                       r"TRUNCATE|SAVEPOINT|WITH|COMMENT|LOCK)\b", re.I)
LITERALS = re.compile(r'"((?:[^"\\\n]|\\.)*)"(?:\s*"((?:[^"\\\n]|\\.)*)")*')
ONE = re.compile(r'"((?:[^"\\\n]|\\.)*)"')


def write(target, name, data):
    folder = os.path.join(HERE, "corpus", target)
    os.makedirs(folder, exist_ok=True)
    if isinstance(data, str):
        data = data.encode("latin-1")
    with open(os.path.join(folder, name), "wb") as f:
        f.write(data)


def unescape(text):
    return bytes(text, "latin-1").decode("unicode_escape")


def sql_seeds():
    statements = []
    folder = os.path.join(ROOT, "tests", "ocimem", "sql")
    for name in sorted(os.listdir(folder)):
        if not name.endswith(".cc"):
            continue
        source = open(os.path.join(folder, name), encoding="utf-8", errors="replace").read()
        for match in LITERALS.finditer(source):
            text = "".join(unescape(m) for m in ONE.findall(match.group(0)))
            if SQL_START.match(text) and ";" not in text:
                statements.append(text.strip())
    seen = []
    for s in statements:
        if s not in seen:
            seen.append(s)
    for i in range(0, len(seen), 8):
        chunk = ";".join(seen[i:i + 8])
        write("ocimem_sql", "tests_%03d" % (i // 8), chunk)
    return len(seen)


def release_seeds():
    default = [b"plain|text]", b"a!|b!!c|d", b"[x|y]|[[1|2]|[3|4]]\r\n", b"!x", b"end!",
               b"!!!!|!]![!\r\n|"]
    for i, data in enumerate(default):
        write("release_scan", "default_%d" % i, b"\x00\x00" + data)
    # Delimiter "~~", terminator "#\n", release "^"; four layout bytes.
    custom = b"\x01\x01\x01~~\x00\x00#\n\x00\x00^" + b"\x04\x05\x06\x07\x08" + b"a~~b^~~c]^^d#\n[e~~f]"
    write("release_scan", "custom_0", custom)


def value_seeds():
    cases = [
        (0, "9999.99", "1234.50"), (0, "S9999", "-42"), (0, "", "123"),
        (0, "9.99EEEE", "1.25E+03"), (0, "FM999G999D00", "12,345.60"), (0, "XXXX", "1AF"),
        (1, "YYYY-MM-DD HH24:MI:SS", "2024-02-29 13:14:15"), (1, "DD-MON-RR", "01-JAN-99"),
        (1, "J", "2451545"), (1, "", "15-MAR-24"),
        (2, "YYYY-MM-DD HH24:MI:SS.FF", "2001-02-03 04:05:06.123456"),
        (3, "YYYY-MM-DD HH24:MI:SS.FF TZR TZD", "2010-06-07 08:09:10.123 +02:00 "),
        (3, "YYYY-MM-DD HH24:MI:SS TZH:TZM", "2010-06-07 08:09:10 -05:30"),
        (4, "YYYY-MM-DD HH24:MI:SS.FF", "2011-01-01 00:00:00.5"),
        (5, "", "+0005-03"), (5, "", "-12-11"),
        (6, "", "+002 03:04:05.1234"), (6, "", "-0 00:00:00.000000001"),
    ]
    for i, (which, mask, text) in enumerate(cases):
        data = bytes([which, 0x69, len(mask)]) + mask.encode() + text.encode()
        write("ocimem_values", "case_%02d" % i, data)
    # With NLS parameters.
    nls = b"NLS_NUMERIC_CHARACTERS=',.'"
    write("ocimem_values", "nls_number", bytes([0x80, 0, len(nls)]) + nls + b"\x07" + b"9G999D9" + b"1.234,5")


def read_seeds(varnadp):
    schema = """CREATE TYPE fz_addr_t AS OBJECT (street VARCHAR2(40), city VARCHAR2(30), zip CHAR(5));
CREATE TYPE fz_tags_t AS VARRAY(8) OF VARCHAR2(12);
CREATE TYPE fz_raws_t AS TABLE OF RAW(6);
CREATE TYPE fz_line_t AS OBJECT (sku VARCHAR2(20), qty NUMBER(6), price NUMBER(10,2), tags fz_tags_t);
CREATE TYPE fz_lines_t AS TABLE OF fz_line_t;
CREATE TYPE fz_rec_t AS OBJECT (vc VARCHAR2(40), ch CHAR(5), n NUMBER, n102 NUMBER(10,2), fl FLOAT(10),
  d DATE, ts TIMESTAMP(6), ts0 TIMESTAMP(0), tstz TIMESTAMP(3) WITH TIME ZONE,
  tsltz TIMESTAMP(6) WITH LOCAL TIME ZONE, iym INTERVAL YEAR(4) TO MONTH,
  ids INTERVAL DAY(3) TO SECOND(4), r RAW(20), addr fz_addr_t, lines fz_lines_t, raws fz_raws_t,
  c CLOB, b BLOB);
"""
    records = [
        '{"VC":"plain text","CH":"ab","N":-1234.5,"N102":19.9,"FL":3.25,"D":"2024-02-29 13:14:15",'
        '"TS":"2001-02-03 04:05:06.123456","TS0":"1999-12-31 23:59:59",'
        '"TSTZ":"2010-06-07 08:09:10.123 +02:00 ","TSLTZ":"2011-01-01 00:00:00.5","IYM":"+0005-03",'
        '"IDS":"+002 03:04:05.1234","R":"00FF7C0D0A","ADDR":{"STREET":"1 Main St","CITY":"Graz",'
        '"ZIP":"8010"},"LINES":[{"SKU":"A-1","QTY":2,"PRICE":9.99,"TAGS":["red","big"]},'
        '{"SKU":"B|2","QTY":1,"PRICE":0.5,"TAGS":[]}],"RAWS":["01","FFFE"],'
        '"C":"a clob with | and ] and ? inside","B":"DEADBEEF0D0A"}',
        '{"VC":"v"}',
        '{"VC":"esc ?|[]","LINES":[{"SKU":"x"},null],"RAWS":[null,"00"],"ADDR":{"CITY":"x"}}',
        '{"N":1E+20,"N102":-99999999.99,"C":"","B":""}',
    ]
    with tempfile.TemporaryDirectory() as tmp:
        sql = os.path.join(tmp, "fz.sql")
        open(sql, "w").write(schema)

        def encode(type_name, json_text, *options):
            path = os.path.join(tmp, "in.jsonl")
            open(path, "w").write(json_text + "\n")
            return subprocess.run([varnadp, "encode", "--schema", sql, "--type", type_name,
                                   "--jobs", "1", *options, path],
                                  check=True, capture_output=True).stdout

        for i, record in enumerate(records, 1):
            plain = encode("FZ_REC_T", record)
            write("read_stream", "record_%d" % i, b"\x00" + plain)
            write("read_stream", "record_lobs_%d" % i, b"\x08" + plain)
            other = encode("FZ_REC_T", record, "--delimiter", "~~", "--release", "^")
            write("read_stream", "record_specials_%d" % i,
                  b"\x09\x00\x02\x02\x02~~\x02\r\n^" + other)
        write("read_stream", "records_many",
              b"\x08" + b"".join(encode("FZ_REC_T", r) for r in records + records))
        write("read_stream", "lines",
              b"\x02" + encode("FZ_LINES_T",
                               '[[{"SKU":"A","QTY":1,"PRICE":2.5,"TAGS":["t"]},null,{"SKU":"B"}],[]]'))
        write("read_stream", "addr",
              b"\x04" + encode("FZ_ADDR_T", '{"STREET":"S","CITY":"C","ZIP":"12345"}'))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--varnadp", help="the varnadp command, for the read_stream seeds")
    args = parser.parse_args()
    print("ocimem_sql: %d statements" % sql_seeds())
    release_seeds()
    value_seeds()
    if args.varnadp:
        read_seeds(args.varnadp)
    else:
        print("read_stream: kept as they are (no --varnadp)", file=sys.stderr)


if __name__ == "__main__":
    main()
