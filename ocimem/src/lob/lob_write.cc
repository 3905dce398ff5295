// OCILobWrite, OCILobWrite2 and OCILobWriteAppend: one-piece writes, polling writes
// (OCI_FIRST_PIECE and OCI_NEXT_PIECE answer OCI_NEED_DATA, OCI_LAST_PIECE writes
// everything), and writes whose later pieces come from the caller's callback.  A write
// overwrites in place and never shortens the LOB (decision D12).  The amount of a CLOB write
// is taken in bytes (OCILobWrite2 also in characters) and told back in characters
// (decision D13).  Callbacks are called without any lock held.
#include <cstring>
#include <functional>

#include "lob/lob_ops.h"

namespace ocimem {
namespace {

// Asks a write callback for the next piece: it fills `*buf` (or hands back another buffer
// in `*buf` and its size in `*room`), sets `*len` (in: the room, out: the bytes) and
// `*piece`; returns its status.
using WritePieceFn =
    std::function<sb4(void** buf, std::uint64_t* len, ub1* piece, std::uint64_t* room)>;

struct WriteRequest {
  std::uint64_t offset = 1;
  bool append = false;          // OCILobWriteAppend: at the end of the LOB
  std::uint64_t amount = 0;     // bytes, or characters when amount_chars
  bool amount_chars = false;
  const char* data = nullptr;
  std::uint64_t len = 0;
  ub1 piece = OCI_ONE_PIECE;
  WritePieceFn callback;        // with OCI_FIRST_PIECE: the pieces after the first
};

struct WriteResult {
  // The whole write (after a one-piece write, a last piece or a callback write).
  std::uint64_t total_bytes = 0;
  std::uint64_t total_chars = 0;  // characters of a CLOB, bytes of a BLOB
  // This call's piece of a polling write.
  std::uint64_t piece_bytes = 0;
  std::uint64_t piece_chars = 0;
  bool polled = false;
};

void Count(const std::string& data, bool clob, std::uint64_t* bytes, std::uint64_t* chars) {
  *bytes = data.size();
  *chars = clob ? ClobChars(data) : data.size();
}

sword LessData(OCIError* err) {
  return Fail(err, 24811, "less data provided for writing than indicated");
}

// Units of `data` as the amount counts them.
std::uint64_t Units(const std::string& data, const LobPiecewise& w) {
  return w.announced_chars ? ClobChars(data) : data.size();
}

// Applies the bytes of a finished write.
sword Apply(OCIError* err, SvcCtx* svc, OCILobLocator* l, bool append, std::uint64_t offset,
            const std::string& data) {
  LobLock lock(*l);
  std::string* content = nullptr;
  sword rc = Writable(err, svc, l, &content);
  if (rc != OCI_SUCCESS) return rc;
  bool clob = IsClob(*l);
  if (append) offset = LobLength(*content, clob) + 1;
  if (!WriteFits(*content, offset, data.size())) return TooLarge(err);
  Overwrite(content, clob, offset, data);
  return OCI_SUCCESS;
}

sword OnePiece(OCIError* err, SvcCtx* svc, OCILobLocator* l, const WriteRequest& r,
               WriteResult* out) {
  bool clob = IsClob(*l);
  std::string data(r.data == nullptr ? "" : r.data, r.data == nullptr ? 0 : r.len);
  if (r.amount_chars) {
    if (ClobChars(data) < r.amount) return LessData(err);
    data.resize(ClobBytePosition(data, static_cast<size_t>(r.amount)));
  } else {
    if (r.amount > data.size()) return LessData(err);
    data.resize(static_cast<size_t>(r.amount));
  }
  if (data.empty()) return OCI_SUCCESS;  // an amount of 0 writes nothing, not even a gap
  sword rc = Apply(err, svc, l, r.append, r.offset, data);
  if (rc == OCI_SUCCESS) Count(data, clob, &out->total_bytes, &out->total_chars);
  return rc;
}

// Adds a piece to an open piecewise write; ORA-24810 or ORA-22925 end the write.
sword AddPiece(OCIError* err, OCILobLocator* l, const std::string& content, const char* data,
               std::uint64_t len) {
  LobPiecewise& w = l->write;
  // decision D12: empty pieces are accepted
  std::uint64_t at = w.append ? content.size() + 1 : w.offset;
  if (!WriteFits(content, at, w.bytes.size() + len)) {
    w = LobPiecewise();
    return TooLarge(err);
  }
  if (len > 0) w.bytes.append(data, static_cast<size_t>(len));
  if (w.announced > 0 && Units(w.bytes, w) > w.announced) {
    w = LobPiecewise();
    return Fail(err, 24810, "attempting to write more data than indicated");
  }
  return OCI_SUCCESS;
}

// Ends an open piecewise write: checks the amount and writes everything.
sword Finish(OCIError* err, SvcCtx* svc, OCILobLocator* l, WriteResult* out) {
  LobPiecewise done = std::move(l->write);
  l->write = LobPiecewise();
  if (done.announced > 0 && Units(done.bytes, done) < done.announced) return LessData(err);
  if (done.bytes.empty()) {
    return Fail(err, 22923, "amount of data specified in streaming LOB write is 0");
  }
  sword rc = Apply(err, svc, l, done.append, done.offset, done.bytes);
  if (rc == OCI_SUCCESS) Count(done.bytes, IsClob(*l), &out->total_bytes, &out->total_chars);
  return rc;
}

// The pieces after the first come from the callback, called without any lock.
sword CallbackPieces(OCIError* err, SvcCtx* svc, OCILobLocator* l, const WriteRequest& r,
                     WriteResult* out) {
  void* buf = const_cast<char*>(r.data);
  std::uint64_t room = r.len;
  for (;;) {
    std::uint64_t len = room;
    ub1 piece = OCI_NEXT_PIECE;
    void* given = buf;
    std::uint64_t new_room = room;
    sb4 status = r.callback(&given, &len, &piece, &new_room);
    if (status != OCI_CONTINUE) {
      // decision LB2: a callback that does not answer OCI_CONTINUE ends the write, unwritten
      l->write = LobPiecewise();
      return IllegalParameter(err);
    }
    if (given != buf) {  // OCILobWrite2: the callback moved to a buffer of its own
      buf = given;
      room = new_room;
    }
    if (piece != OCI_NEXT_PIECE && piece != OCI_LAST_PIECE) {
      l->write = LobPiecewise();
      return IllegalParameter(err);
    }
    if ((len > 0 && buf == nullptr) || len > room) {  // no data, or more than the buffer holds
      l->write = LobPiecewise();
      return IllegalParameter(err);
    }
    sword rc;
    {
      LobLock lock(*l);
      rc = AddPiece(err, l, Visible(*l, SessionTxn(svc)), static_cast<const char*>(buf), len);
    }
    if (rc != OCI_SUCCESS) return rc;
    if (piece == OCI_LAST_PIECE) return Finish(err, svc, l, out);
  }
}

sword WriteLob(OCIError* err, SvcCtx* svc, OCILobLocator* l, const WriteRequest& r,
               WriteResult* out) {
  if (r.piece > OCI_LAST_PIECE) return IllegalParameter(err);
  {
    // Checked at every call, so that a piecewise write fails at its first piece.
    LobLock lock(*l);
    std::string* content = nullptr;
    sword rc = Writable(err, svc, l, &content);
    if (rc != OCI_SUCCESS) {
      l->write = LobPiecewise();
      return rc;
    }
  }
  if (r.piece == OCI_ONE_PIECE) {
    if (l->write.open) return IllegalParameter(err);
    if (!r.append && r.offset == 0) return IllegalParameter(err);
    return OnePiece(err, svc, l, r, out);
  }
  LobPiecewise& w = l->write;
  if (r.piece == OCI_FIRST_PIECE) {
    if (!r.append && r.offset == 0) return IllegalParameter(err);
    w = LobPiecewise();
    w.open = true;
    w.append = r.append;
    w.offset = r.offset;
    w.announced = r.amount;
    w.announced_chars = r.amount_chars;
  } else if (!w.open) {
    return IllegalParameter(err);  // a next or last piece without a first one
  }
  sword rc;
  {
    LobLock lock(*l);
    rc = AddPiece(err, l, Visible(*l, SessionTxn(svc)), r.data, r.len);
  }
  if (rc != OCI_SUCCESS) return rc;
  // decision LB3: a callback serves only a write begun with OCI_FIRST_PIECE
  if (r.piece == OCI_FIRST_PIECE && r.callback) return CallbackPieces(err, svc, l, r, out);
  std::string piece(r.data == nullptr ? "" : r.data, r.data == nullptr ? 0 : r.len);
  Count(piece, IsClob(*l), &out->piece_bytes, &out->piece_chars);
  out->polled = true;
  if (r.piece != OCI_LAST_PIECE) return OCI_NEED_DATA;
  return Finish(err, svc, l, out);
}

// OCILobWrite and OCILobWriteAppend: *amtp in bytes; after the write it holds what was
// written, in characters (CLOB) or bytes; between the pieces it is left alone.
sword WriteV1(OCIError* errhp, SvcCtx* svc, OCILobLocator* l, ub4* amtp, WriteRequest r,
              void* ctxp, OCICallbackLobWrite cbfp) {
  r.amount = *amtp;
  if (cbfp != nullptr) {
    r.callback = [ctxp, cbfp](void** buf, std::uint64_t* len, ub1* piece, std::uint64_t*) {
      ub4 n = static_cast<ub4>(*len);
      sb4 status = cbfp(ctxp, *buf, &n, piece);
      *len = n;
      return status;
    };
  }
  WriteResult out;
  sword rc = WriteLob(errhp, svc, l, r, &out);
  if (rc == OCI_SUCCESS) *amtp = static_cast<ub4>(out.total_chars);
  return rc;
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCILobWrite(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub4* amtp, ub4 offset,
                  void* bufp, ub4 buflen, ub1 piece, void* ctxp, OCICallbackLobWrite cbfp, ub2 csid,
                  ub1 csfrm) try {
  (void)csid;  // the client character set, UTF-8
  SvcCtx* svc = nullptr;
  OCILobLocator* l = nullptr;
  sword rc = StreamEntry("OCILobWrite", svchp, errhp, locp, amtp, bufp, buflen, 6, csfrm, &svc, &l);
  if (rc != OCI_SUCCESS) return rc;
  WriteRequest r;
  r.offset = offset;
  r.data = static_cast<const char*>(bufp);
  r.len = buflen;
  r.piece = piece;
  return WriteV1(errhp, svc, l, amtp, r, ctxp, cbfp);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobWriteAppend(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* lobp, ub4* amtp,
                        void* bufp, ub4 bufl, ub1 piece, void* ctxp, OCICallbackLobWrite cbfp,
                        ub2 csid, ub1 csfrm) try {
  (void)csid;
  SvcCtx* svc = nullptr;
  OCILobLocator* l = nullptr;
  sword rc =
      StreamEntry("OCILobWriteAppend", svchp, errhp, lobp, amtp, bufp, bufl, 5, csfrm, &svc, &l);
  if (rc != OCI_SUCCESS) return rc;
  WriteRequest r;
  r.append = true;
  r.data = static_cast<const char*>(bufp);
  r.len = bufl;
  r.piece = piece;
  return WriteV1(errhp, svc, l, amtp, r, ctxp, cbfp);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobWrite2(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, oraub8* byte_amtp,
                   oraub8* char_amtp, oraub8 offset, void* bufp, oraub8 buflen, ub1 piece,
                   void* ctxp, OCICallbackLobWrite2 cbfp, ub2 csid, ub1 csfrm) try {
  (void)csid;
  SvcCtx* svc = nullptr;
  OCILobLocator* l = nullptr;
  sword rc =
      StreamEntry("OCILobWrite2", svchp, errhp, locp, byte_amtp, bufp, buflen, 7, csfrm, &svc, &l);
  if (rc != OCI_SUCCESS) return rc;
  bool clob = IsClob(*l);
  WriteRequest r;
  r.offset = offset;
  r.data = static_cast<const char*>(bufp);
  r.len = buflen;
  r.piece = piece;
  // A CLOB's amount counts characters when char_amtp gives one, else bytes.
  std::uint64_t chars = clob && char_amtp != nullptr ? *char_amtp : 0;
  r.amount_chars = chars > 0;
  r.amount = chars > 0 ? chars : *byte_amtp;
  if (cbfp != nullptr) {
    r.callback = [ctxp, cbfp](void** buf, std::uint64_t* len, ub1* p, std::uint64_t* room) {
      oraub8 n = *len;
      void* changed = nullptr;
      oraub8 changed_len = 0;
      sb4 status = cbfp(ctxp, *buf, &n, p, &changed, &changed_len);
      if (changed != nullptr) {  // the piece is in the callback's new buffer
        *buf = changed;
        *room = changed_len;
      }
      *len = n;
      return status;
    };
  }
  WriteResult out;
  rc = WriteLob(errhp, svc, l, r, &out);
  if (rc == OCI_SUCCESS || rc == OCI_NEED_DATA) {
    // In polling mode the amounts tell the piece just written.
    *byte_amtp = out.polled ? out.piece_bytes : out.total_bytes;
    if (char_amtp != nullptr && clob) *char_amtp = out.polled ? out.piece_chars : out.total_chars;
  }
  return rc;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
