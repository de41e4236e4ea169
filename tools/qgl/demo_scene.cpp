#include "tools/qgl/demo_scene.h"

#include <array>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <vector>

#include "common/binary_file.h"
#include "glctrl/opengl_ctrl.h"
#include "scenefile/container_writer.h"

namespace quelo {

namespace {

using Point = std::array<double, 3>;

constexpr Long kAxesBlock = 0;
constexpr Long kGridsBlock = 1;

// Packed colours 0x00BBGGRR.
constexpr Long kWallColour = 0x00B8D8F0;
constexpr Long kRoofColour = 0x002A3AA8;
constexpr Long kDoorColour = 0x00205A8C;
constexpr Long kGlassColour = 0x00F0C888;
constexpr Long kFloorColour = 0x00909090;
constexpr Long kTrunkColour = 0x00204A6A;
constexpr Long kLeafColour = 0x00309A30;
constexpr Long kPartColour = 0x00A0A0A0;

Point Normal(const std::vector<Point>& p) {
  // Newell's method: good for any planar outline, convex or not.
  Point n{0, 0, 0};
  for (std::size_t i = 0; i < p.size(); ++i) {
    const Point& a = p[i];
    const Point& b = p[(i + 1) % p.size()];
    n[0] += (a[1] - b[1]) * (a[2] + b[2]);
    n[1] += (a[2] - b[2]) * (a[0] + b[0]);
    n[2] += (a[0] - b[0]) * (a[1] + b[1]);
  }
  const double len = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
  return {n[0] / len, n[1] / len, n[2] / len};
}

class Recorder {
 public:
  explicit Recorder(OpenGL_Ctrl& gl) : gl_(gl) {}

  void Material(Long packed) {
    const Single r = static_cast<Single>(packed & 0xFF) / 255.0f;
    const Single g = static_cast<Single>((packed >> 8) & 0xFF) / 255.0f;
    const Single b = static_cast<Single>((packed >> 16) & 0xFF) / 255.0f;
    const Single diffuse[4] = {r, g, b, 1.0f};
    const Single ambient[4] = {r * 0.4f, g * 0.4f, b * 0.4f, 1.0f};
    gl_.oglMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, diffuse);
    gl_.oglMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, ambient);
    gl_.auxColorLong(packed);
  }

  // A planar polygon of any shape, triangulated by the viewer on replay.
  void Polygon(const std::vector<Point>& corners, bool use_vector_form = false) {
    const Point n = Normal(corners);
    gl_.oglNormal3f(static_cast<Single>(n[0]), static_cast<Single>(n[1]),
                    static_cast<Single>(n[2]));
    gl_.tessBeginPoly(static_cast<Integer>(corners.size()));
    for (const Point& c : corners) {
      if (use_vector_form) {
        const double v[4] = {0, c[0], c[1], c[2]};
        gl_.tessVector3dv(v);
      } else {
        gl_.tessVector3d(c[0], c[1], c[2]);
      }
    }
    gl_.tessEndPoly();
  }

  void Lines(const std::vector<Point>& ends) {
    gl_.oglBegin(GL_LINES);
    for (const Point& p : ends) {
      gl_.oglVertex3f(static_cast<Single>(p[0]), static_cast<Single>(p[1]),
                      static_cast<Single>(p[2]));
    }
    gl_.oglEnd();
  }

  void Triangles(const std::vector<Point>& corners, const Point& normal) {
    gl_.oglNormal3f(static_cast<Single>(normal[0]), static_cast<Single>(normal[1]),
                    static_cast<Single>(normal[2]));
    gl_.oglBegin(GL_TRIANGLES);
    for (const Point& p : corners) {
      gl_.oglVertex3f(static_cast<Single>(p[0]), static_cast<Single>(p[1]),
                      static_cast<Single>(p[2]));
    }
    gl_.oglEnd();
  }

  OpenGL_Ctrl& gl() { return gl_; }

 private:
  OpenGL_Ctrl& gl_;
};

// The house: 10 x 6 m, walls 3 m, gable roof with its ridge at 5 m along x.
void RecordHouse(Recorder& r) {
  OpenGL_Ctrl& gl = r.gl();
  gl.oglPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  gl.oglFrontFace(GL_CCW);

  r.Material(kFloorColour);
  r.Polygon({{0, 0, 0}, {0, 6, 0}, {10, 6, 0}, {10, 0, 0}});

  // Front wall (y = 0) with the door cut out of its lower edge: a concave outline.
  r.Material(kWallColour);
  r.Polygon({{0, 0, 0},
             {4, 0, 0},
             {4, 0, 2.2},
             {5.2, 0, 2.2},
             {5.2, 0, 0},
             {10, 0, 0},
             {10, 0, 3},
             {0, 0, 3}});
  r.Polygon({{10, 6, 0}, {0, 6, 0}, {0, 6, 3}, {10, 6, 3}}, true);
  // Gable walls, five corners each.
  r.Polygon({{0, 6, 0}, {0, 0, 0}, {0, 0, 3}, {0, 3, 5}, {0, 6, 3}});
  r.Polygon({{10, 0, 0}, {10, 6, 0}, {10, 6, 3}, {10, 3, 5}, {10, 0, 3}}, true);

  r.Material(kDoorColour);
  r.Polygon({{4.05, -0.02, 0}, {5.15, -0.02, 0}, {5.15, -0.02, 2.15}, {4.05, -0.02, 2.15}});

  // Windows just in front of the walls, framed by lines.
  r.Material(kGlassColour);
  const double window_x[] = {1.2, 6.6, 8.4};
  for (double x : window_x) {
    r.Polygon({{x, -0.02, 1.0}, {x + 1.2, -0.02, 1.0}, {x + 1.2, -0.02, 2.2}, {x, -0.02, 2.2}});
  }
  gl.oglColor3f(0.2f, 0.2f, 0.25f);
  for (double x : window_x) {
    const double y = -0.03;
    r.Lines({{x, y, 1.0},
             {x + 1.2, y, 1.0},
             {x + 1.2, y, 1.0},
             {x + 1.2, y, 2.2},
             {x + 1.2, y, 2.2},
             {x, y, 2.2},
             {x, y, 2.2},
             {x, y, 1.0},
             {x + 0.6, y, 1.0},
             {x + 0.6, y, 2.2},
             {x, y, 1.6},
             {x + 1.2, y, 1.6}});
  }

  // Roof planes with a small overhang.
  r.Material(kRoofColour);
  r.Polygon({{-0.4, -0.5, 2.67}, {10.4, -0.5, 2.67}, {10.4, 3, 5}, {-0.4, 3, 5}});
  r.Polygon({{10.4, 6.5, 2.67}, {-0.4, 6.5, 2.67}, {-0.4, 3, 5}, {10.4, 3, 5}});
  gl.oglColor3f(0.15f, 0.1f, 0.1f);
  r.Lines({{-0.4, 3, 5.01}, {10.4, 3, 5.01}});

  // The outlines of the walls in line mode: the edge flags keep the facetter's
  // diagonals out of the picture.
  gl.oglPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  gl.oglColor3f(0.25f, 0.25f, 0.3f);
  r.Polygon({{0, -0.01, 0},
             {4, -0.01, 0},
             {4, -0.01, 2.2},
             {5.2, -0.01, 2.2},
             {5.2, -0.01, 0},
             {10, -0.01, 0},
             {10, -0.01, 3},
             {0, -0.01, 3}});
  gl.oglPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

// A chimney, a tree and a fence.
void RecordSurroundings(Recorder& r) {
  OpenGL_Ctrl& gl = r.gl();
  r.Material(kDoorColour);
  // Chimney: four sides and a top, standing on the rear roof plane.
  const double x0 = 7.2, x1 = 7.9, y0 = 4.0, y1 = 4.7, z0 = 3.5, z1 = 5.8;
  r.Polygon({{x0, y0, z0}, {x1, y0, z0}, {x1, y0, z1}, {x0, y0, z1}});
  r.Polygon({{x1, y0, z0}, {x1, y1, z0}, {x1, y1, z1}, {x1, y0, z1}});
  r.Polygon({{x1, y1, z0}, {x0, y1, z0}, {x0, y1, z1}, {x1, y1, z1}});
  r.Polygon({{x0, y1, z0}, {x0, y0, z0}, {x0, y0, z1}, {x0, y1, z1}});
  r.Polygon({{x0, y0, z1}, {x1, y0, z1}, {x1, y1, z1}, {x0, y1, z1}});

  // Tree: an octagonal trunk of quads and a cone of triangles.
  const double cx = 13.5, cy = 2.5;
  constexpr int kSides = 8;
  r.Material(kTrunkColour);
  for (int i = 0; i < kSides; ++i) {
    const double a0 = 2 * std::numbers::pi * i / kSides;
    const double a1 = 2 * std::numbers::pi * (i + 1) / kSides;
    const Point p0{cx + 0.25 * std::cos(a0), cy + 0.25 * std::sin(a0), 0};
    const Point p1{cx + 0.25 * std::cos(a1), cy + 0.25 * std::sin(a1), 0};
    r.Polygon({p0, p1, {p1[0], p1[1], 1.6}, {p0[0], p0[1], 1.6}});
  }
  r.Material(kLeafColour);
  for (int i = 0; i < kSides; ++i) {
    const double a0 = 2 * std::numbers::pi * i / kSides;
    const double a1 = 2 * std::numbers::pi * (i + 1) / kSides;
    const double am = (a0 + a1) / 2;
    r.Triangles({{cx + 1.5 * std::cos(a0), cy + 1.5 * std::sin(a0), 1.4},
                 {cx + 1.5 * std::cos(a1), cy + 1.5 * std::sin(a1), 1.4},
                 {cx, cy, 5.0}},
                {std::cos(am) * 0.92, std::sin(am) * 0.92, 0.39});
  }

  // A fence along the front: posts and two rails.
  gl.oglColor3f(0.45f, 0.3f, 0.15f);
  std::vector<Point> fence;
  for (double x = -1; x <= 11.01; x += 1.0) {
    fence.push_back({x, -2, 0});
    fence.push_back({x, -2, 1.1});
  }
  for (double z : {0.4, 0.9}) {
    fence.push_back({-1, -2, z});
    fence.push_back({11, -2, z});
  }
  r.Lines(fence);
}

// A hexagonal nut beside the house, with outward faces wound counter-clockwise
// so that back-face culling hides the far side.
void RecordPart(Recorder& r) {
  r.gl().oglFrontFace(GL_CCW);
  r.Material(kPartColour);
  const double cx = 13.5, cy = 7.5, h = 0.8, rad = 1.0;
  constexpr int kSides = 6;
  std::vector<Point> bottom, top;
  for (int i = 0; i < kSides; ++i) {
    const double a = 2 * std::numbers::pi * i / kSides;
    bottom.push_back({cx + rad * std::cos(a), cy + rad * std::sin(a), 0});
    top.push_back({cx + rad * std::cos(a), cy + rad * std::sin(a), h});
  }
  r.Polygon(top);
  r.Polygon({bottom.rbegin(), bottom.rend()});
  for (int i = 0; i < kSides; ++i) {
    const int j = (i + 1) % kSides;
    r.Polygon({bottom[i], bottom[j], top[j], top[i]});
  }
}

void RecordAxes(Recorder& r) {
  OpenGL_Ctrl& gl = r.gl();
  gl.auxPutBlockBegin(kAxesBlock);
  gl.oglColor3f(0.8f, 0.1f, 0.1f);
  r.Lines({{0, 0, 0}, {12, 0, 0}, {12, 0, 0}, {11.5, 0.3, 0}, {12, 0, 0}, {11.5, -0.3, 0}});
  gl.oglColor3f(0.1f, 0.6f, 0.1f);
  r.Lines({{0, 0, 0}, {0, 9, 0}, {0, 9, 0}, {0.3, 8.5, 0}, {0, 9, 0}, {-0.3, 8.5, 0}});
  gl.oglColor3f(0.1f, 0.1f, 0.8f);
  r.Lines({{0, 0, 0}, {0, 0, 7}, {0, 0, 7}, {0.3, 0, 6.5}, {0, 0, 7}, {-0.3, 0, 6.5}});
  gl.auxPutBlockEnd(kAxesBlock);
}

void RecordGrid(Recorder& r) {
  OpenGL_Ctrl& gl = r.gl();
  gl.auxPutBlockBegin(kGridsBlock);
  gl.oglColor3f(0.75f, 0.75f, 0.75f);
  std::vector<Point> lines;
  for (int x = -3; x <= 16; ++x) {
    lines.push_back({static_cast<double>(x), -4, -0.01});
    lines.push_back({static_cast<double>(x), 10, -0.01});
  }
  for (int y = -4; y <= 10; ++y) {
    lines.push_back({-3, static_cast<double>(y), -0.01});
    lines.push_back({16, static_cast<double>(y), -0.01});
  }
  r.Lines(lines);
  gl.auxPutBlockEnd(kGridsBlock);
}

SceneInfo Info(const char* title, bool culled) {
  SceneInfo info;
  info.Flags = culled ? kSceneFlagBackFaceCulling : 0;
  info.DrawingNo = "QUELO-DEMO-001";
  info.ProjectName = "Quelo demo scene";
  info.Title = title;
  return info;
}

}  // namespace

void WriteDemoScene(const std::string& path) {
  std::filesystem::remove(path);
  OpenGL_Ctrl gl;
  gl.FileOpen(path);
  // The container writer and the control share the control's open file, so
  // their writes stay in order.
  BinaryFile& file = Files().Get(gl.FileHnd);
  ContainerWriter writer(file);
  Recorder r(gl);
  gl.SendToFile = true;
  gl.DontSendToGL = true;  // written, not drawn: no context needed

  writer.AddInfoChunk(2, 1, Info("House", false));
  writer.BeginGlChunk(2, 1);
  RecordGrid(r);
  RecordAxes(r);
  RecordHouse(r);
  writer.EndGlChunk();

  writer.AddInfoChunk(1, 2, Info("Surroundings", false));
  writer.BeginGlChunk(1, 2);
  RecordSurroundings(r);
  writer.EndGlChunk();

  writer.AddInfoChunk(3, 3, Info("Machine part", true));
  writer.BeginGlChunk(3, 3);
  RecordPart(r);
  writer.EndGlChunk();

  writer.Finish();
  gl.SendToFile = false;
  gl.FileClose();
}

}  // namespace quelo
