#include "panel/card_widget.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace nuvrel::panel {

namespace {

QString qt(const std::string& text) {
    return QString::fromStdString(text);
}

// A label whose text the user can select and copy; long texts wrap.
QLabel* textLabel(const std::string& text, QWidget* parent, bool wrap = true) {
    auto* label = new QLabel(qt(text), parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(wrap);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setFocusPolicy(Qt::NoFocus);
    return label;
}

// A one-line label that shows as much as fits and an ellipsis, at the end or in the middle.
class ElidedLabel : public QLabel {
public:
    ElidedLabel(const std::string& text, Qt::TextElideMode mode, QWidget* parent)
        : QLabel(parent), full_(qt(text)), mode_(mode) {
        setTextFormat(Qt::PlainText);
        setToolTip(full_);
        setMinimumWidth(40);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        setText(full_);
    }
    const QString& fullText() const { return full_; }
    void setFullText(const QString& text) {
        full_ = text;
        setToolTip(full_);
        setText(fontMetrics().elidedText(full_, mode_, width()));
    }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QLabel::resizeEvent(event);
        setText(fontMetrics().elidedText(full_, mode_, width()));
    }

private:
    QString full_;
    Qt::TextElideMode mode_;
};

}  // namespace

CardWidget::CardWidget(Card card, const core::LocalizedStrings& strings,
                       std::function<void(const CardAction&)> perform, QWidget* parent)
    : QFrame(parent), card_(std::move(card)), perform_(std::move(perform)) {
    setObjectName("card");
    setProperty("tone", card_.tone == Card::Tone::error    ? "error"
                        : card_.tone == Card::Tone::notice ? "notice"
                                                           : "normal");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 12, 16, 12);
    layout->setSpacing(6);
    if (!card_.title.empty()) {
        auto* title = textLabel(card_.title, this);
        title->setObjectName("cardTitle");
        layout->addWidget(title);
    }
    if (!card_.subtitle.empty()) {
        auto* subtitle = textLabel(card_.subtitle, this);
        subtitle->setObjectName("cardSubtitle");
        layout->addWidget(subtitle);
    }
    for (const auto& paragraph : card_.paragraphs) layout->addWidget(textLabel(paragraph, this));
    for (std::size_t i = 0; i < card_.rows.size(); ++i) {
        const CardRow& row = card_.rows[i];
        auto* rowWidget = new QFrame(this);
        rowWidget->setObjectName("row");
        rowWidget->setProperty("selected", false);
        auto* rowLayout = new QHBoxLayout(rowWidget);
        rowLayout->setContentsMargins(8, 4, 8, 4);
        auto* texts = new QVBoxLayout();
        texts->setSpacing(0);
        const auto mode = row.elide == CardRow::Elide::middle ? Qt::ElideMiddle : Qt::ElideRight;
        auto* title = new ElidedLabel(row.title, Qt::ElideRight, rowWidget);
        title->setObjectName("rowTitle");
        texts->addWidget(title);
        auto* detail = new ElidedLabel(row.detail, mode, rowWidget);
        detail->setObjectName("rowDetail");
        detail->setVisible(!row.detail.empty());
        texts->addWidget(detail);
        rowLayout->addLayout(texts, 1);
        QPushButton* button = nullptr;
        if (row.activate.kind == CardAction::Kind::confirm) {
            button = new QPushButton(qt(strings.deleteFileConfirmButtonLabel), rowWidget);
            button->setFocusPolicy(Qt::NoFocus);
            connect(button, &QPushButton::clicked, this, [this, i] {
                select(i);
                activateSelected();
            });
            rowLayout->addWidget(button);
        }
        layout->addWidget(rowWidget);
        rowWidgets_.push_back(rowWidget);
        rowDetails_.push_back(detail);
        rowButtons_.push_back(button);
        rowLocked_.push_back(false);
    }
    if (!card_.buttons.empty()) {
        auto* buttons = new QHBoxLayout();
        buttons->addStretch(1);
        for (const auto& spec : card_.buttons) {
            auto* button = new QPushButton(qt(spec.label), this);
            button->setFocusPolicy(Qt::NoFocus);
            connect(button, &QPushButton::clicked, this,
                    [this, action = spec.action] { perform_(action); });
            buttons->addWidget(button);
        }
        layout->addLayout(buttons);
    }
    if (!card_.footer.empty()) {
        auto* footer = textLabel(card_.footer, this);
        footer->setObjectName("cardFooter");
        layout->addWidget(footer);
    }
}

std::optional<app::RowKeyboardActions> CardWidget::rowActions() {
    if (card_.rows.empty()) return std::nullopt;
    QPointer<CardWidget> self(this);
    return app::RowKeyboardActions{
        .moveUp =
            [self] {
                if (self) self->moveUp();
            },
        .moveDown =
            [self] {
                if (self) self->moveDown();
            },
        .activateSelected = [self] { return self && self->activateSelected(); },
        // No preview on this desktop: the space goes to the field.
        .previewSelected = [] { return false; },
    };
}

void CardWidget::select(std::optional<std::size_t> index) {
    const auto mark = [this](std::size_t row, bool selected) {
        QWidget* widget = rowWidgets_[row];
        widget->setProperty("selected", selected);
        // A dynamic property reaches the style sheet only through a fresh polish.
        widget->style()->unpolish(widget);
        widget->style()->polish(widget);
    };
    if (selected_) mark(*selected_, false);
    selected_ = index;
    if (selected_) mark(*selected_, true);
}

void CardWidget::moveDown() {
    if (card_.rows.empty()) return;
    select(selected_ ? std::min(*selected_ + 1, card_.rows.size() - 1) : 0);
}

void CardWidget::moveUp() {
    // Up from the first row leaves the list, so that Return searches again.
    if (!selected_) return;
    select(*selected_ == 0 ? std::nullopt : std::optional<std::size_t>(*selected_ - 1));
}

bool CardWidget::activateSelected() {
    if (!selected_ || rowLocked_[*selected_]) return false;
    const CardAction& action = card_.rows[*selected_].activate;
    if (action.kind == CardAction::Kind::none) return false;
    perform_(action);
    return true;
}

bool CardWidget::alternateSelected() {
    if (!selected_) return false;
    const CardAction& action = card_.rows[*selected_].alternate;
    if (action.kind == CardAction::Kind::none) return false;
    perform_(action);
    return true;
}

std::string CardWidget::selectedCopyText() const {
    return selected_ ? card_.rows[*selected_].copyText : std::string();
}

void CardWidget::setRowStatus(std::size_t row, const std::string& text, RowState state) {
    if (row >= rowDetails_.size()) return;
    static_cast<ElidedLabel*>(rowDetails_[row])->setFullText(qt(text));
    rowDetails_[row]->setVisible(true);
    rowDetails_[row]->setProperty("state", state == RowState::failed ? "failed" : "normal");
    rowLocked_[row] = state != RowState::failed;
    if (rowButtons_[row]) rowButtons_[row]->setEnabled(state == RowState::failed);
}

QString CardWidget::plainText() const {
    QStringList lines;
    for (const QLabel* label : findChildren<QLabel*>()) {
        if (!label->isHidden() && !label->text().isEmpty()) {
            const auto* elided = dynamic_cast<const ElidedLabel*>(label);
            lines << (elided ? elided->fullText() : label->text());
        }
    }
    return lines.join('\n');
}

}  // namespace nuvrel::panel
