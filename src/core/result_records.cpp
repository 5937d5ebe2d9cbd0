#include "core/result_records.h"

#include <string_view>

std::size_t std::hash<nuvrel::core::WebSource>::operator()(
    const nuvrel::core::WebSource& source) const noexcept {
    // Boost's combine step: cheap, and order-sensitive so that swapped fields differ.
    std::size_t seed = 0;
    for (std::string_view field : {std::string_view(source.title), std::string_view(source.host),
                                   std::string_view(source.url)}) {
        seed ^= std::hash<std::string_view>{}(field) + 0x9e3779b97f4a7c15ULL + (seed << 6) +
                (seed >> 2);
    }
    return seed;
}
