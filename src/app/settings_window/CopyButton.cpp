#include "CopyButton.h"

#include "ButtonKind.h"
#include "ThreadChecks.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QStyle>
#include <QStyleOptionButton>

#include <utility>

namespace orv {

CopyButton::CopyButton(std::function<QString()> source, QWidget* parent,
                       std::chrono::milliseconds thanks)
    : QPushButton(parent)
    , source_(std::move(source)) {
    setAutoDefault(false);
    setButtonKind(*this, ButtonKind::Plain);
    thanks_.setSingleShot(true);
    thanks_.setInterval(thanks);
    connect(&thanks_, &QTimer::timeout, this, &CopyButton::showText);
    connect(this, &QPushButton::clicked, this, &CopyButton::copy);
}

void CopyButton::setTexts(const QString& copy, const QString& copied) {
    ORV_ON_MAIN();
    copyText_ = copy;
    copiedText_ = copied;
    showText();
    updateGeometry();
}

QSize CopyButton::sizeHint() const {
    ensurePolished();
    QStyleOptionButton option;
    initStyleOption(&option);
    QSize size;
    for (const QString& text : {copyText_, copiedText_}) {
        option.text = text;
        const QSize room = fontMetrics().size(Qt::TextShowMnemonic, text);
        size =
            size.expandedTo(style()->sizeFromContents(QStyle::CT_PushButton, &option, room, this));
    }
    return size;
}

void CopyButton::copy() {
    ORV_ON_MAIN();
    QGuiApplication::clipboard()->setText(source_());
    thanks_.start();
    showText();
}

void CopyButton::showText() {
    setText(thanks_.isActive() ? copiedText_ : copyText_);
}

} // namespace orv
