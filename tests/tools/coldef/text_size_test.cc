// The DisplaySize of TIMESTAMP and INTERVAL records holds the longest text that OCI writes
// for them: a page of that size is what the adapter hands to OCIDateTimeToText and
// OCIIntervalToText.
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "oci_fixture.h"
#include "scalar_def.h"

namespace coldef {
namespace {

using ocimem_test::FirstError;
using ocimem_test::Text;

class TextSizeTest : public ocimem_test::OciTest {
 protected:
  void* NewDescriptor(ub4 type) {
    void* d = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, &d, type, 0, nullptr));
    return d;
  }

  // The text of `interval` in a buffer of exactly `size` bytes.
  std::string IntervalText(OCIInterval* interval, unsigned lf, unsigned fs, unsigned size) {
    std::string buf(size, '\0');
    size_t length = 0;
    EXPECT_EQ(OCI_SUCCESS, OCIIntervalToText(env_, err_, interval, static_cast<ub1>(lf),
                                             static_cast<ub1>(fs),
                                             reinterpret_cast<OraText*>(&buf[0]), size, &length))
        << FirstError(err_) << " lf " << lf << " fs " << fs;
    return buf.substr(0, length);
  }

  std::string TimestampText(OCIDateTime* value, const char* mask, unsigned fs, unsigned size) {
    std::string buf(size, '\0');
    ub4 length = size;
    EXPECT_EQ(OCI_SUCCESS,
              OCIDateTimeToText(env_, err_, value, Text(mask), static_cast<ub1>(std::strlen(mask)),
                                static_cast<ub1>(fs), nullptr, 0, &length,
                                reinterpret_cast<OraText*>(&buf[0])))
        << FirstError(err_) << " " << mask << " fs " << fs;
    return buf.substr(0, length);
  }
};

// The widest leading field of a precision: 9, 99, ... 999999999.
sb4 Widest(unsigned digits) {
  sb4 value = 0;
  for (unsigned i = 0; i < digits; ++i) value = value * 10 + 9;
  return value;
}

TEST_F(TextSizeTest, IntervalsFillTheirSizeExactly) {
  auto* ym = static_cast<OCIInterval*>(NewDescriptor(OCI_DTYPE_INTERVAL_YM));
  auto* ds = static_cast<OCIInterval*>(NewDescriptor(OCI_DTYPE_INTERVAL_DS));
  for (unsigned lf = 1; lf <= 9; ++lf) {
    ASSERT_EQ(OCI_SUCCESS, OCIIntervalSetYearMonth(env_, err_, -Widest(lf), -11, ym));
    const unsigned ym_size = IntervalTextSize(OCI_TYPECODE_INTERVAL_YM, lf, 0);
    EXPECT_EQ(ym_size, IntervalText(ym, lf, 0, ym_size).size());
    ASSERT_EQ(OCI_SUCCESS,
              OCIIntervalSetDaySecond(env_, err_, -Widest(lf), -23, -59, -59, -999999999, ds));
    for (unsigned fs = 0; fs <= 9; ++fs) {
      const unsigned ds_size = IntervalTextSize(OCI_TYPECODE_INTERVAL_DS, lf, fs);
      EXPECT_EQ(ds_size, IntervalText(ds, lf, fs, ds_size).size()) << "lf " << lf << " fs " << fs;
    }
  }
}

TEST_F(TextSizeTest, TimestampsWithoutZoneFillTheirSizeExactly) {
  for (ub4 type : {ub4{OCI_DTYPE_TIMESTAMP}, ub4{OCI_DTYPE_TIMESTAMP_LTZ}}) {
    auto* value = static_cast<OCIDateTime*>(NewDescriptor(type));
    ASSERT_EQ(OCI_SUCCESS, OCIDateTimeConstruct(env_, err_, value, 9999, 12, 31, 23, 59, 59,
                                                999999999, nullptr, 0))
        << FirstError(err_);
    for (unsigned fs = 0; fs <= 9; ++fs) {
      const char* mask = fs == 0 ? "YYYY-MM-DD HH24:MI:SS" : "YYYY-MM-DD HH24:MI:SS.FF";
      const OCITypeCode code =
          type == OCI_DTYPE_TIMESTAMP ? OCI_TYPECODE_TIMESTAMP : OCI_TYPECODE_TIMESTAMP_LTZ;
      const unsigned size = TimestampTextSize(code, fs);
      EXPECT_EQ(size, TimestampText(value, mask, fs, size).size()) << "fs " << fs;
    }
  }
}

// The longest region name of the time zone files this machine has.
std::string LongestRegion() {
  const char* dir = std::getenv("TZDIR");
  const std::filesystem::path root = dir != nullptr && *dir != '\0' ? dir : "/usr/share/zoneinfo";
  std::string longest;
  std::error_code ec;
  std::filesystem::recursive_directory_iterator it(root, ec);
  for (; !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
    const std::string name = it->path().lexically_relative(root).generic_string();
    if (it->is_directory(ec)) {
      if (name == "posix" || name == "right") it.disable_recursion_pending();
      continue;
    }
    char magic[4] = {};
    std::ifstream(it->path(), std::ios::binary).read(magic, sizeof magic);
    if (std::string(magic, sizeof magic) == "TZif" && name.size() > longest.size()) {
      longest = name;
    }
  }
  return longest;
}

TEST_F(TextSizeTest, TimestampsWithTheLongestRegionFit) {
  const std::string region = LongestRegion();
  if (region.empty()) GTEST_SKIP() << "no time zone files";
  EXPECT_LE(2 * region.size(), kZoneRegionRoom) << region;
  auto* value = static_cast<OCIDateTime*>(NewDescriptor(OCI_DTYPE_TIMESTAMP_TZ));
  std::string zone = region;
  ASSERT_EQ(OCI_SUCCESS,
            OCIDateTimeConstruct(env_, err_, value, 9999, 12, 31, 23, 59, 59, 999999999,
                                 reinterpret_cast<OraText*>(&zone[0]), zone.size()))
      << FirstError(err_) << " " << region;
  std::string shown = region;  // TZR writes the region in upper case
  for (char& c : shown) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  for (unsigned fs = 0; fs <= 9; ++fs) {
    const char* mask =
        fs == 0 ? "YYYY-MM-DD HH24:MI:SS TZR TZD" : "YYYY-MM-DD HH24:MI:SS.FF TZR TZD";
    const unsigned size = TimestampTextSize(OCI_TYPECODE_TIMESTAMP_TZ, fs);
    const std::string text = TimestampText(value, mask, fs, size);
    EXPECT_NE(std::string::npos, text.find(" " + shown + " ")) << text;
  }
}

}  // namespace
}  // namespace coldef
