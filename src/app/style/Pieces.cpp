#include "Pieces.h"

#include "StylePaint.h"
#include "Symbols.h"
#include "Theme.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace orv {

QLabel* makeTitle(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setFont(titleFont(label->font()));
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel* makeHeading(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setFont(strongFont(label->font()));
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel* makeHint(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

QLabel* makeText(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

QPushButton* makeButton(QWidget* parent, ButtonKind kind) {
    auto* button = new QPushButton(parent);
    button->setAutoDefault(false);
    setButtonKind(*button, kind);
    return button;
}

IconButton::IconButton(const QString& symbolName, QWidget* parent)
    : QToolButton(parent) {
    setToolButtonStyle(Qt::ToolButtonIconOnly);
    setFocusPolicy(Qt::StrongFocus);
    setSymbol(symbolName);
}

void IconButton::setSymbol(const QString& symbolName) {
    setIcon(symbol(symbolName));
}

void IconButton::setText(const QString& text) {
    QToolButton::setText(text);
    setToolTip(text);
    setAccessibleName(text);
}

Card::Card(QWidget* parent, Ground ground)
    : QWidget(parent)
    , ground_(ground)
    , rows_(new QVBoxLayout(this))
    , fieldSpacing_(space::small) {
    rows_->setContentsMargins(space::medium, space::medium, space::medium, space::medium);
    rows_->setSpacing(space::small);
}

QLabel* Card::addHeading() {
    fields_ = nullptr;
    QLabel* heading = makeHeading(this);
    rows_->addWidget(heading);
    return heading;
}

void Card::setFieldsClose() {
    fieldSpacing_ = space::tiny;
}

QLabel* Card::addField(QWidget* control) {
    const bool continues =
        fields_ != nullptr && rows_->itemAt(rows_->count() - 1)->layout() == fields_;
    if (!continues) {
        fields_ = new QGridLayout;
        fields_->setHorizontalSpacing(space::medium);
        fields_->setVerticalSpacing(fieldSpacing_);
        fields_->setColumnStretch(1, 1);
        rows_->addLayout(fields_);
    }
    auto* label = new QLabel(this);
    const int row = fields_->rowCount();
    fields_->addWidget(label, row, 0);
    fields_->addWidget(control, row, 1);
    return label;
}

void Card::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = themeOf(*this);
    const bool notice = ground_ == Ground::Notice;
    drawRounded(&painter, QRectF(rect()), radius::card, notice ? theme.notice : theme.card,
                notice ? theme.noticeBorder : theme.cardBorder);
}

QScrollArea* makePage(QWidget* content, QWidget* parent) {
    auto* page = new QScrollArea(parent);
    page->setFrameShape(QFrame::NoFrame);
    page->setWidgetResizable(true);
    page->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    page->setWidget(content);
    return page;
}

void nameField(QLabel* label, QWidget* field, const QString& text) {
    label->setText(text);
    label->setBuddy(field);
    field->setAccessibleName(text);
    if (const auto* combo = qobject_cast<QComboBox*>(field);
        combo != nullptr && combo->lineEdit() != nullptr) {
        combo->lineEdit()->setAccessibleName(text);
    }
}

} // namespace orv
