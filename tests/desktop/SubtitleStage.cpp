// A program for the desktop tests. "subtitles": the subtitle window alone, told what to show by
// JSON lines on standard input. "backdrop": a window of another program, below it, that says what
// happens to it.

#include "DefaultsStore.h"
#include "DesktopComposition.h"
#include "Log.h"
#include "NullSpeechSynthesizer.h"
#include "OverlayWindow.h"
#include "SerialQueue.h"
#include "StoredValues.h"
#include "TranslationSettings.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMouseEvent>
#include <QScreen>
#include <QSocketNotifier>
#include <QWindow>

#include <array>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Calls `handle` for every line of standard input, and ends the program with it.
class Lines : public QObject {
  public:
    explicit Lines(std::function<void(const QJsonObject& line)> handle)
        : handle_(std::move(handle))
        , readable_(STDIN_FILENO, QSocketNotifier::Read) {
        ::fcntl(STDIN_FILENO, F_SETFL, ::fcntl(STDIN_FILENO, F_GETFL) | O_NONBLOCK);
        connect(&readable_, &QSocketNotifier::activated, this, [this] { read(); });
    }

  private:
    void read() {
        std::array<char, 4096> bytes = {};
        const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count == 0) {
            readable_.setEnabled(false);
            QApplication::exit(0);
        }
        if (count > 0) {
            unread_.append(bytes.data(), count);
        }
        for (qsizetype end = unread_.indexOf('\n'); end >= 0; end = unread_.indexOf('\n')) {
            const QByteArray line = unread_.first(end);
            unread_.remove(0, end + 1);
            handle_(QJsonDocument::fromJson(line).object());
        }
    }

    std::function<void(const QJsonObject&)> handle_;
    QSocketNotifier readable_;
    QByteArray unread_;
};

int runSubtitles(const QString& storeFile, int hideAfter, bool withVoice) {
    orv::SerialQueue disk(u"test.disk"_s);
    orv::DefaultsStore store(disk, storeFile);
    const std::unique_ptr<orv::SpeechSynthesizer> speech =
        withVoice ? orv::createSystemSpeechSynthesizer()
                  : std::make_unique<orv::NullSpeechSynthesizer>();
    speech->prepare();
    const auto choices = [&store] {
        return orv::SubtitleChoices::fromSettings(orv::TranslationSettings(store));
    };
    orv::OverlayWindow window({.speech = *speech,
                               .isComposited = orv::isDesktopComposited,
                               .choices = choices(),
                               .timings = {.hide = std::chrono::milliseconds(hideAfter)}});
    QObject::connect(&window, &orv::OverlayWindow::resultPainted, &window,
                     [] { orv::logLine(u"painted"); });
    const Lines lines([&](const QJsonObject& line) {
        const QJsonObject values = line.value("set"_L1).toObject();
        orv::test::setInStore(store, values);
        if (!values.isEmpty()) {
            window.setChoices(choices());
            orv::logLine(u"set");
        }
        if (line.contains("end"_L1)) {
            window.endSubtitles();
            orv::logLine(u"ended");
        }
        if (line.contains("translation"_L1)) {
            window.showTranslation(
                {line.value("original"_L1).toString(), line.value("translation"_L1).toString()});
        }
    });
    orv::logLine(u"ready");
    return QApplication::exec();
}

class Backdrop : public QWidget {
  protected:
    void mousePressEvent(QMouseEvent* event) override {
        const QPoint position = event->globalPosition().toPoint();
        orv::logLine(u"click %1 %2"_s.arg(position.x()).arg(position.y()));
    }

    void keyPressEvent(QKeyEvent* event) override {
        orv::logLine(QString(u"key " % event->text()));
    }

    void changeEvent(QEvent* event) override {
        if (event->type() == QEvent::ActivationChange) {
            orv::logLine(QString(u"active " % orv::boolText(isActiveWindow())));
        }
    }
};

int runBackdrop(bool fullScreen) {
    Backdrop backdrop;
    backdrop.setWindowTitle(u"backdrop"_s);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x20, 0x28, 0x40));
    backdrop.setPalette(palette);
    backdrop.resize(1000, 600);
    const auto show = [&](bool full) { full ? backdrop.showFullScreen() : backdrop.showNormal(); };
    QWidget cover(nullptr, Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
    cover.setPalette(palette);
    const Lines lines([&](const QJsonObject& line) {
        if (line.contains("cover"_L1)) {
            cover.setGeometry(QGuiApplication::primaryScreen()->geometry());
            cover.show();
            cover.raise();
            return;
        }
        show(line.value("fullScreen"_L1).toBool());
        backdrop.activateWindow();
    });
    show(fullScreen);
    orv::logLine(u"ready");
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setApplicationName(u"orvane-stage"_s);
    QApplication::setQuitOnLastWindowClosed(false);
    QCommandLineParser parser;
    parser.addOption({u"store"_s, {}, u"file"_s});
    parser.addOption({u"hide-after"_s, {}, u"milliseconds"_s, u"6000"_s});
    parser.addOption({u"voice"_s, {}});
    parser.addOption({u"full-screen"_s, {}});
    parser.process(application);
    return parser.positionalArguments().contains("backdrop"_L1)
               ? runBackdrop(parser.isSet(u"full-screen"_s))
               : runSubtitles(parser.value(u"store"_s), parser.value(u"hide-after"_s).toInt(),
                              parser.isSet(u"voice"_s));
}
