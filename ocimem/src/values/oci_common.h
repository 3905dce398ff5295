// Helpers shared by the OCI value entry points.
#ifndef OCIMEM_VALUES_OCI_COMMON_H
#define OCIMEM_VALUES_OCI_COMMON_H

#include <string>
#include <string_view>

#include "session/same_bytes.h"
#include "date_format.h"
#include "datetime.h"
#include "oci.h"

namespace ocimem {
struct Env;
}

namespace ocimem::values {

// The adapter passes no language; AMERICAN is the only one this library speaks.
bool IsAmerican(const oratext* lang, std::size_t length);
sword FailLanguage(OCIError* err);

// Records a datetime/interval error with Oracle's text for `ora`.
sword FailDate(OCIError* err, int ora);

// The session time zone of `env` (resolved only by the calls whose value needs
// it): OCI_SUCCESS, or OCI_ERROR with ORA-01882 and the like on err.
sword SessionZone(const Env* env, OCIError* err, Zone* zone);

// The validity checks of a stored OCIDate, in the order Oracle reports them:
// 0 or the ORA error.
int CheckOciDate(const OCIDate& d);

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
    // A host converts the columns of a row in the same order row after row: the mask
    // that came after this thread's last mask the time before is tried first, then the
    // last mask itself (one column after another), then every slot.
    const std::size_t predicted = follows_[last_];
    if (Found(predicted, text, out)) return 0;
    if (Found(last_, text, out)) return 0;
    for (std::size_t i = 0; i < kSlots; ++i) {
      if (Found(i, text, out)) return 0;
    }
    Model model;
    if (int ora = Parse(text, &model)) return ora;
    const std::size_t added = next_;
    next_ = (next_ + 1) % kSlots;
    Slot& slot = slots_[added];
    slot.model = std::move(model);
    slot.text.assign(text.data(), text.size());
    slot.used = true;
    Remember(added);
    *out = &slot.model;
    return 0;
  }

 private:
  static bool Same(const std::string& stored, std::string_view text) {
    return stored.size() == text.size() && SameBytes(stored.data(), text.data(), text.size());
  }

  // True with *out set when slot i holds `text`.
  bool Found(std::size_t i, std::string_view text, const Model** out) {
    Slot& slot = slots_[i];
    if (!slot.used || !Same(slot.text, text)) return false;
    Remember(i);
    *out = &slot.model;
    return true;
  }

  void Remember(std::size_t i) {
    follows_[last_] = i;
    last_ = i;
  }

  static constexpr std::size_t kSlots = 64;
  struct Slot {
    bool used = false;
    std::string text;
    Model model;
  };
  Slot slots_[kSlots];
  std::size_t next_ = 0;
  std::size_t last_ = 0;                // the slot found or filled last
  std::size_t follows_[kSlots] = {};  // the slot found after each slot, the time before
};

// Returns 0 or the mask's ORA error; see MaskCache for the pointer's life.
int CachedDateMask(std::string_view text, const DateMask** out);

// Copies text into a caller buffer of *buf_size bytes: a text that exactly
// fills the buffer is accepted without terminator; longer is ORA-01877.
sword CopyText(OCIError* err, const char* text, std::size_t length, ub4* buf_size, oratext* buf);
inline sword CopyText(OCIError* err, const std::string& text, ub4* buf_size, oratext* buf) {
  return CopyText(err, text.data(), text.size(), buf_size, buf);
}

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_OCI_COMMON_H
