// Helpers shared by the OCI value entry points.
#ifndef OCIMEM_VALUES_OCI_COMMON_H
#define OCIMEM_VALUES_OCI_COMMON_H

#include <string>
#include <string_view>

#include "../same_bytes.h"
#include "date_format.h"
#include "oci.h"

namespace ocimem::values {

// The adapter passes no language; AMERICAN is the only one this library speaks.
bool IsAmerican(const oratext* lang, std::size_t length);
sword FailLanguage(OCIError* err);

// Records a datetime/interval error with Oracle's text for `ora`.
sword FailDate(OCIError* err, int ora);

// A NULL or empty mask means Oracle's default date mask DD-MON-YY.
std::string_view MaskOrDefault(const oratext* fmt, std::size_t length);

// The parsed forms of the last few masks a thread used. The adapter converts
// every value of a column with one mask, and a row holds a handful of
// columns, so parsing a mask again is rare. A pointer handed out stays valid
// until the thread's next lookup. `Parse` returns 0 or the mask's ORA error.
template <typename Model, int (*Parse)(std::string_view, Model*)>
class MaskCache {
 public:
  int Get(std::string_view text, const Model** out) {
    // Hosts tend to ask for one mask many times running: the last one found is tried first.
    Slot& last = slots_[last_];
    if (last.used && Same(last.text, text)) {
      *out = &last.model;
      return 0;
    }
    for (std::size_t i = 0; i < kSlots; ++i) {
      Slot& slot = slots_[i];
      if (slot.used && Same(slot.text, text)) {
        last_ = i;
        *out = &slot.model;
        return 0;
      }
    }
    Model model;
    if (int ora = Parse(text, &model)) return ora;
    last_ = next_;
    Slot& slot = slots_[next_];
    next_ = (next_ + 1) % kSlots;
    slot.model = std::move(model);
    slot.text.assign(text.data(), text.size());
    slot.used = true;
    *out = &slot.model;
    return 0;
  }

 private:
  static bool Same(const std::string& stored, std::string_view text) {
    return stored.size() == text.size() && SameBytes(stored.data(), text.data(), text.size());
  }

  static constexpr std::size_t kSlots = 8;
  struct Slot {
    bool used = false;
    std::string text;
    Model model;
  };
  Slot slots_[kSlots];
  std::size_t next_ = 0;
  std::size_t last_ = 0;
};

// Returns 0 or the mask's ORA error; see MaskCache for the pointer's life.
int CachedDateMask(std::string_view text, const DateMask** out);

// Copies text into a caller buffer of *buf_size bytes: a text that exactly
// fills the buffer is accepted without terminator; longer is ORA-01877.
sword CopyText(OCIError* err, const std::string& text, ub4* buf_size, oratext* buf);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_OCI_COMMON_H
