#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <chrono>

#include "app/models_command_support.h"
#include "base/time_text.h"
#include "core/localized_strings.h"
#include "panel/settings_tabs.h"

namespace nuvrel::panel {

namespace {

QString text(std::string_view value) {
    return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
}

constexpr std::size_t shownEntries = 100;

}  // namespace

PrivacySettingsTab::PrivacySettingsTab(std::shared_ptr<app::AppState> state,
                                       const SettingsWindow::Services& services)
    : state_(std::move(state)), services_(services) {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    auto* layout = new QVBoxLayout(this);
    for (const auto* note :
         {&strings.networkActivityExplainer, &strings.networkActivityLocalhostNote}) {
        auto* label = new QLabel(text(*note));
        label->setWordWrap(true);
        layout->addWidget(label);
    }
    summary_ = new QLabel;
    summary_->setObjectName("networkSummary");
    summary_->setStyleSheet("font-weight: bold; margin-top: 8px");
    summary_->setWordWrap(true);
    layout->addWidget(summary_);
    layout->addWidget(new QLabel(text(strings.networkActivityRecentLabel)));
    entries_ = new QTreeWidget;
    entries_->setObjectName("networkEntries");
    entries_->setRootIsDecorated(false);
    entries_->setHeaderHidden(true);
    entries_->setColumnCount(4);
    entries_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    layout->addWidget(entries_, 1);
    if (services_.revealFile) {
        auto* reveal = new QPushButton(text(strings.networkActivityRevealLogLabel));
        layout->addWidget(reveal, 0, Qt::AlignLeft);
        QObject::connect(reveal, &QPushButton::clicked, this,
                         [this] { services_.revealFile(services_.networkLogFile.string()); });
    }
}

void PrivacySettingsTab::refresh() {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    entries_->clear();
    // Read afresh: the command-line program records into the same file.
    const app::NetworkActivityLog log(std::chrono::system_clock::now, services_.networkLogFile);
    const std::size_t count = log.count(std::chrono::hours(24));
    const std::string counted = std::to_string(count);
    if (count == 0) {
        summary_->setText(text(strings.networkActivityOfflineMessage));
    } else if (log.isAtCapacity()) {
        summary_->setText(
            text(app::fill(strings.networkActivitySummaryAtCapTemplate,
                           {counted, std::to_string(app::NetworkActivityLog::capacity)})));
    } else {
        summary_->setText(text(app::fill(strings.networkActivitySummaryTemplate, {counted})));
    }
    const auto recent = log.recentEntries(shownEntries);
    if (recent.empty()) {
        new QTreeWidgetItem(entries_, {text(strings.networkActivityNoEntriesLabel)});
        return;
    }
    for (const auto& entry : recent) {
        const std::string purpose =
            strings.networkActivityPurposeLabel(static_cast<std::size_t>(entry.purpose));
        new QTreeWidgetItem(entries_,
                            {text(base::formatTime(entry.timestamp, "%Y-%m-%d %H:%M", false)),
                             text(entry.host), text(entry.path), text(purpose)});
    }
}

}  // namespace nuvrel::panel
