#include "doc_record.h"

#include <cstdio>

namespace longrun {

const char* const kTypeDdl[] = {
    "CREATE TYPE lr_addr_t AS OBJECT (street VARCHAR2(60), city VARCHAR2(40))",
    "CREATE TYPE lr_line_t AS OBJECT (sku VARCHAR2(20), qty NUMBER(9), price NUMBER(12,2), "
    "note VARCHAR2(100))",
    "CREATE TYPE lr_line_tab AS TABLE OF lr_line_t",
    "CREATE TYPE lr_tag_arr AS VARRAY(50) OF VARCHAR2(30)",
    "CREATE TYPE lr_doc_t AS OBJECT (id NUMBER(12), title VARCHAR2(200), amount NUMBER(12,2), "
    "created DATE, token RAW(16), addr lr_addr_t, lines lr_line_tab, tags lr_tag_arr, "
    "body CLOB, img BLOB)",
    nullptr};
const char* const kTableDdl =
    "CREATE TABLE lr_docs OF lr_doc_t NESTED TABLE lines STORE AS lr_docs_lines";

namespace {

// splitmix64: the same numbers on every platform and standard library.
class Random {
 public:
  explicit Random(uint64_t nSeed) : state_(nSeed) {}
  uint64_t Next() {
    uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  // 0 .. n-1
  unsigned long Below(unsigned long n) { return static_cast<unsigned long>(Next() % n); }
  bool OneIn(unsigned long n) { return Below(n) == 0; }

 private:
  uint64_t state_;
};

const char kPlain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 .,-_";
const char* const kSpecials[] = {"|", "[", "]", "!", "\r\n", "\n", "\r"};

// Text of nSize bytes; one byte in 24 starts a special string.
std::string TextOf(Random& rnd, unsigned long nSize) {
  std::string s;
  s.reserve(nSize);
  while (s.size() < nSize) {
    if (rnd.OneIn(24)) {
      const std::string special = kSpecials[rnd.Below(sizeof kSpecials / sizeof kSpecials[0])];
      if (s.size() + special.size() <= nSize) s += special;
    } else {
      s += kPlain[rnd.Below(sizeof kPlain - 1)];
    }
  }
  return s;
}

// Text of 1 .. nMax bytes.
std::string Text(Random& rnd, unsigned long nMax) { return TextOf(rnd, 1 + rnd.Below(nMax)); }

Opt MaybeText(Random& rnd, unsigned long nMax) {
  if (rnd.OneIn(16)) return std::nullopt;
  return Text(rnd, nMax);
}

std::string Bytes(Random& rnd, unsigned long nSize) {
  std::string s(nSize, '\0');
  for (char& c : s) c = static_cast<char>(rnd.Below(256));
  return s;
}

// A signed integer of 1 .. nDigits digits, as decimal text.
std::string Integer(Random& rnd, int nDigits) {
  const int n = 1 + static_cast<int>(rnd.Below(static_cast<unsigned long>(nDigits)));
  std::string s = std::to_string(rnd.Below(9) + 1);
  for (int i = 1; i < n; ++i) s += static_cast<char>('0' + rnd.Below(10));
  if (rnd.OneIn(8)) return "0";
  return rnd.OneIn(4) ? "-" + s : s;
}

Opt MaybeInteger(Random& rnd, int nDigits) {
  if (rnd.OneIn(16)) return std::nullopt;
  return Integer(rnd, nDigits);
}

// NUMBER(p,2): up to p - 2 integer digits and two decimals.
Opt MaybeMoney(Random& rnd, int nPrecision) {
  if (rnd.OneIn(16)) return std::nullopt;
  std::string s = Integer(rnd, nPrecision - 2);
  s += '.';
  s += static_cast<char>('0' + rnd.Below(10));
  s += static_cast<char>('0' + rnd.Below(10));
  return s;
}

Opt MaybeDate(Random& rnd) {
  if (rnd.OneIn(16)) return std::nullopt;
  char buf[32];
  std::snprintf(buf, sizeof buf, "%04lu-%02lu-%02lu %02lu:%02lu:%02lu", 1900 + rnd.Below(200),
                1 + rnd.Below(12), 1 + rnd.Below(28), rnd.Below(24), rnd.Below(60),
                rnd.Below(60));
  return std::string(buf);
}

// A release before each "[", "]", "|", "!" and "\r\n".
void PutText(std::string& out, const Opt& v) {
  if (!v) return;
  const std::string& s = *v;
  for (size_t i = 0; i < s.size(); ++i) {
    const char c = s[i];
    if (c == '[' || c == ']' || c == '|' || c == '!' ||
        (c == '\r' && i + 1 < s.size() && s[i + 1] == '\n')) {
      out += '!';
    }
    out += c;
  }
}

// Oracle's text for an "FM9...9[.99]" mask: no leading zeros, trailing zeros
// of the fraction dropped, the point kept when the mask has one (5 -> "5.",
// 0.5 -> ".5", 0 -> "0.").
void PutNumber(std::string& out, const Opt& v, bool bMaskPoint) {
  if (!v) return;
  std::string s = *v;
  const bool bNegative = !s.empty() && s[0] == '-';
  if (bNegative) s.erase(0, 1);
  std::string whole = s;
  std::string frac;
  const size_t dot = s.find('.');
  if (dot != std::string::npos) {
    whole = s.substr(0, dot);
    frac = s.substr(dot + 1);
  }
  while (!frac.empty() && frac.back() == '0') frac.pop_back();
  if (whole == "0" && !frac.empty()) whole.clear();
  if (bNegative && !(whole == "0" && frac.empty())) out += '-';
  out += whole;
  if (bMaskPoint) out += '.' + frac;
}

void PutBinary(std::string& out, const Opt& v) {
  if (!v) {
    out += '|';
    return;
  }
  out += std::to_string(v->size()) + "|" + *v;
}

}  // namespace

DocValues MakeDoc(uint64_t nSeed, long nIteration) {
  Random rnd(nSeed * 0x100000001B3ull + static_cast<uint64_t>(nIteration));
  const bool bLarge = IsLarge(nIteration);
  DocValues doc;
  doc.id = nIteration + 1;
  doc.title = MaybeText(rnd, 200);
  doc.amount = MaybeMoney(rnd, 12);
  doc.created = MaybeDate(rnd);
  doc.token = Bytes(rnd, 1 + rnd.Below(16));
  doc.bAddr = !rnd.OneIn(10);
  if (doc.bAddr) {
    doc.street = MaybeText(rnd, 60);
    doc.city = MaybeText(rnd, 40);
  }
  doc.bLines = bLarge || !rnd.OneIn(10);
  if (doc.bLines) {
    const unsigned long nLines = bLarge ? 60 : 1 + rnd.Below(8);
    for (unsigned long i = 0; i < nLines; ++i) {
      LineValues line;
      line.sku = MaybeText(rnd, 20);
      line.qty = MaybeInteger(rnd, 9);
      line.price = MaybeMoney(rnd, 12);
      line.note = MaybeText(rnd, 100);
      doc.lines.push_back(line);
    }
  }
  doc.bTags = bLarge || !rnd.OneIn(10);
  if (doc.bTags) {
    const unsigned long nTags = bLarge ? 50 : 1 + rnd.Below(10);
    // A single null item would write "[]", which reads back as an empty
    // collection.
    for (unsigned long i = 0; i < nTags; ++i) {
      doc.tags.push_back(nTags == 1 ? Text(rnd, 30) : MaybeText(rnd, 30));
    }
  }
  if (bLarge || !rnd.OneIn(10)) {
    doc.body = bLarge ? TextOf(rnd, 200000) : Text(rnd, rnd.OneIn(8) ? 20000 : 2000);
  }
  if (bLarge || !rnd.OneIn(10)) {
    doc.img = Bytes(rnd, bLarge ? 100000 : 1 + rnd.Below(rnd.OneIn(8) ? 10000 : 1000));
  }
  return doc;
}

std::string ExpectedStream(const DocValues& doc, bool bLobs, size_t* pnBodyAt) {
  std::string s;
  s += std::to_string(doc.id) + "|";
  PutText(s, doc.title);
  s += '|';
  PutNumber(s, doc.amount, true);
  s += '|';
  if (doc.created) s += *doc.created;
  s += '|';
  PutBinary(s, doc.token);
  s += '|';
  if (doc.bAddr) {
    s += '[';
    PutText(s, doc.street);
    s += '|';
    PutText(s, doc.city);
    s += ']';
  }
  s += '|';
  if (doc.bLines) {
    s += '[';
    for (size_t i = 0; i < doc.lines.size(); ++i) {
      const LineValues& line = doc.lines[i];
      if (i > 0) s += '|';
      s += '[';
      PutText(s, line.sku);
      s += '|';
      PutNumber(s, line.qty, false);
      s += '|';
      PutNumber(s, line.price, true);
      s += '|';
      PutText(s, line.note);
      s += ']';
    }
    s += ']';
  }
  s += '|';
  if (doc.bTags) {
    s += '[';
    for (size_t i = 0; i < doc.tags.size(); ++i) {
      if (i > 0) s += '|';
      PutText(s, doc.tags[i]);
    }
    s += ']';
  }
  s += '|';
  if (pnBodyAt != nullptr) *pnBodyAt = s.size();
  if (bLobs) PutText(s, doc.body);
  s += '|';
  PutBinary(s, bLobs ? doc.img : std::nullopt);
  return s;
}

}  // namespace longrun
