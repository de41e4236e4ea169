#include "common/runtime_error.h"

#include <utility>

namespace quelo {

std::string ErrorText(int number) {
  switch (number) {
    case kErrInvalidCall:
      return "Invalid procedure call or argument";
    case kErrOverflow:
      return "Overflow";
    case kErrOutOfMemory:
      return "Out of memory";
    case kErrSubscript:
      return "Subscript out of range";
    case kErrDivisionByZero:
      return "Division by zero";
    case kErrBadFileNameOrNumber:
      return "Bad file name or number";
    case kErrFileNotFound:
      return "File not found";
    case kErrBadFileMode:
      return "Bad file mode";
    case kErrFileAlreadyOpen:
      return "File already open";
    case kErrDeviceIO:
      return "Device I/O error";
    case kErrDiskFull:
      return "Disk full";
    case kErrBadRecordNumber:
      return "Bad record number";
    case kErrTooManyFiles:
      return "Too many files";
    case kErrPermissionDenied:
      return "Permission denied";
    case kErrPathFileAccess:
      return "Path/File access error";
    case kErrPathNotFound:
      return "Path not found";
    case kErrInvalidPropertyValue:
      return "Invalid property value";
    case kErrDialogCancel:
      return "Cancel was selected.";
    default:
      return "Application-defined or object-defined error";
  }
}

RuntimeError::RuntimeError(int number) : number_(number), message_(ErrorText(number)) {}

RuntimeError::RuntimeError(int number, std::string message)
    : number_(number), message_(std::move(message)) {}

void Raise(int number) {
  throw RuntimeError(number);
}

}  // namespace quelo
