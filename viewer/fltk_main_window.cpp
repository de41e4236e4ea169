#include "viewer/fltk_main_window.h"

#include <FL/Fl.H>
#include <FL/x.H>

#include <string>

namespace quelo {
namespace {

using namespace form_design;

int ShortcutKey(MenuShortcut shortcut) {
  switch (shortcut) {
    case MenuShortcut::kCtrlO:
      return FL_CTRL + 'o';
    case MenuShortcut::kF11:
      return FL_F + 11;
    case MenuShortcut::kF12:
      return FL_F + 12;
    default:
      return 0;
  }
}

// FLTK draws "@..." as a symbol; a path may contain '@'.
std::string LiteralLabel(const std::string& text) {
  std::string out;
  for (char c : text) {
    out += c;
    if (c == '@') out += '@';
  }
  return out;
}

}  // namespace

// ---- Scroll bars ------------------------------------------------------------------------

ModelScrollbar::ModelScrollbar(ScrollBarModel& model, int x, int y, int w, int h)
    : Fl_Scrollbar(x, y, w, h), model_(model) {
  slider_size(0.08);
  when(FL_WHEN_CHANGED);
  clear_visible_focus();
}

int ModelScrollbar::handle(int event) {
  const int used = Fl_Scrollbar::handle(event);
  // The thumb let go: the model raises Change once if the drag moved it.
  if (event == FL_RELEASE) RunHandler([this] { model_.UserDragEnd(); });
  return used;
}

void ModelScrollbar::Mirror() {
  bounds(model_.Min(), model_.Max());
  linesize(model_.SmallChange());
  value(model_.Value());
}

void ModelScrollbar::Moved() {
  const int target = static_cast<int>(value());
  const int delta = target - model_.Value();
  if (delta == 0) return;
  RunHandler([&] {
    if (Fl::event() == FL_DRAG) {
      model_.UserDrag(static_cast<Integer>(target));
      return;
    }
    // A click: FLTK moved by its line size on an arrow and by a page in the
    // trough; the model takes its own SmallChange or LargeChange.
    const bool towards_max = (model_.Max() >= model_.Min()) == (delta > 0);
    const int direction = towards_max ? 1 : -1;
    if (std::abs(delta) == linesize()) {
      model_.UserArrow(direction);
    } else {
      model_.UserTrough(direction);
    }
  });
  Mirror();
}

// ---- The window -------------------------------------------------------------------------

FltkMainWindow::FltkMainWindow()
    : Fl_Double_Window(kStartWidth, kStartHeight + kMenuBarHeight, "Quelo") {
  xclass("quelo");
  face_ = new FltkFaceWindow(0, 0, 10, 10);
  form_ = std::make_unique<Quelo_Form>(*this, dialog_, *face_);
  face_->AttachForm(form_.get());

  menu_ = new Fl_Menu_Bar(0, 0, w(), kMenuBarHeight);
  BuildMenu();
  BuildToolbar();
  zoom_ = new ModelScrollbar(form_->Zoom_Scr, 0, 0, 10, 10);
  zoom_->type(FL_VERTICAL);
  hor_ = new ModelScrollbar(form_->Hor_Scr, 0, 0, 10, 10);
  hor_->type(FL_HORIZONTAL);
  ver_ = new ModelScrollbar(form_->Ver_Scr, 0, 0, 10, 10);
  ver_->type(FL_VERTICAL);
  for (auto* bar : {zoom_, hor_, ver_}) {
    bar->callback(OnWidget, this);
    actions_[bar] = [bar] { bar->Moved(); };
  }
  status_ = new Fl_Box(0, 0, 10, kStatusBarHeight);
  status_->box(FL_THIN_DOWN_BOX);
  status_->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
  status_->labelsize(12);
  end();

  // Children keep their places; the form's layout moves them.
  resizable(nullptr);
  size_range(kToolbarWidth, kToolbarHeight + kToolStripHeight + kStatusBarHeight + kMenuBarHeight);
  callback(OnClose, this);
  WireMirrors();
  MirrorAll();
}

FltkMainWindow::~FltkMainWindow() {
  Fl::remove_timeout(OnSpinTimer, this);
  Fl::remove_timeout(OnApplySize, this);
  Screen().Mirror = nullptr;
}

void FltkMainWindow::BuildMenu() {
  auto lines = form_->MenuBar();
  for (std::size_t n = 0; n < lines.size(); ++n) {
    const auto& line = lines[n];
    if (line.item == nullptr) continue;
    int flags = line.check_mark ? FL_MENU_TOGGLE : 0;
    if (n + 1 < lines.size() && lines[n + 1].item == nullptr) flags |= FL_MENU_DIVIDER;
    const std::string path = std::string(line.menu_caption) + "/" + line.item->Caption();
    const int index = menu_->add(path.c_str(), ShortcutKey(line.shortcut), OnMenu, this, flags);
    if (index >= static_cast<int>(menu_models_.size())) {
      menu_models_.resize(static_cast<std::size_t>(index) + 1, nullptr);
    }
    menu_models_[static_cast<std::size_t>(index)] = line.item;
  }
}

void FltkMainWindow::BuildToolbar() {
  auto add_button = [this](Fl_Button* button, std::function<void()> action) {
    button->callback(OnWidget, this);
    button->clear_visible_focus();
    button->labelsize(12);
    actions_[button] = std::move(action);
  };
  open_ = new Fl_Button(0, 0, 10, 10);
  add_button(open_, [this] { form_->Open_Cbt.UserClick(); });
  for (std::size_t n = 0; n < views_.size(); ++n) {
    views_[n] = new Fl_Button(0, 0, 10, 10);
    add_button(views_[n], [this, n] { form_->View_Cbt[n].UserClick(); });
  }
  // A pressed check-style button should stand out from the others.
  const Fl_Color pressed = fl_rgb_color(170, 200, 240);
  spin_ = new Fl_Toggle_Button(0, 0, 10, 10);
  add_button(spin_, [this] { form_->Spin_Chk.UserClick(); });
  spin_->selection_color(pressed);
  for (std::size_t n = 0; n < modes_.size(); ++n) {
    modes_[n] = new Fl_Toggle_Button(0, 0, 10, 10);
    add_button(modes_[n], [this, n] { form_->Mouse_Chk[n].UserClick(); });
    modes_[n]->labelsize(10);  // "Zoom Out" fits the 60-pixel button
    modes_[n]->selection_color(pressed);
  }
}

void FltkMainWindow::WireMirrors() {
  Quelo_Form& f = *form_;
  for (auto* item : menu_models_) {
    if (item != nullptr) item->Mirror = [this] { MirrorMenu(); };
  }
  f.Spin_Chk.Mirror = [this] { MirrorButton(spin_, form_->Spin_Chk); };
  for (std::size_t n = 0; n < modes_.size(); ++n) {
    f.Mouse_Chk[n].Mirror = [this, n] { MirrorButton(modes_[n], form_->Mouse_Chk[n]); };
  }
  f.Zoom_Scr.Mirror = [this] { zoom_->Mirror(); };
  f.Hor_Scr.Mirror = [this] { hor_->Mirror(); };
  f.Ver_Scr.Mirror = [this] { ver_->Mirror(); };
  f.Main_StBr.Mirror = [this] { MirrorStatusBar(); };
  f.Spin_Tmr.Mirror = [this] { MirrorTimer(); };
  f.FacePbx.Mirror = [this] { face_->UpdateCursor(); };
  Screen().Mirror = [this] {
    face_->UpdateCursor();
    // The hourglass must reach the screen before a long load starts.
    if (Screen().MousePointer() == kPointerHourglass && fl_display != nullptr) XFlush(fl_display);
  };
}

// ---- Forwarding ---------------------------------------------------------------------------

void FltkMainWindow::OnWidget(Fl_Widget* widget, void* self) {
  static_cast<FltkMainWindow*>(self)->WidgetEvent(widget);
}

void FltkMainWindow::OnMenu(Fl_Widget* /*menu*/, void* self) {
  static_cast<FltkMainWindow*>(self)->MenuEvent();
}

void FltkMainWindow::OnClose(Fl_Widget* /*window*/, void* self) {
  // FLTK closes windows on Escape; the viewer only on the close button.
  if (Fl::event() == FL_SHORTCUT && Fl::event_key() == FL_Escape) return;
  static_cast<FltkMainWindow*>(self)->UnloadAllForms();
}

void FltkMainWindow::OnSpinTimer(void* self) {
  static_cast<FltkMainWindow*>(self)->SpinTick();
}

void FltkMainWindow::OnApplySize(void* self) {
  static_cast<FltkMainWindow*>(self)->ApplyFormSize();
}

void FltkMainWindow::WidgetEvent(Fl_Widget* widget) {
  auto action = actions_.find(widget);
  if (action != actions_.end()) RunHandler(action->second);
  MirrorAll();  // a toggle FLTK flipped stays as the model says
}

void FltkMainWindow::MenuEvent() {
  const Fl_Menu_Item* chosen = menu_->mvalue();
  if (chosen == nullptr) return;
  const int index = menu_->find_index(chosen);
  if (index >= 0 && index < static_cast<int>(menu_models_.size()) &&
      menu_models_[static_cast<std::size_t>(index)] != nullptr) {
    RunHandler([&] { menu_models_[static_cast<std::size_t>(index)]->UserClick(); });
  }
  MirrorMenu();
}

void FltkMainWindow::SpinTick() {
  RunHandler([this] { form_->Spin_Tmr.Tick(); });
  if (timer_running_) {
    Fl::repeat_timeout(form_->Spin_Tmr.Interval() / 1000.0, OnSpinTimer, this);
  }
}

// ---- FormHost -------------------------------------------------------------------------------

void FltkMainWindow::Show() {
  show();
  face_->show();
}

// The layout moved the controls: put the widgets there and repaint.
void FltkMainWindow::Refresh() {
  PlaceWidgets();
}

void FltkMainWindow::FormSizeChanged() {
  // The window manager's resize is still under way: answer after it.
  if (shown()) {
    Fl::remove_timeout(OnApplySize, this);
    Fl::add_timeout(0.0, OnApplySize, this);
  } else {
    ApplyFormSize();
  }
}

void FltkMainWindow::ApplyFormSize() {
  const int width = form_->ScaleWidth();
  const int height = form_->ScaleHeight() + kMenuBarHeight;
  if (width != w() || height != h()) size(width, height);
}

void FltkMainWindow::UnloadAllForms() {
  if (unloaded_) return;
  unloaded_ = true;
  if (info_box_) info_box_->hide();
  Fl::remove_timeout(OnSpinTimer, this);
  timer_running_ = false;
  RunHandler([this] { form_->Form_Unload(); });
  face_->ReleaseSurface();
  hide();
}

void FltkMainWindow::ShowInfoBox() {
  if (!info_box_) {
    info_box_ = std::make_unique<FltkInfoBoxWindow>();
    // Over the middle of the main window, where the eye already is.
    info_box_->position(x() + (w() - info_box_->w()) / 2, y() + (h() - info_box_->h()) / 3);
  }
  info_box_->show();
}

// ---- Window events --------------------------------------------------------------------------

void FltkMainWindow::resize(int x, int y, int w, int h) {
  const bool sized = w != this->w() || h != this->h();
  Fl_Double_Window::resize(x, y, w, h);
  if (!sized || unloaded_) return;
  form_->FormWidth = w * kTwipsPerPixel;
  form_->FormHeight = (h - kMenuBarHeight) * kTwipsPerPixel;
  RunHandler([this] { form_->Form_Resize(); });
}

int FltkMainWindow::handle(int event) {
  // Iconified and back: the form hears a resize with its window state.
  if ((event == FL_HIDE || event == FL_SHOW) && shown() && !unloaded_) {
    const int result = Fl_Double_Window::handle(event);
    const Integer state = event == FL_HIDE ? 1 : 0;
    if (form_->WindowState != state) {
      form_->WindowState = state;
      RunHandler([this] { form_->Form_Resize(); });
    }
    return result;
  }
  return Fl_Double_Window::handle(event);
}

// ---- Mirrors ------------------------------------------------------------------------------------

void FltkMainWindow::PlaceWidgets() {
  const Quelo_Form& f = *form_;
  const int top = kMenuBarHeight;
  menu_->resize(0, 0, w(), kMenuBarHeight);
  auto place = [top](Fl_Widget* widget, const ControlBounds& b, int left0, int top0) {
    widget->resize(left0 + b.Left, top + top0 + b.Top, b.Width, b.Height);
  };
  place(open_, f.Open_Cbt.Bounds, f.Menu_Pbx.Left(), f.Menu_Pbx.Top());
  for (std::size_t n = 0; n < views_.size(); ++n) {
    place(views_[n], f.View_Cbt[n].Bounds, f.Menu_Pbx.Left(), f.Menu_Pbx.Top());
  }
  place(spin_, f.Spin_Chk.Bounds, f.Menu_Pbx.Left(), f.Menu_Pbx.Top());
  for (std::size_t n = 0; n < modes_.size(); ++n) {
    place(modes_[n], f.Mouse_Chk[n].Bounds, f.Menu2_Pbx.Left(), f.Menu2_Pbx.Top());
  }
  const int cont_left = f.Cont_Pbx.Left(), cont_top = f.Cont_Pbx.Top();
  place(zoom_, f.Zoom_Scr.Bounds, cont_left, cont_top);
  place(hor_, f.Hor_Scr.Bounds, cont_left, cont_top);
  place(ver_, f.Ver_Scr.Bounds, cont_left, cont_top);
  face_->resize(cont_left + f.FacePbx.Left(), top + cont_top + f.FacePbx.Top(), f.FacePbx.Width(),
                f.FacePbx.Height());
  place(status_, f.Main_StBr.Bounds, 0, 0);
  redraw();
}

template <typename Model>
void FltkMainWindow::MirrorButton(Fl_Button* button, const Model& model) {
  button->copy_label(model.Caption.c_str());
  button->copy_tooltip(model.ToolTipText.c_str());
  if constexpr (std::is_same_v<Model, CheckButtonModel>) button->value(model.Value());
}

void FltkMainWindow::MirrorMenu() {
  for (std::size_t n = 0; n < menu_models_.size(); ++n) {
    const MenuItemModel* item = menu_models_[n];
    if (item == nullptr) continue;
    const int index = static_cast<int>(n);
    int flags = menu_->menu()[index].flags;
    flags = item->Checked() ? (flags | FL_MENU_VALUE) : (flags & ~FL_MENU_VALUE);
    flags = item->Enabled() ? (flags & ~FL_MENU_INACTIVE) : (flags | FL_MENU_INACTIVE);
    menu_->mode(index, flags);
  }
}

void FltkMainWindow::MirrorTimer() {
  const auto& timer = form_->Spin_Tmr;
  const bool run = timer.Enabled() && timer.Interval() > 0;
  if (run == timer_running_) return;
  timer_running_ = run;
  Fl::remove_timeout(OnSpinTimer, this);
  if (run) Fl::add_timeout(timer.Interval() / 1000.0, OnSpinTimer, this);
}

void FltkMainWindow::MirrorStatusBar() {
  status_->copy_label(LiteralLabel(" " + form_->Main_StBr.PanelText(1)).c_str());
  status_->redraw();
}

void FltkMainWindow::MirrorAll() {
  Quelo_Form& f = *form_;
  MirrorButton(open_, f.Open_Cbt);
  for (std::size_t n = 0; n < views_.size(); ++n) MirrorButton(views_[n], f.View_Cbt[n]);
  MirrorButton(spin_, f.Spin_Chk);
  for (std::size_t n = 0; n < modes_.size(); ++n) MirrorButton(modes_[n], f.Mouse_Chk[n]);
  zoom_->Mirror();
  hor_->Mirror();
  ver_->Mirror();
  MirrorMenu();
  MirrorTimer();
  MirrorStatusBar();
}

}  // namespace quelo
