// The special strings of the delimited stream. Writer and reader both take
// them from here; nothing else defines the format's bytes. The group marks
// are fixed; delimiter, terminator and release have these defaults and may
// be replaced per context (CAdp's constructor).
#ifndef SRC_STREAM_STREAM_FORMAT_H_
#define SRC_STREAM_STREAM_FORMAT_H_

static constexpr char ADP_GROUP_START[] = "[";
static constexpr long ADP_GROUP_START_LEN = 1;
static constexpr char ADP_GROUP_END[] = "]";
static constexpr long ADP_GROUP_END_LEN = 1;
static constexpr char ADP_DELIMITER[] = "|";
static constexpr long ADP_DELIMITER_LEN = 1;
static constexpr char ADP_TERMINATOR[] = "\r\n";
static constexpr long ADP_TERMINATOR_LEN = 2;
static constexpr char ADP_RELEASE[] = "!";
static constexpr long ADP_RELEASE_LEN = 1;

// A binary value (RAW, BLOB) is written as its byte count, this byte and
// the bytes. It is this byte whatever delimiter the context uses; a null
// binary value is this byte alone.
static constexpr char ADP_BINARY_LENGTH_END[] = "|";

// Room of the configured delimiter and terminator in a context.
static constexpr long ADP_SPECIAL_MAX = 32;

#endif  // SRC_STREAM_STREAM_FORMAT_H_
