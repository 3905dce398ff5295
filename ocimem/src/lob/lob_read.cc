// OCILobRead and OCILobRead2: one-piece reads, polling reads that hand out one piece per
// call (OCI_NEED_DATA until the last), and reads that hand every piece to the caller's
// callback.  A CLOB read takes its amount in characters (OCILobRead2 also in bytes) and
// tells what it read in bytes; a piece never splits a character.  Callbacks are called
// without any lock held, so that they may call OCI themselves.
#include <algorithm>
#include <cstring>
#include <functional>

#include "lob/lob_ops.h"

namespace ocimem {
namespace {

// One piece for a read callback: its bytes, length and OCI_FIRST/NEXT/LAST_PIECE; may hand
// back another buffer (and its size) for the next pieces.  Returns the callback's status.
using ReadPieceFn = std::function<sb4(const void* buf, std::uint64_t len, ub1 piece,
                                      void** new_buf, std::uint64_t* new_len)>;

enum class ReadMode {
  kFit,       // OCILobRead: one piece when it fits the buffer, else the first polled piece
  kOnePiece,  // OCILobRead2 OCI_ONE_PIECE: what fits the buffer, in one call
  kPoll,      // OCILobRead2 OCI_FIRST_PIECE: the first polled piece
  kCallback,  // every piece to the callback
};

struct ReadRequest {
  std::uint64_t offset = 1;
  std::uint64_t amount = 0;  // characters (CLOB) or bytes; 0: to the end
  bool clob_bytes = false;   // a CLOB amount counted in bytes (OCILobRead2, char amount 0)
  char* buf = nullptr;
  std::uint64_t bufl = 0;
  ReadMode mode = ReadMode::kFit;
  ReadPieceFn callback;
};

struct ReadResult {
  std::uint64_t bytes = 0;
  std::uint64_t chars = 0;  // characters of a CLOB, bytes of a BLOB
};

// Bytes of [start, end) that fit `room` without splitting a character of a CLOB.
size_t PieceBytes(const std::string& content, bool clob, size_t start, size_t end,
                  std::uint64_t room) {
  size_t n = static_cast<size_t>(std::min<std::uint64_t>(room, end - start));
  if (clob && start + n < end) {
    while (n > 0 && (static_cast<unsigned char>(content[start + n]) & 0xc0) == 0x80) --n;
  }
  return n;
}

ReadResult Counted(const char* bytes, size_t n, bool clob) {
  ReadResult r;
  r.bytes = n;
  r.chars = clob ? ClobChars(std::string(bytes, n)) : n;
  return r;
}

// The next piece of an open polling read.
sword NextPiece(OCIError* err, OCILobLocator* l, const std::string& content, char* buf,
                std::uint64_t bufl, ReadResult* out) {
  bool clob = IsClob(*l);
  size_t end = std::min(l->read.end, content.size());
  size_t start = std::min(l->read.next, end);
  size_t n = PieceBytes(content, clob, start, end, bufl);
  if (n == 0 && start < end) {
    l->read = LobStreamRead();
    return IllegalParameter(err);  // decision LB16: a buffer too small for one character
  }
  if (n > 0) std::memcpy(buf, content.data() + start, n);
  *out = Counted(content.data() + start, n, clob);
  l->read.next = start + n;
  if (l->read.next >= end) {
    l->read = LobStreamRead();
    return OCI_SUCCESS;
  }
  return OCI_NEED_DATA;
}

// Hands [start, end) of `data` to the callback in pieces of at most the buffer's size.
sword DeliverToCallback(OCIError* err, const std::string& data, bool clob, const ReadRequest& r,
                        ReadResult* out) {
  char* buf = r.buf;
  std::uint64_t room = r.bufl;
  size_t pos = 0;
  bool first = true;
  while (pos < data.size()) {
    size_t n = PieceBytes(data, clob, pos, data.size(), room);
    if (n == 0) return IllegalParameter(err);  // a buffer too small for one character
    std::memcpy(buf, data.data() + pos, n);
    pos += n;
    // decision LB1: a read that fits one buffer is handed over as its last piece
    ub1 piece = pos >= data.size() ? OCI_LAST_PIECE : first ? OCI_FIRST_PIECE : OCI_NEXT_PIECE;
    first = false;
    void* new_buf = nullptr;
    std::uint64_t new_len = 0;
    sb4 status = r.callback(buf, n, piece, &new_buf, &new_len);
    out->bytes += n;
    out->chars += clob ? ClobChars(std::string(buf, n)) : n;
    if (status != OCI_CONTINUE) return Fail(err, 24802, "user defined lob read callback error");
    if (new_buf != nullptr) {
      buf = static_cast<char*>(new_buf);
      room = new_len;
    }
  }
  return OCI_SUCCESS;
}

sword ReadLob(OCIError* err, SvcCtx* svc, OCILobLocator* l, const ReadRequest& r,
              ReadResult* out) {
  *out = ReadResult();
  bool clob = IsClob(*l);
  std::string taken;  // the bytes for a callback, copied so that no lock is held during it
  {
    LobLock lock(*l);
    const std::string& content = Visible(*l, SessionTxn(svc));
    if (r.offset - 1 >= LobLength(content, clob)) {
      l->read = LobStreamRead();
      return OCI_SUCCESS;  // decision D10: nothing to read is a read of nothing
    }
    size_t start = 0;
    size_t end = 0;
    if (clob && r.clob_bytes) {
      start = ClobBytePosition(content, static_cast<size_t>(r.offset - 1));
      end = r.amount == 0 ? content.size()
                          : static_cast<size_t>(std::min<std::uint64_t>(content.size(),
                                                                         start + r.amount));
      // decision LB19: a byte amount stops before a character that would not fit whole
      end = start + PieceBytes(content, clob, start, content.size(), end - start);
    } else {
      UnitRange(content, clob, r.offset, r.amount, &start, &end);
    }
    l->read = LobStreamRead();
    if (r.mode == ReadMode::kCallback) {
      taken.assign(content, start, end - start);
    } else {
      size_t total = end - start;
      if (total <= r.bufl || r.mode == ReadMode::kOnePiece) {
        size_t n = PieceBytes(content, clob, start, end, r.bufl);
        if (n == 0 && total > 0) return IllegalParameter(err);  // decision LB16
        if (n > 0) std::memcpy(r.buf, content.data() + start, n);
        *out = Counted(content.data() + start, n, clob);
        return OCI_SUCCESS;
      }
      l->read.open = true;
      l->read.next = start;
      l->read.end = end;
      return NextPiece(err, l, content, r.buf, r.bufl, out);
    }
  }
  return DeliverToCallback(err, taken, clob, r, out);
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCILobRead(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub4* amtp, ub4 offset,
                 void* bufp, ub4 bufl, void* ctxp, OCICallbackLobRead cbfp, ub2 csid,
                 ub1 csfrm) try {
  (void)csid;  // the client character set, UTF-8
  SvcCtx* svc = nullptr;
  OCILobLocator* l = nullptr;
  sword rc = StreamEntry("OCILobRead", svchp, errhp, locp, amtp, bufp, bufl, 6, csfrm, &svc, &l);
  if (rc != OCI_SUCCESS) return rc;
  ReadResult out;
  if (l->read.open) {  // the next piece of a polling read
    LobLock lock(*l);
    rc = NextPiece(errhp, l, Visible(*l, SessionTxn(svc)), static_cast<char*>(bufp), bufl, &out);
    *amtp = static_cast<ub4>(out.bytes);
    return rc;
  }
  if (offset == 0) return IllegalParameter(errhp);
  ReadRequest r;
  r.offset = offset;
  r.amount = *amtp;
  r.buf = static_cast<char*>(bufp);
  r.bufl = bufl;
  if (cbfp != nullptr) {
    // decision LB1: with a callback every read is streamed through it
    r.mode = ReadMode::kCallback;
    r.callback = [ctxp, cbfp](const void* buf, std::uint64_t len, ub1 piece, void**,
                              std::uint64_t*) {
      return cbfp(ctxp, buf, static_cast<ub4>(len), piece);
    };
  }
  rc = ReadLob(errhp, svc, l, r, &out);
  *amtp = static_cast<ub4>(out.bytes);
  return rc;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobRead2(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, oraub8* byte_amtp,
                  oraub8* char_amtp, oraub8 offset, void* bufp, oraub8 bufl, ub1 piece,
                  void* ctxp, OCICallbackLobRead2 cbfp, ub2 csid, ub1 csfrm) try {
  (void)csid;
  SvcCtx* svc = nullptr;
  OCILobLocator* l = nullptr;
  sword rc =
      StreamEntry("OCILobRead2", svchp, errhp, locp, byte_amtp, bufp, bufl, 7, csfrm, &svc, &l);
  if (rc != OCI_SUCCESS) return rc;
  bool clob = IsClob(*l);
  ReadResult out;
  auto report = [&](sword status) {
    *byte_amtp = out.bytes;
    if (char_amtp != nullptr && clob) *char_amtp = out.chars;
    return status;
  };
  if (piece == OCI_NEXT_PIECE) {
    if (!l->read.open) return IllegalParameter(errhp);  // no polling read is open
    LobLock lock(*l);
    return report(
        NextPiece(errhp, l, Visible(*l, SessionTxn(svc)), static_cast<char*>(bufp), bufl, &out));
  }
  if (piece != OCI_ONE_PIECE && piece != OCI_FIRST_PIECE) return IllegalParameter(errhp);
  if (offset == 0) return IllegalParameter(errhp);
  ReadRequest r;
  r.offset = offset;
  std::uint64_t chars = clob && char_amtp != nullptr ? *char_amtp : 0;
  r.amount = clob && chars > 0 ? chars : *byte_amtp;
  r.clob_bytes = clob && chars == 0;
  r.buf = static_cast<char*>(bufp);
  r.bufl = bufl;
  if (piece == OCI_ONE_PIECE) {
    // decisions LB3, LB18: a one-piece read ignores a callback and reads what fits
    r.mode = ReadMode::kOnePiece;
  } else if (cbfp != nullptr) {
    r.mode = ReadMode::kCallback;
    r.callback = [ctxp, cbfp](const void* buf, std::uint64_t len, ub1 p, void** new_buf,
                              std::uint64_t* new_len) {
      oraub8 changed_len = 0;
      sb4 status = cbfp(ctxp, buf, len, p, new_buf, &changed_len);
      *new_len = changed_len;
      return status;
    };
  } else {
    r.mode = ReadMode::kPoll;
  }
  return report(ReadLob(errhp, svc, l, r, &out));
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
