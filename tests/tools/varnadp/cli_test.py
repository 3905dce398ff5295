#!/usr/bin/env python3
"""Runs the built varnadp command as a user does, one behaviour a case.

Usage: cli_test.py VARNADP EXAMPLES_DIR BENCH_DIR CASE
Exits 0 when the case holds, 1 with a message when it does not, 77 when the
case needs data that is not there (the reference generator).
"""
import os
import resource
import subprocess
import sys
import tempfile

VARNADP, EXAMPLES, BENCH, CASE = sys.argv[1:5]
SCHEMA = os.path.join(EXAMPLES, "types.sql")
CUSTOMERS_JSON = os.path.join(EXAMPLES, "customers.jsonl")
CUSTOMERS_STREAM = os.path.join(EXAMPLES, "customers.txt")
TMP = tempfile.mkdtemp(prefix="varnadp-cli-")
SKIP = 77


class Failed(Exception):
    pass


def run(*args, stdin=None, schema=SCHEMA, type_name="customer_t", command=None):
    argv = [VARNADP]
    if command is not None:
        argv += [command, "--schema", schema, "--type", type_name]
    argv += list(args)
    result = subprocess.run(argv, input=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=600)
    return result.returncode, result.stdout, result.stderr.decode("utf-8", "replace")


def expect(condition, message):
    if not condition:
        raise Failed(message)


def expect_equal(expected, actual, what):
    if expected != actual:
        cut = lambda value: value[:2000] if isinstance(value, (bytes, str)) else value
        raise Failed("%s differs:\n  expected %r\n  actual   %r" % (what, cut(expected), cut(actual)))


def read(path):
    with open(path, "rb") as f:
        return f.read()


def write(name, data):
    path = os.path.join(TMP, name)
    with open(path, "wb") as f:
        f.write(data if isinstance(data, bytes) else data.encode())
    return path


def tmp(name):
    return os.path.join(TMP, name)


# ----------------------------------------------------------------------------
# Round trips

def case_encode_examples():
    rc, out, err = run(CUSTOMERS_JSON, command="encode")
    expect_equal(0, rc, "exit status (%s)" % err)
    expect_equal(read(CUSTOMERS_STREAM), out, "stream of the example customers")
    expect_equal("", err, "standard error")


def case_decode_examples():
    rc, out, err = run(CUSTOMERS_STREAM, command="decode")
    expect_equal(0, rc, "exit status (%s)" % err)
    expect_equal(read(CUSTOMERS_JSON), out, "JSON of the example stream")


def case_example_lobs_take_the_second_pass():
    # The first customer's CLOB has released specials and a line break, its
    # BLOB a PNG header, its RAW a CR LF: all come back byte for byte.
    rc, out, err = run(CUSTOMERS_STREAM, command="decode")
    first = out.split(b"\n")[0]
    expect(b'"NOTES":"Wrote the first program.\\r\\nPrefers [brackets] and pipes | in notes!"' in first, first)
    expect(b'"PHOTO":"89504E470D0A1A0A"' in first and b'"TOKEN":"00FF7C0D0A21"' in first, first)


def case_array_input_is_the_same_as_lines():
    lines = read(CUSTOMERS_JSON).decode().strip().split("\n")
    array = write("array.json", "[\n  " + ",\n  ".join(lines) + "\n]\n")
    rc, out, err = run(array, command="encode")
    expect_equal(0, rc, "exit status (%s)" % err)
    expect_equal(read(CUSTOMERS_STREAM), out, "stream of the array")


def case_standard_input_and_output_file():
    output = tmp("out.txt")
    rc, out, err = run("-", "-o", output, stdin=read(CUSTOMERS_JSON), command="encode")
    expect_equal(0, rc, "exit status (%s)" % err)
    expect_equal(b"", out, "standard output")
    expect_equal(read(CUSTOMERS_STREAM), read(output), "output file")
    rc, out, err = run(stdin=read(CUSTOMERS_STREAM), command="decode")
    expect_equal(read(CUSTOMERS_JSON), out, "decoded standard input")


def case_configured_special_strings():
    options = ["--delimiter", "~~", "--terminator", "\\n", "--release", "\\\\"]
    rc, stream, err = run(CUSTOMERS_JSON, *options, command="encode")
    expect_equal(0, rc, "exit status (%s)" % err)
    expect(stream.startswith(b"1~~Ada Lovelace~~1234.5~~+005-03~~["), stream[:80])
    # Only the configured strings are released, by the configured release.
    expect(b"Wrote the first program.\r\\\nPrefers \\[brackets\\] and pipes | in notes!" in stream, stream[:400])
    back = write("special.txt", stream)
    rc, out, err = run(back, *options, command="decode")
    expect_equal(0, rc, "exit status (%s)" % err)
    expect_equal(read(CUSTOMERS_JSON), out, "round trip with configured special strings")


def case_bad_special_strings_are_refused():
    for option, value, text in (("--release", "!!", "the release character must be one byte"),
                                ("--delimiter", "\\q", "unknown escape \\q"),
                                ("--terminator", "x" * 33, "the terminator must have 1 to 32 bytes")):
        rc, out, err = run(CUSTOMERS_JSON, option, value, command="encode")
        expect_equal(2, rc, "exit status for %s %s" % (option, value))
        expect_equal("varnadp: %s\n" % text, err, "message")


def case_empty_input_gives_nothing():
    empty = write("empty", b"")
    for command in ("encode", "decode", "check"):
        rc, out, err = run(empty, command=command)
        expect_equal(0, rc, command + " exit status (%s)" % err)
        expect_equal(b"", out, command + " output")


def case_jobs_give_the_same_bytes():
    json = tmp("many.jsonl")
    with open(json, "wb") as f:
        for i in range(3000):
            for line in read(CUSTOMERS_JSON).split(b"\n"):
                if line:
                    f.write(line.replace(b'{"ID":', b'{"ID":%d' % (i + 1), 1) + b"\n")
    outputs = {}
    for jobs in ("1", "2", "3"):
        rc, out, err = run(json, "--jobs", jobs, command="encode")
        expect_equal(0, rc, "encode --jobs %s (%s)" % (jobs, err))
        outputs[jobs] = out
    expect(outputs["1"] == outputs["2"] == outputs["3"], "encode output depends on --jobs")
    stream = write("many.txt", outputs["1"])
    decoded = {}
    for jobs in ("1", "2", "3"):
        rc, out, err = run(stream, "--jobs", jobs, command="decode")
        expect_equal(0, rc, "decode --jobs %s (%s)" % (jobs, err))
        decoded[jobs] = out
    expect(decoded["1"] == decoded["2"] == decoded["3"], "decode output depends on --jobs")
    expect_equal(read(json), decoded["1"], "round trip of 9,000 records")


def case_large_clob_and_blob():
    body = "".join("line %d with | and [x] and ! and é\r\n" % i for i in range(6000))
    photo = bytes(range(256)) * 700
    record = ('{"ID":7,"NAME":"big","NOTES":%s,"PHOTO":"%s"}\n'
              % (__import__("json").dumps(body, ensure_ascii=False), photo.hex().upper()))
    rc, stream, err = run(write("big.jsonl", record.encode()), command="encode")
    expect_equal(0, rc, "encode (%s)" % err)
    rc, out, err = run(write("big.txt", stream), command="decode")
    expect_equal(0, rc, "decode (%s)" % err)
    value = __import__("json").loads(out)
    expect_equal(body, value["NOTES"], "CLOB of %d bytes" % len(body.encode()))
    expect_equal(photo.hex().upper(), value["PHOTO"], "BLOB of %d bytes" % len(photo))


def case_records_with_and_without_lobs_read_alike():
    # A record with a CLOB takes the second pass through a table, where a CHAR
    # would be blank-padded: it still reads as the record without one.
    lines = (b'{"ID":1,"ADDRESS":{"ZIP":"AB"},"ORDERS":[{"LINES":[{"SKU":"a","QTY":1}]},null]}\n'
             b'{"ID":1,"ADDRESS":{"ZIP":"AB"},"ORDERS":[{"LINES":[{"SKU":"a","QTY":1}]},null],"NOTES":"x"}\n')
    rc, stream, err = run(write("alike.jsonl", lines), command="encode")
    expect_equal(0, rc, "encode (%s)" % err)
    rc, out, err = run(write("alike.txt", stream), command="decode")
    expect_equal(0, rc, "decode (%s)" % err)
    first, second = out.split(b"\n")[:2]
    expect_equal(first.replace(b'"NOTES":null', b'"NOTES":"x"'), second, "the record with a CLOB")
    expect(b'"ZIP":"AB"' in second, second)


# ----------------------------------------------------------------------------
# Failures and their messages

BAD_JSON_LINES = (b'{"ID":1,"NAME":"one"}\n'
                  b'{"ID":"2"}\n'
                  b'{"IDX":3}\n'
                  b'{"ID":4,\n'
                  b'{"ID":5,"ADDRESS":{"ZIPP":"1"}}\n'
                  b'{"ID":6,"PHONES":"555"}\n'
                  b'{"ID":7,"NAME":"seven"}\n')


def case_items_of_objects_stand_apart():
    # Each object item holds only what its own JSON gives: an attribute left
    # out is null, never the value an earlier item of the collection had,
    # at every depth; a null item stays null.
    record = (b'{"ID":7,"ORDERS":[{"ORDER_NO":1,"PLACED":"2001-02-03 04:05:06","LINES":[{"SKU":"a","QTY":1,'
              b'"PRICE":2.5},{"SKU":"b"}]},{"ORDER_NO":2},null,{"LINES":[null,{"QTY":3,"PRICE":1}]}]}\n')
    stream = b"7||||||[[1|2001-02-03 04:05:06||[[a|1|2.5]|[b||]]]|[2|||]||[|||[|[|3|1.]]]]|||||\r\n"
    rc, out, err = run(write("items.jsonl", record), command="encode")
    expect_equal(0, rc, "encode exit status")
    expect_equal(stream, out, "stream")
    rc, out, err = run(write("items.txt", stream), command="decode")
    expect_equal(0, rc, "decode exit status")
    expect_equal(b'{"ID":7,"NAME":null,"BALANCE":null,"SINCE":null,"ADDRESS":null,"PHONES":null,"ORDERS":['
                 b'{"ORDER_NO":1,"PLACED":"2001-02-03 04:05:06","SHIPPED":null,"LINES":[{"SKU":"a","QTY":1,'
                 b'"PRICE":2.50},{"SKU":"b","QTY":null,"PRICE":null}]},'
                 b'{"ORDER_NO":2,"PLACED":null,"SHIPPED":null,"LINES":null},null,'
                 b'{"ORDER_NO":null,"PLACED":null,"SHIPPED":null,"LINES":[null,{"SKU":null,"QTY":3,"PRICE":1.00}]}],'
                 b'"NOTES":null,"PHOTO":null,"TOKEN":null}\n', out, "objects read back")
    # A bad attribute in a later item is named by its path.
    rc, out, err = run(write("bad_item.jsonl", b'{"ID":8,"ORDERS":[{"ORDER_NO":1},{"LINES":[{"SKU":"a"},{"SKUU":"b"}]}]}\n'),
                       command="encode")
    expect_equal(1, rc, "exit status of the bad item")
    expect_equal(b"", out, "nothing written for the bad item")
    expect_equal('varnadp: record 1 (byte 63): attribute ORDERS[1].LINES[1] has no attribute "SKUU" (SCOTT.LINE_T)\n',
                 err, "message of the bad item")


def case_object_items_beyond_a_varray_limit():
    # The item that does not fit is named, and the byte is where it starts.
    # ORA-22165 for a full VARRAY is the in-memory OCI's best reading of
    # Oracle's documentation (UNCONFIRMED there).
    schema = write("points.sql", "CREATE TYPE pt_t AS OBJECT (x NUMBER, label VARCHAR2(10));\n/\n"
                                 "CREATE TYPE pts_t AS VARRAY(2) OF pt_t;\n/\n"
                                 "CREATE TYPE shape_t AS OBJECT (id NUMBER, pts pts_t);\n/\n")
    records = (b'{"ID":1,"PTS":[{"X":1},{"LABEL":"b"}]}\n'
               b'{"ID":2,"PTS":[{"X":1},null,{"X":3}]}\n')
    rc, out, err = run(write("points.jsonl", records), "--bad", os.devnull, command="encode",
                       schema=schema, type_name="shape_t")
    expect_equal(1, rc, "exit status")
    expect_equal(b"1.|[[1.|]|[|b]]\r\n", out, "the record that fits")
    expect_equal("varnadp: record 2 (byte 67): attribute PTS[2] OCICollAppend failed: ORA-22165: given index [2] "
                 "must be in the range of [0] to [1]\n", err, "message")


def encode_together_and_alone(records, failing, schema, type_name):
    """Encodes the records in one run, where record `failing` (from 1) goes to --bad, and each other
    record in a run of its own; the two must give the same bytes. Returns the run's output and messages."""
    rc, out, err = run(write("together.jsonl", b"\n".join(records) + b"\n"), "--jobs", "1", "--bad", os.devnull,
                       command="encode", schema=schema, type_name=type_name)
    expect_equal(1, rc, "exit status")
    alone = b""
    for number, record in enumerate(records, 1):
        if number == failing:
            continue
        rc, out_alone, err_alone = run(write("alone.jsonl", record + b"\n"), command="encode", schema=schema,
                                       type_name=type_name)
        expect_equal(0, rc, "exit status of record %d alone (%s)" % (number, err_alone))
        alone += out_alone
    expect_equal(alone, out, "records written together and alone")
    return out, err


def case_each_record_starts_from_a_new_object():
    # One object is made over for record after record: each record must be
    # written exactly as when it is the only one of its run, whatever the
    # records before it set, at any depth, and after a record that failed.
    schema = write("reuse.sql", "CREATE TYPE pt_t AS OBJECT (x NUMBER, label VARCHAR2(10));\n/\n"
                                "CREATE TYPE pts_t AS VARRAY(3) OF pt_t;\n/\n"
                                "CREATE TYPE tags_t AS TABLE OF VARCHAR2(10);\n/\n"
                                "CREATE TYPE box_t AS OBJECT (corner pt_t, pts pts_t, tags tags_t);\n/\n"
                                "CREATE TYPE rec_t AS OBJECT (id NUMBER, name VARCHAR2(20), at TIMESTAMP(3),\n"
                                "  code RAW(4), born DATE, span INTERVAL DAY(2) TO SECOND(0), box box_t, tags tags_t);\n/\n")
    records = [
        b'{"ID":1,"NAME":"one","AT":"2020-01-02 03:04:05.678","CODE":"0A0B","BORN":"1999-12-31 23:59:59",'
        b'"SPAN":"+01 02:03:04","BOX":{"CORNER":{"X":1,"LABEL":"a"},"PTS":[{"X":2},null,{"LABEL":"b"}],'
        b'"TAGS":["p","q"]},"TAGS":["x","y","z"]}',
        b'{"ID":2}',
        b'{"ID":3,"BOX":{"PTS":[]}}',
        b'{"ID":4,"BOX":{"CORNER":{"LABEL":"c"}},"TAGS":["z"]}',
        b'{"ID":5,"NAME":"five","BOX":{"PTS":[{"X":1},{"Y":2}]},"TAGS":["t"]}',
        b'{"ID":6}',
        b'{"ID":7,"NAME":"","CODE":"","TAGS":[]}',
    ]
    out, err = encode_together_and_alone(records, 5, schema, "rec_t")
    expect_equal('varnadp: record 5 (byte 365): attribute BOX.PTS[1] has no attribute "Y" (SCOTT.PT_T)\n', err,
                 "message of the bad record")
    expect_equal(b"2.||||||||\r\n", out.split(b"\r\n")[1] + b"\r\n", "the record after a full one")
    expect_equal(b"6.||||||||\r\n", out.split(b"\r\n")[4] + b"\r\n", "the record after a failed one")


def case_scalar_items_stand_apart():
    # Text and RAW items are assigned one after another to one value before
    # each is appended: no item may keep bytes of a longer one before it, in
    # a record or across records, nor of one that failed.
    schema = write("items.sql", "CREATE TYPE words_t AS TABLE OF VARCHAR2(8);\n/\n"
                                "CREATE TYPE codes_t AS VARRAY(4) OF RAW(4);\n/\n"
                                "CREATE TYPE marks_t AS TABLE OF CHAR(3);\n/\n"
                                "CREATE TYPE bag_t AS OBJECT (id NUMBER, words words_t, codes codes_t, marks marks_t);\n/\n")
    records = [
        b'{"ID":1,"WORDS":["longest1","ab","","x"],"CODES":["0A0B0C0D","0E",null,""],"MARKS":["abc","d"]}',
        b'{"ID":2,"WORDS":["y"],"CODES":["FF"],"MARKS":["e",null]}',
        b'{"ID":3,"WORDS":["ok",12],"CODES":["01"]}',
        b'{"ID":4,"WORDS":[null,"z"],"CODES":["0102","03"],"MARKS":["fg"]}',
        b'{"ID":5,"WORDS":["w"],"CODES":[],"MARKS":[]}',
    ]
    out, err = encode_together_and_alone(records, 3, schema, "bag_t")
    expect("record 3 " in err and "WORDS[1]" in err, err)
    lines = out.split(b"\r\n")
    expect_equal(b"2.|[y]|[1|\xff]|[e|]", lines[1], "the record after longer items")
    expect_equal(b"4.|[|z]|[2|\x01\x02|1|\x03]|[fg]", lines[2], "the record after a failed one")
    rc, back, err = run(write("items.txt", out), command="decode", schema=schema, type_name="bag_t")
    expect_equal(0, rc, "exit status of decode (%s)" % err)
    expect_equal(b'{"ID":2,"WORDS":["y"],"CODES":["FF"],"MARKS":["e",null]}', back.split(b"\n")[1],
                 "the record after longer items, read back")


def case_first_failure_stops_the_run():
    rc, out, err = run(write("bad.jsonl", BAD_JSON_LINES), command="encode")
    expect_equal(1, rc, "exit status")
    expect_equal(b"1|one||||||||||\r\n", out, "records before the failure")
    expect_equal("varnadp: record 2 (byte 31): attribute ID is a NUMBER: a JSON number is expected, not a string\n",
                 err, "message")


def case_bad_records_file_keeps_going():
    bad = tmp("rejected.jsonl")
    rc, out, err = run(write("bad.jsonl", BAD_JSON_LINES), "--bad", bad, command="encode")
    expect_equal(1, rc, "exit status")
    expect_equal(b"1|one||||||||||\r\n7|seven||||||||||\r\n", out, "good records")
    expect_equal(b''.join(BAD_JSON_LINES.splitlines(True)[1:6]), read(bad), "bad records as received")
    expect_equal(
        ["varnadp: record 2 (byte 31): attribute ID is a NUMBER: a JSON number is expected, not a string",
         'varnadp: record 3 (byte 40): the record has no attribute "IDX" (CUSTOMER_T)',
         "varnadp: record 4 (byte 43): bad JSON: The JSON document has an improper structure: missing or "
         "superfluous commas, braces, missing keys, etc.",
         'varnadp: record 5 (byte 78): attribute ADDRESS has no attribute "ZIPP" (SCOTT.ADDRESS_T)',
         "varnadp: record 6 (byte 106): attribute PHONES is a collection of SCOTT.PHONES_T: a JSON array is "
         "expected, not a string"],
        err.splitlines(), "messages")


def case_missing_type():
    rc, out, err = run(CUSTOMERS_JSON, type_name="nosuch_t", command="encode")
    expect_equal(2, rc, "exit status")
    expect_equal("varnadp: type NOSUCH_T: ORA-04043: object NOSUCH_T does not exist\n", err, "message")


def case_bad_schema_statement_names_its_line():
    schema = write("bad.sql", "REM types\nCREATE TYPE a_t AS OBJECT (x NUMBER);\n/\n\nCREATE TYPO b;\n")
    rc, out, err = run(CUSTOMERS_JSON, schema=schema, type_name="a_t", command="encode")
    expect_equal(2, rc, "exit status")
    expect_equal("varnadp: %s:5: ORA-00901: invalid CREATE command\n" % schema, err, "message")


def case_missing_schema_file():
    rc, out, err = run(CUSTOMERS_JSON, schema=tmp("none.sql"), command="encode")
    expect_equal(2, rc, "exit status")
    expect("--schema" in err and "none.sql" in err, err)


def case_malformed_stream_message():
    stream = write("bad.txt", b"1|ok\r\n2|bad!q\r\n3|12.3.4\r\n")
    rc, out, err = run(stream, command="decode")
    expect_equal(1, rc, "exit status")
    expect_equal(b'{"ID":1,"NAME":"ok"', out[:19], "record before the failure")
    expect_equal("varnadp: record 2 (byte 12): code -1102 in CAdp::_ReadElementSize: Invalid relese character position\n",
                 err, "message")


def case_check_reports_every_bad_record():
    stream = write("check.txt", b"1|ok\r\n2|bad!q\r\n3|fine\r\n4|x|12.3.4\r\n5|[x|y\r\n")
    rc, out, err = run(stream, command="check")
    expect_equal(1, rc, "exit status")
    expect_equal(b"", out, "standard output")
    lines = err.splitlines()
    expect_equal("varnadp: record 2 (byte 12): code -1102 in CAdp::_ReadElementSize: Invalid relese character position",
                 lines[0], "first report")
    expect(lines[1].startswith("varnadp: record 4 (byte 23): code -24 in CAdp::_OraStreamToField: Database error (ORA-"),
           lines[1])
    expect_equal("varnadp: record 5 (byte 35): code -24 in CAdp::_OraStreamToField: Database error "
                 "(ORA-22061: invalid format text [y])", lines[2], "third report")
    expect_equal("varnadp: 5 records, 2 good, 3 bad", lines[-1], "summary")
    rc, out, err = run(CUSTOMERS_STREAM, command="check")
    expect_equal(0, rc, "exit status of a good stream")
    expect_equal("varnadp: 3 records, 3 good, 0 bad\n", err, "summary of a good stream")


def case_bad_stream_records_file():
    stream = write("bad2.txt", b"1|ok\r\n2|bad!q\r\n3|fine\r\n")
    bad = tmp("rejected.txt")
    rc, out, err = run(stream, "--bad", bad, command="decode")
    expect_equal(1, rc, "exit status")
    expect_equal(2, out.count(b"\n"), "good records")
    expect_equal(b"2|bad!q\r\n", read(bad), "bad record as received")


def case_trace_level_prints_the_adapters_lines():
    stream = write("trace.txt", b"2|bad!q\r\n")
    rc, out, err = run(stream, "--trace-level", "1", command="check")
    expect("*ERR: at offset 6\n" in err and "*ERR: in CAdp::_ReadElementSize (-2)" in err, err)
    rc, out, err = run(stream, command="check")
    expect("*ERR" not in err, err)


def case_progress_shows_on_a_terminal_only():
    import pty
    master, slave = pty.openpty()
    result = subprocess.run([VARNADP, "encode", "--schema", SCHEMA, "--type", "customer_t", CUSTOMERS_JSON,
                             "-o", os.devnull], stderr=slave, timeout=600)
    os.close(slave)
    shown = b""
    try:
        while True:
            chunk = os.read(master, 4096)
            if not chunk:
                break
            shown += chunk
    except OSError:
        pass
    os.close(master)
    expect_equal(0, result.returncode, "exit status")
    expect(b"3 records" in shown and b"100%" in shown, shown)
    # Not on a pipe.
    rc, out, err = run(CUSTOMERS_JSON, "-o", os.devnull, command="encode")
    expect_equal("", err, "standard error on a pipe")


def case_unwritable_output():
    rc, out, err = run(CUSTOMERS_JSON, "-o", "/nonexistent/dir/out.txt", command="encode")
    expect_equal(2, rc, "exit status")
    expect("cannot create /nonexistent/dir/out.txt" in err, err)


# ----------------------------------------------------------------------------
# The rest of the command line

def case_coldef_lists_the_records():
    rc, out, err = run(command="coldef", type_name="address_t")
    expect_equal(0, rc, "exit status (%s)" % err)
    expect_equal(
        "FLAGS            NAME                           DATATYPE EXTTYPE DATASIZE DISPLAYSIZE PRECISION SCALE ITEM TYPENAME\n"
        "defined          STREET                                1       1       60           0         0     0   no -\n"
        "defined          CITY                                  1       1       40           0         0     0   no -\n"
        "defined          ZIP                                  96      96        5           0         0     0   no -\n",
        out.decode(), "coldef of ADDRESS_T")


def case_version_and_help():
    rc, out, err = run("--version")
    expect_equal(0, rc, "exit status")
    expect(out.startswith(b"varnadp "), out)
    for command in ("encode", "decode", "check", "coldef"):
        rc, out, err = run(command, "--help")
        expect_equal(0, rc, command + " --help")
        expect(b"Example" in out and b"--schema" in out, out)
    rc, out, err = run()
    expect_equal(2, rc, "no subcommand")
    rc, out, err = run("encode", "--schema", SCHEMA)
    expect_equal(2, rc, "missing --type")
    expect("--type is required" in err, err)


def run_measured(argv):
    """Runs argv; its exit status, standard error and peak resident memory in KiB."""
    env = dict(os.environ)
    # Under AddressSanitizer freed memory waits in a quarantine of 256 MiB by default, which
    # a long run fills whatever it keeps: a small one leaves what the program itself holds.
    env["ASAN_OPTIONS"] = env.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=4:thread_local_quarantine_size_kb=64"
    process = subprocess.Popen(argv, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, env=env)
    err = process.stderr.read().decode("utf-8", "replace")
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, err, usage.ru_maxrss


def case_large_input_memory_stays_flat():
    generator = os.path.join(BENCH, "generate.py")
    schema = os.path.join(BENCH, "reference.sql")
    if not os.path.exists(generator):
        print("skipped: %s is not there" % generator)
        sys.exit(SKIP)
    peaks = {}
    for count in (10000, 100000):
        json = tmp("orders%d.jsonl" % count)
        subprocess.run([sys.executable, generator, "ref_order_t", str(count), json], check=True)
        stream = tmp("orders%d.txt" % count)
        back = tmp("orders%d.back.jsonl" % count)
        for command, source, target in (("encode", json, stream), ("decode", stream, back)):
            rc, err, peak = run_measured([VARNADP, command, "--schema", schema, "--type", "ref_order_t",
                                          "--jobs", "2", source, "-o", target])
            expect_equal(0, rc, "%s of %d orders (%s)" % (command, count, err))
            peaks[(command, count)] = peak
            print("%s of %d orders: peak memory %d KiB" % (command, count, peak))
        # Compared in pieces: this process stays small, as the peak of a child counts it too.
        expect(__import__("filecmp").cmp(json, back, shallow=False),
               "%d orders did not survive the round trip" % count)
        print("%d orders: %d bytes of JSON, %d bytes of stream" % (count, os.path.getsize(json),
                                                                  os.path.getsize(stream)))
    # Ten times the records (70 MiB more JSON, 36 MiB more stream) must not take more memory
    # than a few MiB of noise.
    for command in ("encode", "decode"):
        growth = peaks[(command, 100000)] - peaks[(command, 10000)]
        print("%s: peak memory growth from 10,000 to 100,000 orders: %d KiB" % (command, growth))
        expect(growth < 16 * 1024, "%s memory grew by %d KiB with the input" % (command, growth))


def main():
    function = globals().get("case_" + CASE)
    if function is None:
        print("no case %s" % CASE)
        return 1
    try:
        function()
    except Failed as e:
        print("FAILED: %s" % e)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
