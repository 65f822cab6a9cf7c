#include <cmath>

#include "base/error.h"
#include "base/progress.h"
#include "fuzzing.h"
#include "pmml/pmml_reader.h"

using namespace selvane;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder kScratch;
  static const std::filesystem::path kTaxonomy = [] {
    TaxonomyStore::Create(kScratch.path / "tax.mdb");
    return kScratch.path / "tax.mdb";
  }();
  static const TaxonomyStore kStore(kTaxonomy);
  SilentProgress progress;
  const PmmlFile model(AsFile("model.xml", data, size));
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
