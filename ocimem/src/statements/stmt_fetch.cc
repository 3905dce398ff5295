// Fetching rows into defines (OCIStmtExecute with iters > 0, OCIStmtFetch, OCIStmtFetch2):
// scalar and object defines row by row, and OCI_DYNAMIC_FETCH defines piece by piece,
// through their OCIDefineDynamic callback or, without one, by answering OCI_NEED_DATA
// until the program has given a buffer for every piece (OCIStmtSetPieceInfo).
#include <cstring>

#include "statements/buffer_layout.h"
#include "statements/convert.h"
#include "objects/instance.h"
#include "session/internal.h"
#include "lob/lob_data.h"
#include "statements/stmt_exec.h"
#include "objects/value_slot.h"
#include "collections/var_block.h"

namespace ocimem {
namespace {

// The type family of an external type, as ORA-00932 names it.
std::string DtyName(ub2 dty) {
  switch (dty) {
    case SQLT_INT:
    case SQLT_UIN:
    case SQLT_FLT:
    case SQLT_NUM:
    case SQLT_VNU:
      return "NUMBER";
    case SQLT_STR:
    case SQLT_CHR:
    case SQLT_AFC:
      return "CHAR";
    case SQLT_DAT:
    case SQLT_ODT:
      return "DATE";
    case SQLT_BIN:
    case SQLT_LBI:
      return "BINARY";
    case SQLT_LNG:
    case SQLT_LVC:
      return "LONG";
    case SQLT_LVB:
      return "LONG BINARY";
    case SQLT_CLOB:
      return "CLOB";
    case SQLT_BLOB:
      return "BLOB";
    case SQLT_TIMESTAMP:
    case SQLT_TIMESTAMP_TZ:
    case SQLT_TIMESTAMP_LTZ:
      return "TIMESTAMP";
    case SQLT_INTERVAL_YM:
    case SQLT_INTERVAL_DS:
      return "INTERVAL";
    default:
      return "-";
  }
}

// Checks the defines against the select list before anything is fetched.
bool CheckDefines(const StmtHandle& s, SqlError* error) {
  for (const auto& d : s.defines) {
    if (d->position > s.cursor->items.size()) {
      error->code = 1007;
      error->message = "variable not in select list";
      return false;
    }
    const ValueType& t = s.cursor->items[d->position - 1].type;
    if (d->dty == SQLT_NTY) {
      if (d->tdo == nullptr) {
        error->code = 24359;
        error->message = "OCIDefineObject not invoked for a Object type or Reference";
        return false;
      }
      if ((t.kind != ValueKind::kObject && t.kind != ValueKind::kCollection) ||
          t.named.get() != d->tdo) {
        error->code = 932;
        error->message = "inconsistent datatypes: expected " + d->tdo->schema + "." + d->tdo->name +
                         " got " + TypeName(t);
        return false;
      }
    } else if (!DefineFits(d->dty, t)) {
      error->code = 932;
      error->message =
          "inconsistent datatypes: expected " + DtyName(d->dty) + " got " + TypeName(t);
      return false;
    }
  }
  return true;
}

// Delivers an object or collection into element `row` of an object define.
bool FetchObject(Env* env, const DefineHandle& d, size_t row, const ValueType& t, void* slot,
                 OCIInd* ind, std::uint64_t txn, SqlError* error) {
  void*& target = d.pgvpp[row];
  Instance* instance = target != nullptr ? FindInstance(env, target) : nullptr;
  const bool made = target == nullptr;
  if (made) {
    instance = t.kind == ValueKind::kObject ? NewObjectInstance(env, t.named)
                                            : NewCollectionInstance(env, t.named);
    if (instance == nullptr) {
      error->code = 4030;
      error->message = "out of process memory";
      return false;
    }
    target = instance->value;
  }
  // A fetch that fails takes back the instance it made: the caller's pointer is left
  // NULL, as it was given, and nothing is left that nobody frees.
  auto unmake = [&] {
    if (!made) return;
    DestroyInstance(env, target);
    target = nullptr;
  };
  AssignResult assigned;
  try {
    assigned = AssignSlot(env, t, t.kind == ValueKind::kObject ? target : &target,
                          ElementForm(t, slot));
  } catch (...) {
    unmake();
    throw;
  }
  if (assigned != AssignResult::kOk) {
    unmake();
    error->code = 4030;
    error->message = "out of process memory";
    return false;
  }
  if (instance != nullptr) {
    if (t.kind == ValueKind::kObject) {
      std::memcpy(instance->null_struct, ind, t.named->ind_size);
    } else {
      *instance->null_struct = *ind;
    }
    // decision D16: the pointer handed in is replaced, never written through
    if (d.indpp != nullptr) d.indpp[row] = instance->null_struct;
  }
  ForEachLob(t, t.kind == ValueKind::kObject ? target : &target, nullptr,
             [txn](OCILobLocator* l, bool) {
               if (l != nullptr && l->state == LobState::kPersistent) l->select_txn = txn;
             });
  return true;
}

// The session that executed the statement, or nullptr when it has been freed since.

// The bytes a character or binary dynamic define receives for a value.
bool DynamicBytes(const DefineHandle& d, const ValueType& t, const void* slot, std::uint64_t txn,
                  std::string* out, SqlError* error) {
  switch (t.kind) {
    case ValueKind::kLob:
      if (!LobDataDefineFits(d.dty, t)) break;
      *out = LobContents(slot, txn);  // a CLOB's text, a BLOB's bytes
      return true;
    case ValueKind::kNumber:
      *out = NumberText(*static_cast<const OCINumber*>(slot));
      return true;
    case ValueKind::kDate:
      DateMaskText(*static_cast<const OCIDate*>(slot), out);
      return true;
    case ValueKind::kString:
    case ValueKind::kRaw: {
      const void* value = *static_cast<void* const*>(slot);
      out->assign(reinterpret_cast<const char*>(VarBytes(value)), VarLength(value));
      if (t.kind == ValueKind::kRaw && d.dty != SQLT_BIN && d.dty != SQLT_LBI) {
        *out = HexText(*out);
      }
      return true;
    }
    default:
      break;
  }
  error->code = 932;
  error->message = "inconsistent datatypes: expected - got " + TypeName(t);
  return false;
}

bool PiecewiseType(ub2 dty) {
  return dty == SQLT_CHR || dty == SQLT_STR || dty == SQLT_AFC || dty == SQLT_VCS ||
         dty == SQLT_LNG || dty == SQLT_BIN || dty == SQLT_LBI;
}

// Copies the next piece of the value into a buffer of `*alenp` bytes; sets `*alenp` to the
// bytes copied.  True when the value is complete.
bool CopyPiece(PendingFetch* f, void* buf, ub4* alenp, const void* indp, ub2* rcodep) {
  size_t room = alenp != nullptr ? *alenp : 0;
  size_t left = f->bytes.size() - f->offset;
  size_t n = left < room ? left : room;
  if (buf != nullptr && n > 0) std::memcpy(buf, f->bytes.data() + f->offset, n);
  f->offset += n;
  if (alenp != nullptr) *alenp = static_cast<ub4>(n);
  if (indp != nullptr) {
    sb2 ind = f->null ? static_cast<sb2>(OCI_IND_NULL) : static_cast<sb2>(OCI_IND_NOTNULL);
    std::memcpy(const_cast<void*>(indp), &ind, sizeof ind);
  }
  if (rcodep != nullptr) *rcodep = f->null ? 1405 : 0;
  return f->offset >= f->bytes.size();
}

// The session that executed the statement, or nullptr when it has been freed since.
Session* LiveSession(StmtHandle* s) { return AsSession(s->session); }

// Hands out the value of a dynamic define: through its callback, or piece by piece to the
// program (OCI_NEED_DATA).
sword DeliverDynamic(OCIError* err, DefineHandle* d, PendingFetch* f) {
  if (d->ocbfp != nullptr) {
    ub1 piece = OCI_FIRST_PIECE;
    for (;;) {
      void* buf = nullptr;
      ub4* alenp = nullptr;
      void* indp = nullptr;
      ub2* rcodep = nullptr;
      ub1 asked = piece;
      sb4 r = d->ocbfp(d->octxp, reinterpret_cast<OCIDefine*>(d), f->row, &buf, &alenp, &asked,
                       &indp, &rcodep);
      if (r != OCI_CONTINUE) return CallbackFailed(err);
      if (CopyPiece(f, buf, alenp, indp, rcodep)) return OCI_SUCCESS;
      piece = OCI_NEXT_PIECE;
    }
  }
  if (f->waiting == nullptr) {  // first piece of this value: ask for a buffer
    f->waiting = d;
    f->piece_asked = OCI_FIRST_PIECE;
    f->given = GivenPiece();
    return OCI_NEED_DATA;
  }
  if (!f->given.given) {
    return Fail(err, 3130, "the buffer for the next piece to be fetched is required");
  }
  GivenPiece g = f->given;
  f->given = GivenPiece();
  if (!CopyPiece(f, const_cast<void*>(g.buf), g.alenp, g.indp, g.rcodep)) {
    f->piece_asked = OCI_NEXT_PIECE;
    return OCI_NEED_DATA;
  }
  f->waiting = nullptr;
  return OCI_SUCCESS;
}

// Goes on with the rows of the fetch kept in s->pending_fetch.
sword ContinueFetch(StmtHandle* s, OCIError* err) {
  PendingFetch& f = *s->pending_fetch;
  Cursor& c = *s->cursor;
  Session* session = LiveSession(s);
  std::uint64_t txn = session != nullptr && session->txn ? session->txn->id : 0;
  SqlError error;
  auto fail = [&](int code, const std::string& message) {
    s->pending_fetch.reset();
    return Fail(err, code, message);
  };
  for (; f.row < f.nrows && c.next < c.rows.size(); ++f.row, ++c.next) {
    const RowData& row = *c.rows[c.next];
    for (; f.define < s->defines.size(); ++f.define) {
      DefineHandle* d = s->defines[f.define].get();
      const Projection& p = c.items[d->position - 1];
      const RowData& source =
          !p.per_row.empty() ? *p.per_row[c.next] : p.literal ? *p.literal_row : row;
      auto* slot = static_cast<unsigned char*>(source.value) + p.offset;
      auto* ind =
          reinterpret_cast<OCIInd*>(reinterpret_cast<unsigned char*>(source.ind) + p.ind_offset);
      if (d->dty == SQLT_NTY) {
        if (!FetchObject(s->env, *d, f.row, p.type, slot, ind, txn, &error)) {
          return fail(error.code, error.message);
        }
        continue;
      }
      if (d->mode == OCI_DYNAMIC_FETCH) {
        if (!f.started) {
          f.started = true;
          f.offset = 0;
          f.null = *ind == OCI_IND_NULL;
          f.bytes.clear();
          if (!f.null && !DynamicBytes(*d, p.type, slot, txn, &f.bytes, &error)) {
            return fail(error.code, error.message);
          }
        }
        sword rc = DeliverDynamic(err, d, &f);
        if (rc == OCI_NEED_DATA) return rc;
        if (rc != OCI_SUCCESS) {
          // The fetch ends here, and f with it.
          s->pending_fetch.reset();
          return rc;
        }
        f.started = false;
        continue;
      }
      ub2 rc = 0;
      if (!FetchScalar(*d, f.row, p.type, slot, ind, txn, &rc, &error)) {
        return fail(error.code, error.message);
      }
      OutSlot out = DefineSlotAt(*d, f.row);
      if (out.rcode != nullptr) *out.rcode = rc;
      if (rc == 1405 && out.ind == nullptr) {
        ++c.next;
        return fail(1405, "fetched column value is NULL");
      }
      if (rc == 1406) {
        if (out.ind == nullptr && out.rcode == nullptr) {
          ++c.next;
          return fail(1406, "fetched column value was truncated");
        }
        f.truncated = true;
      }
    }
    f.define = 0;
    // Counted row by row, so that a row failing half-way leaves the rows before it counted.
    ++f.fetched;
    s->rows_fetched = f.fetched;
    ++s->row_count;
  }
  PendingFetch done = f;
  s->pending_fetch.reset();
  if (done.fetched < done.nrows) {
    c.exhausted = true;
    AddRecord(err, 1403, "no data found");
    return OCI_NO_DATA;
  }
  if (done.truncated) {
    AddRecord(err, 24345, "A Truncation or null fetch error occurred");
    return OCI_SUCCESS_WITH_INFO;
  }
  return OCI_SUCCESS;
}

}  // namespace

sword FetchRows(StmtHandle* s, OCIError* err, ub4 nrows) {
  ScopedNls nls(s->nls.get());
  Cursor& c = *s->cursor;
  s->pending_fetch.reset();
  if (s->defines.empty()) {
    return Fail(err, 24374, "define not done before fetch or execute and fetch");
  }
  SqlError check;
  if (!CheckDefines(*s, &check)) return Fail(err, check.code, check.message);
  for (const auto& d : s->defines) {
    if (d->mode == OCI_DYNAMIC_FETCH && !PiecewiseType(d->dty)) {
      return Fail(err, 932, "inconsistent datatypes: expected - got -");
    }
  }
  s->rows_fetched = 0;
  if (c.exhausted) return Fail(err, 1002, "fetch out of sequence");
  Session* session = LiveSession(s);
  std::uint64_t txn = session != nullptr && session->txn ? session->txn->id : 0;
  if (c.for_update && txn != c.txn) return Fail(err, 1002, "fetch out of sequence");
  s->pending_fetch = std::make_shared<PendingFetch>();
  s->pending_fetch->nrows = nrows;
  return ContinueFetch(s, err);
}

sword ResumeFetch(StmtHandle* s, OCIError* err) {
  ScopedNls nls(s->nls.get());
  return ContinueFetch(s, err);
}

sword CallbackFailed(OCIError* err) { return Fail(err, 24343, "user defined callback error"); }

}  // namespace ocimem
