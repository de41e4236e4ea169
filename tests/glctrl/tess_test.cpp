#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common/runtime_error.h"
#include "facet/polygon_buffer.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "support/error_of.h"
#include "support/recorded_messages.h"

namespace quelo {
namespace {

using Lines = std::vector<std::string>;
using Corner = std::array<double, 3>;

using testing::ErrorOf;

class Polygon : public ::testing::Test {
 protected:
  // Hands the corners over one by one and closes the polygon, tracing GL.
  Lines Draw(const std::vector<Corner>& corners) {
    ScopedTracingGL trace;
    ctrl.tessBeginPoly(static_cast<Integer>(corners.size()));
    for (const Corner& c : corners) ctrl.tessVector3d(c[0], c[1], c[2]);
    ctrl.tessEndPoly();
    return trace.Lines();
  }
  ScopedRecordedMessages messages;
  OpenGL_Ctrl ctrl;
  // Corners whose centre (3, 3, 0) and the marking points are exact decimals.
  const std::vector<Corner> triangle = {{0, 0, 0}, {9, 0, 0}, {0, 9, 0}};
  const Lines triangle_lines = {
      "glBegin(GL_TRIANGLES)", "glEdgeFlag(GL_TRUE)", "glVertex3d(0, 0, 0)", "glEdgeFlag(GL_TRUE)",
      "glVertex3d(9, 0, 0)",   "glEdgeFlag(GL_TRUE)", "glVertex3d(0, 9, 0)", "glEnd()"};
};

// In GL_LINE mode GL draws the edges that leave a vertex whose edge flag is
// true: those must be exactly the square's four sides, never the diagonal.
TEST_F(Polygon, SquareShowsOnlyItsBorderEdges) {
  Lines lines = Draw({{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}});
  ASSERT_EQ(lines.size(), 2u + 2 * 3 * 2) << ::testing::PrintToString(lines);
  std::set<std::pair<std::string, std::string>> border;
  for (int t = 0; t < 2; ++t) {
    for (int j = 0; j < 3; ++j) {
      const std::string& from = lines[2 + 6 * t + 2 * j];
      const std::string& to = lines[2 + 6 * t + 2 * ((j + 1) % 3)];
      if (lines[1 + 6 * t + 2 * j] == "glEdgeFlag(GL_TRUE)") border.insert(std::minmax(from, to));
    }
  }
  const std::string a = "glVertex3d(0, 0, 0)", b = "glVertex3d(2, 0, 0)", c = "glVertex3d(2, 2, 0)",
                    d = "glVertex3d(0, 2, 0)";
  EXPECT_EQ(border,
            (std::set<std::pair<std::string, std::string>>{std::minmax(a, b), std::minmax(b, c),
                                                           std::minmax(c, d), std::minmax(d, a)}));
  EXPECT_EQ(SharedPolygonBuffer().corner_count, 3);  // the facetter consumed the count
  EXPECT_TRUE(messages.Texts().empty());
}

// Each mode's marking follows the triangles; other modes draw none.
TEST_F(Polygon, MarkingModesOneToFour) {
  ctrl.TessInTriColor = 0x0000FF;  // red
  auto join = [](std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
  };
  const Lines red = {"glColor3f(1, 0, 0)"};
  const Lines inner_with_flags = {
      "glBegin(GL_TRIANGLES)", "glEdgeFlag(GL_TRUE)", "glVertex3d(1, 1, 0)", "glEdgeFlag(GL_TRUE)",
      "glVertex3d(7, 1, 0)",   "glEdgeFlag(GL_TRUE)", "glVertex3d(1, 7, 0)", "glEnd()"};
  Lines inner = inner_with_flags;
  std::erase(inner, "glEdgeFlag(GL_TRUE)");
  const Lines strokes = {"glBegin(GL_LINES)",   "glVertex3d(1.5, 1.5, 0)",
                         "glVertex3d(3, 3, 0)", "glVertex3d(6, 1.5, 0)",
                         "glVertex3d(3, 3, 0)", "glVertex3d(1.5, 6, 0)",
                         "glVertex3d(3, 3, 0)", "glEnd()"};
  const Lines stipple = {"glEnable(GL_LINE_STIPPLE)", "glLineStipple(4, 4369)"};
  const std::pair<Long, Lines> modes[] = {
      {1, join({red, inner_with_flags})},
      {2, join({red, inner})},
      {3, join({red, strokes})},
      {4, join({red, stipple, strokes, {"glDisable(GL_LINE_STIPPLE)"}})},
      {0, {}},
      {-1, {}},
      {5, {}}};
  for (const auto& [mode, marking] : modes) {
    ctrl.TessFlag_DoInTri = mode;
    EXPECT_EQ(Draw(triangle), join({triangle_lines, marking})) << "mode " << mode;
  }
  EXPECT_TRUE(messages.Texts().empty());
}

TEST_F(Polygon, DegenerateRingsDrawNoTriangleAndOnlyCollinearOnesShowAnError) {
  const Lines empty = {"glBegin(GL_TRIANGLES)", "glEnd()"};
  EXPECT_EQ(Draw({}), empty);
  EXPECT_EQ(Draw({{1, 2, 3}}), empty);
  EXPECT_TRUE(messages.Texts().empty());
  EXPECT_EQ(Draw({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}}), empty);
  EXPECT_EQ(messages.Texts(), (std::vector<std::string>{"Error in tessEndPoly"}));
}

TEST_F(Polygon, EachFailingStatementShowsTheMessageAndDrawingGoesOn) {
  ctrl.tessBeginPoly(3);
  // A negative count is stored, but the buffer cannot be re-dimensioned.
  EXPECT_EQ(ErrorOf([&] { ctrl.tessBeginPoly(-1); }), kErrSubscript);
  ScopedTracingGL trace;
  ctrl.tessEndPoly();
  // Copying corner -1 into corner 0 fails once per component, the
  // facetter's own copy once more; the (empty) drawing still runs.
  EXPECT_EQ(messages.Texts(), std::vector<std::string>(4, "Error in tessEndPoly"));
  EXPECT_EQ(trace.Lines(), (Lines{"glBegin(GL_TRIANGLES)", "glEnd()"}));
}

TEST_F(Polygon, MoreCornersThanAnnouncedRaiseNineAfterCounting) {
  ctrl.tessBeginPoly(1);
  ctrl.tessVector3d(1, 1, 1);
  EXPECT_EQ(ErrorOf([&] { ctrl.tessVector3d(2, 2, 2); }), kErrSubscript);
  const double v[4] = {0, 3, 3, 3};
  EXPECT_EQ(ErrorOf([&] { ctrl.tessVector3dv(v); }), kErrSubscript);
  // Every failed call still counted: the counter reaches 32767 after 32764
  // more, and the next call overflows it instead of indexing.
  for (int i = 0; i < 32764; ++i) {
    ASSERT_EQ(ErrorOf([&] { ctrl.tessVector3d(0, 0, 0); }), kErrSubscript) << i;
  }
  EXPECT_EQ(ErrorOf([&] { ctrl.tessVector3d(0, 0, 0); }), kErrOverflow);
  EXPECT_EQ(SharedPolygonBuffer().vertices(1, 1), 1);  // the announced corner was kept
}

// The real GLU tessellator calls the three callbacks, which draw through
// the current table.
TEST_F(Polygon, GluCallbacksDrawThroughTheDispatchTable) {
  GLUtesselator* tess = RealGL().gluNewTess();
  ctrl.auxSetTessCallbacks(tess);  // real table: registered with GLU
  GLdouble corners[3][3] = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}};
  ScopedTracingGL trace;
  RealGL().gluTessBeginPolygon(tess, nullptr);
  RealGL().gluTessBeginContour(tess);
  for (auto& c : corners) RealGL().gluTessVertex(tess, c, c);
  RealGL().gluTessEndContour(tess);
  RealGL().gluTessEndPolygon(tess);
  RealGL().gluDeleteTess(tess);
  const Lines lines = trace.Lines();
  ASSERT_EQ(lines.size(), 5u) << ::testing::PrintToString(lines);
  EXPECT_EQ(lines.front().rfind("glBegin(GL_TRIANGLE", 0), 0u) << lines.front();
  EXPECT_EQ(std::multiset<std::string>(lines.begin() + 1, lines.end() - 1),
            (std::multiset<std::string>{"glVertex3dv([0, 0, 0])", "glVertex3dv([4, 0, 0])",
                                        "glVertex3dv([0, 4, 0])"}));
  EXPECT_EQ(lines.back(), "glEnd()");
}

}  // namespace
}  // namespace quelo
