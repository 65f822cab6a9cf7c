#include "filters/cover_window.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QSpinBox>
#include <QTreeWidget>

#include "filters/rules_opening.h"
#include "ui/framed.h"
#include "ui/qt_text.h"
#include "ui/searched_tree.h"
#include "ui/text_tree.h"

namespace selvane {

namespace {

constexpr const char* kCaption = "Using Covers";

}  // namespace

CoverWindow::CoverWindow(const WindowContext& context, QWidget* parent, const FilterInput& input)
    : RuleFilterWindow(context, parent, input, "cover", "Kovril: Filtering Rules: Using Covers",
                       "Filtering Rules: Using Covers", "Filtered rules saved in database table:\n"),
      clustering_(new QCheckBox("Clusters for each consequent :")),
      clusters_(new QSpinBox) {
  clusters_->setRange(1, 1000);
  clusters_->setAccessibleName("Clusters for each consequent");
  connect(clustering_, &QCheckBox::toggled, clusters_, &QSpinBox::setEnabled);
  content().addWidget(Framed("Clustering", {clustering_, clusters_}, Qt::Horizontal));
  content().addWidget(FilteredRules(), 1);
  AddFilterButtons();
}

void CoverWindow::Reset() {
  clustering_->setChecked(false);
  clusters_->setEnabled(false);
  clusters_->setValue(5);
  ForgetResult();
}

void CoverWindow::Filter() {
  if (!items_) {
    const std::filesystem::path path =
        context().dialogs.OpenFile(this, FileKind::kTermDatabase, "Opening target database : ");
    if (path.empty()) return;
    items_ = ReadTermTable(path, input().info, input().rules.RunOfSource(), input().taxonomy, progress());
  }
  ForgetResult();
  CoverFilter filter(rules(), *items_);
  const std::vector<CoverFilter::Cover> covers = filter.Run(progress());
  if (covers.empty()) {
    ShowMessage(MessageIcon::kInformation, kCaption, "No rule matches a row of the term table");
    return;
  }
  const std::string warning = ClusteringWarning(covers);
  if (clustering_->isChecked() && !warning.empty() &&
      !context().dialogs.Ask(this, kCaption, ToQt("Please note that " + warning + ". Go on?"))) {
    return;
  }
  filtered().tree().setRootIsDecorated(clustering_->isChecked());
  for (const CoverFilter::Cover& cover : covers) ShowCover(filter, cover);
  filtered().tree().expandAll();
  ResultIsShown();
  progress().SetStatus("Completed!!");
}

void CoverWindow::ShowCover(const CoverFilter& filter, const CoverFilter::Cover& cover) {
  if (!clustering_->isChecked()) {
    for (const RuleNumber number : cover.rules) ShowRule(number, RenderedLine(number));
    return;
  }
  const auto clusters = filter.Cluster(cover, static_cast<std::size_t>(clusters_->value()), progress());
  for (std::size_t i = 0; i < clusters.size(); ++i) {
    auto* const line = new QTreeWidgetItem({QString("%1, cluster %2 of %3")
                                                .arg(ToQt(names().Joined(cover.consequent)))
                                                .arg(i + 1)
                                                .arg(clusters.size())});
    filtered().tree().addTopLevelItem(line);
    for (const RuleNumber number : clusters[i]) ShowRule(number, RenderedLine(number), line);
  }
}

}  // namespace selvane
