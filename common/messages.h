// Message boxes as an interface: the viewer shows modal dialogs, the
// command-line tool prints "message: TEXT" to standard error, tests record.
#pragma once

#include <string>
#include <vector>

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

// Keeps every message, for tests.
class RecordedMessageBoxes : public MessageBoxes {
 public:
  struct Entry {
    std::string text;
    std::string title;
    MessageIcon icon;
  };
  void Show(const std::string& text, const std::string& title, MessageIcon icon) override;
  std::vector<Entry> entries;
  std::vector<std::string> Texts() const;
};

// The program's message boxes; standard error until SetMessageBoxes is called.
MessageBoxes& Messages();
// Installs boxes (not owned); nullptr restores standard error. Returns the previous.
MessageBoxes* SetMessageBoxes(MessageBoxes* boxes);

// A plain box: OK button, no icon.
void MsgBox(const std::string& text, const std::string& title = "");
// The warning box: exclamation icon, title "Warning:" when none is given.
void WarningBox(const std::string& text, const std::string& title = "");

// Installs a RecordedMessageBoxes for the lifetime of the guard.
class ScopedRecordedMessages {
 public:
  ScopedRecordedMessages() : previous_(SetMessageBoxes(&boxes_)) {}
  ~ScopedRecordedMessages() { SetMessageBoxes(previous_); }
  ScopedRecordedMessages(const ScopedRecordedMessages&) = delete;
  ScopedRecordedMessages& operator=(const ScopedRecordedMessages&) = delete;
  RecordedMessageBoxes& boxes() { return boxes_; }
  std::vector<std::string> Texts() const { return boxes_.Texts(); }

 private:
  RecordedMessageBoxes boxes_;
  MessageBoxes* previous_;
};

}  // namespace quelo
