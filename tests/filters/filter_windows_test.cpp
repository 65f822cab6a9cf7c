#include <QApplication>
#include <QDialog>
#include <QRadioButton>
#include <optional>

#include "filters/filtering_window.h"
#include "rules/rules_info.h"
#include "support/window_test.h"
#include "ui/number_field.h"

namespace selvane::tests {

constexpr const char* kAskRules = "open: Loading extracted rules :";

// A second later with each question.
class TickingClock final : public Clock {
 public:
  std::tm LocalTime() const override {
    return {stands ? seconds_ : ++seconds_, 5, 14, 23, 10, 0, 0, 0, 0, 0, nullptr};
  }
  bool stands = false;

 private:
  mutable int seconds_ = 0;
};

class FilterWindowsTest : public WindowTest {
 protected:
  FilterWindowsTest() {
    MakeRules();
    for (const auto& [name, copy] :
         {std::pair("tax.mdb", "tax2.mdb"), {"rules.mdb", "rules2.mdb"}, {"Inforules.dat", "Inforules2.dat"}})
      fs::copy_file(name, copy);
    dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
    window->Prepare();
    window->show();
  }
  ~FilterWindowsTest() override {
    if (window) window->close();
  }

  void LoadTable() {
    Load("rules.mdb");
    ChooseTable(0);
  }
  void ClickCascade() { Click(*window->findChild<QCheckBox*>(), QPoint(8, 8)); }
  void Load(const char* rules) {
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
  // Filters; the number of rules that are left.
  static int Filtered(const QWidget& filter) {
    Click(Button(filter, "&Filter"));
    return filter.findChild<QTreeWidget*>()->topLevelItemCount();
  }
  static void FilterRare(const QWidget& filter) {
    for (const char* choice : {"Surprise", "Statistically rare"}) Choose(filter, choice);
    Filtered(filter);
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
  Load("rules.mdb");
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
  const QString told =
      "Rule 36: support 0,2, confidence 1, antecedent in 0,2, consequent in 0,466667 of the rows";
  EXPECT_TRUE(std::ranges::any_of(window->findChildren<QLabel*>(),
                                  [&](auto* label) { return label->text() == told; }));
  dialogs.Expect(kAskRules);
  dialogs.Expect("error: Kovril: no file was named*");
  Click(Button(*window, "&Load Rules"));
  EXPECT_EQ(CurrentRules().topLevelItemCount(), 127);  // as before
}

TEST_F(FilterWindowsTest, RefusesRulesThatItCannotFilter) {
  const auto refuses = [this](const char* rules, const char* message) {
    dialogs.Expect(kAskRules, {rules});
    dialogs.Expect(message);
    Click(Button(*window, "&Load Rules"));
  };
  refuses("tax.mdb", "error: Kovril: tax.mdb\n*");  // the window has it open itself
  MakeForeignDatabase("other.mdb", "CREATE TABLE T(a);");
  WriteRulesInfo({}, {}, Texts{"T", "1", "0.1", "0.2", "Diseases", "Nowhere"}, "Infoother");
  refuses("other.mdb",
          "warning: Filtering Rules: Unable to load rules:\n Diseases\n Nowhere\n  are missing taxonomies "
          "in taxonomies database");
  EXPECT_EQ(List(*window, "Tables List in Rules Database").count(), 0);
  WriteRulesInfo({}, {}, Texts{"T", "1", "0.1", "0.2"}, "Infoother");
  Load("other.mdb");
  dialogs.Expect("error: Kovril: other.mdb\n\"T\" is no rules table*");
  ChooseTable(0);
  dialogs.Expect("information: Filtering Rules: No loaded rules");
  Click(Button(*window, "Using &Rating"));
  EXPECT_EQ(left_with, 0);
  fs::copy_file("rules.mdb", "rules.db");
  refuses("rules.db", "error: Loading Rules: Selected file is not containing rules");
  EXPECT_EQ(left_with, -1);
}

TEST_F(FilterWindowsTest, EachFilterSavesWhatTheCommandLineSaves) {
  LoadTable();
  Using(FilteringWindow::kRatingCommand, [this](QWidget& filter) {
    EXPECT_EQ(EnabledButtons(filter), "&Filter, &Reset All, &Close");
    FilterRare(filter);
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
    Select(List(filter, "Antecedent Taxonomy Classes"), "Bronchial Diseases");
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
    EXPECT_EQ(Filtered(filter), 2);
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
  window.reset();
  const auto same = [this](const std::string& filter, const std::string& table, const std::string& copy) {
    fs::copy_file("rules2.mdb", copy + ".mdb");
    fs::copy_file("Inforules2.dat", "Info" + copy + ".dat");
    Cli("rules filter " + filter + " --save --taxonomy tax2.mdb " + copy + ".mdb");
    const auto rows = Rows("rules.mdb", "SELECT * FROM " + table);
    EXPECT_FALSE(rows.empty());
    EXPECT_EQ(rows, Rows(copy + ".mdb", "SELECT * FROM Filtered_23_11_14_05_00")) << filter;
  };
  same("rating --viewpoint surprise --behaviour rare", "Filtered_23_11_14_05_01", "a");
  same("template --inclusive Smoking;[Diseases]*=>[#34]+ --restrictive [Propanolamines]1=>[Any]",
       "Filtered_23_11_14_05_02", "b");
}

TEST_F(FilterWindowsTest, ACascadeNarrowsFromFilterToFilter) {
  LoadTable();
  ClickCascade();
  std::vector<int> lines;
  const auto filter_all = [&](QWidget& filter) {
    lines.push_back(Filtered(filter));
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
  // A filter that cannot save closes the second time.
  ticking.stands = true;  // so the name of the next table is there already
  const char* const refused =
      "error: Kovril: the table Filtered_23_11_14_05_03 was saved within this second*";
  Using(FilteringWindow::kTemplateCommand, [&](QWidget& filter) {
    Filtered(filter);
    dialogs.Expect(refused);
    Click(Button(filter, "&Close"));
    EXPECT_TRUE(filter.isVisible());
    dialogs.Expect(refused);
  });
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_EQ(List(*window, "Tables List in Rules Database").count(), 4);
  EXPECT_EQ(CurrentRules().topLevelItemCount(), 127);
  window.reset();
  for (const auto& [second, rules] : {std::pair("01", lines[1]), {"02", lines[1]}, {"03", lines[2]}}) {
    const auto rows = Rows("rules.mdb", std::string("SELECT * FROM Filtered_23_11_14_05_") + second);
    EXPECT_EQ(rows.size(), static_cast<std::size_t>(rules));
  }
}

TEST_F(FilterWindowsTest, ACascadeTakesOverOnlyWhatItsOwnFiltersSave) {
  const auto rules_of_next = [this] {
    int lines = 0;
    Using(FilteringWindow::kTemplateCommand, [&](QWidget& filter) {
      lines = Filtered(filter);
      Click(Button(filter, "&Reset All"));  // so that closing saves nothing
    });
    return lines;
  };
  const auto save_rare = [this](QWidget& filter) {
    FilterRare(filter);
    dialogs.Expect("information: Filtering Rules: Using Rating *");
    Click(Button(filter, "&Save rules"));
  };
  LoadTable();
  Using(FilteringWindow::kRatingCommand, save_rare);  // in no cascade
  EXPECT_EQ(rules_of_next(), 127);
  ClickCascade();
  EXPECT_EQ(rules_of_next(), 127);
  EXPECT_EQ(rules_of_next(), 127);  // the one before was closed unsaved
  Using(FilteringWindow::kRatingCommand, save_rare);
  const int kept = rules_of_next();
  EXPECT_TRUE(kept > 0 && kept < 127) << kept;
  EXPECT_EQ(rules_of_next(), kept);
}

}  // namespace selvane::tests
