// Scratch files for the file-backed tests: one name per test and process,
// removed before and after the test.
#ifndef TESTS_HOST_TEMP_FILE_H_
#define TESTS_HOST_TEMP_FILE_H_

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

struct TempFile {
  explicit TempFile(const char* pszName)
      // The process id keeps concurrent runs of the suite apart.
      : path(testing::TempDir() + "host_" + std::to_string(getpid()) + "_" + pszName) {
    std::remove(path.c_str());
  }
  ~TempFile() { std::remove(path.c_str()); }
  std::string path;
};

inline std::string FileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

inline void SetFileText(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
}

#endif  // TESTS_HOST_TEMP_FILE_H_
