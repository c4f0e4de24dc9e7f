#include "KeyField.h"

#include "Symbols.h"
#include "Theme.h"

#include <QHBoxLayout>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace orv {

KeyField::KeyField(QWidget* parent)
    : QWidget(parent)
    , edit_(new QLineEdit(this))
    , reveal_(new QToolButton(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(space::tiny);
    layout->addWidget(edit_, 1);
    layout->addWidget(reveal_);
    setFocusProxy(edit_);
    edit_->setInputMethodHints(Qt::ImhHiddenText | Qt::ImhNoPredictiveText |
                               Qt::ImhNoAutoUppercase | Qt::ImhSensitiveData);
    reveal_->setCheckable(true);
    reveal_->setFocusPolicy(Qt::StrongFocus);
    connect(reveal_, &QToolButton::toggled, this, &KeyField::setRevealed);
    setRevealed(false);
}

void KeyField::setNames(const QString& field, const QString& reveal, const QString& tip) {
    edit_->setAccessibleName(field);
    reveal_->setAccessibleName(reveal);
    reveal_->setToolTip(tip);
}

void KeyField::hideEvent(QHideEvent* event) {
    reveal_->setChecked(false);
    QWidget::hideEvent(event);
}

void KeyField::setRevealed(bool revealed) {
    edit_->setEchoMode(revealed ? QLineEdit::Normal : QLineEdit::Password);
    reveal_->setIcon(symbol(revealed ? u"eye.slash"_s : u"eye"_s));
}

} // namespace orv
