#include "desktop/finder_saved_search.h"

#include "base/files.h"
#include "base/text.h"

namespace nuvrel::desktop::FinderSavedSearch {
namespace {

// A property list's strings are XML text.
std::string xmlText(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string stringElement(std::string_view indent, std::string_view value) {
    return std::string(indent) + "<string>" + xmlText(value) + "</string>\n";
}

}  // namespace

std::string propertyList(std::string_view keyword) {
    const std::string escaped =
        base::text::replaceAll(base::text::replaceAll(keyword, "\\", "\\\\"), "\"", "\\\"");
    std::string list =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
        "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n"
        "<dict>\n"
        "    <key>RawQuery</key>\n";
    list += stringElement("    ", "kMDItemFSName = \"*" + escaped + "*\"cd");
    list +=
        "    <key>RawQueryDict</key>\n"
        "    <dict>\n"
        "        <key>FinderSpotlightQuery</key>\n";
    list += stringElement("        ", keyword);
    list +=
        "        <key>ScopeArray</key>\n"
        "        <array>\n"
        "            <string>/</string>\n"
        "        </array>\n"
        "    </dict>\n"
        "    <key>SearchCriteria</key>\n"
        "    <dict>\n"
        "        <key>CurrentFolderPath</key>\n"
        "        <string>/</string>\n"
        "        <key>FXCriteriaSlices</key>\n"
        "        <array/>\n"
        "        <key>FXScopeArrayOfPaths</key>\n"
        "        <array>\n"
        "            <string>/</string>\n"
        "        </array>\n"
        "        <key>SearchScope</key>\n"
        "        <string>SCEV_SEARCH_SCOPE_EVERYWHERE</string>\n"
        "    </dict>\n"
        "</dict>\n"
        "</plist>\n";
    return list;
}

std::filesystem::path write(std::string_view keyword, const std::filesystem::path& folder) {
    const std::filesystem::path path = folder / fileName;
    base::writeFileAtomically(path, propertyList(keyword));
    return path;
}

}  // namespace nuvrel::desktop::FinderSavedSearch
