#include "panel/panel_window.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QScreen>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>
#include <cstdio>

#include "app/settings_keys.h"
#include "base/text.h"
#include "core/localized_strings.h"
#include "panel/panel_geometry.h"
#include "panel/panel_resign_policy.h"

namespace nuvrel::panel {

namespace {

// The panel's colours, one set per theme.
struct Palette {
    const char* panel;
    const char* panelBorder;
    const char* text;
    const char* subtext;
    const char* rowBg;
    const char* accent;
    const char* error;
};
constexpr Palette lightPalette{"#ffffff", "#c8c8cc", "#1c1c1e", "#6e6e73",
                               "#e3ecfb", "#0a66d8", "#c4001a"};
constexpr Palette darkPalette{"#1f1f21", "#3a3a3c", "#f2f2f7", "#a1a1a6",
                              "#2b3a52", "#4c9bff", "#ff6b61"};

QString themeStyleSheet(const Palette& p) {
    return QString(R"(
        #panel { background: %1; border: 1px solid %2; }
        QLineEdit { background: %1; color: %3; border: none; padding: 10px 14px; }
        QScrollArea, #card, QScrollArea > QWidget > QWidget { background: %1; border: none; }
        #card { border-top: 1px solid %2; }
        QLabel { color: %3; }
        #cardTitle { font-weight: bold; }
        #card[tone="error"] #cardTitle { color: %7; }
        #cardSubtitle, #rowDetail, #cardFooter { color: %4; }
        #rowDetail[state="failed"] { color: %7; }
        #row { border-radius: 6px; }
        #row[selected="true"] { background: %5; }
        QPushButton { color: %6; }
    )")
        .arg(p.panel, p.panelBorder, p.text, p.subtext, p.rowBg, p.accent, p.error);
}

Rect rectOf(const QRect& r) {
    return {double(r.x()), double(r.y()), double(r.width()), double(r.height())};
}

}  // namespace

PanelWindow::PanelWindow(std::shared_ptr<app::AppState> state, PanelEffects effects,
                         Options options)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      state_(std::move(state)),
      effects_(std::move(effects)),
      options_(options) {
    setObjectName("panel");
    setAttribute(Qt::WA_StyledBackground);
    setWindowTitle("Nuvrel");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(0);
    field_ = new QLineEdit(this);
    QFont large = field_->font();
    // A desktop font may be given in pixels, and then it has no point size.
    if (large.pointSizeF() > 0) {
        large.setPointSizeF(large.pointSizeF() * 1.5);
    } else {
        large.setPixelSize(large.pixelSize() * 3 / 2);
    }
    field_->setFont(large);
    field_->installEventFilter(this);
    layout->addWidget(field_);
    scroll_ = new QScrollArea(this);
    scroll_->setWidgetResizable(true);
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll_->setFocusPolicy(Qt::NoFocus);
    scroll_->hide();
    layout->addWidget(scroll_, 1);
    connect(field_, &QLineEdit::textEdited, this, [this](const QString& text) {
        state_->setQuery(text.normalized(QString::NormalizationForm_C).toStdString());
    });
    state_->onChange = [this] { stateChanged(); };
    stateChanged();
}

PanelWindow::~PanelWindow() {
    state_->onChange = nullptr;
    state_->activeRowActions.reset();
}

void PanelWindow::stateChanged() {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    field_->setPlaceholderText(QString::fromStdString(strings.placeholder));
    const QString query = QString::fromStdString(state_->query());
    if (field_->text().normalized(QString::NormalizationForm_C) != query) field_->setText(query);
    applyTheme();
    rebuildCard();
    if (onStateChanged) onStateChanged();
}

void PanelWindow::rebuildCard() {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    const app::Phase& phase = state_->phase();
    std::optional<Card> wanted;
    if (phase.is(app::Phase::Kind::thinking)) {
        wanted = buildThinkingCard(state_->modelDownloadProgress(), strings);
    } else if (const auto* outcome = phase.asResult(); outcome && !outcome->isCancelled()) {
        wanted = replacement_ && replacement_->first == state_->runGeneration()
                     ? replacement_->second
                     : buildCard(*outcome, strings);
    } else if (const auto* steps = phase.asChain()) {
        wanted = buildChainCard(*steps, strings);
    }
    if (wanted && card_ && card_->card() == *wanted) return;
    if (QWidget* old = scroll_->takeWidget()) {
        old->hide();
        old->deleteLater();  // it may be the card whose button started this change
    }
    card_ = nullptr;
    state_->activeRowActions.reset();
    if (!wanted) {
        scroll_->hide();
    } else {
        card_ = new CardWidget(std::move(*wanted), strings,
                               [this](const CardAction& action) { perform(action); });
        if (options_.latencyLog) card_->installEventFilter(this);
        scroll_->setWidget(card_);
        scroll_->show();
        if (!phase.is(app::Phase::Kind::thinking)) state_->activeRowActions = card_->rowActions();
    }
    layOut();
}

void PanelWindow::perform(const CardAction& action) {
    switch (action.kind) {
        case CardAction::Kind::none:
            return;
        case CardAction::Kind::openFile:
        case CardAction::Kind::revealFile:
        case CardAction::Kind::openURL:
            if (action.kind == CardAction::Kind::openFile) effects_.openFile(action.target);
            if (action.kind == CardAction::Kind::revealFile) effects_.revealFile(action.target);
            if (action.kind == CardAction::Kind::openURL) effects_.openURL(action.target);
            // Another program takes the focus: the card comes back at the next show.
            hidePanel();
            return;
        case CardAction::Kind::copyText:
            effects_.copyText(action.target);
            return;
        case CardAction::Kind::runQuery:
            state_->run(action.target);
            return;
        case CardAction::Kind::retry:
            state_->run(std::string(state_->resultQuery()));
            return;
        case CardAction::Kind::confirm:
            confirmRow(action.row);
            return;
    }
}

void PanelWindow::confirmRow(std::size_t row) {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    const auto* shown = state_->phase().asResult();
    if (!shown || !card_) return;
    const bool plan = shown->asConfirm() != nullptr;
    QPointer<CardWidget> card = card_;
    card->setRowStatus(row, plan ? strings.messageSendingLabel : strings.deleteFileDeletingLabel,
                       CardWidget::RowState::busy);
    const std::uint64_t generation = state_->runGeneration();
    const bool started =
        state_->confirmShown(row, [this, card, row, plan, generation](core::PipelineOutcome done) {
            const auto& strings = core::LocalizedStrings::strings(state_->lang());
            if (plan) {
                // The sent message takes the draft's place on the card.
                replacement_.emplace(generation, buildCard(done, strings));
                rebuildCard();
                return;
            }
            if (!card) return;
            const ConfirmedRow confirmed = describeConfirmed(done, strings);
            card->setRowStatus(row, confirmed.text,
                               confirmed.state == ConfirmedRow::State::done
                                   ? CardWidget::RowState::done
                                   : CardWidget::RowState::failed);
        });
    if (!started)
        card->setRowStatus(row, strings.genericErrorMessage, CardWidget::RowState::failed);
}

void PanelWindow::layOut() {
    QScreen* screen = screen_ ? screen_.data() : QGuiApplication::primaryScreen();
    const Rect full = screen ? rectOf(screen->geometry()) : fallbackScreen;
    const Rect visible = screen ? rectOf(screen->availableGeometry()) : fallbackScreen;
    columnWidth_ = columnWidth(full.width);
    // The column's room below its fixed top edge: the window never runs off the screen.
    const Rect frame = panelFrame(full, visible, columnWidth_, 1e9);
    const int width = static_cast<int>(columnWidth_);
    int height = field_->sizeHint().height() + 2;
    if (card_) {
        card_->setFixedWidth(width - 2);
        height += card_->layout()->totalHeightForWidth(width - 2);
    }
    height = std::min(height, static_cast<int>(frame.height));
    // No transparent margin around the column: without a compositor it would paint black.
    setGeometry(static_cast<int>(frame.x + (frame.width - columnWidth_) / 2),
                static_cast<int>(frame.y), width, height);
}

void PanelWindow::desktopThemeChanged() {
    applyTheme();
}

void PanelWindow::applyTheme() {
    // A choice made in the settings holds; without one the desktop decides.
    bool dark = state_->isDark();
    if (!state_->userDefaults()->contains(app::settingsKey::appearance)) {
        if (options_.desktopPrefersDark) {
            dark = options_.desktopPrefersDark();
        } else if (options_.followPalette) {
            dark = QApplication::palette().color(QPalette::Window).lightness() < 128;
        }
    }
    if (darkApplied_ == dark) return;
    darkApplied_ = dark;
    setStyleSheet(themeStyleSheet(dark ? darkPalette : lightPalette));
}

void PanelWindow::showPanel() {
    if (options_.latencyLog) showStarted_ = std::chrono::steady_clock::now();
    ++deferredHideGeneration_;
    if (onAboutToShow) onAboutToShow();
    // The screen that holds the pointer.
    screen_ = QGuiApplication::screenAt(QCursor::pos());
    state_->raiseShowToken();
    state_->prepareForReopen();
    layOut();
    show();
    raise();
    activateWindow();
    field_->setFocus(Qt::ActiveWindowFocusReason);
}

void PanelWindow::hidePanel() {
    state_->captureResultForReopen();
    hide();
}

void PanelWindow::toggle() {
    if (isVisible()) {
        hidePanel();
    } else {
        showPanel();
    }
}

void PanelWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isVisible() && !isActiveWindow()) resigned();
}

void PanelWindow::resigned() {
    if (options_.keepOnFocusLoss) return;
    const ResignAction action =
        resignAction(state_->panelHoldUntil, std::chrono::steady_clock::now());
    if (action.kind == ResignAction::Kind::hold) {
        scheduleDeferredHide(action.remaining);
    } else {
        hidePanel();
    }
}

void PanelWindow::scheduleDeferredHide(std::chrono::steady_clock::duration after) {
    const std::uint64_t generation = ++deferredHideGeneration_;
    const auto delay = std::chrono::duration_cast<std::chrono::milliseconds>(after) +
                       std::chrono::milliseconds(50);
    QTimer::singleShot(delay, this, [this, generation] {
        if (generation == deferredHideGeneration_ && isVisible() && !isActiveWindow()) hidePanel();
    });
}

bool PanelWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == field_ && event->type() == QEvent::KeyPress)
        return handleKey(static_cast<QKeyEvent*>(event));
    if (event->type() == QEvent::Paint && options_.latencyLog) {
        // The first frame of the field after a show, of a result card after Return.
        auto& started = watched == field_ ? showStarted_ : returnPressed_;
        const bool resultCard = watched == card_ && state_->phase().asResult();
        if (started && (watched == field_ || resultCard)) {
            const std::chrono::duration<double, std::milli> took =
                std::chrono::steady_clock::now() - *started;
            started.reset();
            char line[96];
            std::snprintf(line, sizeof line, "%s drawn %.1f ms after the %s",
                          watched == field_ ? "panel" : "card", took.count(),
                          watched == field_ ? "toggle" : "Return");
            options_.latencyLog(line);
        }
    }
    return QWidget::eventFilter(watched, event);
}

bool PanelWindow::handleKey(QKeyEvent* key) {
    const bool unchanged = base::text::trim(state_->query()) == state_->resultQuery();
    const bool control = key->modifiers() & Qt::ControlModifier;
    auto& rows = state_->activeRowActions;
    switch (key->key()) {
        case Qt::Key_Escape:
            // The text alone decides: a first press clears, a second one closes.
            if (!state_->query().empty() || !field_->text().isEmpty()) {
                state_->reset();
                field_->clear();
                return true;
            }
            ++deferredHideGeneration_;
            state_->cancelActiveRun();
            hide();
            if (onDismissed) onDismissed();
            return true;
        case Qt::Key_Down:
            if (!rows) return false;
            rows->moveDown();
            return true;
        case Qt::Key_Up:
            if (!rows) return false;
            rows->moveUp();
            return true;
        case Qt::Key_Space:
            return rows && unchanged && !control && rows->previewSelected();
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (control) return unchanged && card_ && card_->alternateSelected();
            if (options_.latencyLog) returnPressed_ = std::chrono::steady_clock::now();
            state_->submitSearchOrActivateRow();
            return true;
        case Qt::Key_Comma:
            if (!control || !onOpenSettings) return false;
            onOpenSettings();
            return true;
        case Qt::Key_C:
            if (!control || field_->hasSelectedText() || !card_ || !unchanged) return false;
            if (const std::string text = card_->selectedCopyText(); !text.empty()) {
                effects_.copyText(text);
                return true;
            }
            return false;
        default:
            return false;
    }
}

}  // namespace nuvrel::panel
