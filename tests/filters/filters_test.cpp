// The filters against straightforward versions of them, on random tables of rules.
#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <map>
#include <random>

#include "filters/cover_filter.h"
#include "filters/rating_filter.h"
#include "filters/specificity_filter.h"
#include "filters/template_filter.h"
#include "taxonomy/taxonomy_files.h"

namespace selvane::tests {

using Numbers = std::vector<RuleNumber>;
using Items = std::vector<NodeNumber>;

bool Contains(const Items& all, const Items& some) {
  return std::ranges::all_of(some, [&](NodeNumber item) { return std::ranges::count(all, item) > 0; });
}

const auto kSide = [](const Rule& rule, int side) { return side == 0 ? rule.antecedent : rule.consequent; };

// Repeated selection of the greatest figure above `least`, the earlier one of equals.
Numbers BySelection(Numbers left, float least, const auto& figure) {
  for (Numbers ordered;; std::erase(left, ordered.back())) {
    RuleNumber best = 0;
    for (const RuleNumber i : left) best = figure(i) > (best == 0 ? least : figure(best)) ? i : best;
    if (best == 0) return ordered;
    ordered.push_back(best);
  }
}

// With the threshold 0.5 and the minimum support 0.4.
Numbers Rated(const RuleList& rules, bool surprise, bool rare, float limit,
              std::map<RuleNumber, float>& ratings) {
  Numbers kept;
  for (RuleNumber i = 1; i <= rules.size(); ++i) {
    const auto& [x, y, s, confidence, a, c, aspec, cspec] = rules[i];
    const float d = a > 0 ? std::abs(s / a - c) : 0;
    const float q = c == 1 ? 0 : d / (1 - c);
    const float dependency = a < 0.5F ? (c < 0.5F ? d : q) : c < 0.5F ? d * a : (q + d * a) * 0.5F;
    if (surprise ? c > 0 : a + c >= 0) ratings[i] = surprise ? (2 * s - a) / c : dependency;
    if (rare ? ratings[i] > limit : ratings[i] <= limit) kept.push_back(i);
  }
  Numbers ordered = BySelection(kept, surprise ? -1 / 0.4F - 1 : 0, [&](RuleNumber i) { return ratings[i]; });
  ordered.resize(kept.size(), 1);
  return ordered;
}

bool Fits(const std::vector<TemplateFeature>& wanted, const Items& items, bool first, NodeNames& names) {
  Items left = items;
  for (const auto& [id, kind] : wanted) {
    const bool twice = first && std::ranges::count(wanted, TemplateFeature{id, kind}) > 1;
    if (kind == FeatureKind::kItem && (twice || !Contains(items, {id}))) return false;
    if (kind == FeatureKind::kItem || kind == FeatureKind::kAnyOfClass) continue;
    const auto found = std::ranges::find_if(left, [&, code = names.CodeOf(id)](NodeNumber item) {
      return names.CodeOf(item).find(code) != std::string::npos;
    });
    if (found == left.end()) return false;
    left.erase(found);
  }
  return true;
}

// Of these rules the ones whose specificity is the least above one, and below the bound.
Numbers Least(const RuleList& rules, const Numbers& of, int side, std::int32_t above, std::int32_t bound) {
  std::map<std::int32_t, Numbers> levels;
  for (const RuleNumber i : of) levels[side == 0 ? rules[i].aspec : rules[i].cspec].push_back(i);
  const auto least = levels.upper_bound(above);
  return least == levels.end() || least->first >= bound ? Numbers() : least->second;
}

struct FiltersTest : FolderTest {
  Items Some(unsigned most) {
    Items items(1 + random() % most);
    for (NodeNumber& item : items) item = static_cast<NodeNumber>(2 + random() % 7);
    return items;
  }
  // A table of random rules: gaps, equal figures, zeros, and figures that are no numbers.
  RuleList RandomRules() {
    const char* const figures[] = {"0", "0.25", "0.5", "0.7", "0.75", "1", random() % 4 == 0 ? "'nan'" : "1"};
    std::string sql = "CREATE TABLE R(\"INDEX\",ANTECEDENT,CONSEQUENT,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC);";
    for (auto i = random() % 40; i > 0; --i) {
      sql += fmt::format("INSERT INTO R VALUES({},'{}'", i + (random() % 9 == 0), ItemsetToText(Some(3)));
      sql += fmt::format(",'{}'", ItemsetToText(Some(2)));
      for (int figure = 0; figure < 4; ++figure) sql += fmt::format(",{}", figures[random() % 7]);
      sql += fmt::format(",{},{});", random() % 4, random() % 4);
    }
    std::filesystem::remove("r.mdb");
    MakeForeignDatabase("r.mdb", sql.c_str());
    RulesStore store;
    store.OpenRulesDatabase("r.mdb");
    store.OpenRulesTable("R");
    return {store, progress};
  }
  std::mt19937 random{1};
  SilentProgress progress;
};

TEST_F(FiltersTest, EqualThePlainWay) {
  LoadText(NodeLine("A", "C1") + NodeLine("B", "C1.2;C12;D1;D1.2;D1.C.1"), "tax.mdb");
  const TaxonomyStore taxonomy("tax.mdb");
  NodeNames names(taxonomy);
  const std::string sides[] = {"[Any]", "#3", "[#2]1", "[#3]+;#4", "[#2]1;[#2]+", "[#5]*;[#8]1", "#4;#4"};
  const auto any = [&] { return ParseTemplate(sides[random() % 7] + "=>" + sides[random() % 7], taxonomy); };
  for (int table = 0; table < 300; ++table) {
    const RuleList rules = RandomRules();
    RatingFilter rating(rules.size());
    std::map<RuleNumber, float> ratings;
    for (const unsigned run : {0, 1, 2, 3, 0}) {
      const bool surprise = run % 2 == 1;
      const Numbers found =
          rating.Run(rules, {RatingViewpoint(surprise), 0.5F, RatingBehaviour(run / 2), 0.4F}, progress);
      ASSERT_EQ(found, Rated(rules, surprise, run / 2 == 1, rating.statistics().limit, ratings)) << table;
    }

    TemplateFilter filter(names);
    for (auto n = random() % 3; n > 0; --n) filter.inclusive.push_back(any());
    for (auto n = random() % 3; n > 0; --n) filter.restrictive.push_back(any());
    Numbers plain;
    for (RuleNumber i = 1; i <= rules.size(); ++i) {
      const auto fits = [&, &rule = rules[i]](const RuleTemplate& one) {
        return Fits(one.antecedent, rule.antecedent, true, names) &&
               Fits(one.consequent, rule.consequent, false, names);
      };
      const bool in = filter.inclusive.empty() || std::ranges::any_of(filter.inclusive, fits);
      if (in && std::ranges::none_of(filter.restrictive, fits)) plain.push_back(i);
    }
    Numbers kept = filter.Run(rules, progress);
    ASSERT_EQ(kept, plain) << table;
    OrderRules(rules, RuleOrder::kDecreasingConfidence, kept);
    const Numbers ordered = BySelection(plain, 0, [&](RuleNumber i) { return rules[i].confidence; });
    ASSERT_TRUE(std::equal(ordered.begin(), ordered.end(), kept.begin())) << table;

    const auto bound = static_cast<std::int32_t>(2 + random() % 4);
    const Items ground = Some(1);
    SpecificityFilter specificity(rules, bound);
    Numbers left;
    for (RuleNumber i = 1; i <= rules.size(); ++i) {
      if (Contains(rules[i].antecedent, ground)) left.push_back(i);
    }
    Numbers shown = specificity.MostGeneral(ground, RuleSide::kAntecedent, progress);
    ASSERT_EQ(shown, Least(rules, Least(rules, left, 0, 0, bound), 1, -1, bound)) << table;
    for (std::size_t i = 0; i < 2 * shown.size(); ++i) {
      std::erase_if(left, [&](RuleNumber j) { return std::ranges::count(shown, j) > 0; });
      const Rule& general = rules[shown[i / 2]];
      const int side = static_cast<int>(i % 2);
      Numbers more = Least(rules, left, side, side == 0 ? general.aspec : general.cspec, bound);
      std::erase_if(more, [&](RuleNumber j) {
        const bool same = kSide(rules[j], 1 - side) == kSide(general, 1 - side);
        return !same || !Contains(kSide(rules[j], side), kSide(general, side));
      });
      ASSERT_EQ(specificity.MoreSpecific(shown[i / 2], static_cast<RuleSide>(side)), more) << table;
      shown.insert(shown.end(), more.begin(), more.end());
    }

    ItemRegistry items{{2, 3, 4, 5, 6}, {}, {}, RowBits(5, 200), 200, SIZE_MAX};
    std::map<NodeNumber, RowWord> rows;
    for (std::size_t i = 0; i < 5; ++i) items.rows[i][3] = rows[items.nodes[i]] = random();
    for (const CoverFilter::Cover& cover : CoverFilter(rules, items).Run(progress)) {
      RowWord covered = 0;
      for (std::size_t chosen = 0; chosen <= cover.rules.size(); ++chosen) {
        std::pair<RuleNumber, RowWord> best;
        for (RuleNumber i = 1; i <= rules.size(); ++i) {
          if (!std::ranges::is_permutation(rules[i].consequent, cover.consequent)) continue;
          RowWord adds = rules[i].antecedent.empty() ? 0 : ~covered;
          for (const NodeNumber item : rules[i].antecedent) adds &= rows[item];
          if (std::popcount(adds) > std::popcount(best.second)) best = {i, adds};
        }
        ASSERT_EQ(best.first, chosen < cover.rules.size() ? cover.rules[chosen] : 0) << table;
        covered |= best.second;
      }
    }
  }
}

TEST(TemplateBuilder, GivesAClassWithoutASymbolTheKindOfTheOneBefore) {
  TemplateBuilder builder;
  builder.AddClass(RuleSide::kConsequent, 5, "Drugs", "+");
  EXPECT_FALSE(builder.AddClass(RuleSide::kAntecedent, 6, "Asthma", ""));
  EXPECT_EQ(builder.Line(), " =>Drugs+  ");
  EXPECT_EQ(builder.Take().antecedent[0], (TemplateFeature{6, FeatureKind::kSomeOfClass}));
}

}  // namespace selvane::tests
