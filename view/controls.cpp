#include "view/controls.h"

#include <algorithm>

#include "common/runtime_error.h"

namespace quelo {

namespace {

void Fire(const std::function<void()>& event) {
  if (event) event();
}

}  // namespace

// ---- ScrollBarModel ---------------------------------------------------------

ScrollBarModel::ScrollBarModel(Integer min, Integer max, Integer small_change, Integer large_change,
                               Integer value)
    : min_(min), max_(max), small_change_(small_change), large_change_(large_change) {
  if (small_change < 0 || large_change < 0) Raise(kErrInvalidPropertyValue);
  if (Clamp(value) != value) Raise(kErrInvalidPropertyValue);
  value_ = value;
}

Integer ScrollBarModel::Clamp(int v) const {
  const int lo = std::min(min_, max_);
  const int hi = std::max(min_, max_);
  return static_cast<Integer>(std::clamp(v, lo, hi));
}

void ScrollBarModel::Notify() {
  Fire(Mirror);
}

void ScrollBarModel::Min(Integer v) {
  min_ = v;
  const Integer held = Clamp(value_);
  if (held != value_) {
    value_ = held;
    Fire(Change);
  }
  Notify();
}

void ScrollBarModel::Max(Integer v) {
  max_ = v;
  const Integer held = Clamp(value_);
  if (held != value_) {
    value_ = held;
    Fire(Change);
  }
  Notify();
}

void ScrollBarModel::Value(Integer v) {
  if (Clamp(v) != v) Raise(kErrInvalidPropertyValue);
  if (v == value_) return;
  value_ = v;
  Fire(Change);
  Notify();
}

void ScrollBarModel::SmallChange(Integer v) {
  if (v < 0) Raise(kErrInvalidPropertyValue);
  small_change_ = v;
  Notify();
}

void ScrollBarModel::LargeChange(Integer v) {
  if (v < 0) Raise(kErrInvalidPropertyValue);
  large_change_ = v;
  Notify();
}

void ScrollBarModel::SetFromUser(int v) {
  const Integer held = Clamp(v);
  if (held == value_) return;
  value_ = held;
  Fire(Change);
  Notify();
}

// "Towards Max" is downwards in value on a reversed bar.
void ScrollBarModel::UserArrow(int direction) {
  const int sign = (max_ >= min_) ? 1 : -1;
  SetFromUser(value_ + sign * (direction > 0 ? 1 : -1) * small_change_);
}

void ScrollBarModel::UserTrough(int direction) {
  const int sign = (max_ >= min_) ? 1 : -1;
  SetFromUser(value_ + sign * (direction > 0 ? 1 : -1) * large_change_);
}

void ScrollBarModel::UserDrag(Integer v) {
  if (!dragging_) {
    dragging_ = true;
    drag_start_ = value_;
  }
  const Integer held = Clamp(v);
  if (held == value_) return;
  value_ = held;
  Fire(Scroll);
  Notify();
}

void ScrollBarModel::UserDragEnd() {
  if (!dragging_) return;
  dragging_ = false;
  if (value_ != drag_start_) Fire(Change);
  Notify();
}

// ---- CheckButtonModel -------------------------------------------------------

void CheckButtonModel::Value(Integer v) {
  if (v != 0 && v != 1) Raise(kErrInvalidPropertyValue);
  if (v == value_) return;
  value_ = v;
  Fire(Click);
  Fire(Mirror);
}

void CheckButtonModel::UserClick() {
  Value(value_ == 0 ? 1 : 0);
}

// ---- MenuItemModel ----------------------------------------------------------

void MenuItemModel::Checked(bool v) {
  checked_ = v;
  Fire(Mirror);
}

void MenuItemModel::Enabled(bool v) {
  enabled_ = v;
  Fire(Mirror);
}

void MenuItemModel::Caption(std::string v) {
  caption_ = std::move(v);
  Fire(Mirror);
}

void MenuItemModel::UserClick() {
  if (enabled_) Fire(Click);
}

// ---- PictureBoxModel --------------------------------------------------------

void PictureBoxModel::Notify() {
  Fire(Mirror);
}

void PictureBoxModel::FollowMode() {
  if (scale_mode_ == kScaleUser) return;
  const Long factor = scale_mode_ == kScaleTwips ? kTwipsPerPixel : 1;
  scale_left_ = 0;
  scale_top_ = 0;
  scale_width_ = static_cast<Single>(width_ * factor);
  scale_height_ = static_cast<Single>(height_ * factor);
}

void PictureBoxModel::Left(Long v) {
  left_ = v;
  Notify();
}

void PictureBoxModel::Top(Long v) {
  top_ = v;
  Notify();
}

void PictureBoxModel::Width(Long v) {
  if (v < 0) Raise(kErrInvalidPropertyValue);
  width_ = v;
  FollowMode();
  Notify();
}

void PictureBoxModel::Height(Long v) {
  if (v < 0) Raise(kErrInvalidPropertyValue);
  height_ = v;
  FollowMode();
  Notify();
}

void PictureBoxModel::Move(Long left, Long top, Long width, Long height) {
  if (width < 0 || height < 0) Raise(kErrInvalidPropertyValue);
  left_ = left;
  top_ = top;
  width_ = width;
  height_ = height;
  FollowMode();
  Notify();
}

void PictureBoxModel::ScaleMode(Integer mode) {
  if (mode != kScaleUser && mode != kScaleTwips && mode != kScalePixels) {
    Raise(kErrInvalidPropertyValue);
  }
  scale_mode_ = mode;
  FollowMode();
  Notify();
}

void PictureBoxModel::ScaleLeft(Single v) {
  scale_mode_ = kScaleUser;
  scale_left_ = v;
  Notify();
}

void PictureBoxModel::ScaleTop(Single v) {
  scale_mode_ = kScaleUser;
  scale_top_ = v;
  Notify();
}

void PictureBoxModel::ScaleWidth(Single v) {
  if (v == 0) Raise(kErrInvalidPropertyValue);
  scale_mode_ = kScaleUser;
  scale_width_ = v;
  Notify();
}

void PictureBoxModel::ScaleHeight(Single v) {
  if (v == 0) Raise(kErrInvalidPropertyValue);
  scale_mode_ = kScaleUser;
  scale_height_ = v;
  Notify();
}

Single PictureBoxModel::ToScaleX(double pixel_x) const {
  if (width_ == 0) return scale_left_;
  return static_cast<Single>(scale_left_ + pixel_x * scale_width_ / width_);
}

Single PictureBoxModel::ToScaleY(double pixel_y) const {
  if (height_ == 0) return scale_top_;
  return static_cast<Single>(scale_top_ + pixel_y * scale_height_ / height_);
}

double PictureBoxModel::ToPixelX(Single x) const {
  if (scale_width_ == 0) return 0;
  return (static_cast<double>(x) - scale_left_) * width_ / scale_width_;
}

double PictureBoxModel::ToPixelY(Single y) const {
  if (scale_height_ == 0) return 0;
  return (static_cast<double>(y) - scale_top_) * height_ / scale_height_;
}

void PictureBoxModel::MousePointer(Integer v) {
  mouse_pointer_ = v;
  Notify();
}

void PictureBoxModel::MouseIcon(Long id) {
  mouse_icon_ = id;
  Notify();
}

void PictureBoxModel::AutoRedraw(bool v) {
  auto_redraw_ = v;
  Notify();
}

void PictureBoxModel::Visible(bool v) {
  visible_ = v;
  Notify();
}

// ---- StatusBarModel ---------------------------------------------------------

StatusBarModel::StatusBarModel(int panel_count)
    : texts_(static_cast<std::size_t>(std::max(panel_count, 1))) {}

const std::string& StatusBarModel::PanelText(int index) const {
  if (index < 1 || index > PanelCount()) Raise(kErrSubscript);
  return texts_[static_cast<std::size_t>(index - 1)];
}

void StatusBarModel::PanelText(int index, std::string text) {
  if (index < 1 || index > PanelCount()) Raise(kErrSubscript);
  texts_[static_cast<std::size_t>(index - 1)] = std::move(text);
  Fire(Mirror);
}

// ---- TimerModel -------------------------------------------------------------

void TimerModel::Enabled(bool v) {
  enabled_ = v;
  Fire(Mirror);
}

void TimerModel::Interval(Long ms) {
  if (ms < 0) Raise(kErrInvalidPropertyValue);
  interval_ = ms;
  Fire(Mirror);
}

void TimerModel::Tick() {
  if (enabled_ && interval_ > 0) Fire(Timer);
}

// ---- Screen -----------------------------------------------------------------

void ScreenModel::MousePointer(Integer v) {
  mouse_pointer_ = v;
  Fire(Mirror);
}

ScreenModel& Screen() {
  static ScreenModel screen;
  return screen;
}

}  // namespace quelo
