// Writes the small example scene examples/example.qgl with the container
// writer: three views with lines, coloured triangles and polygon records, the
// axes in block 0 and a grid in block 1.
//
//   make_example_scene OUTPUT
#include <cstdio>
#include <exception>

#include "common/runtime_error.h"
#include "scenefile/container_writer.h"
#include "scenefile/record_writer.h"

namespace {

using namespace quelo;

// GL values the records carry (the recorded calls pass them through).
constexpr Long kLines = 1, kTriangles = 4, kFront = 1028, kFrontAndBack = 1032;
constexpr Long kFill = 6914, kCcw = 2305, kAmbientAndDiffuse = 5634;
constexpr Long kAxesBlock = 0, kGridBlock = 1;

void Axes(BinaryFile& f, Single size) {
  WriteBlockBeginRecord(f, kAxesBlock);
  WriteBeginRecord(f, kLines);
  WriteColorLongRecord(f, 0x0000FF);  // x red
  WriteVertex3fRecord(f, 0, 0, 0);
  WriteVertex3fRecord(f, size, 0, 0);
  WriteColorLongRecord(f, 0x00FF00);  // y green
  WriteVertex3fRecord(f, 0, 0, 0);
  WriteVertex3fRecord(f, 0, size, 0);
  WriteColorLongRecord(f, 0xFF0000);  // z blue
  WriteVertex3fRecord(f, 0, 0, 0);
  WriteVertex3fRecord(f, 0, 0, size);
  WriteEndRecord(f);
  WriteBlockEndRecord(f, kAxesBlock);
}

void Grid(BinaryFile& f, int half) {
  WriteBlockBeginRecord(f, kGridBlock);
  WriteColor3fRecord(f, 0.6f, 0.6f, 0.6f);
  WriteBeginRecord(f, kLines);
  for (int i = -half; i <= half; ++i) {
    const auto v = static_cast<Single>(i);
    const auto h = static_cast<Single>(half);
    WriteVertex3fRecord(f, v, -h, 0);
    WriteVertex3fRecord(f, v, h, 0);
    WriteVertex3fRecord(f, -h, v, 0);
    WriteVertex3fRecord(f, h, v, 0);
  }
  WriteEndRecord(f);
  WriteBlockEndRecord(f, kGridBlock);
}

// A four-sided pyramid on the plane z = 0, each face its own colour.
void Pyramid(BinaryFile& f, Single cx, Single cy) {
  const Single base[5][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}, {-1, -1}};
  const Long colours[4] = {0x3030E0, 0x30C030, 0xE03030, 0x30C0E0};
  const Single material[4] = {0.8f, 0.8f, 0.8f, 1.0f};
  WriteMaterialfvRecord(f, kFrontAndBack, kAmbientAndDiffuse, material);
  WritePolygonModeRecord(f, kFrontAndBack, kFill);
  WriteFrontFaceRecord(f, kCcw);
  WriteBeginRecord(f, kTriangles);
  for (int i = 0; i < 4; ++i) {
    WriteColorLongRecord(f, colours[i]);
    const Single mx = (base[i][0] + base[i + 1][0]) / 2, my = (base[i][1] + base[i + 1][1]) / 2;
    WriteNormal3fRecord(f, mx, my, 0.5f);
    WriteEdgeFlagRecord(f, true);
    WriteVertex3fRecord(f, cx + base[i][0], cy + base[i][1], 0);
    WriteVertex3fRecord(f, cx + base[i + 1][0], cy + base[i + 1][1], 0);
    WriteEdgeFlagRecord(f, false);
    WriteVertex3fRecord(f, cx, cy, 2);
  }
  WriteEndRecord(f);
}

// An L-shaped floor plate as one polygon record for the control's facetter.
void Plate(BinaryFile& f, double z) {
  WriteColor3fRecord(f, 0.9f, 0.75f, 0.3f);
  WriteNormal3fRecord(f, 0, 0, 1);
  WriteTessBeginPolyRecord(f, 6);
  WriteTessVector3dRecord(f, -4, -4, z);
  WriteTessVector3dRecord(f, 0, -4, z);
  WriteTessVector3dvRecord(f, 0, -1, z);
  WriteTessVector3dvRecord(f, -2, -1, z);
  WriteTessVector3dRecord(f, -2, 2, z);
  WriteTessVector3dRecord(f, -4, 2, z);
  WriteTessEndPolyRecord(f);
}

SceneInfo Info(Long flags, const char* title) {
  SceneInfo info;
  info.Flags = flags;
  info.DrawingNo = "EX-001";
  info.ProjectName = "Quelo example scene";
  info.Setup.Scale = 1.0f;
  info.Revision = 1;
  info.Title = title;
  return info;
}

void Write(const char* path) {
  auto f = CreateSceneFile(path);
  ContainerWriter w(*f);
  // View 1 (FC): everything.
  w.AddInfoChunk(1, 1, Info(0, "Full view"));
  w.BeginGlChunk(1, 1);
  Axes(*f, 6);
  Grid(*f, 5);
  Pyramid(*f, 2, 2);
  Plate(*f, 0.01);
  w.EndGlChunk();
  // View 2 (AR): an information record in the older form 0, axes and plate.
  SceneInfoForm0 old;
  old.DrawingNo = "EX-001";
  old.ProjectName = "Quelo example scene";
  old.Title = "Plate";
  w.AddInfoChunkForm0(2, 2, old);
  w.BeginGlChunk(2, 2);
  Axes(*f, 6);
  Plate(*f, 0);
  w.EndGlChunk();
  // View 3 (A3): compiled with back-face culling.
  w.AddInfoChunk(3, 3, Info(kSceneFlagBackFaceCulling, "Pyramids, culled"));
  w.BeginGlChunk(3, 3);
  Pyramid(*f, -2, 2);
  Pyramid(*f, 2, -2);
  w.EndGlChunk();
  w.Finish();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_example_scene OUTPUT\n");
    return 2;
  }
  try {
    Write(argv[1]);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "make_example_scene: %s: %s\n", argv[1], e.what());
    return 2;
  }
  return 0;
}
