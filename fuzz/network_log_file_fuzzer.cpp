// The network activity log file, however damaged: what decodes encodes back to the same
// entries, and recording into the file leaves a file that decodes, newest entry first, with
// every entry the old file held (but loopback ones) up to the capacity.

#include <filesystem>
#include <fstream>

#include "app/network_activity_json.h"
#include "app/network_activity_log.h"
#include "base/files.h"
#include "fuzz_support.h"
#include "fuzz_temporary_folder.h"

using namespace nuvrel;
using app::NetworkActivityLog;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(fuzz::text(data, size));
    const auto decoded = app::decodeNetworkActivity(bytes);
    if (decoded)
        FUZZ_CHECK(app::decodeNetworkActivity(app::encodeNetworkActivity(*decoded)) == decoded);

    static const auto folder = fuzz::temporaryFolder();
    const auto file = folder / "network-activity.json";
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out << bytes;
    }
    const auto now = std::chrono::sys_days(std::chrono::year(2026) / 3 / 1);
    NetworkActivityLog log([&] { return now; }, file);
    log.record("example.org", "/a", NetworkActivityLog::Purpose::weather, 12);

    const auto after = app::decodeNetworkActivity(base::readFile(file).value_or(""));
    FUZZ_CHECK(after.has_value() && !after->empty());
    FUZZ_CHECK(after->front().host == "example.org" && after->front().bytes == 12);
    std::size_t kept = 0;
    if (decoded) {
        for (const auto& entry : *decoded) kept += app::isLoopbackHost(entry.host) ? 0 : 1;
    }
    FUZZ_CHECK(after->size() == std::min<std::size_t>(kept + 1, NetworkActivityLog::capacity));
    return 0;
}
