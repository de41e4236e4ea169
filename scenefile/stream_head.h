// The 756-byte stream head that opens every framed command stream.
//
// It is the Long -1 (the mark of the framed form) followed by a complete
// unframed stream of 752 bytes: a line drawing in the plane x = 2 that spells
// "Unknown". A reader that knows only the unframed form skips the -1 and draws
// the word, showing that it cannot read the stream; a framed reader skips the
// 752 bytes unread.
#pragma once

#include <array>

#include "common/binary_file.h"
#include "common/numbers.h"

namespace quelo {

inline constexpr Long kStreamHeadSize = 756;
// The unframed picture after the leading -1.
inline constexpr Long kStreamHeadPictureSize = 752;
inline constexpr Long kFramedMark = -1;

// The picture's vertices are (1 + 0, 1 + b, 1 + c), drawn as GL_LINES pairs.
inline constexpr int kUnknownVertexCount = 46;
struct PictureOffset {
  int b;
  int c;
};
const std::array<PictureOffset, kUnknownVertexCount>& UnknownPictureOffsets();

// The head byte for byte.
const std::array<unsigned char, kStreamHeadSize>& StreamHeadBytes();

// Writes the head at the file's current position (FilePutBeginOfSeq).
// File errors (no write access, disk full) are RuntimeErrors.
void WriteStreamHead(BinaryFile& f);

}  // namespace quelo
