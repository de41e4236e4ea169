// `cmake --install` into a fresh prefix: the programs, the menu entry, the
// file type that knows a scene file by its first bytes, the icon.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/run_command.h"
#include "support/temp_dir.h"

namespace quelo::testing {
namespace {

bool Have(const std::string& program) {
  return RunCommand("sh -c " + Quoted("command -v " + program)).status == 0;
}

// The content type that GLib's database (the desktop's) gives a file, with
// the installed prefix first in the search path.
std::string ContentType(const std::string& share, const std::string& file) {
  const auto r = RunCommand("env XDG_DATA_HOME=/nonexistent XDG_DATA_DIRS=" + Quoted(share) +
                            ":/usr/share gio info -a standard::content-type " + Quoted(file));
  const auto at = r.out.find("content-type: ");
  if (at == std::string::npos) return "";
  return r.out.substr(at + 14, r.out.find('\n', at) - at - 14);
}

class Install : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto r = RunCommand("cmake --install " + Quoted(QUELO_BINARY_DIR) + " --prefix " +
                              Quoted(prefix.path().string()));
    ASSERT_EQ(r.status, 0) << r.out << r.err;
  }
  std::string Share() const { return (prefix.path() / "share").string(); }
  TempDir prefix;
};

TEST_F(Install, PutsProgramsMenuEntryFileTypeAndIcon) {
  for (const char* file :
       {"bin/quelo", "bin/qgl", "share/applications/quelo.desktop", "share/mime/packages/quelo.xml",
        "share/icons/hicolor/scalable/apps/quelo.svg"}) {
    EXPECT_TRUE(std::filesystem::exists(prefix.path() / file)) << file;
  }
  const std::string desktop = Slurp(Share() + "/applications/quelo.desktop");
  for (const char* line : {"\nExec=quelo %f\n", "\nIcon=quelo\n", "\nType=Application\n",
                           "\nMimeType=application/x-kivo-qgl;\n"}) {
    EXPECT_NE(desktop.find(line), std::string::npos) << line;
  }
  const auto version = RunCommand(Quoted(prefix.path().string() + "/bin/quelo") + " --version");
  EXPECT_EQ(version.status, 0);
  EXPECT_NE(version.out.find("quelo 4.0.0"), std::string::npos) << version.out;
}

TEST_F(Install, SceneFilesAreKnownByNameAndByTheirFirstBytes) {
  if (!Have("update-mime-database")) GTEST_SKIP() << "shared-mime-info is not installed";
  // The install brought the prefix's database up to date itself.
  const std::string globs = Slurp(Share() + "/mime/globs2");
  EXPECT_NE(globs.find("application/x-kivo-qgl:*.qgl"), std::string::npos) << globs;
  const std::string magic = Slurp(Share() + "/mime/magic");
  EXPECT_NE(magic.find("application/x-kivo-qgl"), std::string::npos);
  EXPECT_NE(magic.find("KIVO"), std::string::npos);

  if (!Have("gio")) GTEST_SKIP() << "no gio to ask the desktop's database";
  TempDir files;
  const std::string renamed = files.File("scene.data");
  std::filesystem::copy_file(QUELO_SOURCE_DIR "/examples/example.qgl", renamed);
  const std::string other = files.File("other.data");
  WriteAll(other, {'K', 'I', 'V', 'X', 4, 0, 0, 0});
  EXPECT_EQ(ContentType(Share(), renamed), "application/x-kivo-qgl");
  EXPECT_NE(ContentType(Share(), other), "application/x-kivo-qgl");
  // Without the installed type, the same file is not recognised.
  EXPECT_NE(ContentType("/nonexistent", renamed), "application/x-kivo-qgl");
}

}  // namespace
}  // namespace quelo::testing
