// Pictures of `qgl render` compared with baselines kept in tests/view/baselines.
//
// Each case runs the real program on a headless surface and compares its PNG
// with the baseline: a pixel differs when one of its channels is off by more
// than kTolerance, and a case passes while at most kMaxDifferingPixels differ
// (room for another Mesa's rasterisation of line ends, not for a moved scene).
// On a failure the picture and a diff (differing pixels red) stay in
// <build>/tests/view/render_out/ for inspection.
//
// To refresh the baselines on purpose, after looking at the new pictures:
//   QUELO_UPDATE_BASELINES=1 ctest --test-dir build -R RenderImage
// which writes every rendered picture over its baseline.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "image/png_image.h"
#include "scenefile/container.h"
#include "scenefile/container_writer.h"
#include "scenefile/record_writer.h"
#include "support/run_command.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

namespace fs = std::filesystem;

constexpr int kTolerance = 24;
constexpr long kMaxDifferingPixels = 40;  // of 76800

const std::string kDemo = QUELO_SOURCE_DIR "/examples/demo.qgl";
const fs::path kBaselines = QUELO_SOURCE_DIR "/tests/view/baselines";
const fs::path kOutDir = QUELO_BINARY_DIR "/tests/view/render_out";

using testing::Quoted;

testing::CommandResult RunQgl(const std::string& args) {
  // Byte-identical software renders need the test environment of
  // tests/CMakeLists.txt: run through ctest.
  const char* width = std::getenv("LP_NATIVE_VECTOR_WIDTH");
  EXPECT_STREQ(width ? width : "", "128") << "run the picture tests through ctest";
  fs::create_directories(kOutDir);
  return testing::RunCommand(Quoted(QGL_BINARY) + " " + args);
}

bool NoHeadlessGL(const testing::CommandResult& r) {
  return r.status == 2 && r.err.find("cannot render") != std::string::npos;
}

// Two triangles side by side in the plane y = 0 of a view compiled with
// back-face culling. Seen in the end view (along y, x to the right, z up) the
// left one runs counter-clockwise (front, drawn) and the right one clockwise
// (back, culled).
constexpr std::uint8_t kTriangleRgb[3] = {0x20, 0x40, 0xD0};

void WriteCulledScene(const std::string& path) {
  auto f = CreateSceneFile(path);
  ContainerWriter w(*f);
  SceneInfo info;
  info.Flags = kSceneFlagBackFaceCulling;
  w.AddInfoChunk(2, 2, info);
  w.BeginGlChunk(2, 2);
  WriteColorLongRecord(*f, 0xD04020);  // 0x00BBGGRR
  WriteBeginRecord(*f, 4);             // triangles
  WriteVertex3fRecord(*f, -4, 0, 0);
  WriteVertex3fRecord(*f, -1, 0, 0);
  WriteVertex3fRecord(*f, -2.5f, 0, 3);
  WriteVertex3fRecord(*f, 1, 0, 0);
  WriteVertex3fRecord(*f, 2.5f, 0, 3);
  WriteVertex3fRecord(*f, 4, 0, 0);
  WriteEndRecord(*f);
  w.EndGlChunk();
  w.Finish();
}

// A scene file with no view at all.
void WriteEmptyScene(const std::string& path) {
  auto f = CreateSceneFile(path);
  ContainerWriter w(*f);
  w.Finish();
}

struct RenderCase {
  const char* name;
  const char* scene;  // "demo", "culled" or "empty"
  const char* args;
};

std::string ScenePath(const testing::TempDir& dir, const std::string& scene) {
  if (scene == "demo") return kDemo;
  const std::string path = dir.File(scene + ".qgl");
  if (scene == "culled") WriteCulledScene(path);
  if (scene == "empty") WriteEmptyScene(path);
  return path;
}

void PrintTo(const RenderCase& c, std::ostream* os) {
  *os << c.name;
}

class RenderImage : public ::testing::TestWithParam<RenderCase> {};

TEST_P(RenderImage, MatchesItsBaseline) {
  const RenderCase& c = GetParam();
  testing::TempDir dir;
  const fs::path out = kOutDir / (std::string(c.name) + ".png");
  const fs::path diff_path = kOutDir / (std::string(c.name) + ".diff.png");
  const fs::path baseline = kBaselines / (std::string(c.name) + ".png");
  fs::create_directories(kOutDir);
  fs::remove(out);
  fs::remove(diff_path);

  const auto r = RunQgl("render " + Quoted(ScenePath(dir, c.scene)) + " -o " +
                        Quoted(out.string()) + " --size 320x240 " + c.args);
  if (NoHeadlessGL(r)) GTEST_SKIP() << r.err;
  ASSERT_EQ(r.status, 0) << r.err;
  const RgbImage actual = ReadPng(out.string());
  ASSERT_EQ(actual.width, 320);
  ASSERT_EQ(actual.height, 240);

  if (const char* update = std::getenv("QUELO_UPDATE_BASELINES"); update && *update == '1') {
    fs::create_directories(kBaselines);
    fs::copy_file(out, baseline, fs::copy_options::overwrite_existing);
    GTEST_SKIP() << "baseline written: " << baseline;
  }
  ASSERT_TRUE(fs::exists(baseline)) << "no baseline " << baseline << "; the picture is " << out
                                    << " (QUELO_UPDATE_BASELINES=1 writes it)";
  RgbImage diff;
  const ImageDifference d = CompareImages(actual, ReadPng(baseline.string()), kTolerance, &diff);
  ASSERT_TRUE(d.same_size) << out << " and " << baseline << " differ in size";
  if (d.differing_pixels > kMaxDifferingPixels) WritePng(diff_path.string(), diff);
  EXPECT_LE(d.differing_pixels, kMaxDifferingPixels)
      << "see " << out << " and " << diff_path << " (largest channel difference "
      << d.max_channel_delta << ")";
}

INSTANTIATE_TEST_SUITE_P(Scenes, RenderImage,
                         ::testing::Values(RenderCase{"demo_3d", "demo", ""},
                                           RenderCase{"demo_side", "demo", "--view side"},
                                           RenderCase{"demo_end", "demo", "--view end"},
                                           RenderCase{"demo_plan", "demo", "--view plan"},
                                           RenderCase{
                                               "demo_axes_grids_turned", "demo",
                                               "--axes --grids --hor 200 --ver 45 --zoom 190"},
                                           RenderCase{"culled", "culled", "--view end"},
                                           RenderCase{"empty", "empty", ""}),
                         [](const ::testing::TestParamInfo<RenderCase>& param) {
                           return std::string(param.param.name);
                         });

// ---- What the pictures must show, checked on the pixels themselves ----------

bool IsWhite(const std::uint8_t* p) {
  return p[0] == 255 && p[1] == 255 && p[2] == 255;
}

TEST(RenderPicture, EmptySceneShowsOnlyTheThreeAxesOnWhite) {
  testing::TempDir dir;
  const fs::path out = kOutDir / "probe_empty.png";
  const auto r = RunQgl("render " + Quoted(ScenePath(dir, "empty")) + " -o " +
                        Quoted(out.string()) + " --size 160x120");
  if (NoHeadlessGL(r)) GTEST_SKIP() << r.err;
  ASSERT_EQ(r.status, 0) << r.err;
  const RgbImage img = ReadPng(out.string());
  long white = 0, red = 0, green = 0, blue = 0, other = 0;
  for (int y = 0; y < img.height; ++y) {
    for (int x = 0; x < img.width; ++x) {
      const std::uint8_t* p = img.Pixel(x, y);
      if (IsWhite(p)) {
        ++white;
      } else if (p[0] == 255 && p[1] == 0 && p[2] == 0) {
        ++red;
      } else if (p[0] == 0 && p[1] == 255 && p[2] == 0) {
        ++green;
      } else if (p[0] == 0 && p[1] == 0 && p[2] == 255) {
        ++blue;
      } else {
        ++other;
      }
    }
  }
  EXPECT_GT(white, 160 * 120 * 9 / 10);
  EXPECT_GT(red, 20);
  EXPECT_GT(green, 20);
  EXPECT_GT(blue, 20);
  EXPECT_EQ(other, 0);
  // The corners lie in the margin.
  EXPECT_TRUE(IsWhite(img.Pixel(0, 0)));
  EXPECT_TRUE(IsWhite(img.Pixel(159, 119)));
}

TEST(RenderPicture, SceneIsFittedWithItsMarginAndBackFacesCulled) {
  testing::TempDir dir;
  const fs::path out = kOutDir / "probe_fit.png";
  const auto r = RunQgl("render " + Quoted(ScenePath(dir, "culled")) + " -o " +
                        Quoted(out.string()) + " --size 400x300 --view end");
  if (NoHeadlessGL(r)) GTEST_SKIP() << r.err;
  ASSERT_EQ(r.status, 0) << r.err;
  const RgbImage img = ReadPng(out.string());
  int left = img.width, right = -1, top = img.height, bottom = -1;
  for (int y = 0; y < img.height; ++y) {
    for (int x = 0; x < img.width; ++x) {
      const std::uint8_t* p = img.Pixel(x, y);
      if (std::abs(p[0] - kTriangleRgb[0]) < 8 && std::abs(p[1] - kTriangleRgb[1]) < 8 &&
          std::abs(p[2] - kTriangleRgb[2]) < 8) {
        left = std::min(left, x);
        right = std::max(right, x);
        top = std::min(top, y);
        bottom = std::max(bottom, y);
      }
    }
  }
  // The room is x -4..4 by z 0..3, a window 8 by 3 that the 4:3 area widens
  // to 8 by 6, shown with 20 % margins as 9.6 by 7.2 units: x = -4 falls on
  // pixel 33, x = -1 on 158, z = 0 on 212 and z = 3 on 88. Only the front
  // triangle on the left is drawn.
  EXPECT_NEAR(left, 33, 2);
  EXPECT_NEAR(right, 158, 2);
  EXPECT_NEAR(top, 88, 2);
  EXPECT_NEAR(bottom, 212, 2);
}

TEST(RenderCommand, FailuresHaveTheToolsExitStatuses) {
  testing::TempDir dir;
  const std::string png = dir.File("x.png");
  auto r = RunQgl("render " + Quoted(dir.File("missing.qgl")) + " -o " + Quoted(png));
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("File not found"), std::string::npos) << r.err;

  for (const char* bad : {" --size 12by4", " --hor 361", " --view top"}) {
    r = RunQgl("render " + Quoted(kDemo) + " -o " + Quoted(png) + bad);
    EXPECT_EQ(r.status, 2) << bad;
  }
  EXPECT_FALSE(fs::exists(png));

  r = RunQgl("render " + Quoted(kDemo) + " -o " + Quoted(dir.File("no/such/dir.png")) +
             " --size 40x30");
  if (NoHeadlessGL(r)) GTEST_SKIP() << r.err;
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("cannot write"), std::string::npos) << r.err;

  // A file of another format is shown as the viewer shows it, an empty
  // scene, and reported.
  const std::string foreign = dir.File("foreign.qgl");
  testing::WriteAll(foreign, std::vector<unsigned char>(64, 'x'));
  r = RunQgl("render " + Quoted(foreign) + " -o " + Quoted(png) + " --size 40x30");
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_TRUE(fs::exists(png));
}

}  // namespace
}  // namespace quelo
