#pragma once
// The part of the metadata query language that file search and deletion write: the attributes
// kMDItemFSName, kMDItemPath, kMDItemContentType and kMDItemContentModificationDate; the
// operators CONTAINS[cd], LIKE[cd] (with * and ?), ENDSWITH[cd], ==, >= and <; "&&", "||" and
// parentheses; quoted texts with backslash escapes and CAST("...", "NSDate") dates. Where no
// metadata index answers, a search of the files themselves evaluates it.
//
// Immutable once parsed; one value may be evaluated from any thread.

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::desktop {

// What a predicate can ask of one file. `fsName` is matched as given: callers pass NFC text.
struct MetadataAttributes {
    std::string_view fsName;
    std::string_view path;
    // "public.folder", "com.apple.application-bundle", or another type.
    std::string_view contentType;
    std::optional<std::chrono::system_clock::time_point> modificationDate;
};

class MetadataPredicate {
public:
    // Nothing for a text outside the subset.
    static std::optional<MetadataPredicate> parse(std::string_view format);

    bool matches(const MetadataAttributes& item) const;
    // Whether any clause reads the modification date or the content type, which cost a
    // file's status to know.
    bool needsStatus() const { return needsStatus_; }

    struct Node;

private:
    std::shared_ptr<const Node> root_;
    bool needsStatus_ = false;
};

// Case- and diacritic-insensitive form: canonical decomposition, combining marks dropped,
// lower-cased. ASCII takes a quick path.
std::string foldForSearch(std::string_view text);

}  // namespace nuvrel::desktop
