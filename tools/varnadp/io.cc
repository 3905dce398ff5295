#include "io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace varnadp {
namespace {

std::string SystemError(const std::string& what, const std::string& name) {
  return what + " " + name + ": " + std::strerror(errno);
}

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

InputFile::~InputFile() {
  if (owned_ && fd_ >= 0) close(fd_);
}

bool InputFile::Open(const std::string& path, std::string* error) {
  if (path.empty() || path == "-") {
    fd_ = STDIN_FILENO;
    name_ = "standard input";
  } else {
    fd_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    name_ = path;
    if (fd_ < 0) {
      *error = SystemError("cannot open", path);
      return false;
    }
    owned_ = true;
  }
  struct stat info;
  if (fstat(fd_, &info) == 0 && S_ISREG(info.st_mode)) size_ = info.st_size;
  return true;
}

bool InputFile::ReadMore(std::string* buffer, size_t chunk, size_t padding, std::string* error) {
  const size_t at = buffer->size();
  if (buffer->capacity() < at + chunk + padding) buffer->reserve(2 * (at + chunk + padding));
  buffer->resize(at + chunk);
  ssize_t got;
  do {
    got = read(fd_, &(*buffer)[at], chunk);
  } while (got < 0 && errno == EINTR);
  if (got < 0) {
    buffer->resize(at);
    *error = SystemError("cannot read", name_);
    return false;
  }
  buffer->resize(at + static_cast<size_t>(got));
  if (got == 0) at_end_ = true;
  return true;
}

OutputFile::~OutputFile() {
  std::string ignored;
  Close(&ignored);
}

bool OutputFile::Open(const std::string& path, std::string* error) {
  if (path.empty() || path == "-") {
    file_ = stdout;
    name_ = "standard output";
  } else {
    file_ = std::fopen(path.c_str(), "wb");
    name_ = path;
    if (file_ == nullptr) {
      *error = SystemError("cannot create", path);
      return false;
    }
    owned_ = true;
  }
  return true;
}

bool OutputFile::Write(std::string_view bytes, std::string* error) {
  if (bytes.empty()) return true;
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) {
    *error = SystemError("cannot write", name_);
    return false;
  }
  return true;
}

bool OutputFile::Close(std::string* error) {
  if (file_ == nullptr) return true;
  bool ok = std::fflush(file_) == 0;
  if (owned_) ok = std::fclose(file_) == 0 && ok;
  file_ = nullptr;
  if (!ok) *error = SystemError("cannot write", name_);
  return ok;
}

Progress::Progress(long long total_bytes) : total_(total_bytes) {
  shown_ = isatty(STDERR_FILENO) != 0;
}

void Progress::Update(long long bytes, long long records) {
  if (!shown_ || records == last_records_) return;
  const double now = Now();
  if (now - last_time_ < 0.2) return;
  last_time_ = now;
  last_records_ = records;
  if (total_ > 0) {
    const int percent = static_cast<int>(100 * bytes / total_);
    const int bar = percent / 5;
    std::fprintf(stderr, "\r[%.*s%*s] %3d%% %lld records", bar, "####################", 20 - bar, "",
                 percent, records);
  } else {
    std::fprintf(stderr, "\r%lld records", records);
  }
  std::fflush(stderr);
}

void Progress::Finish() {
  if (shown_ && last_records_ >= 0) {
    std::fprintf(stderr, "\r%60s\r", "");
    std::fflush(stderr);
  }
}

}  // namespace varnadp
