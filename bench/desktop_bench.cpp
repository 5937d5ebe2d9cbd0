#include <benchmark/benchmark.h>

#include "desktop/system_command_fast_path.h"
#include "desktop/window_geometry.h"
#include "desktop/window_manage_fast_path.h"

namespace {

using namespace nuvrel;

// A hit and a miss of each table: every query of the cascade that reaches these steps pays one.
void BM_SystemCommandFastPath(benchmark::State& state, const char* query) {
    for (auto _ : state) benchmark::DoNotOptimize(desktop::SystemCommandFastPath::match(query));
}
BENCHMARK_CAPTURE(BM_SystemCommandFastPath, hit, "Turn the volume up");
BENCHMARK_CAPTURE(BM_SystemCommandFastPath, korean, "스크린샷 찍어줘");
BENCHMARK_CAPTURE(BM_SystemCommandFastPath, miss, "what is the weather like in Seoul tomorrow");

void BM_WindowManageFastPath(benchmark::State& state, const char* query) {
    for (auto _ : state) benchmark::DoNotOptimize(desktop::WindowManageFastPath::match(query));
}
BENCHMARK_CAPTURE(BM_WindowManageFastPath, hit, "top right quarter");
BENCHMARK_CAPTURE(BM_WindowManageFastPath, korean, "창 다음 화면으로");
BENCHMARK_CAPTURE(BM_WindowManageFastPath, miss, "what is the weather like in Seoul tomorrow");

void BM_WindowGeometry(benchmark::State& state) {
    const desktop::Rect frame{0, 0, 2560, 1415};
    for (auto _ : state)
        for (const core::WindowAction action : core::allWindowActions)
            benchmark::DoNotOptimize(desktop::WindowGeometry::targetRect(action, frame));
}
BENCHMARK(BM_WindowGeometry);

}  // namespace
