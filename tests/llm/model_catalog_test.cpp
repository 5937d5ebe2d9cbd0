#include "llm/model_catalog.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "core/localized_strings.h"
#include "llm/error_capture.h"
#include "llm/model_resolution.h"
#include "support/recording_sink.h"
#include "support/temporary_home.h"

namespace nuvrel::llm {

inline void PrintTo(const ModelInstallError& error, std::ostream* out) {
    *out << error.description();
}
inline void PrintTo(const ModelRemoveError& error, std::ostream* out) {
    *out << error.description();
}

namespace {

namespace fs = std::filesystem;
using test::errorOf;

void writeFile(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

std::vector<std::string> partFilesIn(const fs::path& directory) {
    std::vector<std::string> found;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(directory, ignored)) {
        if (entry.path().filename().string().ends_with(".part"))
            found.push_back(entry.path().filename());
    }
    return found;
}

class ModelCatalogTest : public testing::Test {
protected:
    nuvrel::test::TemporaryHome home;
    fs::path models = modelsDirectory();
    fs::path downloads = home.path() / "Downloads";
    const nuvrel::test::RecordedDiagnostics recorded;
};

// Resolution

TEST(CanonicalRouter, FineTunedRouterPrefixesAreCanonicalEverythingElseInterim) {
    for (const char* name : {"nuvrel-nano-router-v5-q4_k_m.gguf", "nuvrel-nano-router-v6-q8_0.gguf",
                             "kestrune-mini-router-ep7-q4_k_m.gguf"}) {
        EXPECT_TRUE(isCanonicalPromptRouter(name)) << name;
        EXPECT_FALSE(isInterimModel(name)) << name;
    }
    for (const char* name : {"qwen2.5-1.5b-instruct-q4_k_m.gguf", "my-router.gguf",
                             "Nuvrel-Nano-Router-v5-q4_k_m.gguf", "kestrune-mini-router.gguf",
                             "x-nuvrel-nano-router-v5.gguf", ""}) {
        EXPECT_FALSE(isCanonicalPromptRouter(name)) << name;
        EXPECT_TRUE(isInterimModel(name)) << name;
    }
}

// Which file the router runs from, for the files installed and the selection, and the lines
// that say why it is not the one asked for.
TEST_F(ModelCatalogTest, TheSelectionThenTheRouterThenTheInterimModelAreResolved) {
    const fs::path router = models / "nuvrel-nano-router-v5-q4_k_m.gguf";
    const fs::path interim = models / "qwen2.5-1.5b-instruct-q4_k_m.gguf";
    const fs::path mini = models / "kestrune-mini-router-ep7-q4_k_m.gguf";
    const fs::path elsewhere = home.path() / "elsewhere";
    const std::string noRouter = "[Nuvrel] fine-tuned router model not found at " +
                                 router.string() + " — falling back to interim model at " +
                                 interim.string() + "\n";
    const auto noSelection = [](const fs::path& selected) {
        return "[Nuvrel] selected model not found at " + selected.string() +
               " — falling back to default priority (nuvrel-nano → interim, always against the "
               "REAL modelsDirectory() regardless of the `modelsDirectory:` argument above — see "
               "this function's own doc comment)\n";
    };
    const struct {
        std::vector<fs::path> installed;
        std::optional<std::string> selection;
        fs::path folder;
        ResolvedModelPath expected;
        std::string log;
    } cases[] = {
        {{}, std::nullopt, models, {interim, true}, noRouter},
        {{}, "", models, {interim, true}, noRouter},
        {{interim, router}, std::nullopt, models, {router, false}, ""},
        {{router, mini}, mini.filename().string(), models, {mini, false}, ""},
        {{models / "my-own.gguf"}, "my-own.gguf", models, {models / "my-own.gguf", true}, ""},
        {{router}, "gone.gguf", models, {router, false}, noSelection(models / "gone.gguf")},
        // The fallback looks in the real models folder, not the one given.
        {{elsewhere / router.filename()},
         "gone.gguf",
         elsewhere,
         {interim, true},
         noSelection(elsewhere / "gone.gguf") + noRouter},
    };
    for (const auto& c : cases) {
        fs::remove_all(models);
        fs::remove_all(elsewhere);
        for (const fs::path& file : c.installed) writeFile(file, "gguf");
        recorded.sink->take();
        EXPECT_EQ(resolveModelPath(c.selection, c.folder, liveFileExists, recorded.diagnostics),
                  c.expected)
            << c.log;
        EXPECT_EQ(recorded.sink->take(), c.log);
    }
    EXPECT_EQ(models, home.path() / ".local/share/nuvrel/models");
    EXPECT_EQ(resolveModelPath(liveFileExists, recorded.diagnostics),
              (ResolvedModelPath{interim, true}));
}

// Listing and names

TEST_F(ModelCatalogTest, ListingKeepsGGUFFilesDefaultFirstThenNaturalOrder) {
    for (const char* name : {"b-model-10.gguf", "qwen2.5-1.5b-instruct-q4_k_m.gguf",
                             "b-model-2.gguf", "A.GGUF", "nuvrel-nano-router-v5-q4_k_m.gguf",
                             "half.gguf.part", "notes.txt", "gguf", "Qwen3-1.7B-Q4_K_M.gguf",
                             "LFM2.5-2.6B-Q4_K_M.gguf", "kestrune-mini-router-ep6-q4_k_m.gguf"}) {
        writeFile(models / name, "x");
    }
    EXPECT_EQ(
        ModelCatalog::installedModelFileNames(models, liveListContents),
        (std::vector<std::string>{"nuvrel-nano-router-v5-q4_k_m.gguf", "A.GGUF", "b-model-2.gguf",
                                  "b-model-10.gguf", "kestrune-mini-router-ep6-q4_k_m.gguf",
                                  "LFM2.5-2.6B-Q4_K_M.gguf", "qwen2.5-1.5b-instruct-q4_k_m.gguf",
                                  "Qwen3-1.7B-Q4_K_M.gguf"}));
    EXPECT_EQ(
        ModelCatalog::selectableModelFileNames(models, liveListContents),
        (std::vector<std::string>{"nuvrel-nano-router-v5-q4_k_m.gguf", "A.GGUF", "b-model-2.gguf",
                                  "b-model-10.gguf", "kestrune-mini-router-ep6-q4_k_m.gguf"}));
    EXPECT_TRUE(
        ModelCatalog::installedModelFileNames(home.path() / "no-such-folder", liveListContents)
            .empty());
}

TEST(ModelNames, DisplayAttributionAndTraitsByFile) {
    EXPECT_EQ(ModelCatalog::displayName("nuvrel-nano-router-v5-q4_k_m.gguf"),
              "Kestrune-nano 0.8B · on-device");
    EXPECT_EQ(ModelCatalog::displayName("my.model.GGUF"), "my.model · on-device");

    EXPECT_EQ(ModelCatalog::attributionName("nuvrel-nano-router-v5-q4_k_m.gguf"),
              "Kestrune-nano 0.8B · on-device");
    EXPECT_EQ(ModelCatalog::attributionName("qwen2.5-1.5b-instruct-q4_k_m.gguf"), "Qwen2.5 1.5B");
    EXPECT_EQ(ModelCatalog::attributionName("qwen3-1.7b-q4_k_m.gguf"), "qwen3-1.7b-q4_k_m.gguf");

    const core::LocalizedStrings& en = core::LocalizedStrings::en();
    EXPECT_EQ(ModelCatalog::consumerTrait("nuvrel-nano-router-v5-q4_k_m.gguf", en),
              en.modelTraitFastLight);
    EXPECT_EQ(ModelCatalog::consumerTrait("Qwen3-1.7B-Q4_K_M.gguf", en), en.modelTraitSummaryModel);
    EXPECT_EQ(ModelCatalog::consumerTrait("kestrune-mini-router-ep7-q4_k_m.gguf", en),
              std::nullopt);
}

// Installing

TEST_F(ModelCatalogTest, InstallCopiesThroughStagingIntoAFolderItCreates) {
    writeFile(downloads / "Mine-7B.GGUF", "weights");
    writeFile(downloads / "other.gguf", "other");
    fs::remove(models);  // asking for the folder made it; the install must make it again

    EXPECT_EQ(ModelCatalog::install(downloads / "Mine-7B.GGUF", models, liveModelFileManager()),
              models / "Mine-7B.GGUF");
    // A staging file left by a crash is replaced, not mistaken for a duplicate.
    writeFile(models / "other.gguf.part", "half of an earlier try");
    EXPECT_EQ(ModelCatalog::install(downloads / "other.gguf", models, liveModelFileManager()),
              models / "other.gguf");

    EXPECT_EQ(readFile(models / "Mine-7B.GGUF"), "weights");
    EXPECT_EQ(readFile(models / "other.gguf"), "other");
    EXPECT_EQ(readFile(downloads / "Mine-7B.GGUF"), "weights");
    EXPECT_TRUE(partFilesIn(models).empty());
    EXPECT_EQ(ModelCatalog::installedModelFileNames(models, liveListContents),
              (std::vector<std::string>{"Mine-7B.GGUF", "other.gguf"}));
}

TEST_F(ModelCatalogTest, InstallRefusesNonGGUFAndDuplicatesBeforeCopying) {
    int copies = 0;
    ModelFileManager counting = liveModelFileManager();
    counting.copyFile = [&, live = counting.copyFile](const fs::path& from, const fs::path& to) {
        ++copies;
        live(from, to);
    };
    writeFile(downloads / "model.bin", "x");
    writeFile(downloads / "model.gguf.part", "x");
    writeFile(downloads / "model.gguf", "new");
    writeFile(models / "model.gguf", "installed before");
    writeFile(models / "model.bin", "x");  // not a model, whether or not the name is taken

    EXPECT_EQ(errorOf<ModelInstallError>(
                  [&] { ModelCatalog::install(downloads / "model.bin", models, counting); }),
              ModelInstallError::notAGGUF("model.bin"));
    EXPECT_EQ(errorOf<ModelInstallError>(
                  [&] { ModelCatalog::install(downloads / "model.gguf.part", models, counting); }),
              ModelInstallError::notAGGUF("model.gguf.part"));
    EXPECT_EQ(errorOf<ModelInstallError>(
                  [&] { ModelCatalog::install(downloads / "model.gguf", models, counting); }),
              ModelInstallError::duplicateFileName("model.gguf"));

    EXPECT_EQ(copies, 0);
    EXPECT_EQ(readFile(models / "model.gguf"), "installed before");
    EXPECT_TRUE(partFilesIn(models).empty());
}

TEST_F(ModelCatalogTest, FailedCopyOrMoveLeavesNeitherStagingNorTarget) {
    writeFile(downloads / "big.gguf", std::string(4096, 'w'));

    ModelFileManager diskFull = liveModelFileManager();
    diskFull.copyFile = [](const fs::path&, const fs::path& to) {
        writeFile(to, std::string(1000, 'w'));
        throw fs::filesystem_error("cannot copy file", to,
                                   std::make_error_code(std::errc::no_space_on_device));
    };
    const auto copyError = errorOf<ModelInstallError>(
        [&] { ModelCatalog::install(downloads / "big.gguf", models, diskFull); });
    ASSERT_TRUE(copyError);
    EXPECT_EQ(copyError->kind(), ModelInstallError::Kind::copyFailed);
    EXPECT_NE(copyError->detail().find(std::generic_category().message(ENOSPC)), std::string::npos)
        << copyError->detail();
    EXPECT_FALSE(fs::exists(models / "big.gguf"));
    EXPECT_TRUE(partFilesIn(models).empty());

    ModelFileManager moveFails = liveModelFileManager();
    moveFails.moveFile = [](const fs::path& from, const fs::path&) {
        throw fs::filesystem_error("cannot rename", from,
                                   std::make_error_code(std::errc::io_error));
    };
    const auto moveError = errorOf<ModelInstallError>(
        [&] { ModelCatalog::install(downloads / "big.gguf", models, moveFails); });
    ASSERT_TRUE(moveError);
    EXPECT_EQ(moveError->kind(), ModelInstallError::Kind::copyFailed);
    EXPECT_FALSE(fs::exists(models / "big.gguf"));
    EXPECT_TRUE(partFilesIn(models).empty());

    // The real disk: a source that is not there.
    const auto missingSource = errorOf<ModelInstallError>(
        [&] { ModelCatalog::install(downloads / "gone.gguf", models, liveModelFileManager()); });
    ASSERT_TRUE(missingSource);
    EXPECT_EQ(missingSource->kind(), ModelInstallError::Kind::copyFailed);
    EXPECT_FALSE(missingSource->detail().empty());
    EXPECT_TRUE(fs::is_empty(models));
}

// Removing

TEST_F(ModelCatalogTest, RemoveRefusesTheSelectedModelAndReportsDeleteFailures) {
    writeFile(models / "in-use.gguf", "x");
    writeFile(models / "spare.gguf", "x");

    EXPECT_EQ(errorOf<ModelRemoveError>([&] {
                  ModelCatalog::remove("in-use.gguf", "in-use.gguf", models,
                                       liveModelFileManager());
              }),
              ModelRemoveError::isCurrentlySelected("in-use.gguf"));
    EXPECT_TRUE(fs::exists(models / "in-use.gguf"));

    ModelCatalog::remove("spare.gguf", "in-use.gguf", models, liveModelFileManager());
    EXPECT_FALSE(fs::exists(models / "spare.gguf"));
    ModelCatalog::remove("in-use.gguf", std::nullopt, models, liveModelFileManager());
    EXPECT_FALSE(fs::exists(models / "in-use.gguf"));

    const auto gone = errorOf<ModelRemoveError>(
        [&] { ModelCatalog::remove("spare.gguf", std::nullopt, models, liveModelFileManager()); });
    ASSERT_TRUE(gone);
    EXPECT_EQ(gone->kind(), ModelRemoveError::Kind::deleteFailed);
    EXPECT_NE(gone->detail().find(std::generic_category().message(ENOENT)), std::string::npos)
        << gone->detail();
}

}  // namespace
}  // namespace nuvrel::llm
