// Files of a run: the input read in chunks (so memory does not grow with
// it), the output and the bad-record file written through stdio, and the
// progress line on a terminal.
#ifndef TOOLS_VARNADP_IO_H
#define TOOLS_VARNADP_IO_H

#include <cstdio>
#include <string>
#include <string_view>

namespace varnadp {

class InputFile {
 public:
  ~InputFile();
  // "" or "-": standard input. False with *error set.
  bool Open(const std::string& path, std::string* error);
  // Appends up to `chunk` bytes to *buffer (keeping `padding` bytes of
  // capacity beyond its size); false with *error set on a read error. At the
  // end nothing is appended and at_end() is true.
  bool ReadMore(std::string* buffer, size_t chunk, size_t padding, std::string* error);
  bool at_end() const { return at_end_; }
  // The size of a regular file, else 0.
  long long size() const { return size_; }
  const std::string& name() const { return name_; }

 private:
  int fd_ = -1;
  bool owned_ = false;
  bool at_end_ = false;
  long long size_ = 0;
  std::string name_;
};

class OutputFile {
 public:
  ~OutputFile();
  // "" or "-": standard output.
  bool Open(const std::string& path, std::string* error);
  bool Write(std::string_view bytes, std::string* error);
  bool Close(std::string* error);
  bool is_open() const { return file_ != nullptr; }

 private:
  FILE* file_ = nullptr;
  bool owned_ = false;
  std::string name_;
};

// "\r45% 12,345 records" on standard error when it is a terminal.
class Progress {
 public:
  explicit Progress(long long total_bytes);
  void Update(long long bytes, long long records);
  void Finish();

 private:
  bool shown_ = false;
  long long total_ = 0;
  long long last_records_ = -1;
  double last_time_ = 0;
};

}  // namespace varnadp

#endif  // TOOLS_VARNADP_IO_H
