// The array forms of ApplyForward and ApplyInverse against a loop of the single-point form,
// on 1,000,000 points, for each kind of transformation. The single-point calls go into the
// shared library as an application's calls do; nothing of them is inlined here.

#include "zusgW1Layout.h"

#include <zuSceneGraph/math/zuGenericTransformation.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using Transform = zu::zuGenericTransformation<float>;
using Vector3 = Wm4::Vector3f;
using Matrix3 = Wm4::Matrix3f;

constexpr int POINT_COUNT = 1000000;

const std::vector<Vector3>& points()
{
    static const std::vector<Vector3> cloud = [] {
        zusg::SplitMix64 random(42);
        std::vector<Vector3> p(POINT_COUNT);
        for (Vector3& v : p)
            v = Vector3(100 * random.unit() - 50, 100 * random.unit() - 50, 100 * random.unit() - 50);
        return p;
    }();
    return cloud;
}

enum Kind { IDENTITY, ROTATION_UNIFORM_SCALE, ROTATION_NON_UNIFORM_SCALE, GENERAL };
const char* const KIND_NAMES[] = {"identity", "rotation-uniform-scale", "rotation-nonuniform-scale", "general"};

Transform makeTransform(Kind kind)
{
    const Matrix3 rotate(Vector3(0.48f, 0.6f, 0.64f), 0.7f);
    Transform t;
    switch (kind) {
    case IDENTITY:
        break;
    case ROTATION_UNIFORM_SCALE:
        t.SetRotate(rotate);
        t.SetUniformScale(1.5f);
        t.SetTranslate(Vector3(1, -2, 3));
        break;
    case ROTATION_NON_UNIFORM_SCALE:
        t.SetRotate(rotate);
        t.SetScale(Vector3(0.5f, 2, 1.25f));
        t.SetTranslate(Vector3(1, -2, 3));
        break;
    case GENERAL:
        t.SetMatrix(Matrix3(1.2f, 0.3f, -0.1f, 0.2f, 0.9f, 0.4f, -0.3f, 0.1f, 1.1f));
        t.SetTranslate(Vector3(1, -2, 3));
        break;
    }
    return t;
}

void forwardArray(benchmark::State& state, Kind kind)
{
    const Transform t = makeTransform(kind);
    const std::vector<Vector3>& in = points();
    std::vector<Vector3> out(in.size());
    for (auto _ : state) {
        t.ApplyForward(POINT_COUNT, in.data(), out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * POINT_COUNT);
}

void forwardSingle(benchmark::State& state, Kind kind)
{
    const Transform t = makeTransform(kind);
    const std::vector<Vector3>& in = points();
    std::vector<Vector3> out(in.size());
    for (auto _ : state) {
        for (int i = 0; i < POINT_COUNT; ++i)
            out[static_cast<size_t>(i)] = t.ApplyForward(in[static_cast<size_t>(i)]);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * POINT_COUNT);
}

void inverseArray(benchmark::State& state, Kind kind)
{
    const Transform t = makeTransform(kind);
    const std::vector<Vector3>& in = points();
    std::vector<Vector3> out(in.size());
    for (auto _ : state) {
        t.ApplyInverse(POINT_COUNT, in.data(), out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * POINT_COUNT);
}

void inverseSingle(benchmark::State& state, Kind kind)
{
    const Transform t = makeTransform(kind);
    const std::vector<Vector3>& in = points();
    std::vector<Vector3> out(in.size());
    for (auto _ : state) {
        for (int i = 0; i < POINT_COUNT; ++i)
            out[static_cast<size_t>(i)] = t.ApplyInverse(in[static_cast<size_t>(i)]);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * POINT_COUNT);
}

const bool registered = [] {
    for (Kind kind : {IDENTITY, ROTATION_UNIFORM_SCALE, ROTATION_NON_UNIFORM_SCALE, GENERAL}) {
        const std::string name = KIND_NAMES[kind];
        benchmark::RegisterBenchmark(("ApplyForward/array/" + name).c_str(), forwardArray, kind)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("ApplyForward/single/" + name).c_str(), forwardSingle, kind)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("ApplyInverse/array/" + name).c_str(), inverseArray, kind)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("ApplyInverse/single/" + name).c_str(), inverseSingle, kind)->Unit(benchmark::kMillisecond);
    }
    return true;
}();

} // namespace
