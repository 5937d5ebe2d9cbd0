#include "answers/arithmetic.h"

#include <cmath>

#include "base/text.h"

namespace nuvrel::answers {
namespace {

using Kind = ArithmeticToken::Kind;

std::optional<Kind> operatorKind(char32_t c) {
    switch (c) {
        case '+':
            return Kind::plus;
        case '-':
            return Kind::minus;
        case '*':
            return Kind::multiply;
        case '/':
            return Kind::divide;
        case '^':
            return Kind::power;
        case '%':
            return Kind::modulo;
        case '(':
            return Kind::lparen;
        case ')':
            return Kind::rparen;
        default:
            return std::nullopt;
    }
}

std::string_view symbol(const ArithmeticToken& token) {
    switch (token.kind) {
        case Kind::number:
            return token.text;
        case Kind::plus:
            return "+";
        case Kind::minus:
            return "-";
        case Kind::multiply:
            return "×";
        case Kind::divide:
            return "÷";
        case Kind::power:
            return "^";
        case Kind::modulo:
            return "%";
        case Kind::lparen:
            return "(";
        case Kind::rparen:
            return ")";
    }
    return {};
}

bool isNumberCharacter(char c) {
    return (c >= '0' && c <= '9') || c == '.';
}

// Counts one level of recursion for as long as it lives.
class Nesting {
public:
    explicit Nesting(int& depth) : depth_(depth) { ++depth_; }
    ~Nesting() { --depth_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;
    bool tooDeep() const { return depth_ > ArithmeticParser::maxDepth; }

private:
    int& depth_;
};

}  // namespace

namespace ArithmeticTokenizer {

std::optional<std::vector<ArithmeticToken>> tokenize(std::string_view text) {
    std::vector<ArithmeticToken> tokens;
    std::size_t pos = 0;
    while (pos < text.size()) {
        if (isNumberCharacter(text[pos])) {
            const std::size_t start = pos;
            while (pos < text.size() && isNumberCharacter(text[pos])) ++pos;
            const std::string_view digits = text.substr(start, pos - start);
            const std::optional<double> value = base::text::parseDecimal(digits);
            if (!value) return std::nullopt;
            tokens.push_back(ArithmeticToken::number(*value, std::string(digits)));
            continue;
        }
        const char32_t c = base::text::nextCodePoint(text, pos);
        if (base::text::isWhiteSpace(c)) continue;
        const std::optional<Kind> kind = operatorKind(c);
        if (!kind) return std::nullopt;
        tokens.push_back(ArithmeticToken::op(*kind));
    }
    return tokens;
}

std::string prettyPrint(const std::vector<ArithmeticToken>& tokens) {
    std::string joined;
    for (const ArithmeticToken& token : tokens) {
        if (!joined.empty()) joined += ' ';
        joined += symbol(token);
    }
    return base::text::replaceAll(base::text::replaceAll(joined, "( ", "("), " )", ")");
}

}  // namespace ArithmeticTokenizer

bool ArithmeticParser::accept(Kind kind) {
    if (atEnd() || tokens_[position_].kind != kind) return false;
    ++position_;
    return true;
}

std::optional<double> ArithmeticParser::parseExpression() {
    std::optional<double> value = parseTerm();
    while (value) {
        if (accept(Kind::plus)) {
            const std::optional<double> right = parseTerm();
            value = right ? std::optional(*value + *right) : std::nullopt;
        } else if (accept(Kind::minus)) {
            const std::optional<double> right = parseTerm();
            value = right ? std::optional(*value - *right) : std::nullopt;
        } else {
            break;
        }
    }
    return value;
}

std::optional<double> ArithmeticParser::parseTerm() {
    std::optional<double> value = parsePower();
    while (value) {
        Kind kind;
        if (accept(Kind::multiply)) {
            kind = Kind::multiply;
        } else if (accept(Kind::divide)) {
            kind = Kind::divide;
        } else if (accept(Kind::modulo)) {
            kind = Kind::modulo;
        } else {
            break;
        }
        const std::optional<double> right = parsePower();
        if (!right) return std::nullopt;
        // A zero divisor is no answer at all, not infinity.
        if (kind != Kind::multiply && *right == 0.0) return std::nullopt;
        switch (kind) {
            case Kind::multiply:
                value = *value * *right;
                break;
            case Kind::divide:
                value = *value / *right;
                break;
            default:
                value = std::fmod(*value, *right);
                break;
        }
    }
    return value;
}

std::optional<double> ArithmeticParser::parsePower() {
    const std::optional<double> base = parseUnary();
    if (!base || !accept(Kind::power)) return base;
    Nesting nesting(depth_);
    if (nesting.tooDeep()) return std::nullopt;
    const std::optional<double> exponent = parsePower();
    if (!exponent) return std::nullopt;
    return std::pow(*base, *exponent);
}

std::optional<double> ArithmeticParser::parseUnary() {
    const bool minus = accept(Kind::minus);
    if (!minus && !accept(Kind::plus)) return parsePrimary();
    Nesting nesting(depth_);
    if (nesting.tooDeep()) return std::nullopt;
    const std::optional<double> operand = parseUnary();
    if (!operand) return std::nullopt;
    return minus ? -*operand : *operand;
}

std::optional<double> ArithmeticParser::parsePrimary() {
    if (atEnd()) return std::nullopt;
    const ArithmeticToken& token = tokens_[position_];
    if (token.kind == Kind::number) {
        ++position_;
        return token.value;
    }
    if (!accept(Kind::lparen)) return std::nullopt;
    Nesting nesting(depth_);
    if (nesting.tooDeep()) return std::nullopt;
    const std::optional<double> inner = parseExpression();
    if (!inner || !accept(Kind::rparen)) return std::nullopt;
    return inner;
}

}  // namespace nuvrel::answers
