#include "scalar_values.h"

#include <cstring>
#include <memory>

#include "json_text.h"
#include "number_text.h"
#include "oci_session.h"
#include "shape.h"

namespace varnadp {
namespace {

const OraText* Text(const char* s) { return reinterpret_cast<const OraText*>(s); }

// The stream's own text forms of dates and timestamps.
const char* DateMask(const Column_Def& def) {
  if (def.ExtType == 5 && def.DisplaySize == 20) return "DD-MON-YY";
  return "YYYY-MM-DD HH24:MI:SS";
}

const char* TimestampMask(const Column_Def& def) {
  const bool zone = def.DataType == SQLT_TIMESTAMP_TZ;
  if (def.Scale != 0) return zone ? "YYYY-MM-DD HH24:MI:SS.FF TZR TZD" : "YYYY-MM-DD HH24:MI:SS.FF";
  return zone ? "YYYY-MM-DD HH24:MI:SS TZR TZD" : "YYYY-MM-DD HH24:MI:SS";
}

bool Oracle(OciSession& session, sword status, const char* call, std::string* error) {
  if (status == OCI_SUCCESS) return true;
  *error = std::string(call) + " failed: " + session.OracleError();
  return false;
}

bool WrongKind(const char* expected, JsonKind kind, std::string* error) {
  *error = std::string("is ") + expected + ", not " + JsonKindName(kind);
  return false;
}

bool StoreLob(OciSession& session, const Column_Def& def, std::string_view bytes, void* slot,
              std::string* error) {
  OCILobLocator* locator = *static_cast<OCILobLocator**>(slot);
  const bool clob = def.DataType == SQLT_CLOB;
  if (!Oracle(session,
              OCILobCreateTemporary(session.svc(), session.err(), locator, 0, SQLCS_IMPLICIT,
                                    clob ? OCI_TEMP_CLOB : OCI_TEMP_BLOB, FALSE,
                                    OCI_DURATION_SESSION),
              "OCILobCreateTemporary", error)) {
    return false;
  }
  if (bytes.empty()) return true;
  // The amount in bytes (no character count), the whole value in one piece.
  oraub8 byte_amount = bytes.size();
  oraub8 char_amount = 0;
  return Oracle(session,
                OCILobWrite2(session.svc(), session.err(), locator, &byte_amount, &char_amount, 1,
                             const_cast<char*>(bytes.data()), bytes.size(), OCI_ONE_PIECE, nullptr,
                             nullptr, 0, SQLCS_IMPLICIT),
                "OCILobWrite2", error);
}

bool AppendLob(OciSession& session, const Column_Def& def, OCILobLocator* locator, std::string* out,
               std::string* error) {
  ub4 length = 0;
  if (!Oracle(session, OCILobGetLength(session.svc(), session.err(), locator, &length),
              "OCILobGetLength", error)) {
    return false;
  }
  const bool clob = def.DataType == SQLT_CLOB;
  std::string bytes;
  if (length != 0) {
    // Up to four bytes a character of a CLOB.
    const unsigned long long room = clob ? 4ull * length : length;
    if (room > 0xFFFFFFFFull) {
      *error = "is larger than 4 GiB";
      return false;
    }
    bytes.resize(static_cast<size_t>(room));
    ub4 amount = static_cast<ub4>(room);
    if (!Oracle(session,
                OCILobRead(session.svc(), session.err(), locator, &amount, 1, bytes.data(),
                           static_cast<ub4>(room), nullptr, nullptr, 0, SQLCS_IMPLICIT),
                "OCILobRead", error)) {
      return false;
    }
    bytes.resize(amount);
  }
  if (clob) {
    AppendJsonString(bytes, out);
  } else {
    out->push_back('"');
    AppendHex(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), out);
    out->push_back('"');
  }
  return true;
}

}  // namespace

const char* JsonKindName(JsonKind kind) {
  switch (kind) {
    case JsonKind::kNull: return "null";
    case JsonKind::kNumber: return "a number";
    case JsonKind::kString: return "a string";
    case JsonKind::kBool: return "true or false";
    case JsonKind::kObject: return "an object";
    case JsonKind::kArray: return "an array";
  }
  return "a JSON value";
}

bool IsCarriedType(const Column_Def& def) {
  switch (def.DataType) {
    case SQLT_NUM: case SQLT_CHR: case SQLT_AFC: case SQLT_LNG: case SQLT_LVC: case SQLT_DAT:
    case SQLT_BIN: case SQLT_LBI: case SQLT_CLOB: case SQLT_BLOB: case SQLT_TIMESTAMP:
    case SQLT_TIMESTAMP_TZ: case SQLT_TIMESTAMP_LTZ: case SQLT_INTERVAL_YM: case SQLT_INTERVAL_DS:
      return true;
    default:
      return false;
  }
}

bool StoreScalar(OciSession& session, const Column_Def& def, JsonKind kind, std::string_view text,
                 void* slot, std::string* error) {
  OCIError* err = session.err();
  OCIEnv* env = session.env();
  switch (def.DataType) {
    case SQLT_NUM: {
      if (kind != JsonKind::kNumber) return WrongKind("a NUMBER: a JSON number is expected", kind, error);
      const NumberParse parsed = NumberFromDecimal(text, static_cast<OCINumber*>(slot));
      if (parsed == NumberParse::kOverflow) {
        *error = "is out of NUMBER's range (1E126 or more in magnitude)";
        return false;
      }
      if (parsed == NumberParse::kSyntax) {
        *error = "is not a number";
        return false;
      }
      return true;
    }
    case SQLT_CHR: case SQLT_AFC: case SQLT_LNG: case SQLT_LVC:
      if (kind != JsonKind::kString) return WrongKind("text: a JSON string is expected", kind, error);
      return Oracle(session,
                    OCIStringAssignText(env, err, reinterpret_cast<const OraText*>(text.data()),
                                        static_cast<ub4>(text.size()), static_cast<OCIString**>(slot)),
                    "OCIStringAssignText", error);
    case SQLT_DAT: {
      if (kind != JsonKind::kString) return WrongKind("a DATE: a JSON string is expected", kind, error);
      const char* mask = DateMask(def);
      return Oracle(session,
                    OCIDateFromText(err, reinterpret_cast<const OraText*>(text.data()),
                                    static_cast<ub4>(text.size()), Text(mask),
                                    static_cast<ub1>(std::strlen(mask)), nullptr, 0,
                                    static_cast<OCIDate*>(slot)),
                    "OCIDateFromText", error);
    }
    case SQLT_TIMESTAMP: case SQLT_TIMESTAMP_TZ: case SQLT_TIMESTAMP_LTZ: {
      if (kind != JsonKind::kString) return WrongKind("a TIMESTAMP: a JSON string is expected", kind, error);
      const char* mask = TimestampMask(def);
      return Oracle(session,
                    OCIDateTimeFromText(env, err, reinterpret_cast<const OraText*>(text.data()),
                                        text.size(), Text(mask), static_cast<ub1>(std::strlen(mask)),
                                        nullptr, 0, *static_cast<OCIDateTime**>(slot)),
                    "OCIDateTimeFromText", error);
    }
    case SQLT_INTERVAL_YM: case SQLT_INTERVAL_DS: {
      if (kind != JsonKind::kString) return WrongKind("an INTERVAL: a JSON string is expected", kind, error);
      return Oracle(session,
                    OCIIntervalFromText(env, err, reinterpret_cast<const OraText*>(text.data()),
                                        text.size(), *static_cast<OCIInterval**>(slot)),
                    "OCIIntervalFromText", error);
    }
    case SQLT_BIN: case SQLT_LBI: {
      if (kind != JsonKind::kString) return WrongKind("a RAW: a JSON string of hex digits is expected", kind, error);
      std::string bytes;
      if (!ParseHex(text, &bytes)) {
        *error = "is not an even number of hex digits";
        return false;
      }
      return Oracle(session,
                    OCIRawAssignBytes(env, err, reinterpret_cast<const ub1*>(bytes.data()),
                                      static_cast<ub4>(bytes.size()), static_cast<OCIRaw**>(slot)),
                    "OCIRawAssignBytes", error);
    }
    case SQLT_CLOB:
      if (kind != JsonKind::kString) return WrongKind("a CLOB: a JSON string is expected", kind, error);
      return StoreLob(session, def, text, slot, error);
    case SQLT_BLOB: {
      if (kind != JsonKind::kString) return WrongKind("a BLOB: a JSON string of hex digits is expected", kind, error);
      std::string bytes;
      if (!ParseHex(text, &bytes)) {
        *error = "is not an even number of hex digits";
        return false;
      }
      return StoreLob(session, def, bytes, slot, error);
    }
    default:
      *error = std::string("has the data type ") + DataTypeName(def) +
               ", which the stream does not carry; only null is accepted";
      return false;
  }
}

bool AppendScalar(OciSession& session, const Column_Def& def, const void* slot, std::string* out,
                  std::string* error) {
  OCIError* err = session.err();
  OCIEnv* env = session.env();
  char buffer[256];
  switch (def.DataType) {
    case SQLT_NUM:
      AppendNumberDecimal(*static_cast<const OCINumber*>(slot), def.Scale > 0 ? def.Scale : 0, out);
      return true;
    case SQLT_CHR: case SQLT_AFC: case SQLT_LNG: case SQLT_LVC: {
      // A string resized to nothing leaves NULL in its slot: empty text.
      const OCIString* string = *static_cast<OCIString* const*>(slot);
      if (string == nullptr) {
        out->append("\"\"");
        return true;
      }
      AppendJsonString(std::string_view(reinterpret_cast<const char*>(OCIStringPtr(env, string)),
                                        OCIStringSize(env, string)),
                       out);
      return true;
    }
    case SQLT_DAT: {
      const char* mask = DateMask(def);
      ub4 size = sizeof buffer;
      if (!Oracle(session,
                  OCIDateToText(err, static_cast<const OCIDate*>(slot), Text(mask),
                                static_cast<ub1>(std::strlen(mask)), nullptr, 0, &size,
                                reinterpret_cast<OraText*>(buffer)),
                  "OCIDateToText", error)) {
        return false;
      }
      AppendJsonString(std::string_view(buffer, size), out);
      return true;
    }
    case SQLT_TIMESTAMP: case SQLT_TIMESTAMP_TZ: case SQLT_TIMESTAMP_LTZ: {
      const char* mask = TimestampMask(def);
      ub4 size = sizeof buffer;
      if (!Oracle(session,
                  OCIDateTimeToText(env, err, *static_cast<OCIDateTime* const*>(slot), Text(mask),
                                    static_cast<ub1>(std::strlen(mask)), static_cast<ub1>(def.Scale),
                                    nullptr, 0, &size, reinterpret_cast<OraText*>(buffer)),
                  "OCIDateTimeToText", error)) {
        return false;
      }
      AppendJsonString(std::string_view(buffer, size), out);
      return true;
    }
    case SQLT_INTERVAL_YM: case SQLT_INTERVAL_DS: {
      size_t size = 0;
      if (!Oracle(session,
                  OCIIntervalToText(env, err, *static_cast<OCIInterval* const*>(slot),
                                    static_cast<ub1>(def.Precision), static_cast<ub1>(def.Scale),
                                    reinterpret_cast<OraText*>(buffer), sizeof buffer, &size),
                  "OCIIntervalToText", error)) {
        return false;
      }
      AppendJsonString(std::string_view(buffer, size), out);
      return true;
    }
    case SQLT_BIN: case SQLT_LBI: {
      const OCIRaw* raw = *static_cast<OCIRaw* const*>(slot);
      out->push_back('"');
      if (raw != nullptr) AppendHex(OCIRawPtr(env, raw), OCIRawSize(env, raw), out);
      out->push_back('"');
      return true;
    }
    case SQLT_CLOB: case SQLT_BLOB:
      return AppendLob(session, def, *static_cast<OCILobLocator* const*>(slot), out, error);
    default:
      *error = std::string("has the data type ") + DataTypeName(def) + ", which the stream does not carry";
      return false;
  }
}

}  // namespace varnadp
