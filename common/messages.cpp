#include "common/messages.h"

#include <cstdio>

namespace quelo {

void StderrMessageBoxes::Show(const std::string& text, const std::string&, MessageIcon) {
  std::fprintf(stderr, "message: %s\n", text.c_str());
}

namespace {
StderrMessageBoxes g_stderr_boxes;
MessageBoxes* g_boxes = &g_stderr_boxes;
}  // namespace

MessageBoxes& Messages() {
  return *g_boxes;
}

MessageBoxes* SetMessageBoxes(MessageBoxes* boxes) {
  MessageBoxes* previous = g_boxes;
  g_boxes = boxes ? boxes : &g_stderr_boxes;
  return previous;
}

void MsgBox(const std::string& text, const std::string& title) {
  Messages().Show(text, title, MessageIcon::kNone);
}

void WarningBox(const std::string& text, const std::string& title) {
  Messages().Show(text, title.empty() ? "Warning:" : title, MessageIcon::kExclamation);
}

}  // namespace quelo
