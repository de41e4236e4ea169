// Message boxes that keep every message instead of showing it.
#pragma once

#include <string>
#include <vector>

#include "common/messages.h"

namespace quelo {

// Keeps every message, for tests.
class RecordedMessageBoxes : public MessageBoxes {
 public:
  struct Entry {
    std::string text;
    std::string title;
    MessageIcon icon;
  };
  void Show(const std::string& text, const std::string& title, MessageIcon icon) override {
    entries.push_back({text, title, icon});
  }
  std::vector<Entry> entries;
  std::vector<std::string> Texts() const {
    std::vector<std::string> out;
    for (const auto& e : entries) out.push_back(e.text);
    return out;
  }
};

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
