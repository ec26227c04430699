// Region arithmetic through the library against raw pixman on the same
// rectangles: the difference is the cost of the wrapper (null handling, the
// bounding-box test, the counted result object).

#include "tela/vector/Regions.h"

#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"

#include <benchmark/benchmark.h>
#include <pixman.h>

#include <random>
#include <vector>

namespace {

constexpr int RECTS = 1000;

// 1,000 scattered small rectangles over a 2000x2000 area; two seeds give two
// overlapping but different shapes.
std::vector<TopDownRect> scattered_rects(unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> position(0, 1960), extent(4, 40);
    std::vector<TopDownRect> rects(RECTS);
    for (TopDownRect& r : rects) {
        r.left = position(rng);
        r.top = position(rng);
        r.right = r.left + extent(rng);
        r.bottom = r.top + extent(rng);
    }
    return rects;
}

RegionPtr tela_region(unsigned seed)
{
    const std::vector<TopDownRect> rects = scattered_rects(seed);
    RegionPtr region;
    OS()->windowing()->createRegion(region, rects.data(), rects.size());
    return region;
}

struct RawRegion {
    explicit RawRegion(unsigned seed)
    {
        std::vector<pixman_box32_t> boxes;
        for (const TopDownRect& r : scattered_rects(seed))
            boxes.push_back({r.left, r.top, r.right, r.bottom});
        pixman_region32_init_rects(&region, boxes.data(), static_cast<int>(boxes.size()));
    }
    ~RawRegion() { pixman_region32_fini(&region); }
    pixman_region32_t region;
};

template <RegionPtr (*Operation)(const RegionPtr&, const RegionPtr&)>
void BM_Tela(benchmark::State& state)
{
    const RegionPtr a = tela_region(1), b = tela_region(2);
    for (auto _ : state)
        benchmark::DoNotOptimize(Operation(a, b));
}

RegionPtr subtract(const RegionPtr& a, const RegionPtr& b)
{
    return region_subtract(a, b, true);
}

using RawOperation = pixman_bool_t (*)(pixman_region32_t*, const pixman_region32_t*, const pixman_region32_t*);

template <RawOperation Operation>
void BM_Pixman(benchmark::State& state)
{
    RawRegion a(1), b(2);
    for (auto _ : state) {
        pixman_region32_t result;
        pixman_region32_init(&result);
        Operation(&result, &a.region, &b.region);
        benchmark::DoNotOptimize(result);
        pixman_region32_fini(&result);
    }
}

} // namespace

BENCHMARK(BM_Tela<region_union>)->Name("union/tela");
BENCHMARK(BM_Pixman<pixman_region32_union>)->Name("union/pixman");
BENCHMARK(BM_Tela<region_intersect>)->Name("intersect/tela");
BENCHMARK(BM_Pixman<pixman_region32_intersect>)->Name("intersect/pixman");
BENCHMARK(BM_Tela<subtract>)->Name("subtract/tela");
BENCHMARK(BM_Pixman<pixman_region32_subtract>)->Name("subtract/pixman");
