#pragma once
// The address book as a folder of vCards (khard's vdir layout: one ".vcf" per contact, also
// several cards in one file): versions 3.0 and 4.0, folded lines, several TEL and EMAIL per
// card. The parsed cards are kept until the folder changes (a vdir changes by renames, which
// move the folder's time), so that a repeated lookup reads no file.

#include <filesystem>
#include <mutex>
#include <optional>
#include <string_view>

#include "base/diagnostics.h"
#include "personal/contact_store.h"

namespace nuvrel::platform {

// The cards of one vCard text; properties the address book does not use are skipped.
std::vector<personal::Contact> parseVCards(std::string_view text);

class VCardFolder : public personal::ContactStore {
public:
    VCardFolder(std::filesystem::path folder, base::Diagnostics diagnostics)
        : folder_(std::move(folder)), diagnostics_(std::move(diagnostics)) {}

    // A folder of the user's own needs no permission.
    bool hasAccess() override { return true; }
    // An unreadable file is skipped with a diagnostic line naming the file.
    std::vector<personal::Contact> contacts() override;

private:
    std::filesystem::path folder_;
    base::Diagnostics diagnostics_;
    std::mutex mutex_;
    std::optional<std::filesystem::file_time_type> readAt_;
    std::vector<personal::Contact> cached_;
};

}  // namespace nuvrel::platform
