// Byte images of streams and containers for tests: hand-built bytes where a
// test needs exact, possibly damaged, input; StreamBuilder where the record
// writers should produce the records.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "common/binary_file.h"
#include "scenefile/record_reader.h"
#include "scenefile/record_writer.h"
#include "scenefile/stream_head.h"
#include "support/temp_dir.h"

namespace quelo::testing {

class Bytes {
 public:
  Bytes& L(std::int32_t v) { return Put(&v, 4); }
  Bytes& S(float v) { return Put(&v, 4); }
  Bytes& D(double v) { return Put(&v, 8); }
  Bytes& Tag(const std::string& t) { return Put(t.data(), t.size()); }
  Bytes& Raw(const std::vector<unsigned char>& b) {
    data_.insert(data_.end(), b.begin(), b.end());
    return *this;
  }
  template <std::size_t N>
  Bytes& Raw(const std::array<unsigned char, N>& b) {
    data_.insert(data_.end(), b.begin(), b.end());
    return *this;
  }
  // Overwrites a Long at a 0-based offset.
  Bytes& PatchL(std::size_t offset, std::int32_t v) {
    std::memcpy(data_.data() + offset, &v, 4);
    return *this;
  }
  std::size_t size() const { return data_.size(); }
  const std::vector<unsigned char>& data() const { return data_; }

 private:
  Bytes& Put(const void* p, std::size_t n) {
    const auto* c = static_cast<const unsigned char*>(p);
    data_.insert(data_.end(), c, c + n);
    return *this;
  }
  std::vector<unsigned char> data_;
};

struct Decoded {
  StreamForm form = StreamForm::kNone;
  std::vector<Record> records;
};

// Decodes the stream that starts at `start` of the file; gives up after
// `limit` records so that a looping decoder fails the test instead of hanging.
inline Decoded DecodeFile(const std::string& path, Long start = 1, std::size_t limit = 100000) {
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  f->Seek(start);
  RecordReader reader(*f);
  Decoded out;
  out.form = reader.form();
  Record rec;
  while (out.records.size() < limit && reader.Next(rec)) out.records.push_back(rec);
  return out;
}

inline Decoded DecodeBytes(const TempDir& dir, const std::vector<unsigned char>& bytes,
                           Long start = 1) {
  const std::string path = dir.File("stream.bin");
  WriteAll(path, bytes);
  return DecodeFile(path, start);
}

// Writes a stream file: whole records through the record writers, or raw
// Longs and Singles for damaged ones.
class StreamBuilder {
 public:
  explicit StreamBuilder(const std::string& path)
      : file_(BinaryFile::Open(path, BinaryFile::Access::kReadWrite)) {}
  BinaryFile& f() { return *file_; }
  StreamBuilder& Head() {
    WriteStreamHead(*file_);
    return *this;
  }
  StreamBuilder& Longs(std::initializer_list<Long> values) {
    for (Long v : values) file_->WriteLong(v);
    return *this;
  }
  StreamBuilder& Singles(std::initializer_list<Single> values) {
    for (Single v : values) file_->WriteSingle(v);
    return *this;
  }
  void Close() { file_.reset(); }

 private:
  std::unique_ptr<BinaryFile> file_;
};

}  // namespace quelo::testing
