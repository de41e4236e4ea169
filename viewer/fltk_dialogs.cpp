#include "viewer/fltk_dialogs.h"

#include <FL/Fl.H>
#include <FL/Fl_Native_File_Chooser.H>
#include <FL/fl_ask.H>
#include <FL/fl_draw.H>

#include <filesystem>
#include <string>

#include "common/runtime_error.h"

namespace quelo {

// ---- Open dialog -------------------------------------------------------------------

void FltkCommonDialog::ShowOpen() {
  Fl_Native_File_Chooser chooser(Fl_Native_File_Chooser::BROWSE_FILE);
  chooser.title("Open");
  chooser.filter(FltkFilterFromClassic(Filter()).c_str());
  // Where the last file came from; at first the working directory (GTK's
  // chooser would otherwise start in its list of recent files).
  if (directory_.empty()) {
    std::error_code error;
    directory_ = std::filesystem::current_path(error).string();
  }
  if (!directory_.empty()) chooser.directory(directory_.c_str());
  // A proposed name with wildcards ("*.qgl") only says what to show; the
  // filter already does that. A plain name is preselected.
  const std::string proposed = FileName();
  if (!proposed.empty() && proposed.find_first_of("*?") == std::string::npos) {
    chooser.preset_file(proposed.c_str());
  }
  switch (chooser.show()) {
    case 0:
      FileName(chooser.filename() != nullptr ? chooser.filename() : "");
      if (!FileName().empty()) {
        directory_ = std::filesystem::path(FileName()).parent_path().string();
      }
      return;
    case 1:
      FileName("");
      if (CancelError()) Raise(kErrDialogCancel);
      return;
    default: {
      const char* why = chooser.errmsg();
      throw RuntimeError(kErrInvalidCall, why != nullptr ? why : "The open dialog failed");
    }
  }
}

// ---- Message boxes -------------------------------------------------------------------

void FltkMessageBoxes::Show(const std::string& text, const std::string& title, MessageIcon icon) {
  fl_message_title(title.empty() ? "Quelo" : title.c_str());
  if (icon == MessageIcon::kCritical || icon == MessageIcon::kExclamation) {
    fl_alert("%s", text.c_str());
  } else {
    fl_message("%s", text.c_str());
  }
}

// ---- About box ----------------------------------------------------------------------------

namespace {

constexpr int kWidth = 380;
constexpr int kMargin = 12;
constexpr int kPictureSize = 64;
constexpr int kTextLeft = kMargin * 2 + kPictureSize;
constexpr int kTextWidth = kWidth - kTextLeft - kMargin;

// The program's picture: the box and axes of the application icon, drawn.
class Picture : public Fl_Box {
 public:
  Picture(int x, int y, int w, int h) : Fl_Box(x, y, w, h) {}
  void draw() override {
    const int cx = x() + w() / 2, cy = y() + h() / 2;
    const int s = w() / 4;
    fl_color(fl_rgb_color(201, 216, 242));
    fl_polygon(cx, cy - 2 * s, cx + 2 * s, cy - s, cx, cy, cx - 2 * s, cy - s);
    fl_color(fl_rgb_color(127, 159, 214));
    fl_polygon(cx - 2 * s, cy - s, cx, cy, cx, cy + 2 * s, cx - 2 * s, cy + s);
    fl_color(fl_rgb_color(79, 115, 184));
    fl_polygon(cx, cy, cx + 2 * s, cy - s, cx + 2 * s, cy + s, cx, cy + 2 * s);
    fl_line_style(FL_SOLID, 3);
    fl_color(fl_rgb_color(224, 32, 27));
    fl_line(cx, cy, cx - 3 * s / 2 - s, cy + s + s / 2);
    fl_color(fl_rgb_color(31, 158, 44));
    fl_line(cx, cy, cx + 3 * s / 2 + s, cy + s + s / 2);
    fl_color(fl_rgb_color(31, 63, 214));
    fl_line(cx, cy, cx, cy - 2 * s - s / 2);
    fl_line_style(0);
  }
};

}  // namespace

// The text label; a click on it appends the figures.
class FltkInfoBoxWindow::Label : public Fl_Box {
 public:
  Label(FltkInfoBoxWindow& owner, int x, int y, int w, int h) : Fl_Box(x, y, w, h), owner_(owner) {}
  int handle(int event) override {
    if (event == FL_PUSH) return 1;
    if (event == FL_RELEASE && Fl::event_inside(this)) {
      owner_.model_.Info_Lbl_Click();
      owner_.Mirror();
      return 1;
    }
    return Fl_Box::handle(event);
  }

 private:
  FltkInfoBoxWindow& owner_;
};

FltkInfoBoxWindow::FltkInfoBoxWindow() : Fl_Window(kWidth, 200) {
  copy_label(model_.Caption().c_str());
  picture_ = new Picture(kMargin, kMargin, kPictureSize, kPictureSize);
  title_ = new Fl_Box(kTextLeft, kMargin, kTextWidth, 30);
  title_->copy_label(model_.Title().c_str());
  title_->labelsize(22);
  title_->labelfont(FL_HELVETICA_BOLD);
  title_->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
  version_ = new Fl_Box(kTextLeft, kMargin + 30, kTextWidth, 20);
  version_->copy_label(model_.VersionLine().c_str());
  version_->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
  info_ = new Label(*this, kTextLeft, kMargin + 56, kTextWidth, 40);
  info_->align(FL_ALIGN_LEFT | FL_ALIGN_TOP | FL_ALIGN_INSIDE | FL_ALIGN_WRAP);
  info_->labelsize(12);
  info_->tooltip("Click for the free resources");
  ok_ = new Fl_Button(kWidth - kMargin - 80, 0, 80, 26, "OK");
  ok_->callback(OnOk, this);
  end();
  Mirror();
}

void FltkInfoBoxWindow::OnOk(Fl_Widget* /*button*/, void* self) {
  static_cast<FltkInfoBoxWindow*>(self)->hide();
}

void FltkInfoBoxWindow::Mirror() {
  info_->copy_label(model_.Info_Lbl().c_str());
  // The label grows with each click; the window grows with it.
  int text_w = kTextWidth, text_h = 0;
  fl_font(info_->labelfont(), info_->labelsize());
  fl_measure(model_.Info_Lbl().c_str(), text_w, text_h);
  info_->size(kTextWidth, text_h + 4);
  const int bottom = std::max(info_->y() + info_->h(), kMargin + kPictureSize);
  ok_->position(ok_->x(), bottom + kMargin);
  size(kWidth, ok_->y() + ok_->h() + kMargin);
  redraw();
}

}  // namespace quelo
