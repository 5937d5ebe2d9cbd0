#include "wayfen/readability_extractor.h"

#include <libxml/HTMLparser.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <climits>
#include <cstddef>
#include <memory>
#include <unordered_map>

#include "base/regex.h"
#include "base/text.h"

namespace wayfen::ReadabilityExtractor {
namespace {

namespace base = nuvrel::base;
namespace text = nuvrel::base::text;

constexpr std::size_t minimumLength = 40;
constexpr std::size_t minimumLengthBelowPositiveAncestor = 25;
constexpr double maximumLinkDensity = 0.5;

// No word boundaries on purpose: "comments", "main-nav" and "shared-article" must all hit.
const base::Regex& negativeAncestorPattern() {
    static const base::Regex pattern(
        "nav|navigation|menu|breadcrumb|sidebar|footer|header|masthead|comment|disqus|related|"
        "share|social|byline|meta|tags?box|widget|popup|modal|cookie|consent|subscribe|"
        "newsletter|promo|advert|sponsor|banner|skyscraper|pagination|pager|toolbar|"
        "site-search|combx|shoutbox|agegate|scroll",
        base::Regex::caseInsensitive);
    return pattern;
}

const base::Regex& positiveAncestorPattern() {
    static const base::Regex pattern(
        "article|articlebody|content|entry|hentry|main|page|post|story|arttext|blog",
        base::Regex::caseInsensitive);
    return pattern;
}

struct XmlFree {
    void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
    void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
    void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
    void operator()(xmlChar* chars) const { xmlFree(chars); }
};
template <class T>
using XmlPtr = std::unique_ptr<T, XmlFree>;

std::string_view view(const xmlChar* chars) {
    return chars ? std::string_view(reinterpret_cast<const char*>(chars)) : std::string_view();
}

XmlPtr<xmlDoc> parseHTML(std::string_view html) {
    static const bool initialised = [] {
        xmlInitParser();
        return true;
    }();
    (void)initialised;
    if (html.empty() || html.size() > static_cast<std::size_t>(INT_MAX)) return nullptr;
    // The text is already UTF-8; naming the encoding keeps a stale meta charset from
    // re-decoding it.
    const int options = HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                        HTML_PARSE_NONET | HTML_PARSE_COMPACT;
    return XmlPtr<xmlDoc>(
        htmlReadMemory(html.data(), static_cast<int>(html.size()), nullptr, "UTF-8", options));
}

bool isElementNamed(const xmlNode* node, std::string_view name) {
    return node->type == XML_ELEMENT_NODE && view(node->name) == name;
}

// Text under these is never shown. The HTML parser gives element names in lower case.
bool isHiddenContainer(const xmlNode* node) {
    return isElementNamed(node, "script") || isElementNamed(node, "style") ||
           isElementNamed(node, "noscript") || isElementNamed(node, "template");
}

// Visits the nodes below `root` in document order; `visit` returns whether to go below the
// node it was given. Iterative, so that a deeply nested page cannot exhaust the stack.
template <class Visit>
void forEachDescendant(xmlNode* root, Visit visit) {
    xmlNode* node = root->children;
    while (node) {
        if (visit(node) && node->children) {
            node = node->children;
            continue;
        }
        while (node != root && !node->next) node = node->parent;
        if (node == root) break;
        node = node->next;
    }
}

// The relative queries ".//text()[not(ancestor::script) and not(ancestor::style) and
// not(ancestor::noscript) and not(ancestor::template)]" and ".//a" are walked by hand: as
// XPath they cost more than parsing the page.
std::string visibleText(xmlNode* paragraph) {
    std::string joined;
    for (const xmlNode* node = paragraph; node; node = node->parent) {
        if (isHiddenContainer(node)) return joined;
    }
    forEachDescendant(paragraph, [&](xmlNode* node) {
        if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
            joined += view(node->content);
        }
        return !isHiddenContainer(node);
    });
    return joined;
}

std::string collapsedVisibleText(xmlNode* paragraph) {
    std::string collapsed;
    for (const auto& word : text::splitBlanks(visibleText(paragraph))) {
        if (!collapsed.empty()) collapsed += ' ';
        collapsed += word;
    }
    return collapsed;
}

std::string attribute(xmlNode* element, const char* name) {
    const XmlPtr<xmlChar> value(xmlGetNoNsProp(element, reinterpret_cast<const xmlChar*>(name)));
    return std::string(view(value.get()));
}

bool isDocumentRoot(const xmlNode* element) {
    std::string name(view(element->name));
    for (char& c : name) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return name == "body" || name == "html";
}

enum class LabelKind { negative, positive, neutral };

struct AncestorVerdict {
    bool rejected = false;
    bool sawPositive = false;
};

// The walk from a paragraph up to, not including, body: one negative label anywhere rejects,
// whatever positive label stands below it. Paragraphs share most of their ancestors, so the
// verdict of every element's chain and the kind of every label are remembered for the page.
class AncestorVerdicts {
public:
    AncestorVerdict of(xmlNode* paragraph) {
        std::vector<xmlNode*> pending;
        AncestorVerdict above;
        for (xmlNode* node = paragraph; node; node = node->parent) {
            if (node->type != XML_ELEMENT_NODE) continue;
            if (isDocumentRoot(node)) break;
            if (const auto known = verdicts_.find(node); known != verdicts_.end()) {
                above = known->second;
                break;
            }
            pending.push_back(node);
        }
        for (auto element = pending.rbegin(); element != pending.rend(); ++element) {
            const LabelKind kind = labelKind(*element);
            above.rejected = above.rejected || kind == LabelKind::negative;
            above.sawPositive = above.sawPositive || kind == LabelKind::positive;
            verdicts_.emplace(*element, above);
        }
        return above;
    }

private:
    // The negative test comes first: a label that matches both is negative.
    LabelKind labelKind(xmlNode* element) {
        const std::string label =
            text::trim(attribute(element, "class") + " " + attribute(element, "id"));
        if (label.empty()) return LabelKind::neutral;
        if (const auto known = labelKinds_.find(label); known != labelKinds_.end()) {
            return known->second;
        }
        LabelKind kind = LabelKind::neutral;
        if (negativeAncestorPattern().search(label)) {
            kind = LabelKind::negative;
        } else if (positiveAncestorPattern().search(label)) {
            kind = LabelKind::positive;
        }
        labelKinds_.emplace(label, kind);
        return kind;
    }

    std::unordered_map<const xmlNode*, AncestorVerdict> verdicts_;
    std::unordered_map<std::string, LabelKind> labelKinds_;
};

// Anchor values are counted raw, neither collapsed nor filtered; a nested anchor counts again,
// as it is a match of its own.
double linkDensity(xmlNode* paragraph, std::size_t textLength) {
    if (textLength < 1) return 0;
    std::size_t linkLength = 0;
    forEachDescendant(paragraph, [&](xmlNode* node) {
        if (isElementNamed(node, "a")) {
            const XmlPtr<xmlChar> value(xmlNodeGetContent(node));
            linkLength += text::count(view(value.get()));
        }
        return true;
    });
    return static_cast<double>(linkLength) / static_cast<double>(textLength);
}

// The ancestor test goes first only because it is the cheapest; every test just rejects.
std::optional<std::string> qualifyingText(AncestorVerdicts& verdicts, xmlNode* paragraph) {
    const AncestorVerdict verdict = verdicts.of(paragraph);
    if (verdict.rejected) return std::nullopt;
    std::string collapsed = collapsedVisibleText(paragraph);
    if (collapsed.empty()) return std::nullopt;
    const std::size_t minimum =
        verdict.sawPositive ? minimumLengthBelowPositiveAncestor : minimumLength;
    const std::size_t length = text::count(collapsed);
    if (length < minimum) return std::nullopt;
    if (linkDensity(paragraph, length) > maximumLinkDensity) return std::nullopt;
    return collapsed;
}

std::size_t nodeCount(const xmlXPathObject* object) {
    if (!object || object->type != XPATH_NODESET || !object->nodesetval) return 0;
    return static_cast<std::size_t>(object->nodesetval->nodeNr);
}

XmlPtr<xmlXPathObject> allParagraphs(xmlDoc* doc) {
    const XmlPtr<xmlXPathContext> context(xmlXPathNewContext(doc));
    if (!context) return nullptr;
    return XmlPtr<xmlXPathObject>(
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>("//p"), context.get()));
}

}  // namespace

std::optional<std::vector<std::string>> extract(std::string_view html) {
    const auto doc = parseHTML(html);
    if (!doc) return std::nullopt;
    const auto paragraphs = allParagraphs(doc.get());
    const std::size_t count = nodeCount(paragraphs.get());
    AncestorVerdicts verdicts;
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < count; ++i) {
        if (auto paragraphText = qualifyingText(verdicts, paragraphs->nodesetval->nodeTab[i])) {
            texts.push_back(std::move(*paragraphText));
        }
    }
    if (texts.empty()) return std::nullopt;
    return texts;
}

}  // namespace wayfen::ReadabilityExtractor
