// Line-oriented driver over the OCI value calls, for the differential test
// against PostgreSQL. Each input line is a command and tab-separated
// arguments; each output line is the result text or "ERR <ORA number>".
//   N2T  <mask> <value>         NUMBER (read from plain text) to text
//   T2N  <text>                 text to NUMBER with the mask built from it
//   D2T  <mask> <y m d h mi s>  OCIDate to text
//   T2D  <mask> <text>          text to OCIDate, printed YYYY-MM-DD HH24:MI:SS
//   TS2T <mask> <fsprec> <y m d h mi s ns>  TIMESTAMP to text
#include <cstdio>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "oci.h"

namespace {

OCIEnv* g_env = nullptr;
OCIError* g_err = nullptr;

const OraText* T(const std::string& s) { return reinterpret_cast<const OraText*>(s.c_str()); }

std::string Error() {
  sb4 code = 0;
  OraText buf[512];
  OCIErrorGet(g_err, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR);
  return "ERR " + std::to_string(code);
}

std::string BuildMask(const std::string& text) {
  std::string mask;
  for (char c : text) {
    if (c >= '0' && c <= '9') {
      mask += '9';
    } else if (c == '+' || c == '-') {
      mask += 'S';
    } else {
      mask += c;
    }
  }
  return mask;
}

// Every value the test generates prints exactly with this mask.
const std::string kWide = "FM" + std::string(60, '9') + "." + std::string(60, '9');

std::string NumberText(const OCINumber& n, const std::string& mask) {
  std::vector<OraText> buf(mask.size() + 2);
  ub4 size = static_cast<ub4>(buf.size());
  if (OCINumberToText(g_err, &n, T(mask), static_cast<ub4>(mask.size()), nullptr, 0, &size,
                      buf.data()) != OCI_SUCCESS) {
    return Error();
  }
  return std::string(reinterpret_cast<char*>(buf.data()), size);
}

bool ReadNumber(const std::string& text, OCINumber* n) {
  const std::string mask = BuildMask(text);
  return OCINumberFromText(g_err, T(text), static_cast<ub4>(text.size()), T(mask),
                           static_cast<ub4>(mask.size()), nullptr, 0, n) == OCI_SUCCESS;
}

std::string DateText(const OCIDate& d, const std::string& mask) {
  OraText buf[128];
  ub4 size = sizeof buf;
  if (OCIDateToText(g_err, &d, T(mask), static_cast<ub1>(mask.size()), nullptr, 0, &size, buf) !=
      OCI_SUCCESS) {
    return Error();
  }
  return std::string(reinterpret_cast<char*>(buf), size);
}

std::string Run(const std::vector<std::string>& f) {
  const std::string& cmd = f[0];
  if (cmd == "N2T" && f.size() == 3) {
    OCINumber n;
    if (!ReadNumber(f[2], &n)) return Error();
    return NumberText(n, f[1]);
  }
  if (cmd == "T2N" && f.size() == 2) {
    OCINumber n;
    if (!ReadNumber(f[1], &n)) return Error();
    return NumberText(n, kWide);
  }
  if (cmd == "D2T" && f.size() == 3) {
    std::istringstream in(f[2]);
    int y, mo, d, h, mi, s;
    in >> y >> mo >> d >> h >> mi >> s;
    OCIDate date{};
    OCIDateSetDate(&date, static_cast<sb2>(y), static_cast<ub1>(mo), static_cast<ub1>(d));
    OCIDateSetTime(&date, static_cast<ub1>(h), static_cast<ub1>(mi), static_cast<ub1>(s));
    return DateText(date, f[1]);
  }
  if (cmd == "T2D" && f.size() == 3) {
    OCIDate date{};
    if (OCIDateFromText(g_err, T(f[2]), static_cast<ub4>(f[2].size()), T(f[1]),
                        static_cast<ub1>(f[1].size()), nullptr, 0, &date) != OCI_SUCCESS) {
      return Error();
    }
    return DateText(date, "YYYY-MM-DD HH24:MI:SS");
  }
  if (cmd == "TS2T" && f.size() == 4) {
    std::istringstream in(f[3]);
    int y, mo, d, h, mi, s;
    unsigned ns;
    in >> y >> mo >> d >> h >> mi >> s >> ns;
    void* dt = nullptr;
    if (OCIDescriptorAlloc(g_env, &dt, OCI_DTYPE_TIMESTAMP, 0, nullptr) != OCI_SUCCESS) {
      return "ERR alloc";
    }
    std::string result;
    auto* value = static_cast<OCIDateTime*>(dt);
    if (OCIDateTimeConstruct(g_env, g_err, value, static_cast<sb2>(y), static_cast<ub1>(mo),
                             static_cast<ub1>(d), static_cast<ub1>(h), static_cast<ub1>(mi),
                             static_cast<ub1>(s), ns, nullptr, 0) != OCI_SUCCESS) {
      result = Error();
    } else {
      OraText buf[128];
      ub4 size = sizeof buf;
      if (OCIDateTimeToText(g_env, g_err, value, T(f[1]), static_cast<ub1>(f[1].size()),
                            static_cast<ub1>(std::stoi(f[2])), nullptr, 0, &size,
                            buf) != OCI_SUCCESS) {
        result = Error();
      } else {
        result.assign(reinterpret_cast<char*>(buf), size);
      }
    }
    OCIDescriptorFree(dt, OCI_DTYPE_TIMESTAMP);
    return result;
  }
  return "ERR usage";
}

}  // namespace

int main() {
  if (OCIEnvCreate(&g_env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) !=
          OCI_SUCCESS ||
      OCIHandleAlloc(g_env, reinterpret_cast<void**>(&g_err), OCI_HTYPE_ERROR, 0, nullptr) !=
          OCI_SUCCESS) {
    std::fprintf(stderr, "cannot create the OCI environment\n");
    return 2;
  }
  std::string line;
  while (std::getline(std::cin, line)) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    while (true) {
      const std::size_t tab = line.find('\t', start);
      fields.push_back(line.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
      if (tab == std::string::npos) break;
      start = tab + 1;
    }
    std::cout << Run(fields) << '\n';
  }
  OCIHandleFree(g_err, OCI_HTYPE_ERROR);
  OCIHandleFree(g_env, OCI_HTYPE_ENV);
  return 0;
}
