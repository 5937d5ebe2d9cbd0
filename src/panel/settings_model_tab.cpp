#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "core/localized_strings.h"
#include "llm/curated_models.h"
#include "llm/model_catalog.h"
#include "panel/model_installation.h"
#include "panel/settings_tabs.h"

namespace nuvrel::panel {

namespace {

QString text(std::string_view value) {
    return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
}

// One model: its name and description on the left, a badge or a button on the right.
QPushButton* addRow(QVBoxLayout* rows, const std::string& name,
                    const std::optional<std::string>& trait, const QString& badge,
                    const QString& button) {
    auto* row = new QWidget;
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 2, 0, 2);
    auto* label = new QLabel(text(name) + (trait ? "\n" + text(*trait) : QString()));
    label->setWordWrap(true);
    line->addWidget(label, 1);
    QPushButton* action = nullptr;
    if (!button.isEmpty()) {
        action = new QPushButton(button);
        line->addWidget(action);
    } else {
        line->addWidget(new QLabel(badge));
    }
    rows->addWidget(row);
    return action;
}

}  // namespace

ModelSettingsTab::ModelSettingsTab(std::shared_ptr<app::AppState> state,
                                   std::shared_ptr<ModelInstallation> installation)
    : state_(std::move(state)), installation_(std::move(installation)) {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    auto* layout = new QVBoxLayout(this);
    auto* title = new QLabel(text(strings.modelLabel) + " · " + text(strings.modelHint));
    title->setStyleSheet("font-weight: bold");
    layout->addWidget(title);
    auto* rowsHolder = new QWidget;
    rows_ = new QVBoxLayout(rowsHolder);
    rows_->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(rowsHolder);
    progress_ = new QProgressBar;
    progress_->setObjectName("installProgress");
    progress_->setRange(0, 1000);
    layout->addWidget(progress_);
    error_ = new QLabel;
    error_->setWordWrap(true);
    error_->setStyleSheet("color: #c4001a");
    layout->addWidget(error_);
    layout->addStretch();
    refresh();
}

void ModelSettingsTab::refresh() {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    const auto progress = state_->installingCuratedModelProgress();
    progress_->setVisible(progress.has_value());
    if (progress) progress_->setValue(static_cast<int>(std::clamp(*progress, 0.0, 1.0) * 1000));
    const auto& error = state_->modelInstallErrorMessage();
    error_->setText(error ? text(*error) : QString());

    // The rows change only with the files, the selection and the busy flags.
    const auto& installed = state_->availableModelFileNames();
    std::string wanted = state_->selectedModelFileName() + "|" +
                         std::to_string(state_->isSwitchingModel()) +
                         std::to_string(state_->isInstallingModel()) + "|" +
                         state_->installingCuratedModelID().value_or("");
    for (const auto& name : installed) wanted += "|" + name;
    if (wanted == shown_) return;
    shown_ = wanted;
    while (auto* item = rows_->takeAt(0)) {
        if (item->widget()) item->widget()->deleteLater();
        delete item;
    }
    const bool busy = state_->isSwitchingModel() || state_->isInstallingModel();
    if (installed.empty()) rows_->addWidget(new QLabel(text(strings.modelNotInstalledYetLabel)));
    for (const auto& name : installed) {
        const bool inUse = name == state_->selectedModelFileName();
        QPushButton* use =
            addRow(rows_, llm::ModelCatalog::displayName(name),
                   llm::ModelCatalog::consumerTrait(name, strings), text(strings.modelInUseBadge),
                   inUse ? QString() : text(strings.modelSelectButtonLabel));
        if (!use) continue;
        use->setEnabled(!busy);
        QObject::connect(use, &QPushButton::clicked, this,
                         [this, name] { state_->selectModel(name); });
    }

    auto* section = new QLabel(text(strings.modelCuratedSectionTitle));
    section->setStyleSheet("font-weight: bold; margin-top: 12px");
    rows_->addWidget(section);
    for (const auto& model : llm::ModelCatalog::curatedModels()) {
        const bool isInstalled =
            std::find(installed.begin(), installed.end(), model.fileName) != installed.end();
        const bool installing = state_->installingCuratedModelID() == model.id;
        QString button;
        if (!isInstalled && !installing && installation_)
            button = text(strings.modelCuratedInstallButtonLabel);
        QPushButton* install = addRow(rows_, model.displayName,
                                      llm::ModelCatalog::consumerTrait(model.fileName, strings),
                                      text(installing    ? strings.modelCuratedInstallingLabel
                                           : isInstalled ? strings.modelCuratedInstalledLabel
                                                         : strings.modelCuratedNotInstalledMessage),
                                      button);
        if (!install) continue;
        install->setEnabled(!busy);
        QObject::connect(install, &QPushButton::clicked, this,
                         [this, model] { installation_->start(model); });
    }
}

}  // namespace nuvrel::panel
