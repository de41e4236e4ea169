// FLTK's side of the dialogs: the open dialog, the message boxes and the
// about box window.
#pragma once

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Window.H>

#include <string>

#include "common/messages.h"
#include "form/common_dialog.h"
#include "form/info_box.h"

namespace quelo {

// Fl_Native_File_Chooser behind the CommonDialog interface (GTK's chooser
// where available, FLTK's own otherwise).
class FltkCommonDialog : public CommonDialog {
 public:
  void ShowOpen() override;

 private:
  std::string directory_;  // where the chooser opens
};

// Message boxes as FLTK's modal dialogs: warnings and errors with fl_alert,
// the rest with fl_message; the title defaults to the program's name.
class FltkMessageBoxes : public MessageBoxes {
 public:
  void Show(const std::string& text, const std::string& title, MessageIcon icon) override;
};

// The about box: a small modeless window that mirrors an InfoBox model. A
// click on the text label appends the resource figures.
class FltkInfoBoxWindow : public Fl_Window {
 public:
  FltkInfoBoxWindow();
  const InfoBox& model() const { return model_; }

 private:
  class Label;
  static void OnOk(Fl_Widget* button, void* self);
  void Mirror();

  InfoBox model_;
  Fl_Box* picture_;
  Fl_Box* title_;
  Fl_Box* version_;
  Label* info_;
  Fl_Button* ok_;
};

}  // namespace quelo
