// The real program on an X display (the test command's Xvfb): started on the
// demo scene, driven by real input events (XTEST, through xdotool), checked
// on screenshots of its window. Screenshots are left in
// <build>/tests/viewer/screens/ for a look.
//
// Without DISPLAY the tests skip, unless QUELO_REQUIRE_DISPLAY=1.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "image/png_image.h"

// Last: Xlib's macros (None, Status, ...) would break the headers above.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

extern char** environ;

namespace quelo::testing {
namespace {

using namespace std::chrono_literals;

struct Rect {
  int x = 0, y = 0, w = 0, h = 0;  // on the screen
};

struct Colour {
  int r = 0, g = 0, b = 0;
  bool operator==(const Colour&) const = default;
};

bool Near(Colour a, Colour b, int tolerance = 24) {
  return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance &&
         std::abs(a.b - b.b) <= tolerance;
}

bool IsWhite(Colour c) {
  return c.r >= 245 && c.g >= 245 && c.b >= 245;
}

// A screenshot of one rectangle of the screen.
struct Shot {
  Rect area;
  RgbImage image;
  Colour At(int x, int y) const {  // relative to the area
    const auto* p = image.Pixel(x, y);
    return {p[0], p[1], p[2]};
  }
  // Pixels of the scene: neither the white background nor near-white.
  int SceneCount(const Rect& r) const {
    int count = 0;
    for (int y = r.y; y < r.y + r.h; ++y) {
      for (int x = r.x; x < r.x + r.w; ++x) count += IsWhite(At(x, y)) ? 0 : 1;
    }
    return count;
  }
  int WhiteCount(const Rect& r) const { return r.w * r.h - SceneCount(r); }
  int Differences(const Shot& other) const {
    int count = 0;
    for (std::size_t i = 0; i < image.rgb.size(); i += 3) {
      count += image.rgb[i] != other.image.rgb[i] || image.rgb[i + 1] != other.image.rgb[i + 1] ||
               image.rgb[i + 2] != other.image.rgb[i + 2];
    }
    return count;
  }
};

class ViewerWindow : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') {
      const char* require = std::getenv("QUELO_REQUIRE_DISPLAY");
      if (require != nullptr && std::string(require) == "1") FAIL() << "DISPLAY is not set";
      GTEST_SKIP() << "no DISPLAY: the window tests need an X server (scripts/test.sh starts Xvfb)";
    }
    // An X server without -noreset starts over when its last client leaves
    // (as the previous test's did) and refuses connections meanwhile.
    for (int i = 0; i < 60 && dpy_ == nullptr; ++i) {
      dpy_ = XOpenDisplay(nullptr);
      if (dpy_ == nullptr) std::this_thread::sleep_for(50ms);
    }
    ASSERT_NE(dpy_, nullptr) << "cannot open display " << display;
    std::filesystem::create_directories(ScreensDir());
  }

  void TearDown() override {
    if (pid_ > 0) {
      kill(pid_, SIGTERM);
      int status = 0;
      waitpid(pid_, &status, 0);
    }
    if (dpy_ != nullptr) XCloseDisplay(dpy_);
  }

  static std::string ScreensDir() { return QUELO_BINARY_DIR "/tests/viewer/screens"; }

  // Starts quelo with the given arguments and waits for its main window.
  void Start(const std::vector<std::string>& args) {
    std::vector<std::string> argv_strings = {QUELO_BINARY_DIR "/viewer/quelo"};
    argv_strings.insert(argv_strings.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& s : argv_strings) argv.push_back(s.data());
    argv.push_back(nullptr);
    ASSERT_EQ(posix_spawn(&pid_, argv[0], nullptr, nullptr, argv.data(), environ), 0);
    // The main window is the "Quelo" window with the drawing area in it (a
    // message box has the same title).
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (main_ == 0 && std::chrono::steady_clock::now() < end) {
      for (Window w : TopLevels("Quelo")) {
        if (ChildWindowOf(w) != 0) main_ = w;
      }
      if (main_ == 0) std::this_thread::sleep_for(50ms);
    }
    ASSERT_NE(main_, 0u) << "no main window";
    face_ = ChildWindowOf(main_);
    // The first picture: the drawing area stops being black.
    bool painted = false;
    while (!painted && std::chrono::steady_clock::now() < end) {
      const Shot face = Grab(ScreenRect(face_));
      for (std::size_t i = 0; i < face.image.rgb.size() && !painted; ++i) {
        painted = face.image.rgb[i] != 0;
      }
      if (!painted) std::this_thread::sleep_for(50ms);
    }
    ASSERT_TRUE(painted) << "the drawing area was never painted";
  }

  // The n-th (1-based, in stacking order) viewable top-level window with this
  // name, once it is there.
  Window WaitForWindow(const std::string& name, int n, std::chrono::seconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < end) {
      auto found = TopLevels(name);
      if (static_cast<int>(found.size()) >= n) return found[static_cast<std::size_t>(n - 1)];
      std::this_thread::sleep_for(50ms);
    }
    return 0;
  }

  std::vector<Window> TopLevels(const std::string& name) {
    std::vector<Window> found;
    Window root = 0, parent = 0, *children = nullptr;
    unsigned count = 0;
    XQueryTree(dpy_, DefaultRootWindow(dpy_), &root, &parent, &children, &count);
    for (unsigned i = 0; i < count; ++i) {
      XWindowAttributes a{};
      if (!XGetWindowAttributes(dpy_, children[i], &a) || a.map_state != IsViewable) continue;
      char* title = nullptr;
      if (XFetchName(dpy_, children[i], &title) && title != nullptr) {
        if (name == title) found.push_back(children[i]);
        XFree(title);
      }
    }
    if (children != nullptr) XFree(children);
    return found;
  }

  // The drawing area: the one child X window of the main window.
  Window ChildWindowOf(Window w) {
    Window root = 0, parent = 0, *children = nullptr;
    unsigned count = 0;
    XQueryTree(dpy_, w, &root, &parent, &children, &count);
    const Window face = count == 1 ? children[0] : 0;
    if (children != nullptr) XFree(children);
    return face;
  }

  Rect ScreenRect(Window w) {
    XWindowAttributes a{};
    XGetWindowAttributes(dpy_, w, &a);
    int x = 0, y = 0;
    Window child = 0;
    XTranslateCoordinates(dpy_, w, DefaultRootWindow(dpy_), 0, 0, &x, &y, &child);
    return {x, y, a.width, a.height};
  }

  Shot Grab(const Rect& r) {
    XImage* image = XGetImage(dpy_, DefaultRootWindow(dpy_), r.x, r.y, static_cast<unsigned>(r.w),
                              static_cast<unsigned>(r.h), AllPlanes, ZPixmap);
    Shot shot{r, {r.w, r.h, {}}};
    shot.image.rgb.reserve(static_cast<std::size_t>(r.w) * r.h * 3);
    for (int y = 0; y < r.h; ++y) {
      for (int x = 0; x < r.w; ++x) {
        const unsigned long p = XGetPixel(image, x, y);
        shot.image.rgb.push_back(static_cast<std::uint8_t>((p & image->red_mask) >> 16));
        shot.image.rgb.push_back(static_cast<std::uint8_t>((p & image->green_mask) >> 8));
        shot.image.rgb.push_back(static_cast<std::uint8_t>(p & image->blue_mask));
      }
    }
    XDestroyImage(image);
    return shot;
  }

  // The main window once the picture has settled: the program had time to
  // take the input, then two grabs in a row are equal.
  Shot Settled(const std::string& name) {
    XSync(dpy_, False);
    std::this_thread::sleep_for(200ms);
    Shot last = Grab(ScreenRect(main_));
    for (int i = 0; i < 40; ++i) {
      std::this_thread::sleep_for(150ms);
      Shot next = Grab(ScreenRect(main_));
      const bool same = next.Differences(last) == 0;
      last = std::move(next);
      if (same) break;
    }
    WritePng(ScreensDir() + "/" + name + ".png", last.image);
    return last;
  }

  // The drawing area within a screenshot of the main window.
  Rect FaceIn(const Shot& shot) {
    const Rect face = ScreenRect(face_);
    return {face.x - shot.area.x, face.y - shot.area.y, face.w, face.h};
  }

  static void Xdo(const std::string& args) {
    const std::string line = "xdotool " + args;
    ASSERT_EQ(std::system(line.c_str()), 0) << line;
  }
  void Focus(Window w) { Xdo("windowfocus --sync " + std::to_string(w)); }
  // Moves the mouse to (x, y) of window w.
  void MouseTo(Window w, int x, int y) {
    Xdo("mousemove --sync --window " + std::to_string(w) + " " + std::to_string(x) + " " +
        std::to_string(y));
  }
  void ClickAt(Window w, int x, int y) {
    MouseTo(w, x, y);
    Xdo("click 1");
  }

  bool Running() { return pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == 0; }

  Display* dpy_ = nullptr;
  pid_t pid_ = 0;
  Window main_ = 0;
  Window face_ = 0;
};

std::string Demo() {
  const std::string demo = QUELO_SOURCE_DIR "/examples/demo.qgl";
  return std::filesystem::exists(demo) ? demo : QUELO_SOURCE_DIR "/examples/example.qgl";
}

// Toolbar and mode buttons, window coordinates: the menu bar is 25 pixels,
// the toolbar buttons stand at top 8 in the 70-pixel strip, the mode buttons
// in the 60-pixel strip below it.
constexpr int kToolbarY = 25 + 8 + 26;
constexpr int kZViewX = 200 + 30;
constexpr int kZoomInModeX = 30, kZoomInModeY = 25 + 70 + 56 + 26;

TEST_F(ViewerWindow, ShowsTheSceneInTheDrawingAreaFramedByTheScrollBars) {
  Start({Demo()});
  const Shot shot = Settled("start");
  const Rect face = FaceIn(shot);
  ASSERT_EQ(TopLevels("Quelo").size(), 1u) << "a message box came up at start";

  // The drawing area: right of the zoom bar, under the toolbar, above the
  // horizontal-angle bar and the status bar.
  EXPECT_EQ(face.x, 60 + 17);
  EXPECT_EQ(face.y, 25 + 70);
  EXPECT_EQ(face.w, shot.area.w - 60 - 2 * 17);
  EXPECT_EQ(face.h, shot.area.h - 25 - 70 - 17 - 24);

  // A white background with the scene in it, margins all round.
  const int scene = shot.SceneCount(face);
  EXPECT_GT(scene, face.w * face.h / 50);
  EXPECT_LT(scene, face.w * face.h / 2);
  for (auto [x, y] :
       {std::pair{4, 4}, {face.w - 5, 4}, {4, face.h - 5}, {face.w - 5, face.h - 5}}) {
    EXPECT_TRUE(IsWhite(shot.At(face.x + x, face.y + y))) << x << "," << y;
  }
  // The three scroll bars frame it: no white background under them.
  const Rect zoom{face.x - 17, face.y, 17, face.h};
  const Rect ver{face.x + face.w, face.y, 17, face.h};
  const Rect hor{face.x, face.y + face.h, face.w, 17};
  for (const Rect& bar : {zoom, ver, hor}) {
    EXPECT_LT(shot.WhiteCount(bar), bar.w * bar.h / 20);
  }
}

TEST_F(ViewerWindow, ShortcutMenuAndToolbarButtonChangeTheView) {
  Start({Demo()});
  const Shot start = Settled("shortcut-0-start");
  const Rect face = FaceIn(start);

  Focus(main_);
  Xdo("key F11");  // View > Zoom In
  const Shot zoomed = Settled("shortcut-1-f11");
  EXPECT_GT(zoomed.SceneCount(face), start.SceneCount(face) * 5 / 4);

  Xdo("key alt+v f");  // View > Full View through the menu's mnemonics
  const Shot full = Settled("shortcut-2-full-view");
  EXPECT_LT(full.Differences(start), face.w * face.h / 100);

  ClickAt(main_, kZViewX, kToolbarY);  // "z-View": the plan
  const Shot plan = Settled("shortcut-3-z-view");
  EXPECT_GT(plan.Differences(full), face.w * face.h / 50);
  EXPECT_TRUE(Running());
}

TEST_F(ViewerWindow, ScrollBarClicksZoomAndTurn) {
  Start({Demo()});
  const Shot start = Settled("scroll-0-start");
  const Rect face = FaceIn(start);

  // The zoom bar's trough near its top: one large step towards Min, in.
  ClickAt(main_, face.x - 9, face.y + 40);
  const Shot in = Settled("scroll-1-zoom-trough");
  EXPECT_GT(in.SceneCount(face), start.SceneCount(face) * 6 / 5);

  // The horizontal-angle bar's left arrow: one degree towards 360.
  ClickAt(main_, face.x + 8, face.y + face.h + 8);
  const Shot turned = Settled("scroll-2-angle-arrow");
  EXPECT_GT(turned.Differences(in), 100);
  EXPECT_TRUE(Running());
}

TEST_F(ViewerWindow, ZoomRectangleZoomsIntoIt) {
  Start({Demo()});
  const Shot start = Settled("rectangle-0-start");
  const Rect face = FaceIn(start);

  // A spot well inside one coloured surface of the scene.
  std::optional<std::pair<int, int>> spot;
  for (int y = face.h / 4; y < face.h * 3 / 4 && !spot; y += 4) {
    for (int x = face.w / 4; x < face.w * 3 / 4 && !spot; x += 4) {
      const Colour c = start.At(face.x + x, face.y + y);
      if (IsWhite(c)) continue;
      bool uniform = true;
      for (int dy = -12; dy <= 12 && uniform; dy += 3) {
        for (int dx = -12; dx <= 12 && uniform; dx += 3) {
          uniform = Near(start.At(face.x + x + dx, face.y + y + dy), c, 8);
        }
      }
      if (uniform) spot = std::pair{x, y};
    }
  }
  ASSERT_TRUE(spot.has_value()) << "no uniformly coloured surface in the picture";
  const auto [sx, sy] = *spot;
  const Colour colour = start.At(face.x + sx, face.y + sy);

  ClickAt(main_, kZoomInModeX, kZoomInModeY);  // the "Zoom In" mode button
  MouseTo(face_, sx - 60, sy - 40);
  Xdo("mousedown 1");
  MouseTo(face_, sx + 20, sy + 10);
  MouseTo(face_, sx + 60, sy + 40);
  const Shot band = Settled("rectangle-1-band");
  // The band: a dashed outline from the press, along its top edge.
  int black = 0;
  for (int y = sy - 41; y <= sy - 39; ++y) {
    for (int x = sx - 50; x < sx; ++x) black += band.At(face.x + x, face.y + y) == Colour{};
  }
  EXPECT_GT(black, 10);
  Xdo("mouseup 1");

  const Shot zoomed = Settled("rectangle-2-zoomed");
  EXPECT_GT(zoomed.SceneCount(face), start.SceneCount(face) * 3 / 2);
  // What was in the rectangle's middle is now in the middle of the view.
  EXPECT_TRUE(Near(zoomed.At(face.x + face.w / 2, face.y + face.h / 2), colour));
}

TEST_F(ViewerWindow, RunTimeErrorShowsAMessageAndTheProgramGoesOn) {
  Start({QUELO_BINARY_DIR "/tests/viewer/no-such-scene.qgl"});
  const Window box = WaitForWindow("Quelo", 2, 10s);
  ASSERT_NE(box, 0u) << "no message box";
  const Window message = box == main_ ? TopLevels("Quelo")[0] : box;
  Settled("error-0-message");
  Focus(message);
  Xdo("key Return");
  for (int i = 0; i < 50 && TopLevels("Quelo").size() > 1; ++i) std::this_thread::sleep_for(50ms);
  ASSERT_EQ(TopLevels("Quelo").size(), 1u) << "the message box did not close";

  // Still running and answering: the axes alone, then zoomed in.
  const Shot empty = Settled("error-1-after");
  const Rect face = FaceIn(empty);
  Focus(main_);
  Xdo("key F11");
  const Shot zoomed = Settled("error-2-zoomed");
  EXPECT_GT(zoomed.Differences(empty), 50);
  EXPECT_TRUE(IsWhite(zoomed.At(face.x + 4, face.y + 4)));
  EXPECT_TRUE(Running());
}

}  // namespace
}  // namespace quelo::testing
