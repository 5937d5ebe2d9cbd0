#include "desktop/metadata_predicate.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <ctime>
#include <vector>

#include "base/text.h"

namespace nuvrel::desktop {

enum class Attribute { fsName, path, contentType, modificationDate };
enum class Operator { contains, like, endsWith, equals, atLeast, before };

struct MetadataPredicate::Node {
    enum class Kind { all, any, compare } kind = Kind::compare;
    std::vector<std::shared_ptr<const Node>> children;
    Attribute attribute = Attribute::fsName;
    Operator op = Operator::equals;
    bool folded = false;  // [cd]: the value is folded, and so is the attribute before comparing
    std::string value;
    std::chrono::system_clock::time_point date;
};

namespace {

using Node = MetadataPredicate::Node;
using NodePtr = std::shared_ptr<const Node>;

bool asciiOnly(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) return false;
    }
    return true;
}

// '*' any run, '?' one code point; on folded text.
bool globMatches(std::string_view pattern, std::string_view text) {
    std::size_t p = 0, t = 0, starP = std::string_view::npos, starT = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starP = p++;
            starT = t;
        } else if (p < pattern.size() && pattern[p] == '?') {
            ++p;
            base::text::nextCodePoint(text, t);
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++p;
            ++t;
        } else if (starP != std::string_view::npos) {
            p = starP + 1;
            base::text::nextCodePoint(text, starT);
            t = starT;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

std::optional<std::chrono::system_clock::time_point> parseDate(std::string_view text) {
    std::tm parts{};
    int offset = 0;
    char sign = '+';
    const std::string copy(text);
    if (std::sscanf(copy.c_str(), "%4d-%2d-%2d %2d:%2d:%2d %c%4d", &parts.tm_year, &parts.tm_mon,
                    &parts.tm_mday, &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &sign,
                    &offset) != 8)
        return std::nullopt;
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    const std::time_t utc = ::timegm(&parts);
    const int offsetSeconds = (offset / 100 * 3600 + offset % 100 * 60) * (sign == '-' ? -1 : 1);
    return std::chrono::system_clock::from_time_t(utc - offsetSeconds);
}

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    NodePtr parseAll() {
        NodePtr node = parseDisjunction();
        skipBlanks();
        if (!node || pos_ != text_.size()) return nullptr;
        return node;
    }
    bool needsStatus = false;
    std::vector<std::string> nameEndings;

private:
    void skipBlanks() {
        while (pos_ < text_.size() && (text_[pos_] == ' ' || text_[pos_] == '\t')) ++pos_;
    }
    bool take(std::string_view token) {
        skipBlanks();
        if (text_.substr(pos_, token.size()) != token) return false;
        pos_ += token.size();
        return true;
    }

    NodePtr joined(Node::Kind kind, std::string_view connective, NodePtr (Parser::*next)()) {
        NodePtr first = (this->*next)();
        if (!first) return nullptr;
        auto node = std::make_shared<Node>();
        node->kind = kind;
        node->children.push_back(first);
        while (take(connective)) {
            NodePtr more = (this->*next)();
            if (!more) return nullptr;
            node->children.push_back(more);
        }
        if (node->children.size() == 1) return first;
        return node;
    }
    NodePtr parseDisjunction() { return joined(Node::Kind::any, "||", &Parser::parseConjunction); }
    NodePtr parseConjunction() { return joined(Node::Kind::all, "&&", &Parser::parseTerm); }

    NodePtr parseTerm() {
        if (take("(")) {
            NodePtr inner = parseDisjunction();
            if (!inner || !take(")")) return nullptr;
            return inner;
        }
        return parseComparison();
    }

    std::optional<std::string> quoted(char quote) {
        skipBlanks();
        if (pos_ >= text_.size() || text_[pos_] != quote) return std::nullopt;
        std::string value;
        for (++pos_; pos_ < text_.size(); ++pos_) {
            const char c = text_[pos_];
            if (c == '\\' && pos_ + 1 < text_.size()) {
                value += text_[++pos_];
            } else if (c == quote) {
                ++pos_;
                return value;
            } else {
                value += c;
            }
        }
        return std::nullopt;
    }

    NodePtr parseComparison() {
        static constexpr std::pair<std::string_view, Attribute> attributes[] = {
            {"kMDItemFSName", Attribute::fsName},
            {"kMDItemPath", Attribute::path},
            {"kMDItemContentType", Attribute::contentType},
            {"kMDItemContentModificationDate", Attribute::modificationDate},
        };
        static constexpr std::pair<std::string_view, Operator> operators[] = {
            {"CONTAINS[cd]", Operator::contains},
            {"LIKE[cd]", Operator::like},
            {"ENDSWITH[cd]", Operator::endsWith},
            {"==", Operator::equals},
            {">=", Operator::atLeast},
            {"<", Operator::before},
        };
        auto node = std::make_shared<Node>();
        bool found = false;
        for (const auto& [name, attribute] : attributes) {
            skipBlanks();
            const std::size_t end = pos_ + name.size();
            if (text_.substr(pos_, name.size()) == name &&
                (end == text_.size() || !std::isalnum(static_cast<unsigned char>(text_[end])))) {
                pos_ = end;
                node->attribute = attribute;
                found = true;
                break;
            }
        }
        if (!found) return nullptr;
        found = false;
        for (const auto& [name, op] : operators) {
            if (take(name)) {
                node->op = op;
                found = true;
                break;
            }
        }
        if (!found) return nullptr;
        const bool isDate = node->attribute == Attribute::modificationDate;
        if (isDate != (node->op == Operator::atLeast || node->op == Operator::before))
            return nullptr;
        if (isDate || node->attribute == Attribute::contentType) needsStatus = true;
        if (isDate) {
            if (!take("CAST(")) return nullptr;
            const auto literal = quoted('"');
            if (!literal || !take(",")) return nullptr;
            const auto type = quoted('"');
            if (!type || *type != "NSDate" || !take(")")) return nullptr;
            const auto date = parseDate(*literal);
            if (!date) return nullptr;
            node->date = *date;
            return node;
        }
        const auto value = quoted('\'');
        if (!value) return nullptr;
        node->folded = node->op != Operator::equals;
        node->value = node->folded ? foldForSearch(*value) : *value;
        if (node->attribute == Attribute::fsName && node->op == Operator::endsWith)
            nameEndings.push_back(node->value);
        return node;
    }

    std::string_view text_;
    std::size_t pos_ = 0;
};

std::string_view attributeText(const Node& node, const MetadataAttributes& item) {
    switch (node.attribute) {
        case Attribute::fsName:
            return item.fsName;
        case Attribute::path:
            return item.path;
        case Attribute::contentType:
            return item.contentType;
        case Attribute::modificationDate:
            break;
    }
    return {};
}

bool evaluate(const Node& node, const MetadataAttributes& item,
              std::span<const std::string> contentExtensions) {
    switch (node.kind) {
        case Node::Kind::all:
            for (const auto& child : node.children) {
                if (!evaluate(*child, item, contentExtensions)) return false;
            }
            return true;
        case Node::Kind::any:
            for (const auto& child : node.children) {
                if (evaluate(*child, item, contentExtensions)) return true;
            }
            return false;
        case Node::Kind::compare:
            break;
    }
    if (node.attribute == Attribute::modificationDate) {
        // An item without a date is of the distant past.
        if (!item.modificationDate) return node.op == Operator::before;
        return node.op == Operator::atLeast ? *item.modificationDate >= node.date
                                            : *item.modificationDate < node.date;
    }
    const std::string_view raw = attributeText(node, item);
    if (!node.folded) return raw == node.value;
    const std::string text = foldForSearch(raw);
    switch (node.op) {
        case Operator::contains:
            return text.find(node.value) != std::string::npos;
        case Operator::endsWith:
            return std::string_view(text).ends_with(node.value) ||
                   (node.attribute == Attribute::fsName &&
                    std::find(contentExtensions.begin(), contentExtensions.end(), node.value) !=
                        contentExtensions.end());
        case Operator::like:
            return globMatches(node.value, text);
        default:
            return false;
    }
}

}  // namespace

std::optional<MetadataPredicate> MetadataPredicate::parse(std::string_view format) {
    Parser parser(format);
    NodePtr root = parser.parseAll();
    if (!root) return std::nullopt;
    MetadataPredicate predicate;
    predicate.root_ = std::move(root);
    predicate.needsStatus_ = parser.needsStatus;
    predicate.nameEndings_ = std::move(parser.nameEndings);
    return predicate;
}

bool MetadataPredicate::matches(const MetadataAttributes& item,
                                std::span<const std::string> contentExtensions) const {
    return evaluate(*root_, item, contentExtensions);
}

std::string foldForSearch(std::string_view text) {
    if (asciiOnly(text)) {
        std::string folded(text);
        for (char& c : folded) {
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        }
        return folded;
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
    if (U_FAILURE(status)) return base::text::lower(text);
    const icu::UnicodeString decomposed = nfd->normalize(
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), text.size())), status);
    if (U_FAILURE(status)) return base::text::lower(text);
    icu::UnicodeString bare;
    for (int32_t i = 0; i < decomposed.length();) {
        const UChar32 c = decomposed.char32At(i);
        i += U16_LENGTH(c);
        if (u_charType(c) != U_NON_SPACING_MARK) bare.append(c);
    }
    bare.foldCase();
    std::string folded;
    bare.toUTF8String(folded);
    return folded;
}

}  // namespace nuvrel::desktop
