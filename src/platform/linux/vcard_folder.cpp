#include "platform/linux/vcard_folder.h"

#include <algorithm>

#include "base/files.h"
#include "base/text.h"

namespace nuvrel::platform {
namespace {

// Physical lines joined where a line begins with a blank or a tab (RFC 6350 folding).
std::vector<std::string> unfoldedLines(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (!lines.empty() && !line.empty() && (line.front() == ' ' || line.front() == '\t'))
            lines.back().append(line.substr(1));
        else
            lines.emplace_back(line);
    }
    return lines;
}

// The value's components at unescaped separators, each unescaped.
std::vector<std::string> components(std::string_view value, char separator) {
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (c == '\\' && i + 1 < value.size()) {
            const char next = value[++i];
            parts.back() += (next == 'n' || next == 'N') ? '\n' : next;
        } else if (c == separator) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

std::string unescaped(std::string_view value) {
    std::string out;
    for (const std::string& part : components(value, '\0')) out += part;
    return out;
}

}  // namespace

std::vector<personal::Contact> parseVCards(std::string_view text) {
    std::vector<personal::Contact> cards;
    std::optional<personal::Contact> card;
    // A card in a legacy charset is read with U+FFFD where its bytes are no UTF-8: the names
    // reach cards and their JSON, which hold only valid text.
    for (const std::string& line : unfoldedLines(base::text::validUtf8(text))) {
        // The colon that ends the name and parameters stands outside quoted parameter values.
        std::size_t colon = std::string::npos;
        bool quoted = false;
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '"') quoted = !quoted;
            if (line[i] == ':' && !quoted) {
                colon = i;
                break;
            }
        }
        if (colon == std::string::npos) continue;
        std::string name =
            base::text::upper(std::string_view(line).substr(0, line.find(';')).substr(0, colon));
        if (const auto dot = name.rfind('.'); dot != std::string::npos) name.erase(0, dot + 1);
        const std::string_view value = std::string_view(line).substr(colon + 1);
        if (name == "BEGIN" && base::text::upper(value) == "VCARD") {
            card.emplace();
        } else if (name == "END" && card) {
            cards.push_back(std::move(*card));
            card.reset();
        } else if (!card) {
            continue;
        } else if (name == "FN") {
            card->formattedName = base::text::trim(unescaped(value));
        } else if (name == "N") {
            const auto parts = components(value, ';');
            card->familyName = base::text::trim(parts[0]);
            if (parts.size() > 1) card->givenName = base::text::trim(parts[1]);
        } else if (name == "NICKNAME" && card->nickname.empty()) {
            card->nickname = base::text::trim(components(value, ',')[0]);
        } else if (name == "TEL") {
            std::string number = base::text::trim(unescaped(value));
            if (base::text::lower(std::string_view(number).substr(0, 4)) == "tel:")
                number.erase(0, 4);
            if (!number.empty()) card->phoneNumbers.push_back(std::move(number));
        } else if (name == "EMAIL") {
            std::string address = base::text::trim(unescaped(value));
            if (!address.empty()) card->emailAddresses.push_back(std::move(address));
        }
    }
    return cards;
}

std::vector<personal::Contact> VCardFolder::contacts() {
    const std::lock_guard lock(mutex_);
    std::error_code error;
    const auto changed = std::filesystem::last_write_time(folder_, error);
    if (error) return {};
    if (readAt_ == changed) return cached_;
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_, error)) {
        if (entry.path().extension() == ".vcf") files.push_back(entry.path());
    }
    // Directory order is arbitrary; name order keeps equal names in a stable order.
    std::sort(files.begin(), files.end());
    cached_.clear();
    for (const auto& file : files) {
        const auto text = base::readFile(file);
        if (!text) {
            diagnostics_.event("contact file skipped, unreadable: " + file.filename().string());
            continue;
        }
        for (personal::Contact& contact : parseVCards(*text)) cached_.push_back(std::move(contact));
    }
    readAt_ = changed;
    return cached_;
}

}  // namespace nuvrel::platform
