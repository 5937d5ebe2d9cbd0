#include "wayfen/result_page_text.h"

#include "base/regex.h"
#include "base/text.h"
#include "wayfen/duckduckgo_lite_parser.h"

namespace wayfen {

namespace {

std::string decodedWithoutTags(std::string_view fragment) {
    static const nuvrel::base::Regex tag("<[^>]+>");
    return DuckDuckGoLiteParser::decodeEntities(tag.replaceAll(fragment, ""));
}

}  // namespace

std::string trimmedPageText(std::string_view fragment) {
    return nuvrel::base::text::trim(decodedWithoutTags(fragment));
}

std::string collapsedPageText(std::string_view fragment) {
    std::string out;
    for (const auto& word : nuvrel::base::text::splitBlanks(decodedWithoutTags(fragment))) {
        if (!out.empty()) out += ' ';
        out += word;
    }
    return out;
}

}  // namespace wayfen
