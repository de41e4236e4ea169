// Models of the toolkit controls that the main form works on.
//
// The form's logic reads and writes these models only; the FLTK widgets mirror
// them and forward user input to them. So every handler can be driven in a test
// without a display, and a programmatic change behaves exactly like the
// toolkit's: setting a scroll bar's Value raises its Change event, setting a
// check button's Value raises its Click event.
//
// Events are plain callbacks, called synchronously from the setter that caused
// them. `Mirror` callbacks are for the widget that shows a model: they run after
// every property change (after the event, if any) and must not change the model.
//
// Run-time errors: a property set outside its range raises RuntimeError 380
// ("Invalid property value").
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "common/numbers.h"

namespace quelo {

class DrawingSurface;

// Mouse pointer kinds shared by the screen and the picture box.
enum MousePointerKind : Integer {
  kPointerDefault = 0,
  kPointerHourglass = 11,
  kPointerCustom = 99,  // the MouseIcon picture
};

// Scale modes of a picture box.
enum ScaleModeKind : Integer {
  kScaleUser = 0,
  kScaleTwips = 1,
  kScalePixels = 3,
};

constexpr Long kTwipsPerPixel = 15;

// Position and size in the container's units (pixels here); the layout writes
// them and the mirror places the widget.
struct ControlBounds {
  Long Left = 0;
  Long Top = 0;
  Long Width = 0;
  Long Height = 0;
};

// A scroll bar. Min may exceed Max (a reversed bar: the angle bar runs from
// 360 on the left to 0 on the right); Value always lies between the two.
class ScrollBarModel {
 public:
  ScrollBarModel() = default;
  // Design-time values; they must be consistent (Value within the range).
  ScrollBarModel(Integer min, Integer max, Integer small_change, Integer large_change,
                 Integer value);

  Integer Min() const { return min_; }
  Integer Max() const { return max_; }
  Integer Value() const { return value_; }
  Integer SmallChange() const { return small_change_; }
  Integer LargeChange() const { return large_change_; }

  // A new bound pulls Value into the new range (raising Change if it moves).
  void Min(Integer v);
  void Max(Integer v);
  // Outside the range: 380. Raises Change when the value differs.
  void Value(Integer v);
  // Negative: 380.
  void SmallChange(Integer v);
  void LargeChange(Integer v);

  // User input, as the widget reports it. Steps move towards Max for a
  // positive direction and are held at the ends.
  void UserArrow(int direction);   // by SmallChange, raises Change
  void UserTrough(int direction);  // by LargeChange, raises Change
  // The thumb being dragged: Value follows (held in range) and Scroll fires;
  // at the release Change fires once if the value differs from where the drag
  // began.
  void UserDrag(Integer v);
  void UserDragEnd();

  std::function<void()> Change;
  std::function<void()> Scroll;
  std::function<void()> Mirror;

  ControlBounds Bounds;

 private:
  Integer Clamp(int v) const;
  void SetFromUser(int v);
  void Notify();

  Integer min_ = 0;
  Integer max_ = 32767;
  Integer small_change_ = 1;
  Integer large_change_ = 1;
  Integer value_ = 0;
  bool dragging_ = false;
  Integer drag_start_ = 0;
};

// A check-style button (Value 0 unchecked, 1 checked).
class CheckButtonModel {
 public:
  Integer Value() const { return value_; }
  // 0 or 1, else 380. Raises Click when the value changes.
  void Value(Integer v);
  // The user clicked: the value flips and Click fires.
  void UserClick();

  std::string Caption;
  std::string ToolTipText;
  ControlBounds Bounds;

  std::function<void()> Click;
  std::function<void()> Mirror;

 private:
  Integer value_ = 0;
};

// A menu item with a check mark.
class MenuItemModel {
 public:
  MenuItemModel() = default;
  explicit MenuItemModel(std::string caption) : caption_(std::move(caption)) {}

  bool Checked() const { return checked_; }
  void Checked(bool v);
  bool Enabled() const { return enabled_; }
  void Enabled(bool v);
  const std::string& Caption() const { return caption_; }
  void Caption(std::string v);

  // The user chose the item: Click fires if the item is enabled.
  void UserClick();

  std::function<void()> Click;
  std::function<void()> Mirror;

 private:
  bool checked_ = false;
  bool enabled_ = true;
  std::string caption_;
};

// A picture box: size in pixels and a coordinate system that follows ScaleMode.
// Pixels: 0, 0, Width, Height. Twips: 0, 0, 15 x Width, 15 x Height. User: the
// values last set; setting any of the four Scale values switches to user mode,
// and a resize keeps them (the user scale stretches with the box).
class PictureBoxModel {
 public:
  Long Left() const { return left_; }
  Long Top() const { return top_; }
  Long Width() const { return width_; }
  Long Height() const { return height_; }
  void Left(Long v);
  void Top(Long v);
  // Negative sizes: 380.
  void Width(Long v);
  void Height(Long v);
  void Move(Long left, Long top, Long width, Long height);

  Integer ScaleMode() const { return scale_mode_; }
  // 0, 1 or 3, else 380. Setting user mode keeps the present values.
  void ScaleMode(Integer mode);
  Single ScaleLeft() const { return scale_left_; }
  Single ScaleTop() const { return scale_top_; }
  Single ScaleWidth() const { return scale_width_; }
  Single ScaleHeight() const { return scale_height_; }
  // ScaleWidth and ScaleHeight of 0: 380.
  void ScaleLeft(Single v);
  void ScaleTop(Single v);
  void ScaleWidth(Single v);
  void ScaleHeight(Single v);

  // A position in the box's pixels (0,0 top left) in the present scale, and
  // back; what the mouse handlers receive and what the rubber band is drawn at.
  Single ToScaleX(double pixel_x) const;
  Single ToScaleY(double pixel_y) const;
  double ToPixelX(Single x) const;
  double ToPixelY(Single y) const;

  Integer MousePointer() const { return mouse_pointer_; }
  void MousePointer(Integer v);
  // The cursor picture of kPointerCustom, an id the host knows (0 none).
  Long MouseIcon() const { return mouse_icon_; }
  void MouseIcon(Long id);
  bool AutoRedraw() const { return auto_redraw_; }
  void AutoRedraw(bool v);
  bool Visible() const { return visible_; }
  void Visible(bool v);

  // The drawing surface behind the box (its "device context"), set by the host;
  // null while there is none. Not owned.
  DrawingSurface* hDC() const { return hdc_; }
  void hDC(DrawingSurface* surface) { hdc_ = surface; }

  std::function<void()> Mirror;

 private:
  void FollowMode();
  void Notify();

  Long left_ = 0, top_ = 0, width_ = 0, height_ = 0;
  Integer scale_mode_ = kScaleTwips;
  Single scale_left_ = 0, scale_top_ = 0, scale_width_ = 0, scale_height_ = 0;
  Integer mouse_pointer_ = kPointerDefault;
  Long mouse_icon_ = 0;
  bool auto_redraw_ = false;
  bool visible_ = true;
  DrawingSurface* hdc_ = nullptr;
};

// A status bar: a row of panels numbered from 1.
class StatusBarModel {
 public:
  explicit StatusBarModel(int panel_count = 1);
  int PanelCount() const { return static_cast<int>(texts_.size()); }
  // Index 1..PanelCount, else 9 (subscript out of range).
  const std::string& PanelText(int index) const;
  void PanelText(int index, std::string text);

  ControlBounds Bounds;
  std::function<void()> Mirror;

 private:
  std::vector<std::string> texts_;
};

// A timer. The host calls Tick every Interval milliseconds while Enabled; the
// Timer event fires only while Enabled and Interval > 0.
class TimerModel {
 public:
  bool Enabled() const { return enabled_; }
  void Enabled(bool v);
  Long Interval() const { return interval_; }
  // Negative: 380.
  void Interval(Long ms);
  void Tick();

  std::function<void()> Timer;
  std::function<void()> Mirror;  // the host (re)starts or stops its timeout

 private:
  bool enabled_ = false;
  Long interval_ = 0;
};

// The application's screen: the mouse pointer shown over all its windows.
class ScreenModel {
 public:
  Integer MousePointer() const { return mouse_pointer_; }
  void MousePointer(Integer v);

  std::function<void()> Mirror;

 private:
  Integer mouse_pointer_ = kPointerDefault;
};

// The one screen of the application.
ScreenModel& Screen();

}  // namespace quelo
