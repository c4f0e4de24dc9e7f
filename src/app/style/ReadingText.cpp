#include "ReadingText.h"

#include "ThreadChecks.h"

#include <QEvent>
#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextDocument>

namespace orv {

ReadingText::ReadingText(QWidget* parent)
    : QTextEdit(parent) {
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setFrameShape(QFrame::NoFrame);
    setTabChangesFocus(true);
    setUndoRedoEnabled(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(0);
}

void ReadingText::setTexts(const QString& original, const QString& translation) {
    ORV_ON_MAIN();
    if (original == original_ && translation == translation_) {
        return;
    }
    original_ = original;
    translation_ = translation;
    compose();
}

void ReadingText::setRemark(const QString& remark, Tone tone) {
    ORV_ON_MAIN();
    if (remark == remark_ && tone == remarkTone_) {
        return;
    }
    remark_ = remark;
    remarkTone_ = tone;
    compose();
}

void ReadingText::setEmptyText(const QString& text) {
    ORV_ON_MAIN();
    setPlaceholderText(text);
}

void ReadingText::changeEvent(QEvent* event) {
    QTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        compose();
    }
}

void ReadingText::compose() {
    const Theme& theme = themeOf(*this);
    clear();
    QTextCursor cursor(document());
    const auto addParagraph = [&cursor](const QString& text, const QTextCharFormat& format) {
        if (text.isEmpty()) {
            return;
        }
        QTextBlockFormat block;
        if (cursor.position() > 0) {
            block.setTopMargin(space::tiny);
            cursor.insertBlock(block);
        }
        cursor.insertText(text, format);
    };
    QTextCharFormat remark;
    remark.setForeground(theme.toneColor(remarkTone_));
    addParagraph(remark_, remark);
    QTextCharFormat quiet;
    quiet.setForeground(theme.quietText);
    addParagraph(original_, quiet);
    QTextCharFormat large;
    large.setFont(largeFont(font()), QTextCharFormat::FontPropertiesSpecifiedOnly);
    large.setForeground(theme.text);
    addParagraph(translation_, large);
    moveCursor(QTextCursor::Start);
}

} // namespace orv
