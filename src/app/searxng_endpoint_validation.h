#pragma once
// Whether the user's SearXNG address is usable: empty (after trimming) means that none is set
// and is valid; otherwise an http or https URL (scheme in any case) with a host.

#include <string_view>

namespace nuvrel::app::SearXNGEndpointValidation {

bool validate(std::string_view raw);

}  // namespace nuvrel::app::SearXNGEndpointValidation
