#include "common/binary_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <limits>

#include "common/runtime_error.h"

namespace quelo {

namespace {

constexpr std::size_t kWindow = 64 * 1024;
// What a jump away from the window reads: one page. A damaged chunk chain can
// hop about a large file once per few bytes of it; a whole window per hop
// would make such a file take minutes to walk.
constexpr std::size_t kJumpRead = 4 * 1024;

[[noreturn]] void RaiseOpenError(int err) {
  switch (err) {
    case ENOENT:
      Raise(kErrFileNotFound);
    case ENOTDIR:
      Raise(kErrPathNotFound);
    case EMFILE:
    case ENFILE:
      Raise(kErrTooManyFiles);
    case EACCES:
    case EPERM:
      Raise(kErrPermissionDenied);
    default:
      Raise(kErrPathFileAccess);
  }
}

}  // namespace

std::unique_ptr<BinaryFile> BinaryFile::Open(const std::string& path, Access access) {
  if (path.empty()) Raise(kErrBadFileNameOrNumber);
  // Not blocking: opening a named pipe for reading would otherwise wait for a
  // writer for ever. Anything but a regular file is refused below, and on a
  // regular file the flag changes nothing.
  constexpr int kFlags = O_CLOEXEC | O_NONBLOCK;
  int fd = -1;
  bool writable = false;
  if (access == Access::kReadWrite) {
    fd = ::open(path.c_str(), O_RDWR | O_CREAT | kFlags, 0644);
    writable = fd >= 0;
    // A scene handed to us read-only is still worth reading.
    if (fd < 0 && (errno == EACCES || errno == EROFS || errno == EPERM)) {
      fd = ::open(path.c_str(), O_RDONLY | kFlags);
    }
  } else {
    fd = ::open(path.c_str(), O_RDONLY | kFlags);
  }
  if (fd < 0) RaiseOpenError(errno);
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    ::close(fd);
    Raise(kErrPathFileAccess);
  }
  auto file = std::unique_ptr<BinaryFile>(new BinaryFile(fd, path, writable));
  file->disk_size_ = st.st_size;
  return file;
}

BinaryFile::BinaryFile(int fd, std::string path, bool writable)
    : fd_(fd), path_(std::move(path)), writable_(writable), buf_(kWindow) {}

BinaryFile::~BinaryFile() {
  try {
    FlushDirty();
  } catch (const RuntimeError&) {
    // Nothing sensible to do in a destructor; Flush() reports the error.
  }
  ::close(fd_);
}

Long BinaryFile::Position() const {
  if (pos_ + 1 > std::numeric_limits<Long>::max()) Raise(kErrOverflow);
  return static_cast<Long>(pos_ + 1);
}

void BinaryFile::Seek(Long position) {
  if (position < 1) Raise(kErrBadRecordNumber);
  pos_ = std::int64_t{position} - 1;
  eof_ = false;
}

Long BinaryFile::Length() const {
  const std::int64_t len = std::max(disk_size_, win_start_ + static_cast<std::int64_t>(win_len_));
  return static_cast<Long>(std::min<std::int64_t>(len, std::numeric_limits<Long>::max()));
}

void BinaryFile::FlushDirty() {
  if (dirty_hi_ <= dirty_lo_) return;
  const unsigned char* p = buf_.data() + dirty_lo_;
  std::size_t left = dirty_hi_ - dirty_lo_;
  off_t at = static_cast<off_t>(win_start_ + static_cast<std::int64_t>(dirty_lo_));
  dirty_lo_ = dirty_hi_ = 0;
  while (left > 0) {
    const ssize_t n = ::pwrite(fd_, p, left, at);
    if (n < 0) {
      if (errno == EINTR) continue;
      Raise(errno == ENOSPC ? kErrDiskFull : kErrDeviceIO);
    }
    p += n;
    left -= static_cast<std::size_t>(n);
    at += n;
  }
  disk_size_ = std::max<std::int64_t>(disk_size_, at);
}

void BinaryFile::FillWindow(std::int64_t offset) {
  // Reading on where the window ends is sequential and gets a whole window.
  const bool sequential =
      win_len_ > 0 && offset == win_start_ + static_cast<std::int64_t>(win_len_);
  const std::size_t want = sequential ? buf_.size() : kJumpRead;
  FlushDirty();
  win_start_ = offset;
  win_len_ = 0;
  while (win_len_ < want) {
    const ssize_t n = ::pread(fd_, buf_.data() + win_len_, want - win_len_,
                              static_cast<off_t>(offset + static_cast<std::int64_t>(win_len_)));
    if (n < 0) {
      if (errno == EINTR) continue;
      Raise(kErrDeviceIO);
    }
    if (n == 0) break;
    win_len_ += static_cast<std::size_t>(n);
  }
}

std::size_t BinaryFile::ReadBytes(void* out, std::size_t n) {
  auto* dst = static_cast<unsigned char*>(out);
  std::size_t got = 0;
  while (got < n) {
    const std::int64_t at = pos_ + static_cast<std::int64_t>(got);
    const std::int64_t win_end = win_start_ + static_cast<std::int64_t>(win_len_);
    if (at < win_start_ || at >= win_end) {
      if (at >= Length()) break;
      FillWindow(at);
      if (win_len_ == 0) break;
      continue;
    }
    const std::size_t off = static_cast<std::size_t>(at - win_start_);
    const std::size_t take = std::min(n - got, win_len_ - off);
    std::memcpy(dst + got, buf_.data() + off, take);
    got += take;
  }
  if (got < n) std::memset(dst + got, 0, n - got);
  pos_ += static_cast<std::int64_t>(n);
  eof_ = got < n;
  return got;
}

void BinaryFile::WriteBytes(const void* data, std::size_t n) {
  if (!writable_) Raise(kErrBadFileMode);
  const auto* src = static_cast<const unsigned char*>(data);
  std::size_t done = 0;
  while (done < n) {
    const std::int64_t at = pos_ + static_cast<std::int64_t>(done);
    const std::int64_t win_end = win_start_ + static_cast<std::int64_t>(win_len_);
    // Writes go into the window when they land inside it or extend it.
    if (at < win_start_ || at > win_end ||
        at - win_start_ >= static_cast<std::int64_t>(buf_.size())) {
      FillWindow(at);
      continue;
    }
    const std::size_t off = static_cast<std::size_t>(at - win_start_);
    const std::size_t take = std::min(n - done, buf_.size() - off);
    std::memcpy(buf_.data() + off, src + done, take);
    if (dirty_hi_ <= dirty_lo_) {
      dirty_lo_ = off;
      dirty_hi_ = off + take;
    } else {
      dirty_lo_ = std::min(dirty_lo_, off);
      dirty_hi_ = std::max(dirty_hi_, off + take);
    }
    win_len_ = std::max(win_len_, off + take);
    done += take;
  }
  pos_ += static_cast<std::int64_t>(n);
}

void BinaryFile::Flush() {
  FlushDirty();
}

namespace {

template <typename T>
T ReadLE(BinaryFile& f) {
  unsigned char b[sizeof(T)];
  f.ReadBytes(b, sizeof(T));
  // The machine is little-endian like the file; memcpy keeps it unaligned-safe.
  T v;
  std::memcpy(&v, b, sizeof(T));
  return v;
}

template <typename T>
void WriteLE(BinaryFile& f, T v) {
  unsigned char b[sizeof(T)];
  std::memcpy(b, &v, sizeof(T));
  f.WriteBytes(b, sizeof(T));
}

static_assert(std::endian::native == std::endian::little, "file fields are little-endian");

}  // namespace

Long BinaryFile::ReadLong() {
  return ReadLE<Long>(*this);
}
Integer BinaryFile::ReadInteger() {
  return ReadLE<Integer>(*this);
}
Single BinaryFile::ReadSingle() {
  return ReadLE<Single>(*this);
}
double BinaryFile::ReadDouble() {
  return ReadLE<double>(*this);
}

std::string BinaryFile::ReadFixed(std::size_t n) {
  std::string s(n, '\0');
  ReadBytes(s.data(), n);
  return s;
}

void BinaryFile::WriteLong(Long v) {
  WriteLE(*this, v);
}
void BinaryFile::WriteInteger(Integer v) {
  WriteLE(*this, v);
}
void BinaryFile::WriteSingle(Single v) {
  WriteLE(*this, v);
}
void BinaryFile::WriteDouble(double v) {
  WriteLE(*this, v);
}

void BinaryFile::WriteFixed(const std::string& text, std::size_t n) {
  std::string s = text.substr(0, n);
  s.resize(n, ' ');
  WriteBytes(s.data(), n);
}

Integer FileTable::FreeFile() const {
  for (Integer i = 1; i <= kMaxFiles; ++i) {
    if (!files_[static_cast<std::size_t>(i)]) return i;
  }
  Raise(kErrTooManyFiles);
}

void FileTable::Open(Integer number, const std::string& path, BinaryFile::Access access) {
  if (number < 1 || number > kMaxFiles) Raise(kErrBadFileNameOrNumber);
  auto& slot = files_[static_cast<std::size_t>(number)];
  if (slot) Raise(kErrFileAlreadyOpen);
  slot = BinaryFile::Open(path, access);
}

BinaryFile& FileTable::Get(Integer number) {
  if (number < 1 || number > kMaxFiles || !files_[static_cast<std::size_t>(number)]) {
    Raise(kErrBadFileNameOrNumber);
  }
  return *files_[static_cast<std::size_t>(number)];
}

bool FileTable::IsOpen(Integer number) const {
  return number >= 1 && number <= kMaxFiles && files_[static_cast<std::size_t>(number)];
}

void FileTable::Close(Integer number) {
  if (!IsOpen(number)) return;
  auto file = std::move(files_[static_cast<std::size_t>(number)]);
  file->Flush();
}

void FileTable::CloseAll() {
  for (auto& f : files_) f.reset();
}

FileTable& Files() {
  static FileTable table;
  return table;
}

}  // namespace quelo
