// containers_bench.cpp - the range tree against the standard ordered set and
// Boost.Geometry's R-tree.
//
// The range tree is the storage of every contour and region collection, so
// its build, positional insert and erase are compared with std::multiset's
// keyed ones (the same logarithmic work of a balanced tree), and its box
// queries with an R-tree built for the same boxes. Sizes run from a pad's few
// edges to a plane's million.
#include "lib/containers/RangeAvlTree.h"

#include <benchmark/benchmark.h>
#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <random>
#include <set>
#include <vector>

namespace
{
namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;

using base::RangeAvlTree;
using geom::Box;
using geom::Unit;

using BPoint = bg::model::point<double, 2, bg::cs::cartesian>;
using BBox = bg::model::box<BPoint>;
using RTree = bgi::rtree<std::pair<BBox, int>, bgi::quadratic<16>>;

// An edge-sized element with an id.
struct Tile
{
    Box m_Box;
    int m_Id;
    Box GetBBox() const { return m_Box; }
};

// The side of the square field that n tiles of about 10 by 10 cover, so that
// a query box of fixed size meets about the same number of them at any n.
double FieldSide(int n)
{
    return std::sqrt(static_cast<double>(n)) * 10.0;
}

// Tiles along a contour: a serpentine that sweeps the field row by row, each
// tile starting near where the last one ended. This is the shape of the data
// the tree holds, a chain of edges, and what makes its subtree boxes small.
std::vector<Tile> MakeChain(int n, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> jitter(-2.0, 2.0);
    std::uniform_real_distribution<double> size(2.0, 10.0);
    const int perRow = std::max(1, static_cast<int>(std::sqrt(static_cast<double>(n))));
    std::vector<Tile> tiles;
    tiles.reserve(n);
    for (int i = 0; i < n; ++i)
    {
        const int row = i / perRow, column = i % perRow;
        const double x = 10.0 * (row % 2 ? perRow - 1 - column : column) + jitter(random);
        const double y = 10.0 * row + jitter(random);
        tiles.push_back(Tile{Box(Unit(x), Unit(x + size(random)), Unit(y), Unit(y + size(random))), i});
    }
    return tiles;
}

// Tiles in no spatial order at all: the worst case for a tree ordered by
// sequence, whose subtree boxes then all span the field.
std::vector<Tile> MakeScattered(int n, unsigned seed)
{
    std::vector<Tile> tiles = MakeChain(n, seed);
    std::shuffle(tiles.begin(), tiles.end(), std::mt19937(seed));
    return tiles;
}

BBox ToBoost(const Box& box)
{
    return BBox(BPoint(box.GetMinX().GetValue(), box.GetMinY().GetValue()),
                BPoint(box.GetMaxX().GetValue(), box.GetMaxY().GetValue()));
}

std::vector<std::pair<BBox, int>> ToBoost(const std::vector<Tile>& tiles)
{
    std::vector<std::pair<BBox, int>> values;
    values.reserve(tiles.size());
    for (const Tile& t : tiles)
        values.emplace_back(ToBoost(t.m_Box), t.m_Id);
    return values;
}

std::vector<int> RandomPositions(int n, unsigned seed)
{
    // Position k is drawn from [0, k], valid while the sequence grows to n.
    std::mt19937 random(seed);
    std::vector<int> at(n);
    for (int k = 0; k < n; ++k)
        at[k] = static_cast<int>(random() % (k + 1));
    return at;
}

std::vector<int> RandomKeys(int n, unsigned seed)
{
    std::vector<int> keys(n);
    for (int k = 0; k < n; ++k)
        keys[k] = k;
    std::shuffle(keys.begin(), keys.end(), std::mt19937(seed));
    return keys;
}

// --- Build ---

void BM_Build_RangeAvlTree(benchmark::State& state)
{
    const auto tiles = MakeChain(static_cast<int>(state.range(0)), 1);
    for (auto _ : state)
    {
        RangeAvlTree<Tile> tree;
        tree.Build(tiles);
        benchmark::DoNotOptimize(tree.GetBBox());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Build_Multiset(benchmark::State& state)
{
    std::vector<int> keys(state.range(0));
    for (int k = 0; k < static_cast<int>(keys.size()); ++k)
        keys[k] = k;
    for (auto _ : state)
    {
        std::multiset<int> set(keys.begin(), keys.end());
        benchmark::DoNotOptimize(set.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Build_RTreePacked(benchmark::State& state)
{
    const auto values = ToBoost(MakeChain(static_cast<int>(state.range(0)), 1));
    for (auto _ : state)
    {
        RTree rtree(values);
        benchmark::DoNotOptimize(rtree.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// --- Insert n elements one by one ---

void BM_Insert_RangeAvlTreeAtRandomPosition(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const auto tiles = MakeChain(n, 2);
    const auto at = RandomPositions(n, 3);
    for (auto _ : state)
    {
        RangeAvlTree<Tile> tree;
        for (int k = 0; k < n; ++k)
            tree.InsertBefore(at[k] == k ? tree.end() : tree.GetNthIterator(at[k]), tiles[k]);
        benchmark::DoNotOptimize(tree.GetBBox());
        state.PauseTiming();
        tree.Clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_Insert_RangeAvlTreeAtEnd(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const auto tiles = MakeChain(n, 2);
    for (auto _ : state)
    {
        RangeAvlTree<Tile> tree;
        for (int k = 0; k < n; ++k)
            tree.PushBack(tiles[k]);
        benchmark::DoNotOptimize(tree.GetBBox());
        state.PauseTiming();
        tree.Clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_Insert_MultisetRandomKey(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const auto keys = RandomKeys(n, 3);
    for (auto _ : state)
    {
        std::multiset<int> set;
        for (int k = 0; k < n; ++k)
            set.insert(keys[k]);
        benchmark::DoNotOptimize(set.size());
        state.PauseTiming();
        set.clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_Insert_RTree(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const auto values = ToBoost(MakeChain(n, 2));
    for (auto _ : state)
    {
        RTree rtree;
        for (const auto& v : values)
            rtree.insert(v);
        benchmark::DoNotOptimize(rtree.size());
        state.PauseTiming();
        rtree.clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
}

// --- Erase all n elements one by one, in random order ---

void BM_Erase_RangeAvlTreeAtRandomPosition(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const auto tiles = MakeChain(n, 4);
    auto at = RandomPositions(n, 5);
    std::reverse(at.begin(), at.end()); // position drawn from [0, size - 1]
    for (auto _ : state)
    {
        state.PauseTiming();
        RangeAvlTree<Tile> tree;
        tree.Build(tiles);
        state.ResumeTiming();
        for (int k = 0; k < n; ++k)
            tree.Erase(tree.GetNthIterator(at[k]));
        benchmark::DoNotOptimize(tree.GetCount());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_Erase_MultisetRandomKey(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const auto keys = RandomKeys(n, 5);
    std::vector<int> sorted(n);
    for (int k = 0; k < n; ++k)
        sorted[k] = k;
    for (auto _ : state)
    {
        state.PauseTiming();
        std::multiset<int> set(sorted.begin(), sorted.end());
        state.ResumeTiming();
        for (int k = 0; k < n; ++k)
            set.erase(set.find(keys[k]));
        benchmark::DoNotOptimize(set.size());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_Erase_RTree(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    auto values = ToBoost(MakeChain(n, 4));
    auto order = values;
    std::shuffle(order.begin(), order.end(), std::mt19937(5));
    for (auto _ : state)
    {
        state.PauseTiming();
        RTree rtree(values);
        state.ResumeTiming();
        for (const auto& v : order)
            rtree.remove(v);
        benchmark::DoNotOptimize(rtree.size());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

// --- Box queries: 1000 query boxes of 40 by 40 on the field ---

std::vector<Box> MakeQueries(int n)
{
    std::mt19937 random(6);
    std::uniform_real_distribution<double> where(0.0, FieldSide(n));
    std::vector<Box> queries;
    for (int i = 0; i < 1000; ++i)
    {
        const double x = where(random), y = where(random);
        queries.emplace_back(Unit(x), Unit(x + 40), Unit(y), Unit(y + 40));
    }
    return queries;
}

void BM_Query_RangeAvlTree(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    RangeAvlTree<Tile> tree;
    tree.Build(MakeChain(n, 7));
    const auto queries = MakeQueries(n);
    long found = 0;
    for (auto _ : state)
        for (const Box& q : queries)
            for (auto i = tree.BeginInRange(base::k_SkipOutside, q); i.IsDereferenceable(); ++i)
                ++found;
    benchmark::DoNotOptimize(found);
    state.counters["hits/query"] = static_cast<double>(found) / (state.iterations() * queries.size());
    state.SetItemsProcessed(state.iterations() * queries.size());
}

void BM_Query_RTree(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const RTree rtree(ToBoost(MakeChain(n, 7)));
    const auto queries = MakeQueries(n);
    long found = 0;
    std::vector<std::pair<BBox, int>> hits;
    for (auto _ : state)
        for (const Box& q : queries)
        {
            hits.clear();
            rtree.query(bgi::intersects(ToBoost(q)), std::back_inserter(hits));
            found += static_cast<long>(hits.size());
        }
    benchmark::DoNotOptimize(found);
    state.counters["hits/query"] = static_cast<double>(found) / (state.iterations() * queries.size());
    state.SetItemsProcessed(state.iterations() * queries.size());
}

// The same queries on a tree grown by appends, as a contour read edge by
// edge would be.
void BM_Query_RangeAvlTreeAppended(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    RangeAvlTree<Tile> tree;
    for (const Tile& t : MakeChain(n, 7))
        tree.PushBack(t);
    const auto queries = MakeQueries(n);
    long found = 0;
    for (auto _ : state)
        for (const Box& q : queries)
            for (auto i = tree.BeginInRange(base::k_SkipOutside, q); i.IsDereferenceable(); ++i)
                ++found;
    benchmark::DoNotOptimize(found);
    state.counters["hits/query"] = static_cast<double>(found) / (state.iterations() * queries.size());
    state.SetItemsProcessed(state.iterations() * queries.size());
}

// Scattered elements: every subtree box spans the field, so a query visits
// the whole tree; shown for small sizes only, to mark the limit of the design.
void BM_Query_RangeAvlTreeScattered(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    RangeAvlTree<Tile> tree;
    tree.Build(MakeScattered(n, 7));
    const auto queries = MakeQueries(n);
    long found = 0;
    for (auto _ : state)
        for (const Box& q : queries)
            for (auto i = tree.BeginInRange(base::k_SkipOutside, q); i.IsDereferenceable(); ++i)
                ++found;
    benchmark::DoNotOptimize(found);
    state.counters["hits/query"] = static_cast<double>(found) / (state.iterations() * queries.size());
    state.SetItemsProcessed(state.iterations() * queries.size());
}

void BM_Query_RTreeScattered(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const RTree rtree(ToBoost(MakeScattered(n, 7)));
    const auto queries = MakeQueries(n);
    long found = 0;
    std::vector<std::pair<BBox, int>> hits;
    for (auto _ : state)
        for (const Box& q : queries)
        {
            hits.clear();
            rtree.query(bgi::intersects(ToBoost(q)), std::back_inserter(hits));
            found += static_cast<long>(hits.size());
        }
    benchmark::DoNotOptimize(found);
    state.counters["hits/query"] = static_cast<double>(found) / (state.iterations() * queries.size());
    state.SetItemsProcessed(state.iterations() * queries.size());
}
} // namespace

#define TNF_SIZES RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond)

BENCHMARK(BM_Build_RangeAvlTree)->TNF_SIZES;
BENCHMARK(BM_Build_Multiset)->TNF_SIZES;
BENCHMARK(BM_Build_RTreePacked)->TNF_SIZES;
BENCHMARK(BM_Insert_RangeAvlTreeAtRandomPosition)->TNF_SIZES;
BENCHMARK(BM_Insert_RangeAvlTreeAtEnd)->TNF_SIZES;
BENCHMARK(BM_Insert_MultisetRandomKey)->TNF_SIZES;
BENCHMARK(BM_Insert_RTree)->TNF_SIZES;
BENCHMARK(BM_Erase_RangeAvlTreeAtRandomPosition)->TNF_SIZES;
BENCHMARK(BM_Erase_MultisetRandomKey)->TNF_SIZES;
BENCHMARK(BM_Erase_RTree)->TNF_SIZES;
BENCHMARK(BM_Query_RangeAvlTree)->TNF_SIZES;
BENCHMARK(BM_Query_RangeAvlTreeAppended)->TNF_SIZES;
BENCHMARK(BM_Query_RTree)->TNF_SIZES;
BENCHMARK(BM_Query_RangeAvlTreeScattered)
    ->RangeMultiplier(10)
    ->Range(1000, 10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Query_RTreeScattered)->RangeMultiplier(10)->Range(1000, 10000)->Unit(benchmark::kMillisecond);
