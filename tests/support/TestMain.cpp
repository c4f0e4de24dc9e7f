// The one main function of every test program: an application object and a home of its own, so that
// no test can touch a person's files or settings.

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef ORVANE_TEST_GUI
#include <QApplication>
using Application = QApplication;
#else
#include <QCoreApplication>
using Application = QCoreApplication;
#endif

int main(int argc, char** argv) {
    const QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/.config")).toUtf8());
#ifdef ORVANE_TEST_GUI
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
#endif
    const Application application(argc, argv);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
