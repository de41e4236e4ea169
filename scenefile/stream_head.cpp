#include "scenefile/stream_head.h"

#include <cstring>

#include "scenefile/records.h"

namespace quelo {

namespace {

constexpr std::array<PictureOffset, kUnknownVertexCount> kOffsets = {{
    {0, 0},  {0, 4},  {0, 0},  {3, 0},  {3, 0},  {3, 4},  {4, 0},  {4, 2},  {4, 1},  {6, 2},
    {6, 0},  {6, 2},  {7, 0},  {7, 4},  {7, 1},  {9, 2},  {7, 1},  {9, 0},  {10, 0}, {10, 2},
    {10, 1}, {12, 2}, {12, 0}, {12, 2}, {13, 0}, {13, 2}, {13, 2}, {15, 2}, {15, 2}, {15, 0},
    {15, 0}, {13, 0}, {16, 0}, {16, 2}, {16, 0}, {17, 1}, {17, 1}, {18, 0}, {18, 0}, {18, 2},
    {19, 0}, {19, 2}, {19, 1}, {21, 2}, {21, 0}, {21, 2},
}};

constexpr Long kGlLines = 1;

class HeadBuilder {
 public:
  void Long32(Long v) { Put(&v, 4); }
  void Single32(Single v) { Put(&v, 4); }
  const std::array<unsigned char, kStreamHeadSize>& bytes() const { return bytes_; }
  std::size_t size() const { return at_; }

 private:
  void Put(const void* p, std::size_t n) {
    std::memcpy(bytes_.data() + at_, p, n);  // little-endian machine, like the file
    at_ += n;
  }
  std::array<unsigned char, kStreamHeadSize> bytes_{};
  std::size_t at_ = 0;
};

std::array<unsigned char, kStreamHeadSize> BuildHead() {
  HeadBuilder h;
  h.Long32(kFramedMark);
  h.Long32(kOpBegin);
  h.Long32(kGlLines);
  for (const PictureOffset& o : kOffsets) {
    h.Long32(kOpVertex3f);
    h.Single32(1.0f);
    h.Single32(static_cast<Single>(1 + o.b));
    h.Single32(static_cast<Single>(1 + o.c));
  }
  h.Long32(kOpEnd);
  h.Long32(kOpEndOfSeq);
  return h.bytes();
}

static_assert(4 + 8 + kUnknownVertexCount * 16 + 4 + 4 == kStreamHeadSize);

}  // namespace

const std::array<PictureOffset, kUnknownVertexCount>& UnknownPictureOffsets() {
  return kOffsets;
}

const std::array<unsigned char, kStreamHeadSize>& StreamHeadBytes() {
  static const std::array<unsigned char, kStreamHeadSize> kHead = BuildHead();
  return kHead;
}

void WriteStreamHead(BinaryFile& f) {
  f.WriteBytes(StreamHeadBytes().data(), kStreamHeadSize);
}

}  // namespace quelo
