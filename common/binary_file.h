// A binary file with 1-based positions, read and written in little-endian
// fields, buffered so that walking a large file record by record costs few
// system calls.
//
// Positions: the first byte of the file is position 1. Seek may go past the
// end; a later write there extends the file (the gap reads as zeros).
//
// End of file: a read that meets the end fills the missing bytes with zeros and
// sets Eof(); the next complete read or a Seek clears it. AtEnd() says whether
// the current position lies past the last byte.
//
// Errors are RuntimeErrors: 53 file not found, 75 access error, 57 device I/O,
// 61 disk full, 63 bad position (below 1 or beyond a 32-bit position),
// 54 bad file mode (a write to a file that could only be opened for reading).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/numbers.h"

namespace quelo {

class BinaryFile {
 public:
  enum class Access {
    kRead,       // must exist
    kReadWrite,  // created when missing, never truncated; falls back to read
                 // only when the file may not be written (writes then fail)
  };

  static std::unique_ptr<BinaryFile> Open(const std::string& path, Access access);
  ~BinaryFile();
  BinaryFile(const BinaryFile&) = delete;
  BinaryFile& operator=(const BinaryFile&) = delete;

  const std::string& path() const { return path_; }
  Long Position() const;  // 1-based position of the next byte
  void Seek(Long position);
  Long Length() const;
  bool Eof() const { return eof_; }
  bool AtEnd() const { return Position() > Length(); }
  bool Writable() const { return writable_; }

  Long ReadLong();
  Integer ReadInteger();
  Single ReadSingle();
  double ReadDouble();
  // Reads n bytes; returns how many really came from the file (the rest is 0).
  std::size_t ReadBytes(void* out, std::size_t n);
  // A fixed text of n bytes, as stored (no terminator handling).
  std::string ReadFixed(std::size_t n);

  void WriteLong(Long v);
  void WriteInteger(Integer v);
  void WriteSingle(Single v);
  void WriteDouble(double v);
  void WriteBytes(const void* data, std::size_t n);
  // Writes text padded with blanks (or cut) to exactly n bytes.
  void WriteFixed(const std::string& text, std::size_t n);

  void Flush();

 private:
  BinaryFile(int fd, std::string path, bool writable);
  void FillWindow(std::int64_t offset);
  void FlushDirty();

  int fd_;
  std::string path_;
  bool writable_;
  bool eof_ = false;
  std::int64_t pos_ = 0;        // 0-based offset of the next byte
  std::int64_t disk_size_ = 0;  // size of the file on disk
  // One window of the file held in memory.
  std::vector<unsigned char> buf_;
  std::int64_t win_start_ = 0;
  std::size_t win_len_ = 0;                  // valid bytes in buf_
  std::size_t dirty_lo_ = 0, dirty_hi_ = 0;  // dirty range within buf_
};

// The program's file numbers: Open under a free number, look up, close.
// Positions and fields are those of BinaryFile.
class FileTable {
 public:
  static constexpr Integer kMaxFiles = 255;
  Integer FreeFile() const;  // lowest free number 1..255; 67 when none
  void Open(Integer number, const std::string& path, BinaryFile::Access access);
  BinaryFile& Get(Integer number);  // 52 when not open
  bool IsOpen(Integer number) const;
  void Close(Integer number);  // closing a closed number does nothing
  void CloseAll();

 private:
  std::vector<std::unique_ptr<BinaryFile>> files_ =
      std::vector<std::unique_ptr<BinaryFile>>(kMaxFiles + 1);
};

// The one table of the program (single-threaded, like the rest of it).
FileTable& Files();

}  // namespace quelo
