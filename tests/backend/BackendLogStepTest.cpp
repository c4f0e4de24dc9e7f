#include "BackendLogStep.h"
#include "BackendLogHeading.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <ostream>

using namespace Qt::StringLiterals;

namespace orv {

using Action = BackendLogStep::Action;

bool operator==(const BackendLogStep& one, const BackendLogStep& other) {
    return one.action == other.action && one.skipped == other.skipped && one.count == other.count;
}

void PrintTo(const BackendLogStep& step, std::ostream* out) {
    *out << "action " << static_cast<int>(step.action) << ", " << step.skipped << " skipped, "
         << step.count << " bytes";
}

TEST(BackendLogStep, whatFitsIsWritten) {
    EXPECT_EQ(nextStep("12345", 10, 100), (BackendLogStep{Action::Write, 0, 5}));
    EXPECT_EQ(nextStep("12345", 95, 100), (BackendLogStep{Action::Write, 0, 5}));
}

TEST(BackendLogStep, aFileEndsWithAWholeLine) {
    EXPECT_EQ(nextStep("1\n3\n567\n", 94, 100), (BackendLogStep{Action::Write, 0, 4}));
    EXPECT_EQ(nextStep("12345678\n", 94, 100), (BackendLogStep{Action::Rotate, 0, 0}));
    EXPECT_EQ(nextStep("1", 100, 100), (BackendLogStep{Action::Rotate, 0, 0}));
}

TEST(BackendLogStep, aFileThatIsTooLongAlreadyIsTheOldOne) {
    EXPECT_EQ(nextStep("1\n", 1000, 100), (BackendLogStep{Action::Rotate, 0, 0}));
}

TEST(BackendLogStep, aLineWithoutAnEndIsCut) {
    const QByteArray endless(1000, 'x');
    EXPECT_EQ(nextStep(endless, 50, 100), (BackendLogStep{Action::Write, 0, 50}));
    EXPECT_EQ(nextStep(endless, 51, 100), (BackendLogStep{Action::Rotate, 0, 0}));
}

TEST(BackendLogStep, itIsCutBetweenCharacters) {
    const QByteArray signs = QString(u"🛑"_s.repeated(100)).toUtf8(); // Four bytes each.
    EXPECT_EQ(nextStep(signs, 49, 100), (BackendLogStep{Action::Write, 0, 48}));
    EXPECT_EQ(nextStep(signs, 48, 100), (BackendLogStep{Action::Write, 0, 52}));
    const QByteArray noText(100, '\x80');
    EXPECT_EQ(nextStep(noText, 49, 100), (BackendLogStep{Action::Write, 0, 51}));
}

TEST(BackendLogStep, aFileHasALineAtItsHead) {
    EXPECT_EQ(nextStep("words\n", 0, 100), (BackendLogStep{Action::Head, 0, 0}));
    EXPECT_EQ(nextStep("\n\nwords\n", 0, 100), (BackendLogStep{Action::Head, 2, 0}));
    EXPECT_EQ(nextStep("\n=== a start\n", 0, 100), (BackendLogStep{Action::Write, 1, 12}));
    EXPECT_EQ(nextStep("\n\n", 0, 100), (BackendLogStep{Action::Write, 2, 0}));
}

TEST(BackendLogStep, whateverComesEndsInWrittenBytes) {
    for (const QByteArray& bytes : {QByteArray(1000, 'x'), QByteArray(1000, '\n'),
                                    QByteArray(1000, '\x80'), QByteArray("ab\n").repeated(300)}) {
        qsizetype done = 0;
        qint64 size = 0;
        for (int steps = 0; done < bytes.size(); ++steps) {
            ASSERT_LT(steps, 100);
            const BackendLogStep step = nextStep(QByteArrayView(bytes).sliced(done), size, 100);
            const bool rotates = step.action == Action::Rotate;
            size = rotates ? 0 : size + step.count + (step.action == Action::Head ? 45 : 0);
            ASSERT_LE(size, 100);
            done += step.skipped + step.count;
        }
    }
}

TEST(BackendLogHeading, saysWhatStartsAndWhen) {
    const QDateTime time(QDate(2026, 3, 1), QTime(1, 2, 3), Qt::OffsetFromUTC, 3600);
    EXPECT_EQ(startHeading(time, u"/ü/python3 a\nb"_s),
              u"\n=== 2026-03-01 00:02:03 UTC - Start: /ü/python3 a b\n"_s.toUtf8());
    EXPECT_EQ(continuationHeading(time), "=== 2026-03-01 00:02:03 UTC - Fortsetzung\n");
}

} // namespace orv
