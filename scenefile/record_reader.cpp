#include "scenefile/record_reader.h"

#include <limits>

#include "common/runtime_error.h"
#include "scenefile/stream_head.h"

namespace quelo {

namespace {

void ReadField(BinaryFile& f, Long& value) {
  value = f.ReadLong();
}
void ReadField(BinaryFile& f, Single& value) {
  value = f.ReadSingle();
}
void ReadField(BinaryFile& f, double& value) {
  value = f.ReadDouble();
}

}  // namespace

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

bool RecordReader::ReadPayload(const OpSpec& spec, Record& rec) {
  VisitFields(spec, rec, [this](auto& value) { ReadField(f_, value); });
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
    if (!ReadPayload(*spec, rec)) {
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
  // Codes 1 to 14 are all in the table.
  if (!ReadPayload(*FindOp(rec.op), rec)) {
    done_ = true;
    return false;
  }
  rec.action = RecordAction::kPlay;
  return true;
}

}  // namespace quelo
