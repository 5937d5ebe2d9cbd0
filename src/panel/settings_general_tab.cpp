#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "app/settings_keys.h"
#include "core/localized_strings.h"
#include "panel/hotkey_combination.h"
#include "panel/settings_tabs.h"

namespace nuvrel::panel {

namespace {

constexpr std::array<core::AppLanguage, 4> languages{core::AppLanguage::en, core::AppLanguage::ko,
                                                     core::AppLanguage::zh, core::AppLanguage::ja};

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

// A key press as the stored key code: the X11 key symbol of the unshifted key.
std::optional<std::uint32_t> storedKeyCode(const QKeyEvent& key) {
    const int code = key.key();
    if (code >= Qt::Key_A && code <= Qt::Key_Z) return keyCodeForKeysym(code + ('a' - 'A'));
    if (code >= 0x20 && code <= 0x7e) return keyCodeForKeysym(static_cast<std::uint32_t>(code));
    if (code == Qt::Key_Return || code == Qt::Key_Enter) return keyCodeForKeysym(0xff0d);
    if (code == Qt::Key_Tab || code == Qt::Key_Backtab) return keyCodeForKeysym(0xff09);
    if (code == Qt::Key_Escape) return keyCodeForKeysym(0xff1b);
    return std::nullopt;
}

std::uint32_t storedModifiers(Qt::KeyboardModifiers modifiers) {
    std::uint32_t mask = 0;
    if (modifiers & Qt::MetaModifier) mask |= 256;  // Super stands for Command
    if (modifiers & Qt::ShiftModifier) mask |= 512;
    if (modifiers & Qt::AltModifier) mask |= 2048;  // Alt stands for Option
    if (modifiers & Qt::ControlModifier) mask |= 4096;
    return mask;
}

// A switch with its hint below it.
QCheckBox* addSwitch(QVBoxLayout* layout, const std::string& label, const std::string& hint) {
    auto* box = new QCheckBox(text(label));
    auto* note = new QLabel(text(hint));
    note->setWordWrap(true);
    note->setContentsMargins(24, 0, 0, 8);
    layout->addWidget(box);
    layout->addWidget(note);
    return box;
}

}  // namespace

GeneralSettingsTab::GeneralSettingsTab(std::shared_ptr<app::AppState> state)
    : state_(std::move(state)) {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    layout->addLayout(form);

    language_ = new QComboBox;
    language_->setObjectName("language");
    for (const auto language : languages) {
        // Each language by its own name, as the platform's locale data writes it.
        const QLocale locale(QString::fromStdString(std::string(core::rawValue(language))));
        language_->addItem(locale.nativeLanguageName());
    }
    language_->setToolTip(text(strings.languageHint));
    form->addRow(text(strings.languageLabel), language_);
    QObject::connect(language_, &QComboBox::activated, this,
                     [this](int index) { state_->setLang(languages.at(index)); });

    appearance_ = new QComboBox;
    appearance_->setObjectName("appearance");
    appearance_->addItems({text(strings.lightThemeLabel), text(strings.darkThemeLabel)});
    appearance_->setToolTip(text(strings.appearanceHint));
    form->addRow(text(strings.appearanceLabel), appearance_);
    QObject::connect(appearance_, &QComboBox::activated, this,
                     [this](int index) { state_->setDark(index == 1); });

    hotkey_ = new QPushButton;
    hotkey_->setObjectName("hotkey");
    hotkey_->installEventFilter(this);
    hotkey_->setToolTip(text(strings.hotkeyHint));
    form->addRow(text(strings.hotkeyLabel), hotkey_);
    hotkeyIssue_ = new QLabel;
    hotkeyIssue_->setObjectName("hotkeyIssue");
    hotkeyIssue_->setStyleSheet("color: #c4001a");
    form->addRow(QString(), hotkeyIssue_);
    QObject::connect(hotkey_, &QPushButton::clicked, this, [this] {
        if (recorder_.isRecording()) {
            recorder_.stop();
        } else {
            startRecording();
        }
    });
    recorder_.onRecordingStateChange = [this](bool) { showRecorder(); };

    network_ = addSwitch(layout, strings.networkFeaturesLabel, strings.networkFeaturesHint);
    memorySaving_ = addSwitch(layout, strings.memorySavingModeLabel, strings.memorySavingModeHint);
    updateCheck_ = addSwitch(layout, strings.modelUpdateCheckLabel, strings.modelUpdateCheckHint);
    network_->setObjectName("networkFeatures");
    QObject::connect(network_, &QCheckBox::clicked, this,
                     [this](bool on) { state_->setNetworkFeaturesEnabled(on); });
    QObject::connect(memorySaving_, &QCheckBox::clicked, this,
                     [this](bool on) { state_->setMemorySavingModeEnabled(on); });
    QObject::connect(updateCheck_, &QCheckBox::clicked, this,
                     [this](bool on) { state_->setModelUpdateCheckEnabled(on); });
    layout->addStretch();
    refresh();
}

void GeneralSettingsTab::refresh() {
    const auto found = std::find(languages.begin(), languages.end(), state_->lang());
    language_->setCurrentIndex(static_cast<int>(found - languages.begin()));
    appearance_->setCurrentIndex(state_->isDark() ? 1 : 0);
    network_->setChecked(state_->networkFeaturesEnabled());
    memorySaving_->setChecked(state_->memorySavingModeEnabled());
    updateCheck_->setChecked(state_->modelUpdateCheckEnabled());
    showRecorder();
}

void GeneralSettingsTab::startRecording() {
    recorder_.start([this](std::uint32_t keyCode, std::uint32_t modifiers) {
        return state_->setHotkey(keyCode, modifiers);
    });
    hotkey_->setFocus(Qt::OtherFocusReason);
}

void GeneralSettingsTab::showRecorder() {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    hotkey_->setText(recorder_.isRecording()
                         ? text(strings.hotkeyRecordingPrompt)
                         : QString::fromStdString(
                               shortcutName(state_->hotkeyKeyCode(), state_->hotkeyModifiers())));
    const auto issue = recorder_.issue();
    hotkeyIssue_->setText(!issue ? QString()
                          : *issue == HotkeyRecorderIssue::modifierRequired
                              ? text(strings.hotkeyModifierRequiredMessage)
                              : text(strings.hotkeyRegistrationFailedMessage));
}

bool GeneralSettingsTab::eventFilter(QObject* watched, QEvent* event) {
    if (watched == hotkey_ && event->type() == QEvent::KeyPress && recorder_.isRecording()) {
        const auto* key = static_cast<QKeyEvent*>(event);
        return recorder_.keyPressed(storedKeyCode(*key), storedModifiers(key->modifiers()));
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace nuvrel::panel
