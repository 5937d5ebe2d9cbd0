#pragma once
// Tokens and a recursive-descent evaluator for plain arithmetic over doubles: + - * / ^ % and
// parentheses. No exponent notation, no thousands separators, no implicit multiplication.
// Pure and thread-safe; nothing here throws on bad input, failure is an empty optional.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nuvrel::answers {

struct ArithmeticToken {
    enum class Kind { number, plus, minus, multiply, divide, power, modulo, lparen, rparen };

    Kind kind = Kind::number;
    double value = 0;  // numbers only
    std::string text;  // numbers only: the digits as typed, repeated by the display

    static ArithmeticToken number(double value, std::string text) {
        return {Kind::number, value, std::move(text)};
    }
    static ArithmeticToken op(Kind kind) { return {kind, 0, {}}; }

    bool operator==(const ArithmeticToken&) const = default;
};

namespace ArithmeticTokenizer {

// Skips white space; a run of ASCII digits and points is one number and must parse as a whole
// ("1.2.3" and "." fail); each of "+-*/^%()" is a token. Any other character fails.
std::optional<std::vector<ArithmeticToken>> tokenize(std::string_view text);

// Tokens joined by one blank, numbers as typed, "×" and "÷" for * and /, with no blank just
// inside parentheses: "2 × (3 + 4)".
std::string prettyPrint(const std::vector<ArithmeticToken>& tokens);

}  // namespace ArithmeticTokenizer

// A cursor over tokens. Each parse function consumes what it recognises and gives its value,
// or nothing on a syntax error, a zero divisor or remainder, or nesting deeper than maxDepth.
// Intermediate values may be infinite ("1/(10^400)" is 0): only the caller judges the final one.
// After a failure the cursor may stand anywhere.
//
//   expression := term (("+" | "-") term)*
//   term       := power (("*" | "/" | "%") power)*      "%" is fmod, never a percentage
//   power      := unary ("^" power)?                     right-associative
//   unary      := ("+" | "-") unary | primary            so "-2^2" is (-2)^2
//   primary    := number | "(" expression ")"
class ArithmeticParser {
public:
    // Parentheses, signs and powers nested beyond this fail rather than exhaust the stack.
    static constexpr int maxDepth = 200;

    // Keeps a reference: the tokens must outlive the parser.
    explicit ArithmeticParser(const std::vector<ArithmeticToken>& tokens) : tokens_(tokens) {}
    explicit ArithmeticParser(std::vector<ArithmeticToken>&&) = delete;

    std::optional<double> parseExpression();
    std::optional<double> parseTerm();
    std::optional<double> parsePower();
    std::optional<double> parseUnary();
    std::optional<double> parsePrimary();

    std::size_t position() const { return position_; }
    bool atEnd() const { return position_ >= tokens_.size(); }

private:
    bool accept(ArithmeticToken::Kind kind);

    const std::vector<ArithmeticToken>& tokens_;
    std::size_t position_ = 0;
    int depth_ = 0;
};

}  // namespace nuvrel::answers
