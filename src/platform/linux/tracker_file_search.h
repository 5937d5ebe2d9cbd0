#pragma once
// The desktop's file index: the files that Tracker 3's miner (localsearch) has indexed, read
// over SPARQL on the session bus. The index gives the files of the scope folders, and the
// predicate is held against each here, exactly as the walk holds it, so that the index and the
// walk give the same files for one query. Only a miner that already runs is asked: a search
// never starts an indexer.
//
// Threading: blocks on the caller's task for at most the time-out; observes its stop request.

#include <optional>
#include <string>
#include <vector>

#include "desktop/file_services.h"

typedef struct _GDBusConnection GDBusConnection;

namespace nuvrel::platform {

// Nothing when the index does not answer within `timeout` seconds: no miner on the bus, a
// failing or slow one, a predicate outside the subset, or no libtracker-sparql installed (it is
// opened on the first call). The caller then walks.
std::optional<std::vector<desktop::MetadataItem>> trackerMetadataQuery(
    GDBusConnection* bus, const std::string& predicateFormat,
    const std::vector<std::string>& scopeDirectories, double timeout);

}  // namespace nuvrel::platform
