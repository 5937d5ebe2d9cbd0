#include "pipeline/markdown_stripping.h"

namespace nuvrel::pipeline::MarkdownStripping {

using base::Regex;

const Regex& headingPattern() {
    static const Regex pattern(R"(^#{1,6}\s+)", Regex::anchorsMatchLines);
    return pattern;
}

const Regex& boldPattern() {
    static const Regex pattern(R"(\*\*(.+?)\*\*)");
    return pattern;
}

const Regex& underscoreBoldPattern() {
    static const Regex pattern(R"(__(.+?)__)");
    return pattern;
}

const Regex& italicPattern() {
    static const Regex pattern(R"((?<!\*)\*(?!\*)(.+?)(?<!\*)\*(?!\*))");
    return pattern;
}

const Regex& underscoreItalicPattern() {
    static const Regex pattern(R"((?<!_)_(?!_)(.+?)(?<!_)_(?!_))");
    return pattern;
}

const Regex& codeSpanPattern() {
    static const Regex pattern(R"(`([^`]+)`)");
    return pattern;
}

const Regex& linkPattern() {
    static const Regex pattern(R"(\[([^\]]+)\]\([^)]+\))");
    return pattern;
}

std::string plainText(std::string_view from) {
    std::string text = headingPattern().replaceAll(from, "");
    // Bold before italic: "**a**" must not be read as two italic stars.
    for (const Regex* pattern : {&boldPattern(), &underscoreBoldPattern(), &italicPattern(),
                                 &underscoreItalicPattern(), &codeSpanPattern(), &linkPattern()}) {
        text = pattern->replaceAll(text, "$1");
    }
    return text;
}

}  // namespace nuvrel::pipeline::MarkdownStripping
