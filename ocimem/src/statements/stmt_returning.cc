// RETURNING ... INTO: after each iteration of an INSERT, UPDATE or DELETE the values of the
// rows it changed go to the INTO binds.  A bind made with OCIBindDynamic gets them through
// its out-bind callback, called once per row with the iteration and the row's index (and
// OCI_ATTR_ROWS_RETURNED readable on the bind); an ordinary bind takes the one row of the
// iteration into element `iter` of its arrays.
#include "statements/buffer_layout.h"
#include "statements/convert.h"
#include "session/internal.h"
#include "sql/sql_rows.h"
#include "statements/stmt_exec.h"

namespace ocimem {
namespace {

// Writes one returned value; the column code goes to *rc.
bool PutReturned(const BindHandle& b, const OutSlot& out, const Projection& p,
                 const RowData& row, size_t index, std::uint64_t txn, ub2* rc,
                 SqlError* error) {
  // A computed item has a row of its own for each row returned.
  const RowData& source = !p.per_row.empty() ? *p.per_row[index]
                          : p.literal        ? *p.literal_row
                                             : row;
  const auto* slot = static_cast<const unsigned char*>(source.value) + p.offset;
  const auto* ind = reinterpret_cast<const OCIInd*>(
      reinterpret_cast<const unsigned char*>(source.ind) + p.ind_offset);
  if (b.dty == SQLT_NTY || !DefineFits(b.dty, p.type)) {
    error->code = 932;
    error->message = "inconsistent datatypes: expected - got " + TypeName(p.type);
    return false;
  }
  return FetchInto(b.dty, out, p.type, slot, ind, txn, rc, error);
}

// The column code of a returned value as the statement reports it: false with `error` for
// NULL or truncation that nothing can show.
bool CheckCode(ub2 rc, const OutSlot& out, bool* with_info, SqlError* error) {
  if (rc == 1405 && out.ind == nullptr) {
    error->code = 1405;
    error->message = "fetched column value is NULL";
    return false;
  }
  if (rc == 1406) {
    if (out.ind == nullptr && out.rcode == nullptr) {
      error->code = 1406;
      error->message = "fetched column value was truncated";
      return false;
    }
    *with_info = true;
  }
  return true;
}

sword DeliverDynamic(BindHandle* b, OCIError* err, const Projection& p, const ExecResult& result,
                     ub4 iter, std::uint64_t txn, bool* with_info) {
  size_t rows = result.returned.size();
  b->rows_returned = static_cast<ub4>(rows);
  // An iteration that returned nothing still calls the callback once, with index 0, so
  // that the program reads OCI_ATTR_ROWS_RETURNED 0 there.
  size_t calls = rows == 0 ? 1 : rows;
  for (size_t i = 0; i < calls; ++i) {
    void* buf = nullptr;
    ub4* alenp = nullptr;
    ub1 piece = OCI_ONE_PIECE;
    void* indp = nullptr;
    ub2* rcodep = nullptr;
    sb4 r = b->ocbfp(b->octxp, reinterpret_cast<OCIBind*>(b), iter, static_cast<ub4>(i), &buf,
                     &alenp, &piece, &indp, &rcodep);
    if (r != OCI_CONTINUE) return CallbackFailed(err);
    if (rows == 0) break;
    OutSlot out;
    out.value = static_cast<unsigned char*>(buf);
    out.cap = alenp != nullptr ? *alenp : 0;
    out.ind = static_cast<sb2*>(indp);
    ub2 len16 = 0;
    out.len = &len16;
    out.rcode = rcodep;
    ub2 rc = 0;
    SqlError error;
    if (!PutReturned(*b, out, p, *result.returned[i], i, txn, &rc, &error)) {
      return Fail(err, error.code, error.message);
    }
    if (rcodep != nullptr) *rcodep = rc;
    if (alenp != nullptr) *alenp = rc == 1405 ? 0 : (HoldsPointer(b->dty) ? out.cap : len16);
    if (!CheckCode(rc, out, with_info, &error)) return Fail(err, error.code, error.message);
  }
  return OCI_SUCCESS;
}

}  // namespace

sword DeliverReturning(StmtHandle* s, OCIError* err, const ReturningClause& r,
                       const ExecResult& result, size_t first_item, ub4 iter, std::uint64_t txn,
                       bool* with_info) {
  for (size_t k = 0; k < r.into.size(); ++k) {
    BindHandle* b = BindForOccurrence(*s, r.into[k].bind);
    if (b == nullptr) return Fail(err, 1008, "not all variables bound");
    const Projection& p = result.returning[first_item + k];
    if (b->dynamic) {
      sword rc = DeliverDynamic(b, err, p, result, iter, txn, with_info);
      if (rc != OCI_SUCCESS) return rc;
      continue;
    }
    b->rows_returned = static_cast<ub4>(result.returned.size());
    if (result.returned.empty()) continue;  // the binds keep what they held
    if (result.returned.size() > 1) {
      return Fail(err, 24369, "required callbacks not registered for one or more bind handles");
    }
    OutSlot out = BindSlotAt(*b, iter);
    ub2 rc = 0;
    SqlError error;
    if (!PutReturned(*b, out, p, *result.returned[0], 0, txn, &rc, &error)) {
      return Fail(err, error.code, error.message);
    }
    if (out.rcode != nullptr) *out.rcode = rc;
    if (!CheckCode(rc, out, with_info, &error)) return Fail(err, error.code, error.message);
  }
  return OCI_SUCCESS;
}

}  // namespace ocimem
