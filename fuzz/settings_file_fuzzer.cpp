// The settings file, however damaged: reading never throws, and a change rewrites the file as
// one JSON object that keeps every setting the old file held beside the new value.

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "app/json_settings_store.h"
#include "base/files.h"
#include "fuzz_support.h"
#include "fuzz_temporary_folder.h"

using namespace nuvrel;

namespace {

class NoLines final : public base::DiagnosticSink {
public:
    void writeLine(std::string_view) override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto folder = fuzz::temporaryFolder();
    const auto file = folder / "settings.json";
    const std::string_view bytes = fuzz::text(data, size);
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    const base::Diagnostics diagnostics(std::make_shared<NoLines>());
    app::JsonSettingsStore store(file, diagnostics);
    for (const char* key : {"appLanguage", "networkFeaturesEnabled", "searxngEndpoint", ""}) {
        (void)store.string(key);
        (void)store.integer(key);
        (void)store.number(key);
        (void)store.boolean(key);
        (void)store.contains(key);
    }
    store.set("fuzzWritten", std::string("value"));

    const auto written = nlohmann::json::parse(base::readFile(file).value_or(""), nullptr, false);
    FUZZ_CHECK(written.is_object());
    FUZZ_CHECK(written.value("fuzzWritten", "") == "value");
    auto old = nlohmann::json::parse(bytes, nullptr, false);
    if (!old.is_discarded() && old.is_object()) {
        old["fuzzWritten"] = "value";
        FUZZ_CHECK(written == old);
    }
    FUZZ_CHECK(app::JsonSettingsStore(file, diagnostics).string("fuzzWritten") == "value");
    return 0;
}
