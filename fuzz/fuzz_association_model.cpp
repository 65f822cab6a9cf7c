#include <cmath>

#include "base/error.h"
#include "base/file.h"
#include "base/progress.h"
#include "fuzzing.h"
#include "pmml/pmml_reader.h"

using namespace selvane;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder kScratch;
  const std::filesystem::path path = kScratch.path / "model.xml";
  OutputFile file(path);
  file.Write(TextOf(data, size));
  file.Close();
  static const std::filesystem::path kTaxonomy = [] {
    TaxonomyStore::Create(kScratch.path / "tax.mdb");
    return kScratch.path / "tax.mdb";
  }();
  static const TaxonomyStore kStore(kTaxonomy);
  SilentProgress progress;
  const PmmlFile model(path);
  try {
    const PmmlHead head = model.ReadHead(progress);
    Require(head.taxonomies.size() == head.taxonomy_codes.size());
  } catch (const InputError&) {
  }
  try {
    for (const Rule& rule : model.ReadRules(kStore, progress)) {
      Require(std::isfinite(rule.support) && std::isfinite(rule.confidence));
      Require(rule.antecedent.size() == static_cast<std::size_t>(rule.aspec));
    }
  } catch (const InputError&) {
  }
  return 0;
}
