#include "taxonomy/restoring_window.h"

#include "taxonomy/taxonomy_loading.h"

namespace selvane {

RestoringWindow::RestoringWindow(const WindowContext& context, QWidget* parent)
    : ToolWindow(context, parent, "restoring", "Kovril:Restoring Taxonomies", {420, 160}) {
  AddHint("Execute asks for a taxonomy database and brings back all that was pruned from it.");
  AddButton("&Execute", [this] { Execute(); });
  AddCloseButton();
}

void RestoringWindow::Execute() {
  // A cancelled dialog gives an empty name, and the error that no file was named.
  RestoreTaxonomy(
      context().dialogs.OpenFile(this, FileKind::kTaxonomyDatabase, "Selecting taxonomies database : "),
      progress());
}

}  // namespace selvane
