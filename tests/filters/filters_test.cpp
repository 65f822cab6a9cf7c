// The filters against straightforward versions of them, on random tables of rules.
#include <algorithm>
#include <bit>
#include <cmath>

#include "filters/cover_filter.h"
#include "filters/mean_linkage.h"
#include "filters/rating_filter.h"
#include "filters/specificity_filter.h"
#include "filters/template_filter.h"
#include "taxonomy/taxonomy_files.h"

namespace selvane::tests {

using Numbers = std::vector<RuleNumber>;
using Items = std::vector<NodeNumber>;
using Ratings = std::map<RuleNumber, float>;

bool Contains(const Items& all, const Items& some) {
  return std::ranges::all_of(some, [&](NodeNumber item) { return std::ranges::count(all, item) > 0; });
}

const Items& SideOf(const Rule& rule, int side) {
  return side == 0 ? rule.antecedent : rule.consequent;
}

// Repeated selection of the greatest figure above `least`, the earlier one of equals.
Numbers BySelection(Numbers left, float least, const auto& figure) {
  for (Numbers ordered;; std::erase(left, ordered.back())) {
    RuleNumber best = 0;
    for (const RuleNumber i : left) best = figure(i) > (best == 0 ? least : figure(best)) ? i : best;
    if (best == 0) return ordered;
    ordered.push_back(best);
  }
}

// What is kept with the threshold 0.5 and the minimum support 0.4, if the filter has rated as it should.
Numbers Rated(const RuleList& rules, bool surprise, bool rare, const RatingFilter& filter, Ratings& ratings) {
  Numbers kept;
  for (RuleNumber i = 1; i <= rules.size(); ++i) {
    const auto& [x, y, s, confidence, a, c, aspec, cspec] = rules[i];
    const float d = a > 0 ? std::abs(s / a - c) : 0;
    const float q = c == 1 ? 0 : d / (1 - c);
    const float dependency = a < 0.5F ? (c < 0.5F ? d : q) : c < 0.5F ? d * a : (q + d * a) * 0.5F;
    if (surprise ? c > 0 : a + c >= 0) ratings[i] = surprise ? (2 * s - a) / c : dependency;
    const float r = filter.ratings()[static_cast<std::size_t>(i) - 1];
    EXPECT_TRUE(std::isnan(r) ? std::isnan(ratings[i]) : r == ratings[i]) << i;
    if (rare ? r > filter.statistics().limit : r <= filter.statistics().limit) kept.push_back(i);
  }
  Numbers ordered = BySelection(kept, surprise ? -1 / 0.4F - 1 : 0, [&](RuleNumber i) { return ratings[i]; });
  ordered.resize(kept.size(), 1);
  return ordered;
}

bool Fits(const RuleTemplate& one, const Rule& rule, int side, NodeNames& names) {
  const auto& wanted = side == 0 ? one.antecedent : one.consequent;
  Items left = SideOf(rule, side);
  for (const auto& [id, kind] : wanted) {
    const bool twice = side == 0 && std::ranges::count(wanted, TemplateFeature{id, kind}) > 1;
    if (kind == FeatureKind::kItem && (twice || !Contains(SideOf(rule, side), {id}))) return false;
    if (kind == FeatureKind::kItem || kind == FeatureKind::kAnyOfClass) continue;
    const auto found = std::ranges::find_if(left, [&, code = names.CodeOf(id)](NodeNumber item) {
      return names.CodeOf(item).find(code) != std::string::npos;
    });
    if (found == left.end()) return false;
    left.erase(found);
  }
  return side == 1 || Fits(one, rule, 1, names);
}

// Of these rules the ones whose specificity is the least above one, and below the bound.
Numbers Least(const RuleList& rules, const Numbers& of, int side, std::int32_t above, std::int32_t bound) {
  std::map<std::int32_t, Numbers> levels;
  for (const RuleNumber i : of) levels[side == 0 ? rules[i].aspec : rules[i].cspec].push_back(i);
  const auto least = levels.upper_bound(above);
  return least == levels.end() || least->first >= bound ? Numbers() : least->second;
}

// Joined pair by pair, each mean computed anew from the points.
std::vector<std::vector<std::size_t>> ClusteredPlainly(const PairDistances& distances, std::size_t clusters) {
  std::vector<std::vector<std::size_t>> left(distances.size());
  for (std::size_t i = 0; i < left.size(); ++i) left[i] = {i};
  while (left.size() > clusters) {
    double least = INFINITY;
    std::pair<std::size_t, std::size_t> nearest;
    for (std::size_t a = 0; a < left.size(); ++a) {
      for (std::size_t b = a + 1; b < left.size(); ++b) {
        std::uint64_t sum = 0;
        for (const std::size_t i : left[a]) {
          for (const std::size_t j : left[b]) sum += distances(i, j);
        }
        const double mean = static_cast<double>(sum) / static_cast<double>(left[a].size() * left[b].size());
        if (mean < least) nearest = {a, b};
        least = std::min(least, mean);
      }
    }
    auto& kept = left[nearest.first];
    kept.insert(kept.end(), left[nearest.second].begin(), left[nearest.second].end());
    std::ranges::sort(kept);
    left.erase(left.begin() + static_cast<std::ptrdiff_t>(nearest.second));
  }
  return left;
}

struct FiltersTest : FolderTest {
  Items Some(unsigned long most) {
    Items items(random() % (most + 1));
    for (NodeNumber& item : items) item = static_cast<NodeNumber>(2 + random() % 2 * (random() % 8));
    return items;
  }
  // Equal figures, zeros, figures that are no numbers, and sides without items.
  RuleList RandomRules() {
    const float figures[] = {0, 0.25F, 0.5F, 0.7F, 0.75F, 1, random() % 4 == 0 ? NAN : 1};
    const auto figure = [&] { return figures[random() % 7]; };
    const auto size = [&] { return static_cast<std::int32_t>(random() % 4); };
    std::vector<Rule> rules(random() % 40);
    for (Rule& rule : rules)
      rule = {Some(3), Some(random() % 3), figure(), figure(), figure(), figure(), size(), size()};
    return RuleList(std::move(rules));
  }
  std::mt19937 random{1};
  SilentProgress progress;
};

TEST_F(FiltersTest, TakeRulesAsTheStoreGivesThem) {
  MakeForeignDatabase("r.mdb",
                      "CREATE TABLE R(\"INDEX\",ANTECEDENT,CONSEQUENT,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC);"
                      "INSERT INTO R VALUES(1,'3-','2-',0.5,'nan',1,1,1,1),(3,'4-','2-',0,0,0,0,1,1);");
  RulesStore store;
  store.OpenRulesDatabase("r.mdb");
  store.OpenRulesTable("R");
  const RuleList rules(store, progress);
  EXPECT_TRUE(rules.size() == 2 && std::isnan(rules[1].confidence));
  EXPECT_TRUE(rules[2].antecedent.empty() && rules[2].support == 0.5F);  // number 2 is missing
}

TEST_F(FiltersTest, EqualThePlainWay) {
  LoadText(NodeLine("A", "C1") + NodeLine("B", "C1.2;C12;D1;D1.2;D1.C.1"), "tax.mdb");
  const TaxonomyStore taxonomy("tax.mdb");
  NodeNames names(taxonomy);
  const std::string sides[] = {"[Any]", "#3", "[#2]1", "[#3]+;#4", "[#2]1;[#2]+", "[#5]*;[#8]1", "#4;#4"};
  const auto any = [&] { return ParseTemplate(sides[random() % 7] + "=>" + sides[random() % 7], taxonomy); };
  for (int table = 0; table < 600; ++table) {
    const RuleList rules = RandomRules();
    RatingFilter rating(rules.size());
    Ratings ratings;
    Numbers kept;
    for (const unsigned run : {0U, 1U, 2U, 3U, 0U}) {
      kept = rating.Run(rules, {RatingViewpoint(run % 2), 0.5F, RatingBehaviour(run / 2), 0.4F}, progress);
      ASSERT_EQ(kept, Rated(rules, run % 2 == 1, run > 1, rating, ratings)) << table;
    }

    TemplateFilter filter(names);
    for (auto n = random() % 3; n > 0; --n) filter.inclusive.push_back(any());
    for (auto n = random() % 3; n > 0; --n) filter.restrictive.push_back(any());
    const Items ground = Some(1);
    Numbers plain;
    Numbers left;
    for (RuleNumber i = 1; i <= rules.size(); ++i) {
      const auto fits = [&](const RuleTemplate& one) { return Fits(one, rules[i], 0, names); };
      const bool in = filter.inclusive.empty() || std::ranges::any_of(filter.inclusive, fits);
      if (in && std::ranges::none_of(filter.restrictive, fits)) plain.push_back(i);
      if (Contains(rules[i].antecedent, ground)) left.push_back(i);
    }
    kept = filter.Run(rules, progress);
    ASSERT_EQ(kept, plain) << table;
    OrderRules(rules, static_cast<RuleOrder>(1 + table % 2), kept);
    const auto figure = table % 2 == 0 ? &Rule::support : &Rule::confidence;
    const Numbers ordered = BySelection(plain, 0, [&](RuleNumber i) { return rules[i].*figure; });
    ASSERT_TRUE(std::equal(ordered.begin(), ordered.end(), kept.begin())) << table;

    const auto bound = static_cast<std::int32_t>(2 + random() % 4);
    SpecificityFilter specificity(rules, bound);
    const SpecificityOptions options{RuleSide::kAntecedent, static_cast<RuleOrder>(1 + table % 2)};
    Numbers shown = Least(rules, Least(rules, left, 0, 0, bound), 1, -1, bound);
    OrderRules(rules, options.order, shown);
    ASSERT_EQ(specificity.MostGeneral(ground, options, progress), shown) << table;
    std::vector<SpecificityStep> walk[3];  // to these depths
    for (const RuleNumber i : shown) {
      for (auto& steps : walk) steps.push_back({i, 0});
    }
    for (std::size_t i = 0; i < 2 * shown.size(); ++i) {
      std::erase_if(left, [&](RuleNumber j) { return std::ranges::count(shown, j) > 0; });
      const Rule& general = rules[shown[i / 2]];
      const int side = static_cast<int>(i % 2);
      Numbers more = Least(rules, left, side, side == 0 ? general.aspec : general.cspec, bound);
      std::erase_if(more, [&](RuleNumber j) {
        const bool same = SideOf(rules[j], 1 - side) == SideOf(general, 1 - side);
        return !same || !Contains(SideOf(rules[j], side), SideOf(general, side));
      });
      OrderRules(rules, options.order, more);
      ASSERT_EQ(specificity.Explore(shown[i / 2], static_cast<SpecificityMove>(side), options, progress),
                more)
          << table;
      shown.insert(shown.end(), more.begin(), more.end());
      for (int depth = 1; depth < 3; ++depth) {  // below the rule, behind what the other move has found
        const auto at = [&](const SpecificityStep& step) {
          return step.rule == shown[i / 2] && step.depth < depth;
        };
        auto place = std::ranges::find_if(walk[depth], at);
        if (place == walk[depth].end()) continue;
        const int below = place->depth + 1;
        while (++place != walk[depth].end() && place->depth >= below) {
        }
        for (const RuleNumber j : more) place = walk[depth].insert(place, {j, below}) + 1;
      }
    }
    for (int depth = 0; depth < 3; ++depth)
      ASSERT_EQ(SpecificityFilter(rules, bound).Walk(ground, options, depth, progress), walk[depth]) << table;

    ItemRegistry items;
    items.nodes = {2, 3, 4, 5, 6};
    items.frequent = {0, 1, 2, 3, 4};
    items.rows = RowBits(5, 200);
    items.row_count = 200;
    std::map<NodeNumber, RowWord> rows;
    // Few rows, so that many rules add equally many.
    for (std::size_t i = 0; i < 5; ++i) items.rows[i][3] = rows[items.nodes[i]] = random() % 64;
    CoverFilter by_covers(rules, items);
    const auto matched = [&](RuleNumber number) {
      RowWord all = rules[number].antecedent.empty() ? 0 : ~RowWord{0};
      for (const NodeNumber item : rules[number].antecedent) all &= rows[item];
      return all;
    };
    for (const CoverFilter::Cover& cover : by_covers.Run(progress)) {
      RowWord covered = 0;
      for (std::size_t chosen = 0; chosen <= cover.rules.size(); ++chosen) {
        std::pair<RuleNumber, RowWord> best;
        for (RuleNumber i = 1; i <= rules.size(); ++i) {
          if (!std::ranges::is_permutation(rules[i].consequent, cover.consequent)) continue;
          const RowWord adds = matched(i) & ~covered;
          if (std::popcount(adds) > std::popcount(best.second)) best = {i, adds};
        }
        ASSERT_EQ(best.first, chosen < cover.rules.size() ? cover.rules[chosen] : 0) << table;
        covered |= best.second;
      }
      PairDistances distances(cover.rules.size());
      for (std::size_t i = 0; i < distances.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
          distances(i, j) =
              static_cast<unsigned>(std::popcount(matched(cover.rules[i]) ^ matched(cover.rules[j])));
        }
      }
      std::vector<Numbers> clusters;
      for (const auto& places : ClusteredPlainly(distances, 2)) {
        for (Numbers& cluster = clusters.emplace_back(); const std::size_t place : places)
          cluster.push_back(cover.rules[place]);
      }
      ASSERT_EQ(by_covers.Cluster(cover, 2, progress), clusters) << table;
    }
  }
}

// Distances of few values, so that most pairs are equally near.
TEST_F(FiltersTest, ClustersEqualThePlainWay) {
  for (int table = 0; table < 1000; ++table) {
    PairDistances distances(random() % 20);
    const auto values = 1 + random() % 4;
    for (std::size_t i = 0; i < distances.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) distances(i, j) = random() % values;
    }
    for (const std::size_t clusters : {1U, 2U, 3U, 7U}) {
      ASSERT_EQ(ClusterByMeanDistance(distances, clusters, progress), ClusteredPlainly(distances, clusters))
          << table << ' ' << distances.size() << ' ' << clusters;
    }
  }
}

TEST(ClusteringWarning, ComesWithHalfAGigabyteForTheLargestCover) {
  std::vector<CoverFilter::Cover> covers(2);
  covers[0].rules.resize(11585);
  EXPECT_EQ(ClusteringWarning(covers), "");
  covers[0].rules.resize(11586);
  EXPECT_EQ(ClusteringWarning(covers), "clustering the 11586 rules of one consequent takes 512 MB of memory");
}

TEST(TemplateBuilder, GivesAClassWithoutASymbolTheKindOfTheOneBefore) {
  TemplateBuilder builder;
  builder.AddClass(RuleSide::kConsequent, 5, "Drugs", "+");
  EXPECT_FALSE(builder.AddClass(RuleSide::kAntecedent, 6, "Asthma", ""));
  EXPECT_EQ(builder.Take().antecedent[0], (TemplateFeature{6, FeatureKind::kSomeOfClass}));
}

}  // namespace selvane::tests
