// A 200 MB model file from a loopback host: the program's install (HEAD, parallel ranges,
// progress, SHA-256 while the bytes arrive, the move into place) against the curl tool
// fetching the same file to disk in the same run. Target: within 1.5 times curl's wall time.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "base/sha256.h"
#include "llm/model_downloader.h"
#include "platform/model_storage.h"
#include "support/range_file_server.h"
#include "support/temporary_home.h"

namespace {

using namespace nuvrel;
namespace fs = std::filesystem;

constexpr std::size_t fileSize = 200'000'000;

struct Host {
    std::shared_ptr<const std::string> bytes;
    std::string sha256;
    std::unique_ptr<test::RangeFileServer> server;

    Host() {
        std::string data(fileSize, '\0');
        std::uint64_t x = 88172645463325252ull;
        for (std::size_t i = 0; i + 8 <= data.size(); i += 8) {
            x ^= x << 13, x ^= x >> 7, x ^= x << 17;
            std::memcpy(&data[i], &x, 8);
        }
        data.replace(0, 8, std::string("GGUF\x03\0\0\0", 8));
        base::Sha256 digest;
        digest.update(data);
        sha256 = digest.hex();
        bytes = std::make_shared<const std::string>(std::move(data));
        server = std::make_unique<test::RangeFileServer>(bytes);
    }
};

Host& host() {
    static Host made;
    return made;
}

void BM_InstallThroughModelDownloader(benchmark::State& state) {
    test::TemporaryHome home;
    const auto destination = home.path() / "models" / "model.gguf";
    llm::ModelDownloader::DownloadSettings settings{
        .session = std::make_shared<base::HttpSession>(),
        .openStaging = platform::liveOpenStaging,
        .availableSpace = platform::liveAvailableSpace};
    settings.connections = static_cast<std::size_t>(state.range(0));
    settings.pieceBytes = static_cast<std::uint64_t>(state.range(1)) << 20;
    std::uint64_t seen = 0;
    for (auto _ : state) {
        llm::ModelDownloader::install(
            *base::Url::parse(host().server->url()), destination, llm::liveModelFileManager(),
            [&](const llm::ModelDownloader::Progress& progress) { seen = progress.receivedBytes; },
            llm::ModelDownloader::liveDownload(settings), nullptr, host().sha256);
        state.PauseTiming();
        fs::remove(destination);
        state.ResumeTiming();
    }
    if (seen != fileSize) state.SkipWithError("progress did not reach the whole file");
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fileSize));
}
// Arguments: connections at once, MiB per range.
BENCHMARK(BM_InstallThroughModelDownloader)
    ->Args({4, 4})
    ->Args({1, 4})
    ->Args({4, 16})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();

void BM_CurlToolToDisk(benchmark::State& state) {
    test::TemporaryHome home;
    const auto destination = home.path() / "model.gguf";
    const std::string command =
        "curl -s -f -o '" + destination.string() + "' '" + host().server->url() + "'";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) state.SkipWithError("curl failed");
        state.PauseTiming();
        fs::remove(destination);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fileSize));
}
BENCHMARK(BM_CurlToolToDisk)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

}  // namespace
