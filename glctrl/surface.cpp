#include "glctrl/surface.h"

#include <cstring>

namespace quelo {

namespace {

// What this thread made current through a surface. The platform has the last
// word: CurrentSurface() asks the surface whether it still holds the context.
DrawingSurface* g_current_surface = nullptr;
RenderingContext* g_current_context = nullptr;

}  // namespace

DrawingSurface::~DrawingSurface() {
  // Derived surfaces release their platform state themselves; here only the
  // bookkeeping must not point at a dead surface.
  if (g_current_surface == this) {
    g_current_surface = nullptr;
    g_current_context = nullptr;
  }
}

bool DrawingSurface::MakeCurrent(RenderingContext* rc) {
  if (rc == nullptr) return MakeNoneCurrent();
  // Another surface (maybe of another API) must let go before this one takes
  // over; on the same surface the platform switches contexts itself.
  if (g_current_surface != nullptr && g_current_surface != this) MakeNoneCurrent();
  if (!DoMakeCurrent(rc)) {
    // A failed switch leaves nothing current.
    DoReleaseCurrent();
    g_current_surface = nullptr;
    g_current_context = nullptr;
    return false;
  }
  g_current_surface = this;
  g_current_context = rc;
  return true;
}

PaletteHandle DrawingSurface::CreatePalette(const LOGPALETTE&) {
  return 0;
}
PaletteHandle DrawingSurface::SelectPalette(PaletteHandle, bool) {
  return 0;
}
int DrawingSurface::RealizePalette() {
  return 0;
}

DrawingSurface* CurrentSurface() {
  if (g_current_surface == nullptr) return nullptr;
  if (!g_current_surface->IsCurrentOnPlatform(g_current_context)) return nullptr;
  return g_current_surface;
}

RenderingContext* CurrentContext() {
  return CurrentSurface() != nullptr ? g_current_context : nullptr;
}

bool MakeNoneCurrent() {
  if (g_current_surface != nullptr) g_current_surface->DoReleaseCurrent();
  g_current_surface = nullptr;
  g_current_context = nullptr;
  return true;
}

bool DeleteContext(RenderingContext* rc) {
  if (rc == nullptr) return false;
  if (rc == g_current_context) MakeNoneCurrent();
  delete rc;
  return true;
}

bool ExtensionListHas(const char* list, const char* word) {
  if (list == nullptr) return false;
  const std::size_t n = std::strlen(word);
  for (const char* p = list; (p = std::strstr(p, word)) != nullptr; p += n) {
    const bool starts = p == list || p[-1] == ' ';
    const bool ends = p[n] == '\0' || p[n] == ' ';
    if (starts && ends) return true;
  }
  return false;
}

}  // namespace quelo
