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
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

    // `contentExtensions` are the extensions of the type that the file's content shows, for a
    // file whose name tells none: an ENDSWITH clause of the name that holds one of them matches,
    // so a PDF named without ".pdf" is still a PDF.
    bool matches(const MetadataAttributes& item,
                 std::span<const std::string> contentExtensions = {}) const;
    // Whether any clause reads the modification date or the content type, which cost a
    // file's status to know.
    bool needsStatus() const { return needsStatus_; }
    // The endings that ENDSWITH clauses of the name ask for (folded): the extensions of the
    // clauses of a file type. A file that fails even when its content is taken to have all of
    // them need not be read.
    const std::vector<std::string>& nameEndings() const { return nameEndings_; }

    struct Node;

private:
    std::shared_ptr<const Node> root_;
    bool needsStatus_ = false;
    std::vector<std::string> nameEndings_;
};

// Case- and diacritic-insensitive form: canonical decomposition, combining marks dropped,
// lower-cased. ASCII takes a quick path.
std::string foldForSearch(std::string_view text);

}  // namespace nuvrel::desktop
