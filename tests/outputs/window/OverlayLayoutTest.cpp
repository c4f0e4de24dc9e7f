#include "OverlayLayout.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

const QRect screen(0, 0, 1920, 1080);

OverlayLayout laidOut(const QString& original, const QString& translation,
                      const QRect& on = screen) {
    return layoutForContent(original, translation, SubtitleFonts::system(), on);
}

TEST(SubtitleFonts, are14RegularAnd22Semibold) {
    const SubtitleFonts fonts = SubtitleFonts::system();
    EXPECT_EQ(fonts.original.pixelSize(), 14);
    EXPECT_EQ(fonts.original.weight(), QFont::Normal);
    EXPECT_EQ(fonts.translation.pixelSize(), 22);
    EXPECT_EQ(fonts.translation.weight(), QFont::DemiBold);
}

TEST(SubtitleFonts, shrinkButStayReadable) {
    const SubtitleFonts fonts = SubtitleFonts::system();
    EXPECT_EQ(fonts.scaled(100).translation.pixelSize(), 22);
    EXPECT_EQ(fonts.scaled(64).translation.pixelSize(), 14);
    EXPECT_EQ(fonts.scaled(64).original.pixelSize(), 11);
}

TEST(OverlayLayout, isOneLineOfTextHeightAnd30WithoutSourceText) {
    const OverlayLayout layout = laidOut(QString(), u"hola"_s);
    const SubtitleText line(u"hola"_s, SubtitleFonts::system().translation, 760);
    EXPECT_EQ(layout.frames, overlayFrames(0, line.height(), screen));
    EXPECT_EQ(layout.original.lineCount(), 0);
}

TEST(OverlayLayout, measuresBothLinesInTheirOwnFonts) {
    const OverlayLayout layout = laidOut(u"hello"_s, u"hola"_s);
    const SubtitleFonts fonts = SubtitleFonts::system();
    const int original = SubtitleText(u"hello"_s, fonts.original, 760).height();
    const int translation = SubtitleText(u"hola"_s, fonts.translation, 760).height();
    EXPECT_LT(original, translation);
    EXPECT_EQ(layout.frames, overlayFrames(original, translation, screen));
}

TEST(OverlayLayout, growsUpwardsWithALongTranslation) {
    const OverlayLayout layout = laidOut(QString(), u"a longer sentence than fits "_s.repeated(6));
    EXPECT_GE(layout.translation.lineCount(), 3);
    EXPECT_EQ(layout.frames.window.bottom() + 1, 1000);
    EXPECT_EQ(layout.frames.window.height(), layout.translation.height() + 30);
}

TEST(OverlayLayout, shows2000CharactersWhole) {
    const QString text = u"The quick brown fox jumps over the lazy dog. "_s.repeated(45).left(2000);
    for (const QRect& on : {screen, QRect(0, 0, 1366, 768)}) {
        const OverlayLayout layout = laidOut(QString(), text, on);
        EXPECT_EQ(layout.translation.text(), text.trimmed());
        EXPECT_GE(layout.frames.window.top(), OverlayLengths::topDistance);
    }
}

TEST(OverlayLayout, usesFullSizeLettersAsLongAsTheyFit) {
    const QString text = u"line\n"_s.repeated(20).trimmed();
    const SubtitleText full(text, SubtitleFonts::system().translation, 760);
    EXPECT_EQ(laidOut(QString(), text).translation.height(), full.height());
}

TEST(OverlayLayout, staysOnTheScreenAndKeepsTheLatestLines) {
    QStringList lines;
    for (int i = 1; i <= 500; ++i) {
        lines.append(u"line %1"_s.arg(i));
    }
    const QRect small(0, 0, 1024, 600);
    const OverlayLayout layout = laidOut(lines.join(u'\n'), lines.join(u'\n'), small);
    EXPECT_GE(layout.frames.window.top(), OverlayLengths::topDistance);
    EXPECT_EQ(layout.frames.window.bottom() + 1, 520);
    EXPECT_TRUE(layout.translation.text().endsWith(u"line 500"_s));
    EXPECT_TRUE(layout.original.text().endsWith(u"line 500"_s));
    EXPECT_GT(layout.translation.lineCount(), layout.original.lineCount());
    EXPECT_GT(layout.original.lineCount(), 5);
}

TEST(OverlayLayout, wastesNoRoomWhenItHasToShorten) {
    const OverlayLayout layout = laidOut(QString(), u"line\n"_s.repeated(240) + u"end"_s);
    const int line =
        SubtitleText(u"x"_s, SubtitleFonts::system().scaled(64).translation, 760).height();
    EXPECT_LT(layout.frames.window.top(), OverlayLengths::topDistance + 2 * line);
}

TEST(OverlayLayout, takesAScreenThatIsTooSmallForAnything) {
    for (const QRect& on : {QRect(), QRect(0, 0, 30, 50), QRect(0, 0, 320, 200)}) {
        const OverlayLayout layout = laidOut(u"hello"_s, u"word "_s.repeated(400), on);
        EXPECT_GE(layout.translation.lineCount(), 1);
    }
}

TEST(OverlayLayout, wrapsToANarrowScreen) {
    const OverlayLayout layout =
        laidOut(QString(), u"a longer sentence than fits "_s.repeated(4), QRect(0, 0, 640, 480));
    EXPECT_LE(layout.translation.naturalWidth(), 600);
    EXPECT_EQ(layout.frames.window.width(), 640);
}

TEST(OverlayLayout, isTheSameForTheSameContent) {
    EXPECT_EQ(laidOut(u"hello"_s, u"hola"_s).frames, laidOut(u"hello"_s, u"hola"_s).frames);
}

} // namespace

} // namespace orv::test
