#include "llm/model_downloader.h"

#include <gtest/gtest.h>
#include <openssl/sha.h>

#include <cerrno>
#include <filesystem>
#include <random>
#include <system_error>

#include "base/files.h"
#include "base/task.h"
#include "platform/model_storage.h"
#include "support/error_of.h"
#include "support/range_file_server.h"
#include "support/temporary_home.h"

namespace nuvrel::llm {
namespace {

namespace fs = std::filesystem;
namespace Downloader = ModelDownloader;
using test::errorOf;
using test::HostBehaviour;
using test::RangeFileServer;

constexpr std::uint64_t MiB = 1024 * 1024;

// A GGUF header and pseudo-random bytes after it.
std::shared_ptr<const std::string> modelBytes(std::uint64_t size, unsigned seed = 7) {
    std::string bytes(size, '\0');
    std::mt19937 random(seed);
    for (auto& byte : bytes) byte = static_cast<char>(random());
    bytes.replace(0, 8, std::string("GGUF\x03\0\0\0", 8));
    return std::make_shared<const std::string>(std::move(bytes));
}

// Computed in one call, apart from the streaming digest under test.
std::string digestOf(const std::string& bytes) {
    unsigned char digest[SHA256_DIGEST_LENGTH];
    SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest);
    std::string hex;
    for (unsigned char byte : digest) {
        static constexpr char digits[] = "0123456789abcdef";
        hex += {digits[byte >> 4], digits[byte & 15]};
    }
    return hex;
}

struct Attempt {
    fs::path installed;
    std::optional<ModelDownloadError> error;
    std::vector<Downloader::Progress> progress;
    std::vector<std::pair<std::string, std::string>> logged;
};

class ModelDownloaderTest : public ::testing::Test {
protected:
    fs::path destination() const { return home.path() / "models" / "model.gguf"; }
    fs::path staging() const { return home.path() / "models" / "model.gguf.part"; }

    // Installs from `url` on a task of its own; `cancelAt` stops that task once the progress
    // passes the fraction.
    Attempt install(const std::string& url, std::optional<std::string> sha256,
                    std::optional<double> cancelAt = std::nullopt) {
        Attempt attempt;
        std::mutex mutex;
        base::Task<void> task([&] {
            const auto self = base::currentCancellation();
            const auto onProgress = [&](const Downloader::Progress& progress) {
                std::lock_guard lock(mutex);
                attempt.progress.push_back(progress);
                if (cancelAt && progress.fraction() >= *cancelAt) self->cancel();
            };
            const auto log = [&](std::string_view host, std::string_view path) {
                attempt.logged.emplace_back(host, path);
            };
            attempt.error = errorOf<ModelDownloadError>([&] {
                attempt.installed = Downloader::install(
                    *base::Url::parse(url), destination(), liveModelFileManager(), onProgress,
                    Downloader::liveDownload(settings), log, sha256);
            });
        });
        try {
            task.value();
        } catch (const base::Cancelled&) {
            cancelled = true;
        }
        return attempt;
    }

    test::TemporaryHome home;
    Downloader::DownloadSettings settings{.session = std::make_shared<base::HttpSession>(),
                                          .openStaging = platform::liveOpenStaging,
                                          .availableSpace = platform::liveAvailableSpace,
                                          .pieceBytes = MiB};
    bool cancelled = false;
};

TEST(ModelDownloaderRules, RecommendationPiecesAndMemory) {
    const std::uint64_t threshold = std::uint64_t(31) << 29;  // 15.5 GiB
    EXPECT_EQ(Downloader::recommendedModel(threshold - 1).fileName, defaultModelFileName);
    EXPECT_EQ(Downloader::recommendedModel(threshold).fileName, Downloader::router2BFileName);

    using Ranges = std::vector<std::pair<std::uint64_t, std::uint64_t>>;
    EXPECT_EQ(Downloader::pieceRanges(0, 10, 4), (Ranges{{0, 3}, {4, 7}, {8, 9}}));
    EXPECT_EQ(Downloader::pieceRanges(6, 10, 4), (Ranges{{6, 9}}));
    EXPECT_TRUE(Downloader::pieceRanges(10, 10, 4).empty());

    EXPECT_EQ(platform::physicalMemoryFromMeminfo("MemTotal:       16314612 kB\nMemFree: 1 kB\n"),
              16314612ull * 1024);
    EXPECT_EQ(platform::physicalMemoryFromMeminfo("MemFree: 1 kB\n"), std::nullopt);
}

// Every host misbehaviour ends in a clear error with nothing under the final name; where the
// bytes that arrived are still good they stay, and the next install resumes and completes.
TEST_F(ModelDownloaderTest, MisbehavingHostsFailCleanlyAndTheNextInstallCompletes) {
    struct Case {
        const char* name;
        std::uint64_t size;
        HostBehaviour behaviour;
        const char* errorText;
        bool stagingKept;
    };
    const std::vector<Case> cases = {
        {"dropped mid-range", 24 * MiB,
         HostBehaviour::make([](auto& b) { b.dropAtOffset = 12 * MiB; }), "chunk", true},
        {"dropped single stream", 5 * MiB, HostBehaviour::make([](auto& b) { b.dropAtOffset = 0; }),
         "bytes", true},
        {"200 to a range", 24 * MiB, HostBehaviour::make([](auto& b) { b.ignoreRange = true; }),
         "server did not honor Range", false},
        {"416", 24 * MiB, HostBehaviour::make([](auto& b) { b.answer416 = true; }), "416", false},
        {"HEAD and GET sizes differ", 24 * MiB,
         HostBehaviour::make([](auto& b) { b.headLength = 24 * MiB + 3; }), "changed size", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove_all(home.path() / "models");
        const auto file = modelBytes(c.size);
        RangeFileServer host(file);
        host.setBehaviour(c.behaviour);
        const auto failed = install(host.url(), digestOf(*file));
        ASSERT_TRUE(failed.error);
        EXPECT_EQ(failed.error->kind(), ModelDownloadError::Kind::transferFailed);
        EXPECT_NE(failed.error->description().find(c.errorText), std::string::npos)
            << failed.error->description();
        EXPECT_FALSE(fs::exists(destination()));
        EXPECT_EQ(fs::exists(staging()), c.stagingKept);

        host.setBehaviour({});
        const auto done = install(host.url(), digestOf(*file));
        ASSERT_FALSE(done.error) << done.error->description();
        EXPECT_EQ(base::readFile(destination()), *file);
        EXPECT_FALSE(fs::exists(staging()));
        if (c.stagingKept) {
            EXPECT_GT(done.progress.back().resumedFromBytes, 0u);
        }
    }
}

TEST_F(ModelDownloaderTest, CancelledInstallLeavesNoFinalFileAndResumesToTheRightDigest) {
    const auto file = modelBytes(24 * MiB);
    RangeFileServer host(file);
    const auto stopped = install(host.url(), digestOf(*file), 0.5);
    EXPECT_TRUE(cancelled);
    EXPECT_FALSE(fs::exists(destination()));
    ASSERT_TRUE(fs::exists(staging()));
    const auto kept = fs::file_size(staging());
    EXPECT_GT(kept, 0u);

    cancelled = false;
    const auto resumed = install(host.url(), digestOf(*file));
    ASSERT_FALSE(resumed.error) << resumed.error->description();
    EXPECT_EQ(resumed.progress.front().resumedFromBytes, kept);
    EXPECT_EQ(resumed.progress.back().receivedBytes, file->size());
    EXPECT_EQ(base::readFile(destination()), *file);
}

TEST_F(ModelDownloaderTest, RedirectToAnotherHostIsFollowedForEveryRangeAndLoggedAtTheSource) {
    const auto file = modelBytes(12 * MiB);
    RangeFileServer storage(file, "127.0.0.1");
    RangeFileServer front(file, "127.0.0.2");
    HostBehaviour redirect;
    redirect.redirectTo = storage.url();
    front.setBehaviour(redirect);
    const auto done = install(front.url(), digestOf(*file));
    ASSERT_FALSE(done.error) << done.error->description();
    EXPECT_EQ(front.getRequests(), 0);
    EXPECT_EQ(storage.getRequests(), 12);  // one range per MiB
    EXPECT_EQ(done.logged, (decltype(done.logged){{"127.0.0.2", "/model.gguf"}}));
    EXPECT_EQ(base::readFile(destination()), *file);
}

TEST_F(ModelDownloaderTest, ChecksGuardTheFinalName) {
    const auto file = modelBytes(9 * MiB);
    RangeFileServer host(file);
    const std::string right = digestOf(*file);
    const std::string wrong = digestOf("something else");

    const auto mismatch = install(host.url(), wrong);
    EXPECT_EQ(mismatch.error, ModelDownloadError::checksumMismatch(wrong, right));
    EXPECT_FALSE(fs::exists(staging()));
    EXPECT_FALSE(fs::exists(destination()));

    settings.availableSpace = [](const fs::path&) { return std::optional<std::uint64_t>(1000); };
    const auto full = install(host.url(), right);
    EXPECT_EQ(full.error, ModelDownloadError::notEnoughSpace(file->size(), 1000));
    EXPECT_EQ(host.getRequests(), 9);  // the mismatch's ranges only

    settings.availableSpace = platform::liveAvailableSpace;
    settings.openStaging = [](const fs::path& path, std::uint64_t keep) {
        struct FullDisk : Downloader::StagingWriter {
            std::unique_ptr<Downloader::StagingWriter> file;
            std::uint64_t room = 3 * MiB;
            void append(std::string_view bytes) override {
                if (bytes.size() > room) throw std::system_error(EFBIG, std::generic_category());
                room -= bytes.size();
                file->append(bytes);
            }
        };
        auto writer = std::make_unique<FullDisk>();
        writer->file = platform::liveOpenStaging(path, keep);
        return std::unique_ptr<Downloader::StagingWriter>(std::move(writer));
    };
    const auto unwritable = install(host.url(), right);
    ASSERT_TRUE(unwritable.error);
    EXPECT_NE(unwritable.error->description().find("couldn't write"), std::string::npos);
    EXPECT_FALSE(fs::exists(staging()));
    EXPECT_FALSE(fs::exists(destination()));

    settings.openStaging = platform::liveOpenStaging;
    std::string upper = right;
    for (auto& c : upper) c = static_cast<char>(std::toupper(c));
    EXPECT_FALSE(install(host.url(), upper).error);
    const int requests = host.getRequests();
    const auto again = install(host.url(), wrong);  // already there: nothing is fetched or logged
    EXPECT_FALSE(again.error);
    EXPECT_TRUE(again.logged.empty());
    EXPECT_EQ(host.getRequests(), requests);
}

TEST_F(ModelDownloaderTest, AFileThatIsNoGGUFIsRefusedBeforeItGoesIntoPlace) {
    auto page = std::make_shared<const std::string>("<html>Sign in to download</html>");
    RangeFileServer host(page);
    const auto refused = install(host.url(), std::nullopt);
    ASSERT_TRUE(refused.error);
    EXPECT_EQ(refused.error->kind(), ModelDownloadError::Kind::notAGGUF);
    EXPECT_FALSE(fs::exists(staging()));
    EXPECT_FALSE(fs::exists(destination()));
}

}  // namespace
}  // namespace nuvrel::llm
