// The drawing surface FacePbx on screen: a child window whose X window is
// made with the visual of the framebuffer configuration that the control
// chooses, handed to the control as its GLX surface. It forwards paint and
// mouse events to the form and draws the rubber band over the last picture.
#pragma once

#include <FL/Fl_Window.H>

#include <memory>
#include <optional>

#include "form/quelo_form.h"

namespace quelo {

// Kept out of this header: Xlib's macros (Status, ...) clash with names of
// the form.
class GlxSurface;

class FltkFaceWindow : public Fl_Window, public BandDrawer {
 public:
  FltkFaceWindow(int x, int y, int w, int h);
  ~FltkFaceWindow() override;

  // Set before the window is shown.
  void AttachForm(Quelo_Form* form) { form_ = form; }

  // Creates the X window with the chosen format's visual and makes the GLX
  // surface FacePbx's device context.
  void show() override;
  void hide() override;
  void draw() override;
  int handle(int event) override;

  // The rubber band: a dashed black-and-white outline drawn with Xlib on the
  // window, over the picture that the last swap put back.
  void DrawBox(double x1, double y1, double x2, double y2) override;

  // Shows the cursor that FacePbx's MousePointer and MouseIcon ask for while
  // the mouse is over the drawing area.
  void UpdateCursor();
  // Lets go of the X window before it goes (after the control shut down).
  void ReleaseSurface();

  GlxSurface* surface() const { return surface_.get(); }

 private:
  struct Band {
    double x1, y1, x2, y2;
  };
  void DrawBand(const Band& band);
  void Forward(int event);

  Quelo_Form* form_ = nullptr;
  std::unique_ptr<GlxSurface> surface_;
  std::optional<Band> band_;  // shown now; drawn again after an expose
  unsigned long gc_ = 0;      // X GC of the band, made on first use
  bool pointer_inside_ = false;
};

}  // namespace quelo
