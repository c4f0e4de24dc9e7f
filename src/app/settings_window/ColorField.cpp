#include "ColorField.h"

#include "ColorPalette.h"
#include "HexColor.h"
#include "Theme.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLineEdit>
#include <QPainter>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int hexFieldWidth = 92;

} // namespace

ColorField::ColorField(QWidget* parent)
    : QWidget(parent)
    , well_(new QToolButton(this))
    , hex_(new QLineEdit(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(space::small);
    layout->addWidget(well_);
    layout->addWidget(hex_);
    layout->addStretch(1);
    well_->setFocusPolicy(Qt::StrongFocus);
    hex_->setFixedWidth(hexFieldWidth);
    connect(well_, &QToolButton::clicked, this, &ColorField::showPalette);
    connect(hex_, &QLineEdit::textEdited, this, &ColorField::takeTyped);
    connect(hex_, &QLineEdit::editingFinished, this,
            [this] { hex_->setText(toHexString(color_)); });
}

void ColorField::setColor(const QColor& color) {
    if (color == color_) {
        return;
    }
    color_ = color;
    well_->setIcon(swatchIcon(color, well_->iconSize()));
    if (colorFromHex(hex_->text(), {}) != color) {
        hex_->setText(toHexString(color));
    }
}

void ColorField::setName(const QString& name) {
    well_->setAccessibleName(name);
    well_->setToolTip(name);
    hex_->setAccessibleName(name + u" (#RRGGBB)"_s);
}

void ColorField::choose(const QColor& color) {
    setColor(color);
    Q_EMIT chosen(color);
}

void ColorField::takeTyped() {
    const QColor typed = colorFromHex(hex_->text(), {});
    if (typed.isValid() && typed != color_) {
        choose(typed);
    }
}

void ColorField::showPalette() {
    auto* palette = new ColorPalette(color_, well_);
    palette->setAttribute(Qt::WA_DeleteOnClose);
    palette->setAccessibleName(well_->accessibleName());
    connect(palette, &ColorPalette::chosen, this, &ColorField::choose);
    palette->showBelow(*well_);
}

} // namespace orv
