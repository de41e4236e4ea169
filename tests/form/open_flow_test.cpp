// The open dialog function, the open flow and the toolkit boundary.
#include <stdexcept>

#include "form_fixture.h"
#include "support/temp_dir.h"

namespace quelo::testing {
namespace {

class OpenFlow : public FormTest {
 protected:
  // No scene, so the load shows nothing, but reading it is fine.
  std::string SomeFile(const std::string& name) {
    const auto path = dir.File(name);
    WriteAll(path, {'n', 'o', 't', ' ', 'a', ' ', 's', 'c', 'e', 'n', 'e'});
    return path;
  }
  TempDir dir;
};

TEST_F(OpenFlow, OpensTheChosenPathWhateverItsExtensionAndShowsIt) {
  const auto path = SomeFile("scene.KGL.bak");
  dialog.answer = path;
  form.File_OpenGLFile.UserClick();
  EXPECT_EQ(dialog.shown_filter, "KIVO OpenGL File (*.qgl)|*.qgl|All files (*.*)|*.*");
  EXPECT_EQ(dialog.shown_file_name, "*.qgl");
  EXPECT_TRUE(dialog.shown_cancel_error);
  EXPECT_EQ(form.SceneFileName, path);
  EXPECT_EQ(form.Main_StBr.PanelText(1), path);
  // Rebuilt and fitted: the old list deleted, a new one compiled and drawn.
  EXPECT_TRUE(Traced("glDeleteLists(1, 1)"));
  EXPECT_TRUE(Traced("glGenLists(1)"));
  EXPECT_TRUE(messages.Texts().empty());

  const auto given = SomeFile("given.qgl");  // from the command line: no dialog
  form.OpenSceneFile(given);
  EXPECT_EQ(form.Main_StBr.PanelText(1), given);
  EXPECT_EQ(dialog.shows, 1);
}

TEST_F(OpenFlow, CancelIsSilentAndAFailingDialogSaysSo) {
  const auto first = SomeFile("first.qgl");
  dialog.answer = first;
  form.Open_Cbt.UserClick();
  ASSERT_EQ(form.SceneFileName, first);

  dialog.raise_number = kErrDialogCancel;
  gl.Clear();
  form.File_OpenGLFile.UserClick();
  EXPECT_EQ(dialog.shows, 2);
  EXPECT_EQ(form.Main_StBr.PanelText(1), first);
  EXPECT_TRUE(messages.Texts().empty());
  EXPECT_TRUE(gl.Lines().empty());

  dialog.raise_number = kErrDeviceIO;
  form.Open_Cbt.UserClick();
  EXPECT_EQ(messages.Texts(), (std::vector<std::string>{"Error during OpenFile"}));
  EXPECT_EQ(messages.boxes().entries[0].icon, MessageIcon::kNone);
  EXPECT_EQ(form.SceneFileName, first);
}

TEST_F(OpenFlow, NewPathIsShownEvenWhenReadingItFails) {
  dialog.answer = dir.File("missing.qgl");
  EXPECT_FALSE(RunHandler([&] { form.Open_Cbt.UserClick(); }));
  EXPECT_EQ(form.Main_StBr.PanelText(1), dir.File("missing.qgl"));
  ASSERT_EQ(messages.Texts().size(), 1u);
  EXPECT_EQ(messages.boxes().entries[0].icon, MessageIcon::kCritical);

  form.HorAng(0);  // the program goes on
  form.View_TopView_Click();
  EXPECT_EQ(form.HorAng(), 270);
}

TEST(Boundary, ShowsAnyEscapedErrorAndReportsIt) {
  ScopedRecordedMessages messages;
  EXPECT_TRUE(RunHandler([] {}));
  EXPECT_FALSE(RunHandler([] { Raise(kErrOverflow); }));
  EXPECT_FALSE(RunHandler([] { throw std::length_error("too long"); }));
  EXPECT_EQ(messages.Texts(), (std::vector<std::string>{ErrorText(kErrOverflow), "too long"}));
}

TEST(FilterConversion, ClassicFilterBecomesFltkSyntax) {
  EXPECT_EQ(FltkFilterFromClassic("KIVO OpenGL File (*.qgl)|*.qgl|All files (*.*)|*.*"),
            "KIVO OpenGL File\t*.qgl\nAll files\t*");
  EXPECT_EQ(FltkFilterFromClassic("Pictures|*.png;*.jpg|Odd\tname|*.x"),
            "Pictures\t{*.png,*.jpg}\nOdd name\t*.x");
  // An empty extension stays as given; a description without pattern is dropped.
  EXPECT_EQ(FltkFilterFromClassic("KIVO  File (*.)|*.|Lonely"), "KIVO  File\t*.");
  // Parentheses that hold no pattern stay.
  EXPECT_EQ(FltkFilterFromClassic("Scenes (old)|*.kgl"), "Scenes (old)\t*.kgl");
  EXPECT_EQ(FltkFilterFromClassic(""), "");
}

}  // namespace
}  // namespace quelo::testing
