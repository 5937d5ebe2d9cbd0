#include "llm/model_catalog.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/stringpiece.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "base/cancellation.h"
#include "base/text.h"

namespace nuvrel::llm::ModelCatalog {

namespace {

constexpr std::string_view defaultRouterDisplayName = "Kestrune-nano 0.8B · on-device";
constexpr std::string_view onDeviceSuffix = " · on-device";

constexpr std::array<std::pair<std::string_view, std::string_view>, 3> curatedAttributionNames = {{
    {"LFM2.5-2.6B-Q4_K_M.gguf", "LFM2.5 2.6B"},
    {"Qwen3-1.7B-Q4_K_M.gguf", "Qwen3 1.7B"},
    {"qwen2.5-1.5b-instruct-q4_k_m.gguf", "Qwen2.5 1.5B"},
}};

bool hasGGUFExtension(std::string_view fileName) {
    return base::text::lower(fileName).ends_with(".gguf");
}

// Natural order as a file browser shows names: digits compare by value, in the root locale so
// the order does not depend on the process locale.
const icu::Collator* naturalOrderCollator() {
    static const std::unique_ptr<icu::Collator> collator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::Collator> made(
            icu::Collator::createInstance(icu::Locale::getRoot(), status));
        if (U_FAILURE(status)) return std::unique_ptr<icu::Collator>();
        made->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        if (U_FAILURE(status)) return std::unique_ptr<icu::Collator>();
        return made;
    }();
    return collator.get();
}

bool naturallyBefore(const std::string& a, const std::string& b) {
    if (const icu::Collator* collator = naturalOrderCollator()) {
        UErrorCode status = U_ZERO_ERROR;
        const UCollationResult order = collator->compareUTF8(
            icu::StringPiece(a.data(), static_cast<int32_t>(a.size())),
            icu::StringPiece(b.data(), static_cast<int32_t>(b.size())), status);
        if (U_SUCCESS(status) && order != UCOL_EQUAL) return order == UCOL_LESS;
    }
    return a < b;
}

}  // namespace

std::vector<std::string> installedModelFileNames(const std::filesystem::path& directory,
                                                 const ListContentsFn& listContents) {
    std::vector<std::string> names = listContents(directory);
    std::erase_if(names, [](const std::string& name) { return !hasGGUFExtension(name); });
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        const bool aIsDefault = a == defaultModelFileName;
        const bool bIsDefault = b == defaultModelFileName;
        if (aIsDefault != bIsDefault) return aIsDefault;
        return naturallyBefore(a, b);
    });
    return names;
}

bool isInternalOnlyFileName(std::string_view fileName) {
    return fileName == interimModelFileName ||
           std::find(dedicatedSummaryModelFileNames.begin(), dedicatedSummaryModelFileNames.end(),
                     fileName) != dedicatedSummaryModelFileNames.end();
}

std::vector<std::string> selectableModelFileNames(const std::filesystem::path& directory,
                                                  const ListContentsFn& listContents) {
    std::vector<std::string> names = installedModelFileNames(directory, listContents);
    std::erase_if(names, [](const std::string& name) { return isInternalOnlyFileName(name); });
    return names;
}

std::string displayName(std::string_view fileName) {
    if (fileName == defaultModelFileName) return std::string(defaultRouterDisplayName);
    return std::filesystem::path(fileName).stem().string() + std::string(onDeviceSuffix);
}

std::string attributionName(std::string_view fileName) {
    if (fileName == defaultModelFileName) return std::string(defaultRouterDisplayName);
    for (const auto& [curatedFile, name] : curatedAttributionNames) {
        if (fileName == curatedFile) return std::string(name);
    }
    return std::string(fileName);
}

std::optional<std::string> consumerTrait(std::string_view fileName,
                                         const core::LocalizedStrings& strings) {
    if (fileName == defaultModelFileName) return strings.modelTraitFastLight;
    if (fileName == "kestrune-mini-router-ep6-q4_k_m.gguf") return strings.modelTraitLargerHeavier;
    if (fileName == "Qwen3-1.7B-Q4_K_M.gguf") return strings.modelTraitSummaryModel;
    return std::nullopt;
}

std::filesystem::path install(const std::filesystem::path& sourceURL,
                              const std::filesystem::path& directory,
                              const ModelFileManager& fileManager) {
    const std::string fileName = sourceURL.filename().string();
    if (!hasGGUFExtension(fileName)) throw ModelInstallError::notAGGUF(fileName);
    const std::filesystem::path target = directory / fileName;
    if (fileManager.fileExists(target)) throw ModelInstallError::duplicateFileName(fileName);

    std::filesystem::path staging = target;
    staging += ".part";
    const auto removeStaging = [&] {
        try {
            if (fileManager.fileExists(staging)) fileManager.removeFile(staging);
        } catch (const base::Cancelled&) {
            throw;
        } catch (const std::exception&) {
            // Already failing or done: a staging file that will not go is not listed anyway.
        }
    };

    try {
        fileManager.createDirectories(directory);
        if (fileManager.fileExists(staging)) fileManager.removeFile(staging);
        fileManager.copyFile(sourceURL, staging);
        // The rename is the commit: until it happens only the unlisted ".part" file exists.
        fileManager.moveFile(staging, target);
    } catch (const base::Cancelled&) {
        removeStaging();
        throw;
    } catch (const std::exception& error) {
        removeStaging();
        throw ModelInstallError::copyFailed(error.what());
    }
    removeStaging();
    return target;
}

void remove(std::string_view fileName, const std::optional<std::string>& currentlySelectedFileName,
            const std::filesystem::path& directory, const ModelFileManager& fileManager) {
    if (currentlySelectedFileName && fileName == *currentlySelectedFileName) {
        throw ModelRemoveError::isCurrentlySelected(std::string(fileName));
    }
    try {
        fileManager.removeFile(directory / fileName);
    } catch (const base::Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw ModelRemoveError::deleteFailed(error.what());
    }
}

}  // namespace nuvrel::llm::ModelCatalog
