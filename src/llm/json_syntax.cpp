#include "llm/json_syntax.h"

#include <charconv>
#include <cstdint>
#include <vector>

namespace nuvrel::llm::JsonSyntax {

namespace {

class Scanner {
public:
    explicit Scanner(std::string_view text)
        : p_(reinterpret_cast<const std::uint8_t*>(text.data())), end_(p_ + text.size()) {}

    bool document() {
        if (end_ - p_ >= 1 && p_[0] == 0xEF) {
            if (end_ - p_ < 3 || p_[1] != 0xBB || p_[2] != 0xBF) return false;
            p_ += 3;
        }
        // Containers open so far: true for an object, false for an array.
        std::vector<bool> open;
        while (true) {
            skipBlanks();
            if (p_ == end_) return false;
            // A value.
            if (*p_ == '{' || *p_ == '[') {
                const bool isObject = *p_ == '{';
                ++p_;
                skipBlanks();
                if (p_ != end_ && *p_ == (isObject ? '}' : ']')) {
                    ++p_;
                } else {
                    open.push_back(isObject);
                    if (isObject && !key()) return false;
                    continue;
                }
            } else if (!scalar()) {
                return false;
            }
            // After a value: a separator, the end of containers, or the end of the text.
            while (true) {
                skipBlanks();
                if (open.empty()) return p_ == end_;
                if (p_ == end_) return false;
                const bool inObject = open.back();
                if (*p_ == ',') {
                    ++p_;
                    if (inObject && !key()) return false;
                    break;
                }
                if (*p_ != (inObject ? '}' : ']')) return false;
                ++p_;
                open.pop_back();
            }
        }
    }

private:
    void skipBlanks() {
        while (p_ != end_ && (*p_ == ' ' || *p_ == '\n' || *p_ == '\r' || *p_ == '\t')) ++p_;
    }

    // A member's name and its colon.
    bool key() {
        skipBlanks();
        if (p_ == end_ || *p_ != '"' || !string()) return false;
        skipBlanks();
        if (p_ == end_ || *p_ != ':') return false;
        ++p_;
        return true;
    }

    bool scalar() {
        switch (*p_) {
            case '"':
                return string();
            case 't':
                return word("true");
            case 'f':
                return word("false");
            case 'n':
                return word("null");
            default:
                return number();
        }
    }

    bool word(std::string_view w) {
        if (static_cast<std::size_t>(end_ - p_) < w.size() ||
            std::string_view(reinterpret_cast<const char*>(p_), w.size()) != w) {
            return false;
        }
        p_ += w.size();
        return true;
    }

    bool hex4(unsigned& value) {
        if (end_ - p_ < 4) return false;
        value = 0;
        for (int i = 0; i < 4; ++i) {
            const std::uint8_t c = *p_++;
            unsigned digit;
            if (c >= '0' && c <= '9')
                digit = c - '0';
            else if (c >= 'a' && c <= 'f')
                digit = c - 'a' + 10;
            else if (c >= 'A' && c <= 'F')
                digit = c - 'A' + 10;
            else
                return false;
            value = value * 16 + digit;
        }
        return true;
    }

    // n bytes in [0x80, 0xBF].
    bool trail(int n) {
        if (end_ - p_ < n) return false;
        for (int i = 0; i < n; ++i) {
            if ((p_[i] & 0xC0) != 0x80) return false;
        }
        p_ += n;
        return true;
    }

    // Starts at the opening quote. UTF-8 is held to the table of RFC 3629: no overlong forms,
    // no surrogates, nothing beyond U+10FFFF. A \u escape of a high surrogate must be followed
    // by one of a low surrogate.
    bool string() {
        ++p_;
        while (p_ != end_) {
            const std::uint8_t c = *p_;
            if (c == '"') {
                ++p_;
                return true;
            }
            if (c < 0x20) return false;
            if (c == '\\') {
                if (++p_ == end_) return false;
                switch (*p_++) {
                    case '"':
                    case '\\':
                    case '/':
                    case 'b':
                    case 'f':
                    case 'n':
                    case 'r':
                    case 't':
                        break;
                    case 'u': {
                        unsigned unit;
                        if (!hex4(unit)) return false;
                        if (unit >= 0xDC00 && unit <= 0xDFFF) return false;
                        if (unit >= 0xD800 && unit <= 0xDBFF) {
                            unsigned low;
                            if (end_ - p_ < 2 || p_[0] != '\\' || p_[1] != 'u') return false;
                            p_ += 2;
                            if (!hex4(low) || low < 0xDC00 || low > 0xDFFF) return false;
                        }
                        break;
                    }
                    default:
                        return false;
                }
                continue;
            }
            if (c < 0x80) {
                ++p_;
                continue;
            }
            if (end_ - p_ < 2) return false;
            const std::uint8_t next = p_[1];
            if (c >= 0xC2 && c <= 0xDF) {
                ++p_;
                if (!trail(1)) return false;
            } else if (c >= 0xE0 && c <= 0xEF) {
                if ((c == 0xE0 && next < 0xA0) || (c == 0xED && next > 0x9F)) return false;
                ++p_;
                if (!trail(2)) return false;
            } else if (c >= 0xF0 && c <= 0xF4) {
                if ((c == 0xF0 && next < 0x90) || (c == 0xF4 && next > 0x8F)) return false;
                ++p_;
                if (!trail(3)) return false;
            } else {
                return false;
            }
        }
        return false;
    }

    static bool isDigit(std::uint8_t c) { return c >= '0' && c <= '9'; }

    bool number() {
        const std::uint8_t* start = p_;
        if (p_ != end_ && *p_ == '-') ++p_;
        if (p_ == end_ || !isDigit(*p_)) return false;
        const std::uint8_t* integerStart = p_;
        if (*p_ == '0') {
            ++p_;
        } else {
            while (p_ != end_ && isDigit(*p_)) ++p_;
        }
        const auto integerDigits = p_ - integerStart;
        bool hasExponent = false;
        if (p_ != end_ && *p_ == '.') {
            ++p_;
            if (p_ == end_ || !isDigit(*p_)) return false;
            while (p_ != end_ && isDigit(*p_)) ++p_;
        }
        if (p_ != end_ && (*p_ == 'e' || *p_ == 'E')) {
            hasExponent = true;
            ++p_;
            if (p_ != end_ && (*p_ == '+' || *p_ == '-')) ++p_;
            if (p_ == end_ || !isDigit(*p_)) return false;
            while (p_ != end_ && isDigit(*p_)) ++p_;
        }
        // Short numbers without an exponent are always finite; the rest must not overflow a
        // double (an underflow to zero is fine), as the parser reads them.
        if (!hasExponent && integerDigits < 300) return true;
        return isFinite(reinterpret_cast<const char*>(start), reinterpret_cast<const char*>(p_));
    }

    static bool isFinite(const char* first, const char* last) {
        double value;
        const auto result = std::from_chars(first, last, value);
        if (result.ec != std::errc::result_out_of_range) return true;
        return !isOverflow(first, last);
    }

    // For a number out of the range of a double: whether it is too large rather than too
    // small, by the decimal position of its first significant digit.
    static bool isOverflow(const char* first, const char* last) {
        const char* p = first;
        if (*p == '-') ++p;
        long long position = 0;  // of the first non-zero digit, relative to the point
        bool seenSignificant = false;
        bool afterPoint = false;
        for (; p != last && *p != 'e' && *p != 'E'; ++p) {
            if (*p == '.') {
                afterPoint = true;
                continue;
            }
            if (!seenSignificant) {
                if (*p != '0') {
                    seenSignificant = true;
                    position = afterPoint ? position - 1 : 0;
                } else if (afterPoint) {
                    --position;
                }
            } else if (!afterPoint) {
                ++position;
            }
        }
        if (!seenSignificant) return false;
        long long exponent = 0;
        if (p != last) {
            ++p;
            const bool negative = *p == '-';
            if (*p == '+' || *p == '-') ++p;
            for (; p != last; ++p) {
                if (exponent < 1'000'000) exponent = exponent * 10 + (*p - '0');
            }
            if (negative) exponent = -exponent;
        }
        return position + exponent > 0;
    }

    const std::uint8_t* p_;
    const std::uint8_t* const end_;
};

}  // namespace

bool isWellFormed(std::string_view text) {
    return Scanner(text).document();
}

}  // namespace nuvrel::llm::JsonSyntax
