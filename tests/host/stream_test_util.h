// Helpers shared by the stream tests.
#ifndef TESTS_HOST_STREAM_TEST_UTIL_H_
#define TESTS_HOST_STREAM_TEST_UTIL_H_

#include <host/kel.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>

// Everything in the stream, leaving the position where it was.
inline std::string Contents(CKelStream& stream) {
  long nPosition = stream.Tell();
  stream.Seek(0, 0);
  std::string text(stream.GetSize(), '\0');
  unsigned long nRead = stream.Read(&text[0], text.size());
  text.resize(nRead);
  stream.Seek(nPosition, 0);
  return text;
}

inline void Put(CKelStream& stream, const std::string& text) {
  stream.Write(text.data(), text.size());
}

// Runs fn and checks that it throws CKelException with nCode.
inline void ExpectKelError(int nCode, const std::function<void()>& fn) {
  try {
    fn();
    ADD_FAILURE() << "expected CKelException " << nCode;
  } catch (const CKelException& e) {
    EXPECT_EQ(nCode, e.GetRC()) << e.GetFunc();
  }
}

// Small deterministic generator so failures reproduce.
class Lcg {
 public:
  explicit Lcg(unsigned int nSeed) : m_nState(nSeed) {}
  unsigned int Next() {
    m_nState = m_nState * 1103515245u + 12345u;
    return (m_nState >> 16) & 0x7fff;
  }
  unsigned int Below(unsigned int n) { return Next() % n; }

 private:
  unsigned int m_nState;
};

#endif  // TESTS_HOST_STREAM_TEST_UTIL_H_
