#include "taxonomy/loading_window.h"

#include "taxonomy/taxonomy_loading.h"
#include "ui/qt_text.h"

namespace selvane {

LoadingWindow::LoadingWindow(const WindowContext& context, QWidget* parent)
    : ToolWindow(context, parent, "loading", "Kovril:Loading Taxonomies", {420, 160}) {
  AddHint("Execute asks for a taxonomy file and for the database to make of it.");
  AddButton("&Execute", [this] { Execute(); });
  AddCloseButton();
}

void LoadingWindow::Execute() {
  const std::filesystem::path file =
      context().dialogs.OpenFile(this, FileKind::kTaxonomyFile, "Selecting xml file : ");
  if (file.empty()) return;
  std::filesystem::path database = context().dialogs.SaveFile(
      this, FileKind::kTaxonomyDatabase, "Saving taxonomies on database : ", OverwriteQuestion::kNotAsked);
  if (database.empty()) database = "taxDB";  // in the current folder, also when the dialog was cancelled
  const TaxonomyLoadReport report = LoadTaxonomy(file, database, ExistingFile::kRefuse, progress());
  if (const std::string odd = OddCategoriesText(report); !odd.empty()) {
    ShowMessage(MessageIcon::kInformation, "Loading Taxonomy", ToQt(odd));
  }
  if (report.passed_over.empty()) return;
  ShowMessage(MessageIcon::kWarning, "Loading Taxonomy",
              QString("%1 of the file's lines hold some of the words canonical, type and tree but not all, "
                      "and were passed over. The first is line %2.")
                  .arg(report.passed_over.size())
                  .arg(report.passed_over.front()));
}

}  // namespace selvane
