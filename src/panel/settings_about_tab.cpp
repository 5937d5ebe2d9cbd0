#include <QFormLayout>
#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <array>

#include "core/localized_strings.h"
#include "panel/settings_tabs.h"

namespace nuvrel::panel {

namespace {

QString text(std::string_view value) {
    return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
}

struct Notice {
    const char* component;
    const char* licence;  // an SPDX expression: the same in every language
};

// What the panel and the programs beside it carry or load, with the licence each comes under.
constexpr std::array<Notice, 14> notices{{
    {"llama.cpp (llama-server)", "MIT"},
    {"Qt 6", "LGPL-3.0-only"},
    {"ICU", "Unicode-3.0"},
    {"libcurl", "curl"},
    {"OpenSSL", "Apache-2.0"},
    {"libxml2", "MIT"},
    {"nlohmann/json", "MIT"},
    {"GLib / GIO", "LGPL-2.1-or-later"},
    {"libsecret", "LGPL-2.1-or-later"},
    {"Tracker SPARQL", "LGPL-2.1-or-later"},
    {"libical", "LGPL-2.1-only OR MPL-2.0"},
    {"libxcb", "MIT"},
    {"libedit", "BSD-3-Clause"},
    {"Poppler", "GPL-2.0-or-later"},
}};

QLabel* wrapped(const QString& value) {
    auto* label = new QLabel(value);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

}  // namespace

AboutSettingsTab::AboutSettingsTab(core::AppLanguage language) {
    const auto& strings = core::LocalizedStrings::strings(language);
    auto* layout = new QVBoxLayout(this);
    auto* title = new QLabel("Nuvrel");
    title->setStyleSheet("font-size: 18px; font-weight: bold");
    layout->addWidget(title);
    auto* facts = new QFormLayout;
    facts->addRow(text(strings.creditsVersionLabel), wrapped(NUVREL_VERSION));
    facts->addRow(text(strings.creditsModelSourceLabel),
                  wrapped(text(strings.creditsModelSourceHint)));
    layout->addLayout(facts);

    auto* heading = new QLabel(text(strings.creditsOpenSourceLabel));
    heading->setStyleSheet("font-weight: bold; margin-top: 8px");
    layout->addWidget(heading);
    layout->addWidget(wrapped(text(strings.creditsOpenSourceHint)));
    auto* list = new QTreeWidget;
    list->setObjectName("openSourceNotices");
    list->setRootIsDecorated(false);
    list->setHeaderHidden(true);
    list->setColumnCount(2);
    for (const auto& notice : notices)
        new QTreeWidgetItem(list, {notice.component, notice.licence});
    list->resizeColumnToContents(0);
    layout->addWidget(list, 1);
    layout->addWidget(wrapped(text(strings.creditsThanksNote)));
}

}  // namespace nuvrel::panel
