// OpenGL_Ctrl: the one component through which everything is drawn, and the
// writer and player of recorded command streams.
//
// Every GL call goes through the dispatch table (gl_dispatch.h), so a tracing
// table shows exactly what would reach GL. The recording methods write their
// command record to the stream file FileHnd while SendToFile is on, and skip
// their GL call while DontSendToGL is on; the pass-through ogl*/oglu* methods
// only call GL. GL-calling methods expect the control's context to be current.
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

namespace quelo {

class DrawingSurface;
class RenderingContext;

class OpenGL_Ctrl {
 public:
  OpenGL_Ctrl();
  ~OpenGL_Ctrl();
  OpenGL_Ctrl(const OpenGL_Ctrl&) = delete;
  OpenGL_Ctrl& operator=(const OpenGL_Ctrl&) = delete;

  // ---- Recording switches, stream file and bounding box -------------------
  bool SendToFile = false;
  bool DontSendToGL = false;
  Integer FileHnd = 0;  // file number in Files(); 0 while none is open
  Single FileCoord_xMax = 0, FileCoord_xMin = 0;
  Single FileCoord_yMax = 0, FileCoord_yMin = 0;
  Single FileCoord_zMax = 0, FileCoord_zMin = 0;

  // Empties the disabled-block list, takes a free file number into FileHnd and
  // opens FileName for reading and writing (created when missing, never
  // truncated).
  void FileOpen(const std::string& FileName);
  void FileClose();
  Long FileGoto(Long PntrAddr);  // 1-based; returns 0
  Long FileAddr();               // 1-based position of FileHnd
  void FilePutBeginOfSeq();      // the 756-byte stream head, when SendToFile
  void FilePutEndOfSeq();        // op 0, length 0, when SendToFile
  void auxPutBlockBegin(Long LBlockID);
  void auxPutBlockEnd(Long LBlockID);

  // ---- Recording methods: record (when SendToFile), then call GL (unless
  // DontSendToGL) ------------------------------------------------------------
  void oglBegin(Long mode);
  void oglEnd();
  void oglColor3f(Single red, Single green, Single blue);
  void oglVertex3f(Single x, Single y, Single z);
  // Records params[0..3] whatever pname is; fewer than four elements raise 9.
  void oglMaterialfv(Long face, Long pname, std::span<const Single> params);
  void oglPolygonMode(Long face, Long mode);
  void oglFrontFace(Long mode);
  void oglNormal3f(Single nx, Single ny, Single nz);
  void oglEdgeFlag(bool flag);
  void auxColorLong(Long Clr);  // packed 0x00BBGGRR

  // ---- Polygon members -----------------------------------------------------
  Long TessFlag_DoInTri = 0;  // 1..4 select a marking inside each triangle
  Long TessInTriColor = 0;    // packed marking colour
  void tessBeginPoly(Integer nEck);
  void tessVector3d(double X, double Y, double z);
  // Takes elements 1, 2, 3 of a 1-based array; a shorter array raises 9.
  void tessVector3dv(std::span<const double> v);
  void tessEndPoly();
  void tessEnable(Long& Flag);
  void tessDisable(Long& Flag);
  void auxSetTessCallbacks(GLUtesselator* pGLUtesselator);

  // ---- Replay and block switches ---------------------------------------------
  // Plays the stream at the current position of FileHnd.
  void FileReadToGL();
  bool auxBlockEnabled(Long LBlockID) const;
  void auxBlockEnabled(Long LBlockID, bool BEnabled);
  const std::vector<Long>& DisabledBlocks() const { return disabled_blocks_; }

  // ---- Pass-through methods: oglXxx for the OpenGL 1.1 command set and the
  // named GLU calls (generated from the entry-point list) -----------------------
#include "glctrl/ogl_passthrough.inc"

  // ---- Rendering context -----------------------------------------------------
  DrawingSurface* ExtHDC() const {
    return ext_hdc_;
  }
  void ExtHDC(DrawingSurface* NewHDC) {
    ext_hdc_ = NewHDC;
  }
  Long InitFlags() const {
    return init_flags_;
  }
  void InitFlags(Long NewBits) {
    init_flags_ = NewBits;
  }
  Long InitDepthBits() const {
    return init_depth_bits_;
  }
  void InitDepthBits(Long NewBits) {
    init_depth_bits_ = NewBits;
  }
  Long InitColorBits() const {
    return init_color_bits_;
  }
  void InitColorBits(Long NewBits) {
    init_color_bits_ = NewBits;
  }
  // The rendering context is never exposed: always 0.
  Long hglRC() const {
    return 0;
  }
  bool InitRC();  // true on success
  void SetDCPixelFormat();
  Long prv_ChoosePixelFormat(DrawingSurface& hDC);
  void auxMakeCurrent();
  void auxMakeNoneCurrent();
  Long auxShutDown();
  void oglSwapBuffers();
  // Where KIVOhogl.ini is looked for; tests point it elsewhere.
  std::string SettingsDirectory = "/etc";

  // ---- Text ------------------------------------------------------------------
  Long FontListBase = 0;
  void fntPrintAt(const std::string& text, double X, double Y, double z);
  Long auxTextOutA(const std::string& text, double X, double Y);
  Long auxTextOutW(const std::string& text, double X, double Y);

 private:
  // Recording and polygon state.
  Integer tess_vertex_counter_ = 0;
  Single tess_centre_[4] = {0, 0, 0, 0};  // indices 1..3 used

  // Replay state.
  std::vector<Long> disabled_blocks_;

  // Rendering context state.
  DrawingSurface* ext_hdc_ = nullptr;
  Long init_flags_ = 0;
  Long init_depth_bits_ = 0;
  Long init_color_bits_ = 0;
  RenderingContext* rendering_context_ = nullptr;  // deleted by auxShutDown
  Long initialised_ = 0;                           // -1 while initialised
};

}  // namespace quelo
