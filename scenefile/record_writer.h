// Writers of the framed command records, one per operation of records.h.
//
// Each writes op (Long), length (Long, the table's exact value) and then each
// payload field by a separate write, at the file's current position, and
// leaves the position just after the record. They are what the control's
// recording methods call while SendToFile is on, and what producers and tests
// use to write streams without a control. Nothing is buffered beyond the
// file's own buffer; file errors (read-only file, disk full) are RuntimeErrors.
#pragma once

#include "common/binary_file.h"
#include "common/numbers.h"

namespace quelo {

struct Record;

void WriteEndOfSeqRecord(BinaryFile& f);                                        // op 0
void WriteBeginRecord(BinaryFile& f, Long mode);                                // op 1
void WriteEndRecord(BinaryFile& f);                                             // op 2
void WriteColor3fRecord(BinaryFile& f, Single red, Single green, Single blue);  // op 3
void WriteVertex3fRecord(BinaryFile& f, Single x, Single y, Single z);          // op 4
// Always four values, params[0] to params[3], whatever pname asks for.
void WriteMaterialfvRecord(BinaryFile& f, Long face, Long pname, const Single params[4]);  // op 5
void WritePolygonModeRecord(BinaryFile& f, Long face, Long mode);                          // op 6
void WriteFrontFaceRecord(BinaryFile& f, Long mode);                                       // op 7
void WriteNormal3fRecord(BinaryFile& f, Single nx, Single ny, Single nz);                  // op 8
// Stored as the Long -1 (true) or 0 (false).
void WriteEdgeFlagRecord(BinaryFile& f, bool flag);     // op 9
void WriteColorLongRecord(BinaryFile& f, Long packed);  // op 10
// tessBeginPoly's 16-bit count, widened; a Long so tests can store any value.
void WriteTessBeginPolyRecord(BinaryFile& f, Long count);                   // op 11
void WriteTessEndPolyRecord(BinaryFile& f);                                 // op 12
void WriteTessVector3dRecord(BinaryFile& f, double x, double y, double z);  // op 13
// The three values are the caller's array elements 1, 2 and 3.
void WriteTessVector3dvRecord(BinaryFile& f, double x, double y, double z);  // op 14
void WriteBlockBeginRecord(BinaryFile& f, Long block_id);                    // op 15
void WriteBlockEndRecord(BinaryFile& f, Long block_id);                      // op 16

// Writes any record of the table from its decoded values (record_reader.h):
// op, the table's length and the payload fields of rec in table order.
// A code outside 0..16 raises 5 (Invalid procedure call or argument) and writes nothing.
void WriteRecord(BinaryFile& f, const Record& rec);

}  // namespace quelo
