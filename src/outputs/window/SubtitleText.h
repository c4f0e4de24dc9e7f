#pragma once

#include <QFont>
#include <QPointF>
#include <QString>

#include <memory>
#include <vector>

class QPainter;
class QTextLayout;

namespace orv {

/// `text` as subtitles show it: one kind of line break, no control characters, nothing blank at the
/// end. Of a text that no screen could hold only the end remains, marked by an ellipsis; so laying
/// it out takes a bounded time.
QString readableText(const QString& text);

/// A text, wrapped and measured once, to be drawn as often as needed. Lines are centred and break
/// between words, or anywhere where a word is wider than a line. Each paragraph has the direction
/// of its first letter. Lengths are logical pixels. For the main thread.
class SubtitleText {
  public:
    /// Nothing: no lines, no height.
    SubtitleText();

    SubtitleText(const QString& text, const QFont& font, double width);

    /// As much of the end of `text` as fits into `maximumHeight`, behind an ellipsis where that is
    /// not all of it, but at least the last line.
    static SubtitleText endOf(const QString& text, const QFont& font, double width,
                              double maximumHeight);

    ~SubtitleText();
    SubtitleText(SubtitleText&& other) noexcept;
    SubtitleText& operator=(SubtitleText&& other) noexcept;
    SubtitleText(const SubtitleText&) = delete;
    SubtitleText& operator=(const SubtitleText&) = delete;

    const QString& text() const { return text_; }

    /// Of all lines with their leading, rounded up.
    int height() const;

    int lineCount() const;

    /// Width of the widest line, without blanks at its end.
    double naturalWidth() const;

    /// Draws with the painter's pen; the first line's top left corner is at `position`.
    void draw(QPainter& painter, QPointF position) const;

  private:
    struct Paragraph {
        qsizetype start = 0; ///< In `text_`.
        double top = 0;
        std::unique_ptr<QTextLayout> layout;
    };

    /// Where the first line begins from which on the rest is at most `maximumHeight` high; the last
    /// line where that is higher.
    qsizetype startOfEnd(double maximumHeight) const;

    QString text_;
    std::vector<Paragraph> paragraphs_;
    double height_ = 0;
};

} // namespace orv
