// The main window on screen: FLTK widgets that mirror Quelo_Form's control
// models and forward user input to them. The window owns the form; widget
// callbacks are static and only forward to member functions, which run the
// model's event through the toolkit boundary (RunHandler).
#pragma once

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Menu_Bar.H>
#include <FL/Fl_Scrollbar.H>
#include <FL/Fl_Toggle_Button.H>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "form/quelo_form.h"
#include "viewer/fltk_dialogs.h"
#include "viewer/fltk_face_window.h"

namespace quelo {

// A scroll bar that reports arrow and trough clicks, thumb drags and the end
// of a drag to its model.
class ModelScrollbar : public Fl_Scrollbar {
 public:
  ModelScrollbar(ScrollBarModel& model, int x, int y, int w, int h);
  int handle(int event) override;
  // Takes Min, Max, Value and SmallChange from the model.
  void Mirror();
  // The widget moved its value: tell the model how.
  void Moved();

 private:
  ScrollBarModel& model_;
};

class FltkMainWindow : public Fl_Double_Window, public FormHost {
 public:
  static constexpr int kMenuBarHeight = 25;

  FltkMainWindow();
  ~FltkMainWindow() override;

  Quelo_Form& form() { return *form_; }

  // FormHost.
  void Show() override;
  void Refresh() override;
  void FormSizeChanged() override;
  void UnloadAllForms() override;
  void ShowInfoBox() override;

  void resize(int x, int y, int w, int h) override;
  int handle(int event) override;

 private:
  static void OnWidget(Fl_Widget* widget, void* self);
  static void OnMenu(Fl_Widget* widget, void* self);
  static void OnClose(Fl_Widget* widget, void* self);
  static void OnSpinTimer(void* self);
  static void OnApplySize(void* self);

  void BuildMenu();
  void BuildToolbar();
  void WireMirrors();
  void WidgetEvent(Fl_Widget* widget);
  void MenuEvent();
  void SpinTick();
  void ApplyFormSize();
  void PlaceWidgets();
  void MirrorAll();
  void MirrorMenu();
  void MirrorTimer();
  void MirrorStatusBar();
  template <typename Model>
  void MirrorButton(Fl_Button* button, const Model& model);

  FltkCommonDialog dialog_;
  Fl_Menu_Bar* menu_ = nullptr;
  Fl_Button* open_ = nullptr;
  std::array<Fl_Button*, 5> views_{};
  Fl_Toggle_Button* spin_ = nullptr;
  std::array<Fl_Toggle_Button*, 4> modes_{};
  ModelScrollbar* zoom_ = nullptr;
  ModelScrollbar* hor_ = nullptr;
  ModelScrollbar* ver_ = nullptr;
  Fl_Box* status_ = nullptr;
  FltkFaceWindow* face_ = nullptr;
  std::unique_ptr<Quelo_Form> form_;
  std::unique_ptr<FltkInfoBoxWindow> info_box_;

  std::map<Fl_Widget*, std::function<void()>> actions_;  // user input per widget
  std::vector<MenuItemModel*> menu_models_;              // per menu index, null if none
  bool timer_running_ = false;
  bool unloaded_ = false;
};

}  // namespace quelo
