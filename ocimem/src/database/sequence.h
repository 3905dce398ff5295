// Sequences: number generators in a schema's namespace.  A sequence keeps the value its
// next NEXTVAL hands out; values handed out are never taken back (ROLLBACK leaves them).
// Guarded by the database mutex.
#ifndef OCIMEM_SRC_DATABASE_SEQUENCE_H
#define OCIMEM_SRC_DATABASE_SEQUENCE_H

#include <cstdint>
#include <string>

namespace ocimem {

// Sequence values have up to 28 digits, beyond 64 bits.
__extension__ typedef __int128 SequenceNumber;

// 10^28 - 1, the largest sequence value, and -(10^27 - 1), the smallest default.
SequenceNumber SequenceMax();
SequenceNumber SequenceMinDescending();

// Decimal text of a sequence number.
std::string SequenceText(SequenceNumber n);

struct Sequence {
  std::string schema;
  std::string name;
  std::uint64_t id = 0;  // names the sequence in a session's CURRVAL memory
  SequenceNumber increment = 1;
  SequenceNumber min_value = 1;
  SequenceNumber max_value = 0;
  bool cycle = false;
  SequenceNumber cache = 20;  // kept, no effect
  bool order = false;         // kept, no effect
  SequenceNumber next = 1;    // the value the next NEXTVAL hands out

  // Hands out the next value; false when it would pass MAXVALUE (MINVALUE for a descending
  // sequence) without CYCLE, the sequence unchanged.
  bool Advance(SequenceNumber* out);
};

}  // namespace ocimem

#endif  // OCIMEM_SRC_DATABASE_SEQUENCE_H
