// A main form without a display: GL calls go to the tracing table, the
// drawing surface is a fake with one format, and the window, the open dialog
// and the rubber band are doubles that record what the form asks of them.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/runtime_error.h"
#include "form/quelo_form.h"
#include "glctrl/gl_dispatch.h"
#include "support/fake_surface.h"
#include "support/recorded_messages.h"

namespace quelo::testing {

class RecordingHost : public FormHost {
 public:
  void Show() override { calls.push_back("Show"); }
  void Refresh() override { calls.push_back("Refresh"); }
  void FormSizeChanged() override { calls.push_back("FormSizeChanged"); }
  void UnloadAllForms() override { calls.push_back("UnloadAllForms"); }
  void ShowInfoBox() override { calls.push_back("ShowInfoBox"); }
  std::vector<std::string> calls;
};

// Answers ShowOpen with `answer`, or raises `raise_number` when it is set, and
// keeps what the dialog looked like when it was shown.
class RecordingDialog : public CommonDialog {
 public:
  void ShowOpen() override {
    ++shows;
    shown_filter = Filter();
    shown_file_name = FileName();
    shown_cancel_error = CancelError();
    if (raise_number != 0) throw RuntimeError(raise_number);
    FileName(answer);
  }
  std::string answer;
  int raise_number = 0;
  int shows = 0;
  std::string shown_filter;
  std::string shown_file_name;
  bool shown_cancel_error = false;
};

class RecordingBand : public BandDrawer {
 public:
  void DrawBox(double x1, double y1, double x2, double y2) override {
    boxes.push_back({x1, y1, x2, y2});
  }
  std::vector<std::array<double, 4>> boxes;
};

class FormTest : public ::testing::Test {
 protected:
  // Loaded and organised as Main does, with an 800 x 600 drawing window.
  FormTest() {
    form.FacePbx.hDC(&surface);
    form.Form_Load();
    form.Organize();
    gl.Clear();
  }

  // Without an open file the scene list keeps RoomBox, so a full view fits it.
  void UseRoomBox(std::array<Single, 6> box) {
    form.RoomBox = box;
    form.RenderIt(false, true);
    gl.Clear();
  }

  bool Traced(const std::string& line) const {
    const auto lines = gl.Lines();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  }
  int SwapCount() const {
    return static_cast<int>(std::count(surface.log.begin(), surface.log.end(), "SwapBuffers()"));
  }
  Single CentreX() const { return (form.WinXMin + form.WinXMax) / 2; }
  Single CentreY() const { return (form.WinYMin + form.WinYMax) / 2; }

  ScopedTracingGL gl;
  ScopedRecordedMessages messages;
  FakeSurface surface;
  RecordingHost host;
  RecordingDialog dialog;
  RecordingBand band;
  Quelo_Form form{host, dialog, band};
};

}  // namespace quelo::testing
