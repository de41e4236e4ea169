// Writes command streams for replay tests: whole records through the record
// writers, or raw Longs for damaged ones.
#pragma once

#include <memory>
#include <string>

#include "common/binary_file.h"
#include "scenefile/record_writer.h"
#include "scenefile/stream_head.h"

namespace quelo::testing {

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
