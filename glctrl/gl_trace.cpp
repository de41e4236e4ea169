// The tracing table: one generated function per entry point of gl_api.list,
// each formatting its arguments with the formatter that the list names for
// them (see the format in gl_dispatch.h).
#include <charconv>
#include <cstring>
#include <initializer_list>
#include <map>
#include <ostream>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include "glctrl/gl_dispatch.h"

namespace quelo {
namespace {

ScopedTracingGL* g_tracer = nullptr;

// ---- Names -------------------------------------------------------------------

enum NameGroup { kAnyName, kPrimitive, kBlendFactor, kStencilOp, kDrawBuffer };
enum BitGroup { kAttribBits, kClientBits };

struct NameTables {
  std::unordered_map<GLenum, const char*> any;
  std::map<std::pair<int, GLenum>, const char*> grouped;
  std::vector<std::pair<int, std::pair<GLbitfield, const char*>>> bits;
};

const NameTables& Names() {
  static const NameTables kTables = [] {
    NameTables t;
#define QUELO_GL_NAME(n) t.any.emplace(static_cast<GLenum>(n), #n);
#define QUELO_GL_GROUP_NAME(g, n) t.grouped.emplace(std::make_pair(int{g}, GLenum{n}), #n);
#define QUELO_GL_BIT(g, n) t.bits.push_back({g, {static_cast<GLbitfield>(n), #n}});
#include "glctrl/generated/gl_enums.inc"
#undef QUELO_GL_NAME
#undef QUELO_GL_GROUP_NAME
#undef QUELO_GL_BIT
    return t;
  }();
  return kTables;
}

// The name of v, or nullptr.
const char* NameOf(GLenum v, NameGroup group) {
  const NameTables& t = Names();
  if (group != kAnyName) {
    auto g = t.grouped.find({group, v});
    if (g != t.grouped.end()) return g->second;
  }
  auto a = t.any.find(v);
  return a != t.any.end() ? a->second : nullptr;
}

// ---- Scalar formatters ---------------------------------------------------------

template <class T>
std::string Int(T v) {
  static_assert(std::is_integral_v<T>);
  return std::to_string(+v);  // + lifts (un)signed chars to int
}

template <class T>
std::string Real(T v) {
  static_assert(std::is_floating_point_v<T>);
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf, v);
  return std::string(buf, r.ptr);
}

std::string Bool(GLboolean v) {
  if (v == GL_TRUE) return "GL_TRUE";
  if (v == GL_FALSE) return "GL_FALSE";
  return Int(v);
}

std::string Enum(GLenum v, NameGroup group) {
  const char* name = NameOf(v, group);
  return name != nullptr ? name : Int(v);
}

std::string Bits(GLbitfield v, BitGroup group) {
  if (v == 0) return "0";
  if (v == 0xFFFFFFFFu)
    return group == kClientBits ? "GL_CLIENT_ALL_ATTRIB_BITS" : "GL_ALL_ATTRIB_BITS";
  std::string text;
  GLbitfield rest = v;
  for (const auto& [g, bit] : Names().bits) {
    if (g != group || (v & bit.first) == 0) continue;
    if (!text.empty()) text += '|';
    text += bit.second;
    rest &= ~bit.first;
  }
  return rest == 0 ? text : Int(v);
}

// The value argument of glTexParameter*, glTexEnv*, glTexGen*, glFog*: a GL
// name for the pnames that take one, a number otherwise.
template <class T>
std::string ParamValue(T param, GLenum pname) {
  switch (pname) {
    case GL_TEXTURE_MIN_FILTER:
    case GL_TEXTURE_MAG_FILTER:
    case GL_TEXTURE_WRAP_S:
    case GL_TEXTURE_WRAP_T:
    case GL_TEXTURE_ENV_MODE:
    case GL_FOG_MODE:
    case GL_TEXTURE_GEN_MODE:
      if (param > 0 && param == static_cast<T>(static_cast<GLenum>(param))) {
        if (const char* name = NameOf(static_cast<GLenum>(param), kAnyName)) return name;
      }
      break;
    default:
      break;
  }
  if constexpr (std::is_floating_point_v<T>) {
    return Real(param);
  } else {
    return Int(param);
  }
}

// Texture internal formats: 1 to 4 are component counts.
template <class T>
std::string InternalFormat(T v) {
  if (v >= 1 && v <= 4) return Int(v);
  return Enum(static_cast<GLenum>(v), kAnyName);
}

std::string TessProperty(GLdouble data, GLenum which) {
  if (which == GLU_TESS_WINDING_RULE && data > 0 && data == static_cast<GLenum>(data)) {
    if (const char* name = NameOf(static_cast<GLenum>(data), kAnyName)) return name;
  }
  return Real(data);
}

// ---- Pointer formatters --------------------------------------------------------

template <class T>
std::string Element(T v) {
  if constexpr (std::is_floating_point_v<T>) {
    return Real(v);
  } else {
    return Int(v);
  }
}

template <class T>
std::string Array(const T* p, long n) {
  if (p == nullptr) return "NULL";
  std::string text = "[";
  for (long i = 0; i < n; ++i) {
    if (i > 0) text += ", ";
    text += Element(p[i]);
  }
  return text + "]";
}

std::string BoolArray(const GLboolean* p, long n) {
  if (p == nullptr) return "NULL";
  std::string text = "[";
  for (long i = 0; i < n; ++i) {
    if (i > 0) text += ", ";
    text += Bool(p[i]);
  }
  return text + "]";
}

// n elements of a GL type given by a GLenum (glCallLists, glDrawElements).
std::string Typed(const GLvoid* data, GLsizei n, GLenum type) {
  if (data == nullptr) return "NULL";
  const auto* bytes = static_cast<const unsigned char*>(data);
  // Reads through memcpy: the caller's buffer need not be aligned for T.
  auto values = [&](auto zero) {
    using T = decltype(zero);
    std::string text = "[";
    for (GLsizei i = 0; i < n; ++i) {
      T v;
      std::memcpy(&v, bytes + static_cast<std::size_t>(i) * sizeof(T), sizeof(T));
      if (i > 0) text += ", ";
      text += Element(v);
    }
    return text + "]";
  };
  // GL_2_BYTES..GL_4_BYTES: big-endian groups, as glCallLists reads them.
  auto grouped = [&](int width) {
    std::string text = "[";
    for (GLsizei i = 0; i < n; ++i) {
      GLuint v = 0;
      for (int b = 0; b < width; ++b) v = (v << 8) | bytes[static_cast<std::size_t>(i) * width + b];
      if (i > 0) text += ", ";
      text += Int(v);
    }
    return text + "]";
  };
  switch (type) {
    case GL_BYTE:
      return values(GLbyte{});
    case GL_UNSIGNED_BYTE:
      return values(GLubyte{});
    case GL_SHORT:
      return values(GLshort{});
    case GL_UNSIGNED_SHORT:
      return values(GLushort{});
    case GL_INT:
      return values(GLint{});
    case GL_UNSIGNED_INT:
      return values(GLuint{});
    case GL_FLOAT:
      return values(GLfloat{});
    case GL_2_BYTES:
      return grouped(2);
    case GL_3_BYTES:
      return grouped(3);
    case GL_4_BYTES:
      return grouped(4);
    default:
      return "<data>";
  }
}

std::string Data(const void* p) {
  return p == nullptr ? "NULL" : "<data>";
}

// An output array: the n elements GL would write are set to zero.
template <class T>
std::string Out(T* p, long n) {
  if (p == nullptr) return "NULL";
  if constexpr (!std::is_void_v<T>) {
    for (long i = 0; i < n; ++i) p[i] = T{};
  }
  return "<out>";
}

std::string NewTextureNames(GLuint* textures, GLsizei n) {
  if (textures == nullptr) return "NULL";
  for (GLsizei i = 0; i < n; ++i)
    textures[i] = g_tracer != nullptr ? g_tracer->NextTextureName() : 0;
  return "<out>";
}

std::string Tess(const GLUtesselator* tess) {
  if (tess == nullptr) return "NULL";
  int number = g_tracer != nullptr ? g_tracer->TessNumber(tess) : 0;
  return "<tess " + std::to_string(number) + ">";
}

std::string Callback(_GLUfuncptr f) {
  return f == nullptr ? "NULL" : "<callback>";
}

// ---- Element counts ---------------------------------------------------------------

long MaterialCount(GLenum pname) {
  switch (pname) {
    case GL_AMBIENT:
    case GL_DIFFUSE:
    case GL_SPECULAR:
    case GL_EMISSION:
    case GL_AMBIENT_AND_DIFFUSE:
      return 4;
    case GL_COLOR_INDEXES:
      return 3;
    default:
      return 1;  // GL_SHININESS, and the least GL reads for a bad pname
  }
}

long LightCount(GLenum pname) {
  switch (pname) {
    case GL_AMBIENT:
    case GL_DIFFUSE:
    case GL_SPECULAR:
    case GL_POSITION:
      return 4;
    case GL_SPOT_DIRECTION:
      return 3;
    default:
      return 1;
  }
}

long LightModelCount(GLenum pname) {
  return pname == GL_LIGHT_MODEL_AMBIENT ? 4 : 1;
}
long FogCount(GLenum pname) {
  return pname == GL_FOG_COLOR ? 4 : 1;
}
long TexEnvCount(GLenum pname) {
  return pname == GL_TEXTURE_ENV_COLOR ? 4 : 1;
}
long TexParameterCount(GLenum pname) {
  return pname == GL_TEXTURE_BORDER_COLOR ? 4 : 1;
}
long TexGenCount(GLenum pname) {
  return pname == GL_OBJECT_PLANE || pname == GL_EYE_PLANE ? 4 : 1;
}

// Values that glGet*v writes for pname (1 for everything not listed).
long GetCount(GLenum pname) {
  switch (pname) {
    case GL_MODELVIEW_MATRIX:
    case GL_PROJECTION_MATRIX:
    case GL_TEXTURE_MATRIX:
      return 16;
    case GL_VIEWPORT:
    case GL_SCISSOR_BOX:
    case GL_COLOR_CLEAR_VALUE:
    case GL_ACCUM_CLEAR_VALUE:
    case GL_COLOR_WRITEMASK:
    case GL_CURRENT_COLOR:
    case GL_CURRENT_TEXTURE_COORDS:
    case GL_CURRENT_RASTER_COLOR:
    case GL_CURRENT_RASTER_POSITION:
    case GL_CURRENT_RASTER_TEXTURE_COORDS:
    case GL_LIGHT_MODEL_AMBIENT:
    case GL_FOG_COLOR:
    case GL_MAP2_GRID_DOMAIN:
      return 4;
    case GL_CURRENT_NORMAL:
      return 3;
    case GL_DEPTH_RANGE:
    case GL_LINE_WIDTH_RANGE:
    case GL_POINT_SIZE_RANGE:
    case GL_MAX_VIEWPORT_DIMS:
    case GL_POLYGON_MODE:
    case GL_MAP1_GRID_DOMAIN:
    case GL_MAP2_GRID_SEGMENTS:
      return 2;
    default:
      return 1;
  }
}

// glBitmap reads rows of ceil(width / 8) bytes that start at multiples of the
// default unpack alignment 4; the last row is not padded.
long BitmapBytes(GLsizei width, GLsizei height) {
  if (width <= 0 || height <= 0) return 0;
  long row = (static_cast<long>(width) + 7) / 8;
  long stride = (row + 3) / 4 * 4;
  return stride * (height - 1) + row;
}

// ---- The table -------------------------------------------------------------------------

void Call(const char* name, std::initializer_list<std::string> args) {
  if (g_tracer == nullptr) return;
  std::string line = name;
  line += '(';
  bool first = true;
  for (const std::string& a : args) {
    if (!first) line += ", ";
    line += a;
    first = false;
  }
  line += ')';
  g_tracer->Emit(std::move(line));
}

template <class T>
T Benign() {
  if constexpr (std::is_void_v<T>) {
    return;
  } else if constexpr (std::is_same_v<T, const GLubyte*>) {
    return reinterpret_cast<const GLubyte*>("");  // glGetString
  } else {
    return T{};  // GL_NO_ERROR, GL_FALSE, 0
  }
}

#define QUELO_GL_BRACED(...) \
  { __VA_ARGS__ }
#define QUELO_GL_ENTRY(ret, name, params, args, trace) \
  [[maybe_unused]] ret Trace_##name params {           \
    Call(#name, QUELO_GL_BRACED trace);                \
    return Benign<ret>();                              \
  }
#include "glctrl/generated/gl_api.list"

GLuint TraceGenLists(GLsizei range) {
  Call("glGenLists", {Int(range)});
  return g_tracer != nullptr ? g_tracer->GenListNames(range) : 0;
}

GLUtesselator* TraceNewTess() {
  GLUtesselator* tess = g_tracer != nullptr ? g_tracer->NewTess() : nullptr;
  Call("gluNewTess", {});
  return tess;
}

const GLDispatch& TracingTable() {
  static const GLDispatch kTable = [] {
    GLDispatch d;
#define QUELO_GL_ENTRY(ret, name, params, args, trace) d.name = &Trace_##name;
#include "glctrl/generated/gl_api.list"
    d.glGenLists = &TraceGenLists;
    d.gluNewTess = &TraceNewTess;
    return d;
  }();
  return kTable;
}

}  // namespace

ScopedTracingGL::ScopedTracingGL(std::ostream* out, bool keep_lines)
    : out_(out),
      keep_lines_(keep_lines),
      previous_table_(SetGLDispatch(&TracingTable())),
      previous_tracer_(g_tracer) {
  g_tracer = this;
}

ScopedTracingGL::~ScopedTracingGL() {
  g_tracer = previous_tracer_;
  SetGLDispatch(previous_table_);
}

void ScopedTracingGL::Emit(std::string line) {
  if (out_ != nullptr) *out_ << line << '\n';
  if (keep_lines_) lines_.push_back(std::move(line));
}

GLuint ScopedTracingGL::GenListNames(GLsizei range) {
  if (range <= 0) return 0;  // GL's answer to an empty or negative range
  GLuint first = next_list_;
  next_list_ += static_cast<GLuint>(range);
  return first;
}

GLUtesselator* ScopedTracingGL::NewTess() {
  // A distinct address per object; never dereferenced.
  fake_tess_.push_back(std::make_unique<char>());
  auto* tess = reinterpret_cast<GLUtesselator*>(fake_tess_.back().get());
  TessNumber(tess);
  return tess;
}

int ScopedTracingGL::TessNumber(const GLUtesselator* tess) {
  auto [it, added] = tess_numbers_.emplace(tess, static_cast<int>(tess_numbers_.size()) + 1);
  return it->second;
}

}  // namespace quelo
