// OpenGL_Ctrl: the one component through which everything is drawn, and the
// writer and player of recorded command streams.
//
// Every GL call goes through the dispatch table (gl_dispatch.h), so a tracing
// table shows exactly what would reach GL. The recording methods write their
// command record to the stream file FileHnd while SendToFile is on, and skip
// their GL call while DontSendToGL is on; the pass-through ogl*/oglu* methods
// (GLPassThrough) only call GL. GL-calling methods expect the control's
// context to be current.
//
// The control is a facade: its methods forward to the parts it owns, the
// recorder, the player, the polygon members, the context and the text.
//
// Run-time errors (RuntimeError) come out of the file members (52 no such file
// number, 61 disk full, ...), of the array-taking methods (9) and of replay;
// the handlers named for tessEndPoly, InitRC and SetDCPixelFormat catch their
// own and show a message instead.
#pragma once

#include <GL/gl.h>
#include <GL/glu.h>

#include <span>
#include <string>
#include <vector>

#include "common/numbers.h"
#include "glctrl/bitmap_text.h"
#include "glctrl/control_context.h"
#include "glctrl/generated/gl_passthrough.h"
#include "glctrl/player.h"
#include "glctrl/polygon_members.h"
#include "glctrl/recorder.h"

namespace quelo {

class DrawingSurface;

class OpenGL_Ctrl : public GLPassThrough,
                    public RecordingSwitches,
                    public FileCoordBox,
                    public PolygonMarking {
 public:
  OpenGL_Ctrl();
  ~OpenGL_Ctrl();
  OpenGL_Ctrl(const OpenGL_Ctrl&) = delete;
  OpenGL_Ctrl& operator=(const OpenGL_Ctrl&) = delete;

  // ---- Stream file (SendToFile, DontSendToGL, FileHnd and the FileCoord box
  // are public fields of the bases) ------------------------------------------

  // Empties the disabled-block list, takes a free file number into FileHnd and
  // opens FileName for reading and writing (created when missing, never
  // truncated).
  void FileOpen(const std::string& FileName);
  void FileClose() { recorder_.Close(); }
  Long FileGoto(Long PntrAddr);                            // 1-based; returns 0
  Long FileAddr() { return recorder_.Position(); }         // 1-based position of FileHnd
  void FilePutBeginOfSeq() { recorder_.PutBeginOfSeq(); }  // 756-byte head, when SendToFile
  void FilePutEndOfSeq() { recorder_.PutEndOfSeq(); }      // op 0, length 0, when SendToFile
  void auxPutBlockBegin(Long LBlockID) { recorder_.PutBlockBegin(LBlockID); }
  void auxPutBlockEnd(Long LBlockID) { recorder_.PutBlockEnd(LBlockID); }

  // ---- Recording methods: record (when SendToFile), then call GL (unless
  // DontSendToGL) ------------------------------------------------------------
  void oglBegin(Long mode) { recorder_.Begin(mode); }
  void oglEnd() { recorder_.End(); }
  void oglColor3f(Single red, Single green, Single blue) { recorder_.Color3f(red, green, blue); }
  void oglVertex3f(Single x, Single y, Single z) { recorder_.Vertex3f(x, y, z); }
  // Records params[0..3] whatever pname is; fewer than four elements raise 9.
  void oglMaterialfv(Long face, Long pname, std::span<const Single> params) {
    recorder_.Materialfv(face, pname, params);
  }
  void oglPolygonMode(Long face, Long mode) { recorder_.PolygonMode(face, mode); }
  void oglFrontFace(Long mode) { recorder_.FrontFace(mode); }
  void oglNormal3f(Single nx, Single ny, Single nz) { recorder_.Normal3f(nx, ny, nz); }
  void oglEdgeFlag(bool flag) { recorder_.EdgeFlag(flag); }
  void auxColorLong(Long Clr) { recorder_.ColorLong(Clr); }  // packed 0x00BBGGRR

  // ---- Polygon members (TessFlag_DoInTri and TessInTriColor are public
  // fields of PolygonMarking) ------------------------------------------------
  void tessBeginPoly(Integer nEck) { polygons_.BeginPoly(nEck); }
  void tessVector3d(double X, double Y, double z) { polygons_.Vector3d(X, Y, z); }
  // Takes elements 1, 2, 3 of a 1-based array; a shorter array raises 9.
  void tessVector3dv(std::span<const double> v) { polygons_.Vector3dv(v); }
  void tessEndPoly() { polygons_.EndPoly(); }
  // tessEnable(1) stores -1, which is none of the marking modes 1 to 4: the
  // marking stays off. Modes are chosen by assigning TessFlag_DoInTri directly.
  void tessEnable(Long& Flag) {
    if (Flag == 1) TessFlag_DoInTri = -1;
  }
  void tessDisable(Long& Flag) {
    if (Flag == 1) TessFlag_DoInTri = 0;
  }
  void auxSetTessCallbacks(GLUtesselator* pGLUtesselator) {
    PolygonMembers::SetTessCallbacks(pGLUtesselator);
  }

  // ---- Replay and block switches ---------------------------------------------
  // Plays the stream at the current position of FileHnd.
  void FileReadToGL() { player_.Play(StreamFileOf(*this)); }
  bool auxBlockEnabled(Long LBlockID) const { return player_.BlockEnabled(LBlockID); }
  void auxBlockEnabled(Long LBlockID, bool BEnabled) {
    player_.SetBlockEnabled(LBlockID, BEnabled);
  }
  const std::vector<Long>& DisabledBlocks() const { return player_.DisabledBlocks(); }

  // ---- Rendering context -----------------------------------------------------
  DrawingSurface* ExtHDC() const { return context_.Surface(); }
  void ExtHDC(DrawingSurface* NewHDC) { context_.SetSurface(NewHDC); }
  Long InitFlags() const { return context_.InitFlags(); }
  void InitFlags(Long NewBits) { context_.SetInitFlags(NewBits); }
  Long InitDepthBits() const { return context_.InitDepthBits(); }
  void InitDepthBits(Long NewBits) { context_.SetInitDepthBits(NewBits); }
  Long InitColorBits() const { return context_.InitColorBits(); }
  void InitColorBits(Long NewBits) { context_.SetInitColorBits(NewBits); }
  // The rendering context is never exposed: always 0.
  Long hglRC() const { return 0; }
  bool InitRC() { return context_.Init(SettingsDirectory); }  // true on success
  void SetDCPixelFormat() { context_.SetPixelFormat(SettingsDirectory); }
  Long prv_ChoosePixelFormat(DrawingSurface& hDC) {
    return context_.ChoosePixelFormat(hDC, SettingsDirectory);
  }
  void auxMakeCurrent() { context_.MakeCurrent(SettingsDirectory); }
  void auxMakeNoneCurrent() { context_.MakeNoneCurrent(); }
  Long auxShutDown();
  void oglSwapBuffers() { context_.SwapBuffers(); }
  // Where KIVOhogl.ini is looked for; tests point it elsewhere.
  std::string SettingsDirectory = "/etc";

  // ---- Text ------------------------------------------------------------------
  Long FontListBase = 0;
  void fntPrintAt(const std::string& text, double X, double Y, double z) {
    text_.PrintAt(FontListBase, text, X, Y, z);
  }
  Long auxTextOutA(const std::string& text, double X, double Y);
  Long auxTextOutW(const std::string& text, double X, double Y);

 private:
  StreamRecorder recorder_{*this};
  PolygonMembers polygons_;
  StreamPlayer player_{recorder_, polygons_, *this};
  ControlContext context_;
  BitmapText text_{context_};
};

}  // namespace quelo
