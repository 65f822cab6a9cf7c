#include "ui/qt_dialogs.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QMessageBox>

#include "support/window_test.h"

namespace selvane::tests {

class QtDialogsTest : public WindowTest {
 protected:
  QtDialogsTest() {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    fs::create_directories("in");
    for (const char* name : {"in/a.txt", "in/b \xc3\xa8.txt", "in/old.mdb"}) WriteText(name, "");
  }
  // Does something with the dialog on top when it is shown, and then accepts it.
  template <typename Dialog>
  static void Meanwhile(std::function<void(Dialog&)> act) {
    QTimer::singleShot(50, qApp, [act = std::move(act)] {
      auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      act(*dialog);
    });
  }
  static void TypeName(QFileDialog& dialog, const QString& name) {
    auto* const edit = dialog.findChild<QLineEdit*>("fileNameEdit");
    edit->setText(name);
    QTest::keyClick(edit, Qt::Key_Return);
  }
  QtDialogs real{settings, {}};
};

TEST_F(QtDialogsTest, OpensOneFileOrSeveralAndRemembersTheFolderOfEachKind) {
  const QString in = PathToQt(folder() / "in");
  Meanwhile<QFileDialog>([&in](QFileDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Selecting query files : ");
    dialog.setDirectory(in);
    TypeName(dialog, "\"a.txt\" \"b \u00e8.txt\"");
  });
  const std::vector<fs::path> files =
      real.OpenFiles(nullptr, FileKind::kQueryFiles, "Selecting query files : ");
  EXPECT_EQ(files, (std::vector<fs::path>{folder() / "in/a.txt", folder() / "in/b \xc3\xa8.txt"}));

  Meanwhile<QFileDialog>([this](QFileDialog& dialog) {
    dialog.setDirectory(PathToQt(folder()));
    TypeName(dialog, "in/old.mdb");
  });
  EXPECT_EQ(real.OpenFile(nullptr, FileKind::kTaxonomyDatabase, "one"), folder() / "in/old.mdb");
  Meanwhile<QFileDialog>([&in](QFileDialog& dialog) {
    EXPECT_EQ(dialog.directory().absolutePath(), in);
    dialog.reject();
  });
  EXPECT_TRUE(real.OpenFiles(nullptr, FileKind::kQueryFiles, "again").empty());

  // A file without a suffix is opened as it is, and one that is not there is not.
  WriteText("in/plain", "");
  Meanwhile<QFileDialog>([](QFileDialog& dialog) {
    Meanwhile<QMessageBox>([&dialog](QMessageBox& box) {
      box.accept();
      TypeName(dialog, "plain");
    });
    TypeName(dialog, "missing");
  });
  EXPECT_EQ(real.OpenFile(nullptr, FileKind::kQueryFiles, "one"), folder() / "in/plain");

  // The folder that the program was started with comes first, once for each kind.
  fs::create_directories("start");
  QtDialogs started(settings, PathToQt(folder() / "start"));
  for (const char* shown : {"start", "in"}) {
    Meanwhile<QFileDialog>([&](QFileDialog& dialog) {
      EXPECT_EQ(dialog.directory().absolutePath(), PathToQt(folder() / shown));
      dialog.setDirectory(in);
      TypeName(dialog, "a.txt");
    });
    EXPECT_EQ(started.OpenFile(nullptr, FileKind::kQueryFiles, shown), folder() / "in/a.txt");
  }
}

TEST_F(QtDialogsTest, AsksBeforeAFileIsReplacedWhereItIsToldTo) {
  const QString old = PathToQt(folder() / "in/old");  // the suffix is added
  bool asked = false;
  for (const auto question : {OverwriteQuestion::kNotAsked, OverwriteQuestion::kAsked}) {
    Meanwhile<QFileDialog>([&](QFileDialog& dialog) {
      if (question == OverwriteQuestion::kAsked) {
        Meanwhile<QMessageBox>([&asked](QMessageBox& box) {
          asked = true;
          box.button(QMessageBox::Yes)->click();
        });
      }
      TypeName(dialog, old);
    });
    EXPECT_EQ(real.SaveFile(nullptr, FileKind::kRulesDatabase, "save", question, {}),
              folder() / "in/old.mdb");
    EXPECT_EQ(asked, question == OverwriteQuestion::kAsked);
  }
  // A suggested name needs no typing.
  Meanwhile<QFileDialog>([](QFileDialog& dialog) {
    dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save)->click();
  });
  EXPECT_EQ(real.SaveFile(nullptr, FileKind::kRulesDatabase, "save", OverwriteQuestion::kAsked, "RulesORNEX"),
            folder() / "in/RulesORNEX.mdb");
}

TEST_F(QtDialogsTest, AQuestionIsAnsweredNoUnlessYesIsChosen) {
  const auto answer = [this](std::function<void(QMessageBox&)> act) {
    Meanwhile<QMessageBox>(std::move(act));
    return real.Ask(nullptr, "Title", "Replace?");
  };
  EXPECT_TRUE(answer([](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); }));
  EXPECT_FALSE(answer([](QMessageBox& box) { box.button(QMessageBox::No)->click(); }));
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape})
    EXPECT_FALSE(answer([key](QMessageBox& box) { QTest::keyClick(&box, key); }));
}

TEST_F(QtDialogsTest, ShowsMessagesWithTheirIconsAndDetails) {
  const std::pair<MessageIcon, QMessageBox::Icon> icons[] = {
      {MessageIcon::kInformation, QMessageBox::Information},
      {MessageIcon::kWarning, QMessageBox::Warning},
      {MessageIcon::kError, QMessageBox::Critical}};
  for (const auto& [icon, shown] : icons) {
    Meanwhile<QMessageBox>([shown = shown](QMessageBox& box) {
      EXPECT_EQ(box.windowTitle() + box.text() + box.detailedText(), "Titlea <b> \n cmore");
      EXPECT_EQ(box.icon(), shown);
      box.accept();
    });
    real.Message(nullptr, icon, "Title", "a <b> \n c", "more");
  }
}

}  // namespace selvane::tests
