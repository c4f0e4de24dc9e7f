#include "SubtitleText.h"

#include "OverlayLayout.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QStringList>

#include <gtest/gtest.h>

#include <cmath>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

constexpr double width = 760;

QFont largeFont() {
    return SubtitleFonts::system().translation;
}

SubtitleText laidOut(const QString& text) {
    return {text, largeFont(), width};
}

int lineHeight() {
    return laidOut(u"x"_s).height();
}

/// The rectangle that holds all ink of `text` when drawn in the middle of a large picture.
QRect ink(const SubtitleText& text, QPoint position) {
    QImage image(1200, 2000, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    text.draw(painter, position);
    painter.end();
    QRect result;
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(line[x]) > 40) {
                result |= QRect(x, y, 1, 1);
            }
        }
    }
    return result;
}

TEST(SubtitleText, hasNoHeightWithoutText) {
    EXPECT_EQ(SubtitleText().height(), 0);
    EXPECT_EQ(SubtitleText().lineCount(), 0);
}

TEST(SubtitleText, isAsHighAsItsFontAndLeadingRoundedUp) {
    const QFontMetricsF metrics(largeFont());
    EXPECT_EQ(lineHeight(), static_cast<int>(std::ceil(metrics.ascent() + metrics.descent() +
                                                       std::max(0.0, metrics.leading()))));
}

TEST(SubtitleText, wrapsBetweenWords) {
    const SubtitleText text = laidOut(u"a subtitle of some length "_s.repeated(8).trimmed());
    EXPECT_GE(text.lineCount(), 3);
    EXPECT_LE(text.naturalWidth(), width);
    EXPECT_GE(text.height(), 3 * (lineHeight() - 1));
}

TEST(SubtitleText, breaksAWordThatIsWiderThanALine) {
    const SubtitleText text = laidOut(QString(2000, u'a'));
    EXPECT_GT(text.lineCount(), 20);
    EXPECT_LE(text.naturalWidth(), width);
}

TEST(SubtitleText, breaksALongAddress) {
    const SubtitleText text =
        laidOut(u"https://example.org/"_s + u"path_without_any_break"_s.repeated(10));
    EXPECT_GE(text.lineCount(), 3);
    EXPECT_LE(text.naturalWidth(), width);
}

TEST(SubtitleText, keepsLineBreaksAndBlankLines) {
    EXPECT_EQ(laidOut(u"one\ntwo"_s).lineCount(), 2);
    EXPECT_EQ(laidOut(u"one\n\nthree"_s).lineCount(), 3);
    EXPECT_GE(laidOut(u"one\n\nthree"_s).height(), 3 * (lineHeight() - 1));
}

struct Script {
    const char* name;
    QString text;
};

class SubtitleTextScript : public ::testing::TestWithParam<Script> {};

TEST_P(SubtitleTextScript, wrapsAndStaysWithinItsHeightAndWidth) {
    // Repeated until it needs several lines; every kind of letter stays within what was measured.
    const SubtitleText text = laidOut(GetParam().text.repeated(6).trimmed());
    EXPECT_GE(text.lineCount(), 2);
    EXPECT_LE(text.naturalWidth(), width);
    const QPoint position(200, 200);
    const QRect drawn = ink(text, position);
    ASSERT_FALSE(drawn.isEmpty());
    const QRect allowed = QRect(position, QSize(int(width), text.height())).adjusted(-3, -3, 3, 3);
    EXPECT_TRUE(allowed.contains(drawn))
        << "drawn " << drawn.top() << ".." << drawn.bottom() << " in " << allowed.top() << ".."
        << allowed.bottom() << ", " << drawn.left() << ".." << drawn.right();
}

INSTANTIATE_TEST_SUITE_P(
    Scripts, SubtitleTextScript,
    ::testing::Values(
        Script{"latin", u"Ångström fährt über Çeşme nach Łódź "_s},
        Script{"vietnamese", u"Xin chào các bạn, hôm nay chúng ta nói về thời tiết Ễ "_s},
        Script{"arabic", u"أهلاً وسهلاً بكم في هذا البث المباشر "_s},
        Script{"hebrew", u"ברוכים הבאים לשידור החי שלנו היום "_s},
        Script{"hindi", u"नमस्ते दोस्तों आज हम मौसम के बारे में बात करेंगे "_s},
        Script{"tamil", u"வணக்கம் நண்பர்களே இன்று நாம் வானிலை பற்றி "_s},
        Script{"thai", u"สวัสดีครับวันนี้เราจะพูดคุยเกี่ยวกับสภาพอากาศที่ชายฝั่ง"_s},
        Script{"chinese", u"大家晚上好欢迎收看今天的直播节目今天我们来谈谈天气"_s},
        Script{"japanese", u"皆さんこんばんは今日の生放送へようこそ。"_s},
        Script{"korean", u"여러분 안녕하세요 오늘 생방송에 오신 것을 환영합니다 "_s},
        Script{"emoji", u"👍🏽 👨‍👩‍👧‍👦 🇩🇪 ❤️ 😀 🧳 🎉 "_s}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST(SubtitleText, centresItsLines) {
    const QPoint position(200, 200);
    const QRect drawn = ink(laidOut(u"HOH"_s), position);
    const double middle = position.x() + width / 2;
    EXPECT_NEAR((drawn.left() + drawn.right() + 1) / 2.0, middle, 2);
}

TEST(SubtitleText, putsTheEndOfARightToLeftSentenceOnTheLeft) {
    // The full stop is the left-most ink: cut it off, and the left edge moves.
    const QPoint position(200, 200);
    const QRect with = ink(laidOut(u"שלום עולם."_s), position);
    const QRect without = ink(laidOut(u"שלום עולם"_s), position);
    const double moved = without.left() - with.left();
    const double rightMoved = with.right() - without.right();
    EXPECT_GT(moved, 0);
    EXPECT_NEAR(moved, rightMoved, 4) << "centred, so both edges move by half of the stop";
    const QImage image = [&] {
        QImage result(1200, 600, QImage::Format_ARGB32_Premultiplied);
        result.fill(Qt::transparent);
        QPainter painter(&result);
        laidOut(u"שלום עולם."_s).draw(painter, position);
        return result;
    }();
    // A full stop has ink only near the base line.
    const int baseLine = position.y() + int(QFontMetricsF(largeFont()).ascent());
    int highest = image.height();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = with.left(); x < with.left() + 3; ++x) {
            if (qAlpha(image.pixel(x, y)) > 40) {
                highest = std::min(highest, y);
            }
        }
    }
    EXPECT_GT(highest, baseLine - 8) << "the stop must be on the left";
}

TEST(SubtitleText, keepsTheEndOfWhatIsTooHigh) {
    QStringList lines;
    for (int i = 1; i <= 40; ++i) {
        lines.append(u"line %1"_s.arg(i));
    }
    const int room = 10 * lineHeight();
    const SubtitleText end =
        SubtitleText::endOf(lines.join(u'\n'), largeFont(), width, double(room));
    EXPECT_LE(end.height(), room);
    EXPECT_GE(end.lineCount(), 9);
    EXPECT_TRUE(end.text().endsWith(u"line 40"_s));
    EXPECT_TRUE(end.text().startsWith(u"…\u2060line 3"_s)) << qPrintable(end.text());
}

TEST(SubtitleText, keepsAllOfWhatFits) {
    EXPECT_EQ(SubtitleText::endOf(u"one\ntwo"_s, largeFont(), width, 2.0 * lineHeight()).text(),
              u"one\ntwo"_s);
}

TEST(SubtitleText, keepsTheEndOfOneEndlessWord) {
    QString word;
    for (int i = 0; i < 2000; ++i) {
        word.append(QString::number(i));
    }
    const SubtitleText end = SubtitleText::endOf(word, largeFont(), width, 5.0 * lineHeight());
    EXPECT_LE(end.height(), 5 * lineHeight());
    EXPECT_TRUE(end.text().endsWith(u"19981999"_s));
}

TEST(SubtitleText, keepsTheEllipsisBesideWhatItStandsBefore) {
    const SubtitleText end =
        SubtitleText::endOf(QString(3000, u'7'), largeFont(), width, 3.0 * lineHeight());
    EXPECT_EQ(end.lineCount(), 3);
    EXPECT_GT(end.text().size(), 100);
}

TEST(SubtitleText, keepsOneLineWhateverTheRoom) {
    EXPECT_EQ(SubtitleText::endOf(u"one\ntwo"_s, largeFont(), width, 1).lineCount(), 1);
}

TEST(ReadableText, knowsOneKindOfLineBreak) {
    EXPECT_EQ(readableText(u"a\r\nb\rc\vd\u2028e\u2029f\u0085g"_s), u"a\nb\nc\nd\ne\nf\ng"_s);
}

TEST(ReadableText, dropsControlCharactersAndBlanksAtTheEnd) {
    EXPECT_EQ(readableText(u"a\u0007b\tc\u0000d \n\n"_s), u"ab\tcd"_s);
    EXPECT_EQ(readableText(u" \n "_s), QString());
}

TEST(ReadableText, keepsJoinersAndDirectionMarks) {
    const QString text = u"\u200Fא\u200D👩\u200D🚀"_s;
    EXPECT_EQ(readableText(text), text);
}

TEST(ReadableText, boundsTextsThatNoScreenHolds) {
    const QString text = readableText(u"word "_s.repeated(100'000) + u"end"_s);
    EXPECT_LE(text.size(), 12'002);
    EXPECT_TRUE(text.startsWith(u"…"_s));
    EXPECT_TRUE(text.endsWith(u"word end"_s));
    const QString lines = readableText(u"x\n"_s.repeated(5000) + u"end"_s);
    EXPECT_LE(lines.count(u'\n'), 250);
    EXPECT_TRUE(lines.endsWith(u"x\nend"_s));
}

TEST(ReadableText, neverBoundsWithinACharacter) {
    const QString pictures = u"😀"_s.repeated(10'000);
    for (const QString& text : {pictures, QString(u"x"_s + pictures)}) {
        const QString result = readableText(text);
        EXPECT_EQ(result.mid(2), u"😀"_s.repeated((result.size() - 2) / 2));
    }
    const QString accents = readableText(u"e\u0301"_s.repeated(10'000) + u'x');
    EXPECT_TRUE(accents.startsWith(u"…\u2060e\u0301"_s));
    // No multiple of its length is the length of the longest text.
    const QString family = u"👨‍👩‍👧‍👦"_s;
    EXPECT_EQ(readableText(family.repeated(2000)),
              QString(u"…\u2060" + family.repeated(12'000 / family.size())));
}

} // namespace

} // namespace orv::test
