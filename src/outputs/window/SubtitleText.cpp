#include "SubtitleText.h"

#include "Graphemes.h"

#include <QPainter>
#include <QTextCharFormat>
#include <QTextLayout>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

// More than the largest screens hold in the smallest letters.
constexpr qsizetype maximumCharacters = 12'000;
constexpr qsizetype maximumLines = 250;

// Stands for what was left out, on the same line as what follows it (U+2060: no break here).
const QString omission = u"…\u2060"_s;
constexpr QChar lineBreak = u'\n';

bool isLineBreak(QChar character) {
    switch (character.unicode()) {
    case u'\n':
    case u'\r':
    case u'\v':
    case u'\f':
    case 0x85:
    case QChar::LineSeparator:
    case QChar::ParagraphSeparator:
        return true;
    default:
        return false;
    }
}

/// Splits no character: what is left begins with the first that is whole.
QString endBehindEllipsis(const QString& text, qsizetype start) {
    return omission + text.mid(Graphemes(text).boundaryFrom(start));
}

/// The last characters and lines of a text that is longer than any screen.
QString bounded(const QString& text) {
    qsizetype start = std::max<qsizetype>(0, text.size() - maximumCharacters);
    qsizetype lines = 0;
    for (qsizetype i = text.size() - 1; i >= start; --i) {
        if (text[i] == lineBreak && ++lines == maximumLines) {
            start = i + 1;
            break;
        }
    }
    return start == 0 ? text : endBehindEllipsis(text, start);
}

QTextOption subtitleOption() {
    QTextOption option(Qt::AlignHCenter);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(Qt::LayoutDirectionAuto);
    return option;
}

/// Whether a character as readers see it is to be drawn by a font of coloured pictures: pictures
/// proper, and what a variation selector, a keycap or a joiner turns into one.
bool isPicture(QStringView character) {
    for (qsizetype i = 0; i < character.size(); ++i) {
        const QChar unit = character[i];
        if (unit == QChar(0xFE0F) || unit == QChar(0x20E3)) {
            return true;
        }
        if (unit.isHighSurrogate() && i + 1 < character.size()) {
            const char32_t code = QChar::surrogateToUcs4(unit, character[i + 1]);
            if (code >= 0x1F000 && code <= 0x1FAFF) {
                return true;
            }
        }
    }
    return false;
}

/// The pictures in `text`, each with a font that has all of them: taken from several fonts, a skin
/// or a keycap would stand beside what it belongs to.
QList<QTextLayout::FormatRange> pictureRanges(const QString& text, const QFont& font) {
    QTextCharFormat format;
    format.setFontFamilies(
        {u"Noto Color Emoji"_s, u"Apple Color Emoji"_s, u"Segoe UI Emoji"_s, font.family()});
    format.setFontWeight(QFont::Normal);
    QList<QTextLayout::FormatRange> ranges;
    Graphemes characters(text);
    qsizetype start = 0;
    for (qsizetype end = characters.next(); end >= 0; end = characters.next()) {
        if (isPicture(QStringView(text).sliced(start, end - start))) {
            if (!ranges.isEmpty() && ranges.last().start + ranges.last().length == start) {
                ranges.last().length += static_cast<int>(end - start);
            } else {
                ranges.append({static_cast<int>(start), static_cast<int>(end - start), format});
            }
        }
        start = end;
    }
    return ranges;
}

/// Wraps the layout's text; returns its height.
double wrap(QTextLayout& layout, double width) {
    double height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLeadingIncluded(true);
        line.setLineWidth(width);
        line.setPosition({0, height});
        height += line.height();
    }
    layout.endLayout();
    return height;
}

} // namespace

QString readableText(const QString& text) {
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        if (isLineBreak(character)) {
            const bool first = character == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n';
            if (!first) {
                result.append(lineBreak);
            }
        } else if (character.category() != QChar::Other_Control || character == u'\t') {
            result.append(character);
        }
    }
    while (!result.isEmpty() && result.back().isSpace()) {
        result.chop(1);
    }
    return bounded(result);
}

SubtitleText::SubtitleText() = default;
SubtitleText::~SubtitleText() = default;
SubtitleText::SubtitleText(SubtitleText&& other) noexcept = default;
SubtitleText& SubtitleText::operator=(SubtitleText&& other) noexcept = default;

SubtitleText::SubtitleText(const QString& text, const QFont& font, double width)
    : text_(text) {
    const QTextOption option = subtitleOption();
    qsizetype start = 0;
    while (start <= text.size()) {
        const qsizetype found = text.indexOf(lineBreak, start);
        const qsizetype end = found < 0 ? text.size() : found;
        auto layout = std::make_unique<QTextLayout>(text.mid(start, end - start), font);
        layout->setTextOption(option);
        layout->setFormats(pictureRanges(layout->text(), font));
        layout->setCacheEnabled(true);
        const double height = wrap(*layout, width);
        paragraphs_.push_back({.start = start, .top = height_, .layout = std::move(layout)});
        height_ += height;
        start = end + 1;
    }
}

SubtitleText SubtitleText::endOf(const QString& text, const QFont& font, double width,
                                 double maximumHeight) {
    SubtitleText result(text, font, width);
    // The ellipsis may push a word down and so cost another line: then once more. On a screen that
    // is narrower than letters that goes on, so there is an end.
    constexpr int attempts = 8;
    for (int i = 0; i < attempts && result.height() > maximumHeight && result.lineCount() > 1;
         ++i) {
        const qsizetype first = result.text_.startsWith(omission) ? omission.size() + 1 : 1;
        const qsizetype start = std::max(first, result.startOfEnd(maximumHeight));
        result = SubtitleText(endBehindEllipsis(result.text_, start), font, width);
    }
    return result;
}

qsizetype SubtitleText::startOfEnd(double maximumHeight) const {
    double height = 0;
    qsizetype start = text_.size();
    for (auto paragraph = paragraphs_.rbegin(); paragraph != paragraphs_.rend(); ++paragraph) {
        for (int i = paragraph->layout->lineCount() - 1; i >= 0; --i) {
            const QTextLine line = paragraph->layout->lineAt(i);
            height += line.height();
            if (std::ceil(height) > maximumHeight && start < text_.size()) {
                return start;
            }
            start = paragraph->start + line.textStart();
        }
    }
    return start;
}

int SubtitleText::height() const {
    return static_cast<int>(std::ceil(height_));
}

int SubtitleText::lineCount() const {
    int count = 0;
    for (const Paragraph& paragraph : paragraphs_) {
        count += paragraph.layout->lineCount();
    }
    return count;
}

double SubtitleText::naturalWidth() const {
    double width = 0;
    for (const Paragraph& paragraph : paragraphs_) {
        for (int i = 0; i < paragraph.layout->lineCount(); ++i) {
            width = std::max(width, paragraph.layout->lineAt(i).naturalTextWidth());
        }
    }
    return width;
}

void SubtitleText::draw(QPainter& painter, QPointF position) const {
    for (const Paragraph& paragraph : paragraphs_) {
        paragraph.layout->draw(&painter, position + QPointF(0, paragraph.top));
    }
}

} // namespace orv
