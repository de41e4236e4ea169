#include "scenefile/record_reader.h"

#include <limits>

#include "common/runtime_error.h"
#include "scenefile/stream_head.h"

namespace quelo {

const char* StreamFormName(StreamForm form) {
  switch (form) {
    case StreamForm::kFramed:
      return "framed";
    case StreamForm::kUnframed:
      return "unframed";
    case StreamForm::kNone:
      break;
  }
  return "none";
}

const char* RecordActionName(RecordAction action) {
  switch (action) {
    case RecordAction::kPlay:
      return "play";
    case RecordAction::kStop:
      return "stop";
    case RecordAction::kSkip:
      break;
  }
  return "skip";
}

std::size_t Record::ArgCount() const {
  const OpSpec* s = spec();
  return action == RecordAction::kPlay && s != nullptr ? s->field_count : 0;
}

ArgValue Record::Arg(std::size_t i) const {
  ArgValue v;
  const OpSpec* s = spec();
  if (s == nullptr || i >= s->field_count) return v;
  std::size_t li = 0, si = 0, di = 0;
  for (std::size_t k = 0; k <= i; ++k) {
    v.kind = s->field_storage[k].kind;
    switch (v.kind) {
      case FieldKind::kLong:
        v.l = longs[li++];
        break;
      case FieldKind::kSingle:
        v.s = singles[si++];
        break;
      case FieldKind::kDouble:
        v.d = doubles[di++];
        break;
    }
  }
  return v;
}

RecordReader::RecordReader(BinaryFile& f) : f_(f) {
  start_ = f_.Position();
  const Long first = f_.ReadLong();
  if (first == kFramedMark) {
    form_ = StreamForm::kFramed;
    next_ = std::int64_t{start_} + kStreamHeadSize;
  } else if (first < 0) {
    form_ = StreamForm::kNone;
    done_ = true;
  } else {
    form_ = StreamForm::kUnframed;
    f_.Seek(start_);
  }
}

bool RecordReader::Next(Record& rec) {
  if (done_) return false;
  return form_ == StreamForm::kFramed ? NextFramed(rec) : NextUnframed(rec);
}

bool RecordReader::ReadPayload(Record& rec) {
  std::size_t li = 0, si = 0, di = 0;
  for (const FieldSpec& field : FindOp(rec.op)->fields()) {
    switch (field.kind) {
      case FieldKind::kLong:
        rec.longs[li++] = f_.ReadLong();
        break;
      case FieldKind::kSingle:
        rec.singles[si++] = f_.ReadSingle();
        break;
      case FieldKind::kDouble:
        rec.doubles[di++] = f_.ReadDouble();
        break;
    }
  }
  // Reads run forward, so a payload cut short leaves Eof set by its last field.
  return !f_.Eof();
}

bool RecordReader::NextFramed(Record& rec) {
  if (next_ > std::numeric_limits<Long>::max()) Raise(kErrOverflow);
  const auto position = static_cast<Long>(next_);
  f_.Seek(position);
  if (f_.AtEnd()) {
    done_ = true;
    return false;
  }
  rec = Record{};
  rec.position = position;
  rec.op = f_.ReadLong();
  rec.length = f_.ReadLong();
  if (f_.Eof()) {
    done_ = true;
    return false;
  }
  const std::int64_t after_header = std::int64_t{position} + kRecordHeaderSize;
  if (rec.length < 0) {
    rec.action = RecordAction::kStop;
    done_ = true;
    return true;
  }
  const OpSpec* spec = FindOp(rec.op);
  if (spec == nullptr || rec.length != spec->length) {
    rec.action = RecordAction::kSkip;
  } else if (rec.op == kOpEndOfSeq) {
    rec.action = RecordAction::kStop;
    done_ = true;
    return true;
  } else {
    if (!ReadPayload(rec)) {
      done_ = true;
      return false;
    }
    rec.action = RecordAction::kPlay;
  }
  // Checked when the next record is asked for, so this one is still handed out.
  next_ = after_header + rec.length;
  return true;
}

bool RecordReader::NextUnframed(Record& rec) {
  if (f_.AtEnd()) {
    done_ = true;
    return false;
  }
  rec = Record{};
  rec.position = f_.Position();
  rec.op = f_.ReadLong();
  if (f_.Eof()) {
    done_ = true;
    return false;
  }
  if (static_cast<std::uint32_t>(rec.op) > static_cast<std::uint32_t>(kUnframedMaxOp)) {
    rec.action = RecordAction::kSkip;
    return true;
  }
  if (rec.op == kOpEndOfSeq) {
    rec.action = RecordAction::kStop;
    done_ = true;
    return true;
  }
  if (!ReadPayload(rec)) {
    done_ = true;
    return false;
  }
  rec.action = RecordAction::kPlay;
  return true;
}

}  // namespace quelo
