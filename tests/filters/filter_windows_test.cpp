#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <optional>

#include "filters/filtering_window.h"
#include "rules/rules_info.h"
#include "support/window_test.h"
#include "ui/number_field.h"

namespace selvane::tests {

constexpr const char* kAskTaxonomy = "open: Selecting taxonomies database : ";
constexpr const char* kAskRules = "open: Loading extracted rules :";

// A second later with each question.
class TickingClock final : public Clock {
 public:
  std::tm LocalTime() const override {
    std::tm time = FixedClock().LocalTime();
    time.tm_sec = stands ? seconds_ : ++seconds_;
    return time;
  }
  bool stands = false;

 private:
  mutable int seconds_ = 0;
};

class FilterWindowsTest : public WindowTest {
 protected:
  FilterWindowsTest() {
    MakeTaxonomy();
    MakeTerms();
    Cli("rules extract terms.mdb --taxonomy tax.mdb --output rules.mdb --min-support 0.2 --min-confidence "
        "0.7");
    for (const char* name : {"tax", "rules"})
      std::filesystem::copy_file(name + std::string(".mdb"), name + std::string("2.mdb"));
    std::filesystem::copy_file("Inforules.dat", "Inforules2.dat");
    dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
    window->Prepare();
    window->show();
  }
  ~FilterWindowsTest() override { CloseWindow(); }
  void CloseWindow() {
    if (window) window->close();
    window.reset();
  }

  void Load(const char* rules = "rules.mdb") {
    dialogs.Expect(kAskRules, {rules});
    Click(Button(*window, "&Load Rules"));
  }
  void ChooseTable(int row) { ClickRow(*window->findChild<QListWidget*>("tables"), row); }
  QTreeWidget& CurrentRules() { return *window->findChild<QTreeWidget*>(); }
  QString Field(const char* name) { return window->findChild<QLineEdit*>(name)->text(); }

  // Opens a filter's window by its command, does something there and closes it.
  void Using(int command, const std::function<void(QWidget& filter)>& act) {
    bool opened = false;
    QTimer::singleShot(0, &*window, [&] {
      QWidget* const filter = QApplication::activeModalWidget();
      ASSERT_NE(filter, nullptr);
      opened = true;
      act(*filter);
      Click(Button(*filter, "&Close"));
      EXPECT_FALSE(filter->isVisible());
      static_cast<QDialog*>(filter)->QDialog::done(0);  // else a window that stays would hold the test
    });
    EXPECT_TRUE(window->Send(command));
    EXPECT_TRUE(opened);
  }
  static QListWidget& List(const QWidget& filter, const QString& name) {
    for (QListWidget* const list : filter.findChildren<QListWidget*>()) {
      if (list->accessibleName() == name) return *list;
    }
    throw std::runtime_error("no list " + name.toStdString());
  }
  static void Select(QListWidget& list, const QString& text) {
    ClickRow(list, list.row(list.findItems(text, Qt::MatchExactly).front()));
  }
  static void Choose(const QWidget& filter, const QString& radio) {
    for (QRadioButton* const button : filter.findChildren<QRadioButton*>()) {
      if (button->text() == radio) button->click();
    }
  }
  TickingClock ticking;
  WindowContext ticking_context{dialogs, application, ticking, settings, ','};
  // Holds the databases that it has opened.
  std::optional<FilteringWindow> window{std::in_place, ticking_context};
};

TEST_F(FilterWindowsTest, LoadsRulesAndChecksThem) {
  for (const char* name : {"Using &Template", "Using &Rating", "Using &Specificity"}) {
    dialogs.Expect("information: Filtering Rules: No loaded rules");
    Click(Button(*window, name));
  }
  Load();
  EXPECT_EQ(Field("Min Support Value  :"), "0,2");
  EXPECT_EQ(window->findChild<QListWidget*>("taxonomies")->count(), 7);
  dialogs.Expect("information: Filtering Rules: No loaded rules");
  Click(Button(*window, "Using &Rating"));
  EXPECT_FALSE(window->findChild<QCheckBox*>()->isEnabled());
  ChooseTable(0);
  EXPECT_EQ(Field("Table Name ") + Field("Rules Number"), "Extracted127");
  EXPECT_EQ(CurrentRules().topLevelItem(35)->text(0).toStdString(),
            "Terbutaline AND  => Respiratory Tract Diseases AND ");
  CurrentRules().setCurrentItem(CurrentRules().topLevelItem(35));
  EXPECT_TRUE(std::ranges::any_of(window->findChildren<QLabel*>(), [](const QLabel* label) {
    return label->text() ==
           "Rule 36: support 0,2, confidence 1, antecedent in 0,2, consequent in 0,466667 of the rows";
  }));
  QTest::keyClicks(window->findChild<QLineEdit*>("search"), "terbuTALINE");
  int shown = 0;
  for (int i = 0; i < 127; ++i) shown += CurrentRules().topLevelItem(i)->isHidden() ? 0 : 1;
  EXPECT_GT(shown, 0);
  EXPECT_LT(shown, 20);

  dialogs.Expect(kAskRules);
  dialogs.Expect("error: Kovril: no file was named*");
  Click(Button(*window, "&Load Rules"));
  EXPECT_EQ(CurrentRules().topLevelItemCount(), 127);  // still there
}

TEST_F(FilterWindowsTest, RefusesRulesThatItCannotFilter) {
  const auto refuses = [this](const char* rules, const char* message) {
    dialogs.Expect(kAskRules, {rules});
    dialogs.Expect(message);
    Click(Button(*window, "&Load Rules"));
  };
  std::filesystem::remove("Inforules2.dat");
  refuses("rules2.mdb", "error: Kovril: Inforules2.dat: *");
  refuses("tax.mdb", "error: Kovril: tax.mdb\n*");  // the window has it open itself
  MakeForeignDatabase("other.mdb", "CREATE TABLE T(a);");
  WriteRulesInfo({}, {}, std::vector<std::string>{"T", "1", "0.1", "0.2", "Diseases", "Nowhere"},
                 "Infoother");
  refuses("other.mdb",
          "warning: Filtering Rules: Unable to load rules:\n Diseases\n Nowhere\n  are missing taxonomies "
          "in taxonomies database");
  EXPECT_EQ(List(*window, "Tables List in Rules Database").count(), 0);
  WriteRulesInfo({}, {}, std::vector<std::string>{"T", "1", "0.1", "0.2"}, "Infoother");
  Load("other.mdb");
  dialogs.Expect("error: Kovril: other.mdb\n\"T\" is no rules table*");
  ChooseTable(0);
  dialogs.Expect("information: Filtering Rules: No loaded rules");
  Click(Button(*window, "Using &Rating"));
  EXPECT_EQ(left_with, 0);
  std::filesystem::copy_file("rules.mdb", "rules.db");
  refuses("rules.db", "error: Loading Rules: Selected file is not containing rules");
  EXPECT_EQ(left_with, -1);
}

TEST_F(FilterWindowsTest, EachFilterSavesWhatTheCommandLineSaves) {
  Load();
  ChooseTable(0);
  Using(FilteringWindow::kRatingCommand, [this](QWidget& filter) {
    EXPECT_EQ(EnabledButtons(filter), "&Filter, &Reset All, &Close");
    Choose(filter, "Surprise");
    Choose(filter, "Statistically rare");
    Click(Button(filter, "&Filter"));
    dialogs.Expect(
        "information: Filtering Rules: Using Rating : Filtered rules saved in database table:\n "
        "Filtered_23_11_14_05_01");
    Click(Button(filter, "&Save rules"));
    EXPECT_EQ(EnabledButtons(filter), "&Filter, &Reset All, &Close");
    Choose(filter, "Dependency");
    auto* const threshold = filter.findChild<NumberField*>();
    threshold->setFocus();
    threshold->setText("0");
    dialogs.Expect(
        "error: Rating: Probability threshold has a Incorrect value \n It'll take in default value ");
    QTest::keyClick(threshold, Qt::Key_Tab);
    QCoreApplication::processEvents();
  });
  EXPECT_EQ(List(*window, "Tables List in Rules Database").item(1)->text(), "Filtered_23_11_14_05_01");
  EXPECT_EQ(Field("Table Name "), "Extracted");
  Using(FilteringWindow::kTemplateCommand, [this](QWidget& filter) {
    auto& classes = List(filter, "Antecedent Taxonomy Classes");
    Select(classes, "Bronchial Diseases");
    dialogs.Expect(
        "warning: Filtering association rules: Select a cardinality symbol for the selected class");
    Click(*filter.findChild<QPushButton*>("ADD class to Antecedent"));
    Click(Button(filter, "&Reset All"));
    const auto lists = [&filter](const char* list, const char* text) {
      return !List(filter, list).findItems(text, Qt::MatchExactly).isEmpty();
    };
    const auto add = [&](const char* side, const char* name, const char* symbol) {
      const QString what = symbol == nullptr ? " Items" : " Taxonomy Classes";
      Select(List(filter, side + what), name);
      if (symbol != nullptr && *symbol != 0) Select(List(filter, side + QString(" Cardinality")), symbol);
      Click(*filter.findChild<QPushButton*>(QString("ADD %1 to ").arg(symbol == nullptr ? "item" : "class") +
                                            side));
    };
    add("Antecedent", "Smoking", nullptr);
    EXPECT_FALSE(lists("Antecedent Items", "Smoking") || lists("Consequent Items", "Smoking"));
    add("Antecedent", "Diseases", "*");
    EXPECT_FALSE(lists("Antecedent Taxonomy Classes", "Diseases"));
    EXPECT_FALSE(Button(filter, "Add &Template").isEnabled());
    add("Consequent", "Heart Diseases", "+");
    EXPECT_FALSE(lists("Consequent Taxonomy Classes", "Heart Diseases"));
    EXPECT_TRUE(lists("Consequent Taxonomy Classes", "Diseases"));
    Click(Button(filter, "Add &Template"));
    EXPECT_EQ(List(filter, "Inclusive Template").item(0)->text(),
              "Smoking   Diseases*   =>Heart Diseases+  ");
    EXPECT_FALSE(filter.findChild<QPushButton*>("ADD class to Antecedent")->isEnabled());
    add("Antecedent", "Propanolamines", "1");
    EXPECT_TRUE(lists("Antecedent Taxonomy Classes", "Propanolamines"));
    add("Consequent", "Any", "");
    EXPECT_FALSE(lists("Consequent Taxonomy Classes", "Any"));
    Choose(filter, "Restrictive Template");
    Click(Button(filter, "Add &Template"));
    EXPECT_EQ(List(filter, "Restrictive Template").item(0)->text(), "Propanolamines   =>Any  ");
    Choose(filter, "Decreasing Confidence");
    Click(Button(filter, "&Filter"));
    EXPECT_EQ(filter.findChild<QTreeWidget*>()->topLevelItemCount(), 2);
    dialogs.Expect(
        "information: Filtering Rules: Using Templates: Filtered rules saved in database "
        "table:\nFiltered_23_11_14_05_02");
    Click(Button(filter, "&Save rules"));
  });
  Using(FilteringWindow::kSpecificityCommand, [this](QWidget& filter) {
    EXPECT_FALSE(Button(filter, "&Filter").isEnabled());
    dialogs.Expect("warning: Using Specificity: Please select rule to be specified");
    Click(Button(filter, "More Specific"));
    Select(List(filter, "Ground Items"), "Amino Alcohols");
    Click(Button(filter, "&ADD"));
    Click(Button(filter, "&Filter"));
    auto& tree = *filter.findChild<QTreeWidget*>();
    const auto found = tree.findItems("Amino Alcohols   => Diseases  ", Qt::MatchExactly);
    ClickRow(tree, tree.indexOfTopLevelItem(found.at(0)));
    Click(Button(filter, "More Specific"));
    EXPECT_GT(found.at(0)->childCount(), 0);
    EXPECT_TRUE(found.at(0)->isExpanded());
    EXPECT_TRUE(found.at(0)->child(0)->text(0).endsWith(" => Diseases  "));
    dialogs.Expect("information: Using Specificity: No more enhanced rule ");
    Click(Button(filter, "Enhance other side"));
  });
  CloseWindow();
  const auto same = [this](const std::string& filter, const std::string& table) {
    for (const char* name : {"rules2.mdb", "Inforules2.dat"}) {
      std::string copy(name);
      copy.replace(copy.find('2'), 1, "3");
      std::filesystem::copy_file(name, copy, std::filesystem::copy_options::overwrite_existing);
    }
    Cli("rules filter " + filter + " --save --taxonomy tax2.mdb rules3.mdb");
    const auto rows = Rows("rules.mdb", "SELECT * FROM " + table);
    EXPECT_FALSE(rows.empty());
    EXPECT_EQ(rows, Rows("rules3.mdb", "SELECT * FROM Filtered_23_11_14_05_00")) << filter;
  };
  same("rating --viewpoint surprise --behaviour rare", "Filtered_23_11_14_05_01");
  same("template --inclusive Smoking;[Diseases]*=>[#34]+ --restrictive [Propanolamines]1=>[Any]",
       "Filtered_23_11_14_05_02");
}

TEST_F(FilterWindowsTest, ACascadeNarrowsFromFilterToFilter) {
  Load();
  ChooseTable(0);
  Click(*window->findChild<QCheckBox*>(), QPoint(8, 8));
  ASSERT_TRUE(window->findChild<QCheckBox*>()->isChecked());
  std::vector<int> lines;
  const auto filter_all = [&](QWidget& filter) {
    Click(Button(filter, "&Filter"));
    lines.push_back(filter.findChild<QTreeWidget*>()->topLevelItemCount());
    dialogs.Expect("information: Filtering Rules: Using *");  // saved by closing
  };
  Using(FilteringWindow::kRatingCommand, filter_all);
  EXPECT_FALSE(window->findChild<QCheckBox*>()->isEnabled());
  Using(FilteringWindow::kTemplateCommand, filter_all);
  Using(FilteringWindow::kCoverCommand, [&](QWidget& filter) {
    dialogs.Expect("open: Opening target database : ", {"terms.mdb"});
    filter_all(filter);
  });
  EXPECT_LT(lines[2], lines[1]);
  EXPECT_EQ(CurrentRules().topLevelItemCount(), 127);
  CloseWindow();
  const std::pair<const char*, int> saved[] = {{"01", lines[1]}, {"02", lines[1]}, {"03", lines[2]}};
  for (const auto& [second, rules] : saved) {
    EXPECT_EQ(Rows("rules.mdb", std::string("SELECT * FROM Filtered_23_11_14_05_") + second).size(),
              static_cast<std::size_t>(rules));
  }
}

TEST_F(FilterWindowsTest, ACascadeTakesOverOnlyWhatItsOwnFiltersSave) {
  const auto click_cascade = [this] { Click(*window->findChild<QCheckBox*>(), QPoint(8, 8)); };
  const auto rules_of_next = [this] {
    int lines = 0;
    Using(FilteringWindow::kTemplateCommand, [&](QWidget& filter) {
      Click(Button(filter, "&Filter"));
      lines = filter.findChild<QTreeWidget*>()->topLevelItemCount();
      Click(Button(filter, "&Reset All"));  // so that closing saves nothing
    });
    return lines;
  };
  const auto save_rare = [this](QWidget& filter) {
    Choose(filter, "Surprise");
    Choose(filter, "Statistically rare");
    Click(Button(filter, "&Filter"));
    dialogs.Expect("information: Filtering Rules: Using Rating *");
    Click(Button(filter, "&Save rules"));
  };
  Load();
  ChooseTable(0);
  Using(FilteringWindow::kRatingCommand, save_rare);  // in no cascade
  EXPECT_EQ(rules_of_next(), 127);
  click_cascade();
  EXPECT_EQ(rules_of_next(), 127);
  EXPECT_EQ(rules_of_next(), 127);  // the one before was closed unsaved
  Using(FilteringWindow::kRatingCommand, save_rare);
  const int kept = rules_of_next();
  EXPECT_TRUE(kept > 0 && kept < 127) << kept;
  EXPECT_EQ(rules_of_next(), kept);
}

TEST_F(FilterWindowsTest, AFilterThatCannotSaveClosesTheSecondTime) {
  Load();
  ChooseTable(0);
  Click(*window->findChild<QCheckBox*>(), QPoint(8, 8));
  Using(FilteringWindow::kRatingCommand, [this](QWidget& filter) {
    Click(Button(filter, "&Filter"));
    dialogs.Expect("information: Filtering Rules: Using Rating *");
  });
  ticking.stands = true;  // so the name of the next table is there already
  const char* const refused =
      "error: Kovril: the table Filtered_23_11_14_05_01 was saved within this second*";
  Using(FilteringWindow::kTemplateCommand, [&](QWidget& filter) {
    Click(Button(filter, "&Filter"));
    dialogs.Expect(refused);
    Click(Button(filter, "&Close"));
    EXPECT_TRUE(filter.isVisible());
    dialogs.Expect(refused);
  });
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_EQ(List(*window, "Tables List in Rules Database").count(), 2);
}

}  // namespace selvane::tests
