#include "taxonomy/selecting_window.h"

#include <QGroupBox>
#include <QHeaderView>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>
#include <vector>

#include "ui/framed.h"
#include "ui/qt_text.h"
#include "ui/text_tree.h"

namespace selvane {

namespace {

constexpr int kNodeRole = Qt::UserRole;

QTreeWidgetItem* MakeItem(const TaxonomyNode& node) {
  // A node without a term is shown by its position, so that it can be seen and chosen.
  auto* const item = new QTreeWidgetItem({ToQt(node.term.empty() ? node.code : node.term)});
  item->setData(0, kNodeRole, node.number);
  item->setToolTip(0, ToQt(node.code));  // one term may stand at several positions
  // Its children are asked for when it is opened.
  item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
  return item;
}

std::vector<NodeNumber> NodesOf(const TextTree& tree) {
  std::vector<NodeNumber> nodes;
  nodes.reserve(static_cast<std::size_t>(tree.topLevelItemCount()));
  for (int i = 0; i < tree.topLevelItemCount(); ++i) {
    nodes.push_back(tree.topLevelItem(i)->data(0, kNodeRole).toInt());
  }
  return nodes;
}

}  // namespace

SelectingWindow::SelectingWindow(const WindowContext& context, QWidget* parent)
    : ToolWindow(context, parent, "selecting", "Kovril:Selecting Taxonomies", {900, 620}),
      existing_(new TextTree("All existing taxonomies")),
      upward_(new TextTree("Pruned hierarchies in upward direction")),
      downward_(new TextTree("Pruned hierarchies in downward direction")) {
  existing_->setObjectName("existing");
  upward_->setObjectName("upward");
  downward_->setObjectName("downward");
  BuildTrees();
  // It never did anything. Users of the window rely on no ancestor going away with a click.
  QPushButton* const upward = AddButton("Prune &upward", [] {});
  upward->setToolTip("Has no effect. The command line has it: selvane-cli taxonomy prune --upward");
  AddButton("Prune &hierarchy", [this] { PruneHierarchy(); });
  AddButton("&Reset all", [this] { ResetAll(); });
  AddButton("&Execute", [this] { Execute(); });
  AddCloseButton();
}

void SelectingWindow::BuildTrees() {
  auto* const chosen = new QSplitter(Qt::Vertical);
  chosen->addWidget(Framed(upward_->accessibleName(), upward_));
  chosen->addWidget(Framed(downward_->accessibleName(), downward_));
  auto* const trees = new QSplitter(Qt::Horizontal);
  trees->addWidget(Framed(existing_->accessibleName(), existing_));
  trees->addWidget(chosen);
  for (QSplitter* const splitter : {trees, chosen}) splitter->setChildrenCollapsible(false);
  trees->setStretchFactor(0, 3);
  trees->setStretchFactor(1, 2);
  for (TextTree* const tree : {upward_, downward_}) tree->setRootIsDecorated(false);
  content().addWidget(trees);
  // Deep lines are reached by scrolling; cut short they would be nothing but three points.
  existing_->header()->setStretchLastSection(false);
  existing_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  connect(existing_, &QTreeWidget::itemExpanded, this,
          [this](QTreeWidgetItem* item) { Run([this, item] { ShowChildren(*item); }); });
}

bool SelectingWindow::Prepare() {
  const std::filesystem::path path = context().dialogs.OpenFile(parentWidget(), FileKind::kTaxonomyDatabase,
                                                                "Selecting taxonomies database : ");
  if (path.empty()) return false;
  taxonomy_.emplace(path);
  ShowCategories();
  return true;
}

void SelectingWindow::ShowCategories() {
  existing_->clear();
  QList<QTreeWidgetItem*> items;
  for (const TaxonomyNode& category : taxonomy_->working().Categories()) items.append(MakeItem(category));
  existing_->addTopLevelItems(items);
}

void SelectingWindow::ShowChildren(QTreeWidgetItem& item) {
  if (item.childIndicatorPolicy() != QTreeWidgetItem::ShowIndicator) return;  // shown before
  QList<QTreeWidgetItem*> items;
  for (const TaxonomyNode& child : taxonomy_->DistinctChildren(item.data(0, kNodeRole).toInt())) {
    items.append(MakeItem(child));
  }
  item.setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicatorWhenChildless);
  item.addChildren(items);
}

void SelectingWindow::PruneHierarchy() {
  QTreeWidgetItem* const item = existing_->currentItem();
  if (item == nullptr || !item->isSelected()) {
    ShowMessage(MessageIcon::kWarning, "Choosing Taxonomy",
                "No taxonomy selected. Select a line of \"All existing taxonomies\" first.");
    return;
  }
  const QString text = item->text(0);
  if (text.startsWith('<')) {
    ShowMessage(MessageIcon::kWarning, "Choosing Taxonomy", "Already pruned");
    return;
  }
  // The chosen line is a new one without the children; the line stays where it is and is marked.
  auto* const chosen = new QTreeWidgetItem({text});
  chosen->setData(0, kNodeRole, item->data(0, kNodeRole));
  chosen->setToolTip(0, item->toolTip(0));
  downward_->addTopLevelItem(chosen);
  item->setText(0, '<' + text + '>');
}

void SelectingWindow::ResetAll() {
  upward_->clear();
  downward_->clear();
  ShowCategories();
}

void SelectingWindow::Execute() {
  taxonomy_->Prune(NodesOf(*upward_), NodesOf(*downward_), progress());
  accept();
}

}  // namespace selvane
