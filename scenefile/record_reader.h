// The incremental decoder of a command stream: the one reading of the record
// format that replay (FileReadToGL) and `qgl dump` share.
//
// A reader starts at the file's current position P and learns the stream's
// form from the first Long there:
//   -1                 framed: records start at P + 756 (the stream head is
//                      skipped unread);
//   any other negative no stream: nothing plays;
//   zero or positive   unframed (legacy): the reader steps back to P.
//
// Framed form: each Next() seeks to the record's computed position (1-based),
// reads op and length and sets the next position to H + length, where H is the
// position just after those two Longs. A code outside 0..16 (taken as
// unsigned) or a length other than the table's exact one gives a kSkip record
// whose payload is not read; op 0 with length 0 is kStop; op 0 with another
// length is an unknown record and skipped. A record with a negative length is
// reported as kStop and ends the stream: its next position would lie before
// it, and following it could loop for ever.
//
// Unframed form: records are read at the file's current position without any
// seek (so records that a replay writes meanwhile move the reading on, as they
// always did). A code above 14 taken as unsigned (15, 16 and anything larger)
// is passed over as one Long and reported as a kSkip record of length -1; op 0
// is kStop; codes 1 to 14 read their payload.
//
// The stream ends, in silence, at the end of the file: at a record that would
// start there, and at a record that the end cuts short (that record is not
// returned, so it is never played).
//
// Run-time errors: 6 (Overflow) when H + length or P + 756 leaves the range of
// a Long (raised by the Next() that would go there, after the record before it
// has been returned); file errors of BinaryFile. Memory use is fixed: nothing
// is allocated by a length read from the file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "common/binary_file.h"
#include "common/numbers.h"
#include "scenefile/records.h"

namespace quelo {

enum class StreamForm { kNone, kFramed, kUnframed };
enum class RecordAction { kPlay, kSkip, kStop };

// "framed", "unframed", "none"; "play", "skip", "stop".
const char* StreamFormName(StreamForm form);
const char* RecordActionName(RecordAction action);

struct Record {
  Long position = 0;  // 1-based position of the op field
  Long op = 0;
  Long length = -1;  // the length field; -1 in the unframed form, which has none
  RecordAction action = RecordAction::kSkip;
  // The payload, read only for kPlay records: Longs, Singles and Doubles each
  // in the order of the table (oglMaterialfv: longs face, pname; singles 0..3).
  std::array<Long, kMaxLongFields> longs{};
  std::array<Single, kMaxSingleFields> singles{};
  std::array<double, kMaxDoubleFields> doubles{};

  // The table entry of op, or nullptr for an unknown code.
  const OpSpec* spec() const { return FindOp(op); }
  // Number of payload values: 0 unless kPlay.
  std::size_t ArgCount() const;
};

// Calls visit(value) for each payload field of rec in table order, with a
// reference to the Long, Single or double of rec that holds it: the one walk
// over the table's layout that writing, reading and printing share. An
// unknown op has no fields. R is Record or const Record; spec, where given,
// is the table entry of rec.op, already looked up.
template <class R, class Visitor>
void VisitFields(const OpSpec& spec, R& rec, Visitor&& visit) {
  std::size_t longs = 0, singles = 0, doubles = 0;
  for (const FieldSpec& field : spec.fields()) {
    switch (field.kind) {
      case FieldKind::kLong:
        visit(rec.longs[longs++]);
        break;
      case FieldKind::kSingle:
        visit(rec.singles[singles++]);
        break;
      case FieldKind::kDouble:
        visit(rec.doubles[doubles++]);
        break;
    }
  }
}

template <class R, class Visitor>
void VisitFields(R& rec, Visitor&& visit) {
  if (const OpSpec* spec = FindOp(rec.op)) VisitFields(*spec, rec, visit);
}

class RecordReader {
 public:
  // Reads the first Long at f's current position (see above). f must outlive
  // the reader.
  explicit RecordReader(BinaryFile& f);

  StreamForm form() const { return form_; }
  Long start() const { return start_; }  // P, 1-based

  // The next record; false once the stream has ended (after a kStop record,
  // at the end of the file, and always in form none).
  bool Next(Record& rec);

 private:
  bool NextFramed(Record& rec);
  bool NextUnframed(Record& rec);
  // Reads the fields of spec, the table entry of rec.op.
  bool ReadPayload(const OpSpec& spec, Record& rec);

  BinaryFile& f_;
  StreamForm form_ = StreamForm::kNone;
  Long start_ = 0;
  bool done_ = false;
  std::int64_t next_ = 0;  // framed: where the next record starts, unchecked
};

}  // namespace quelo
