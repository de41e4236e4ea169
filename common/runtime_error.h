// Numbered run-time errors.
//
// The program reports arithmetic faults, bad indexes and file failures as one
// exception type that carries the classic error number and its message text.
// Handlers that must "resume with the next statement" catch exactly this type.
#pragma once

#include <exception>
#include <string>

namespace quelo {

// Error numbers in use, each with its fixed message text.
enum ErrorNumber : int {
  kErrInvalidCall = 5,      // "Invalid procedure call or argument"
  kErrOverflow = 6,         // "Overflow"
  kErrOutOfMemory = 7,      // "Out of memory"
  kErrSubscript = 9,        // "Subscript out of range"
  kErrDivisionByZero = 11,  // "Division by zero"
  kErrBadFileNameOrNumber = 52,
  kErrFileNotFound = 53,
  kErrBadFileMode = 54,
  kErrFileAlreadyOpen = 55,
  kErrDeviceIO = 57,
  kErrDiskFull = 61,
  kErrBadRecordNumber = 63,
  kErrTooManyFiles = 67,
  kErrPermissionDenied = 70,
  kErrPathFileAccess = 75,
  kErrPathNotFound = 76,
  kErrInvalidPropertyValue = 380,  // a control property set out of its range
  kErrDialogCancel = 32755,        // the open dialog's cancel
};

// The message text that belongs to an error number.
std::string ErrorText(int number);

class RuntimeError : public std::exception {
 public:
  explicit RuntimeError(int number);
  RuntimeError(int number, std::string message);
  int number() const noexcept { return number_; }
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  int number_;
  std::string message_;
};

// Throws RuntimeError(number) with its standard text.
[[noreturn]] void Raise(int number);

}  // namespace quelo
