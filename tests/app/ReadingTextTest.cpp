#include "ReadingText.h"

#include "Look.h"
#include "NullAppearance.h"
#include "WaitUntil.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class ReadingTextTest : public ::testing::Test {
  protected:
    ReadingTextTest() {
        text.resize(300, 90);
        text.show();
        drainEvents();
    }

    NullAppearance appearance;
    Look look{appearance};
    ReadingText text;
};

TEST_F(ReadingTextTest, showsTheTranslationLargerBelowTheOriginal) {
    text.setTexts(u"heard"_s, u"gehört"_s);
    EXPECT_EQ(text.toPlainText(), u"heard\ngehört"_s);
    const QTextBlock first = text.document()->firstBlock();
    EXPECT_GT(first.next().begin().fragment().charFormat().fontPointSize(),
              text.font().pointSizeF());
}

TEST_F(ReadingTextTest, showsTheTranslationLargerAlsoWithAFontInPixels) {
    QFont pixels = text.font();
    pixels.setPixelSize(20);
    text.setFont(pixels);
    text.setTexts(u"heard"_s, u"gehört"_s);
    const QTextBlock second = text.document()->firstBlock().next();
    EXPECT_EQ(second.begin().fragment().charFormat().font().pixelSize(), 26);
    EXPECT_GT(second.layout()->boundingRect().height(),
              text.document()->firstBlock().layout()->boundingRect().height());
}

TEST_F(ReadingTextTest, leavesNoGapForWhatIsEmpty) {
    text.setTexts({}, u"gehört"_s);
    EXPECT_EQ(text.document()->blockCount(), 1);
    text.setTexts(u"heard"_s, {});
    EXPECT_EQ(text.document()->blockCount(), 1);
    text.setTexts({}, {});
    EXPECT_TRUE(text.toPlainText().isEmpty());
}

TEST_F(ReadingTextTest, breaksWhatHasNoPlaceToBreakAndScrollsTheRest) {
    text.setTexts(QString(2000, u'a'), u"https://example.org/"_s + QString(500, u'x'));
    drainEvents();
    EXPECT_LE(text.document()->idealWidth(), text.viewport()->width());
    EXPECT_GT(text.verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(text.horizontalScrollBar()->maximum(), 0);
}

TEST_F(ReadingTextTest, showsTheBeginningOfALongText) {
    text.setTexts(QString(u"word "_s).repeated(400), {});
    drainEvents();
    EXPECT_EQ(text.verticalScrollBar()->value(), 0);
}

TEST_F(ReadingTextTest, everyParagraphRunsInItsOwnDirection) {
    text.setTexts(u"Good morning."_s, u"صباح الخير."_s);
    drainEvents();
    const QTextBlock first = text.document()->firstBlock();
    const QTextLine english = first.layout()->lineAt(0);
    const QTextLine arabic = first.next().layout()->lineAt(0);
    EXPECT_LT(english.naturalTextRect().left(), 10);
    EXPECT_GT(arabic.naturalTextRect().right(), text.viewport()->width() - 10);
}

TEST_F(ReadingTextTest, theSameTextsKeepASelection) {
    text.setTexts(u"heard"_s, u"gehört"_s);
    text.selectAll();
    text.setTexts(u"heard"_s, u"gehört"_s);
    EXPECT_EQ(text.textCursor().selectedText(), u"heard\u2029gehört"_s);
}

TEST_F(ReadingTextTest, textsAreNotTakenForMarkup) {
    text.setTexts(u"<b>1 &lt; 2</b>"_s, {});
    EXPECT_EQ(text.toPlainText(), u"<b>1 &lt; 2</b>"_s);
}

TEST_F(ReadingTextTest, theTabKeyLeavesIt) {
    EXPECT_TRUE(text.tabChangesFocus());
    EXPECT_TRUE(text.isReadOnly());
}

} // namespace

} // namespace orv::test
