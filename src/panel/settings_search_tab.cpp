#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "core/localized_strings.h"
#include "panel/settings_tabs.h"

namespace nuvrel::panel {

namespace {

QString text(std::string_view value) {
    return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
}

QLabel* addLabel(QVBoxLayout* layout, std::string_view value, bool bold = false) {
    auto* label = new QLabel(text(value));
    label->setWordWrap(true);
    if (bold) label->setStyleSheet("font-weight: bold");
    layout->addWidget(label);
    return label;
}

}  // namespace

SearchSettingsTab::SearchSettingsTab(std::shared_ptr<app::AppState> state)
    : state_(std::move(state)) {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    auto* layout = new QVBoxLayout(this);
    notice_ = addLabel(layout, "");

    addLabel(layout, strings.searchTabEndpointLabel, true);
    addLabel(layout, strings.searchTabEndpointHint);
    endpoint_ = new QLineEdit(QString::fromStdString(state_->searxngEndpointRaw()));
    endpoint_->setObjectName("searxngEndpoint");
    endpoint_->setPlaceholderText(text(strings.searchTabEndpointPlaceholder));
    layout->addWidget(endpoint_);
    endpointError_ = addLabel(layout, strings.searchTabEndpointInvalidMessage);
    endpointError_->setObjectName("searxngEndpointError");
    endpointError_->setStyleSheet("color: #c4001a");
    addLabel(layout, strings.searchTabEndpointAppliesNextLaunchNotice);
    QObject::connect(endpoint_, &QLineEdit::textEdited, this, [this](const QString& value) {
        draft_.searxngEndpointDraft = value.toStdString();
    });
    QObject::connect(endpoint_, &QLineEdit::editingFinished, this, [this] { commitEndpoint(); });
    draft_.searxngEndpointDraft = state_->searxngEndpointRaw();

    addLabel(layout, strings.searchTabFirecrawlLabel, true);
    addLabel(layout, strings.searchTabFirecrawlHint);
    key_ = new QLineEdit;
    key_->setObjectName("firecrawlAPIKey");
    key_->setEchoMode(QLineEdit::Password);
    layout->addWidget(key_);
    keyError_ = addLabel(layout, strings.keyStoreUnavailableMessage);
    keyError_->setStyleSheet("color: #c4001a");
    keyError_->hide();
    QObject::connect(key_, &QLineEdit::textEdited, this, [this](const QString& value) {
        draft_.firecrawlAPIKeyDraft = value.toStdString();
        draft_.firecrawlAPIKeyEdited = true;
    });
    QObject::connect(key_, &QLineEdit::editingFinished, this, [this] { commitKey(); });
    layout->addStretch();
    refresh();
}

void SearchSettingsTab::refresh() {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    const auto* keychain = state_->keychain().get();
    const bool keySaved = keychain && keychain->secret(app::firecrawlAPIKeyName);
    notice_->setText(text(keySaved ? strings.searchTabFallbackChainNoticeWithFirecrawl
                                   : strings.searchTabFallbackChainNotice));
    endpointError_->setVisible(draft_.searxngEndpointShowsError);
    key_->setPlaceholderText(text(firecrawlAPIKeyPlaceholder(keychain, strings)));
    key_->setEnabled(keychain != nullptr);
}

void SearchSettingsTab::commitAll() {
    commitEndpoint();
    commitKey();
}

void SearchSettingsTab::commitEndpoint() {
    commitSearxngEndpoint(draft_, *state_);
    refresh();
}

void SearchSettingsTab::commitKey() {
    if (!state_->keychain() || !draft_.firecrawlAPIKeyEdited) return;
    try {
        commitFirecrawlAPIKey(draft_, *state_->keychain());
        key_->clear();
        keyError_->hide();
    } catch (const app::KeychainError&) {
        keyError_->show();
    }
    refresh();
}

}  // namespace nuvrel::panel
