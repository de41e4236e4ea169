// Message boxes as an interface: the viewer shows modal dialogs, the
// command-line tool prints "message: TEXT" to standard error, tests record
// (tests/support/recorded_messages.h).
#pragma once

#include <string>

namespace quelo {

enum class MessageIcon { kNone, kExclamation, kCritical, kInformation };

class MessageBoxes {
 public:
  virtual ~MessageBoxes() = default;
  // A modal box with an OK button. An empty title means the default title.
  virtual void Show(const std::string& text, const std::string& title, MessageIcon icon) = 0;
};

// Prints "message: TEXT" on standard error.
class StderrMessageBoxes : public MessageBoxes {
 public:
  void Show(const std::string& text, const std::string& title, MessageIcon icon) override;
};

// The program's message boxes; standard error until SetMessageBoxes is called.
MessageBoxes& Messages();
// Installs boxes (not owned); nullptr restores standard error. Returns the previous.
MessageBoxes* SetMessageBoxes(MessageBoxes* boxes);

// A plain box: OK button, no icon.
void MsgBox(const std::string& text, const std::string& title = "");
// The warning box: exclamation icon, title "Warning:" when none is given.
void WarningBox(const std::string& text, const std::string& title = "");

}  // namespace quelo
