// The open-file dialog as the form sees it: a filter in the classic
// "Description|pattern|Description|pattern" form, a file name that holds the
// proposed name before and the chosen path after ShowOpen, and a cancel that
// raises run-time error 32755 when CancelError is set.
//
// The toolkit's dialog (fltk_dialogs.cpp) and the tests' recording double
// derive from it.
#pragma once

#include <string>

namespace quelo {

class CommonDialog {
 public:
  virtual ~CommonDialog() = default;

  const std::string& Filter() const { return filter_; }
  void Filter(const std::string& filter) { filter_ = filter; }
  const std::string& FileName() const { return file_name_; }
  void FileName(const std::string& name) { file_name_ = name; }
  bool CancelError() const { return cancel_error_; }
  void CancelError(bool on) { cancel_error_ = on; }

  // Shows the dialog modally. On success FileName() holds the chosen path. A
  // cancel raises RuntimeError(kErrDialogCancel) when CancelError() is set and
  // otherwise leaves FileName() empty. A dialog that cannot be shown raises a
  // RuntimeError of another number.
  virtual void ShowOpen() = 0;

 private:
  std::string filter_;
  std::string file_name_;
  bool cancel_error_ = false;
};

// Turns a classic filter ("KIVO OpenGL File (*.qgl)|*.qgl|All files (*.*)|*.*")
// into FLTK's ("KIVO OpenGL File\t*.qgl\nAll files\t*"). FLTK shows the
// patterns after each description itself, so a description's own trailing
// "(*.qgl)" is left off. Patterns separated by ';' become FLTK alternatives
// ("{*.a,*.b}"), and "*.*" becomes "*" because Linux file names need not
// contain a dot. A trailing description without a pattern is dropped.
std::string FltkFilterFromClassic(const std::string& filter);

}  // namespace quelo
