#include "ReadingText.h"

#include "Theme.h"

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
    if (original == original_ && translation == translation_) {
        return;
    }
    original_ = original;
    translation_ = translation;
    compose();
}

void ReadingText::setEmptyText(const QString& text) {
    setPlaceholderText(text);
}

void ReadingText::changeEvent(QEvent* event) {
    QTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        compose();
    }
}

void ReadingText::compose() {
    clear();
    QTextCursor cursor(document());
    QTextBlockFormat block;
    QTextCharFormat quiet;
    quiet.setForeground(themeOf(*this).quietText);
    QTextCharFormat large;
    large.setFontPointSize(font().pointSizeF() * 1.3);
    cursor.setBlockFormat(block);
    if (!original_.isEmpty()) {
        cursor.insertText(original_, quiet);
    }
    if (!translation_.isEmpty()) {
        if (!original_.isEmpty()) {
            block.setTopMargin(space::tiny);
            cursor.insertBlock(block);
        }
        cursor.insertText(translation_, large);
    }
    moveCursor(QTextCursor::Start);
}

} // namespace orv
