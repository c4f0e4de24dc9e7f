#pragma once

#include "BackendControl.h"
#include "CaptureControl.h"
#include "DesktopOpener.h"
#include "Dialogs.h"
#include "Panel.h"
#include "Tray.h"
#include "UserNotifications.h"

#include <QStringList>

#include <utility>

namespace orv::test {

/// Writes down what it is asked, in order; `stopCapture` ends when `finishStop` is called.
class FakeCapture : public CaptureControl {
  public:
    bool isCapturing() const override { return capturing; }

    void setGain(float gain, bool autoGain) override {
        calls.append(QStringLiteral("setGain %1 %2").arg(double(gain)).arg(int(autoGain)));
    }

    void sendConfig(const QString& sourceLang, const QString& targetLang, bool saveTranscript,
                    bool showOriginal) override {
        calls.append(QStringLiteral("sendConfig %1 %2 %3 %4")
                         .arg(sourceLang, targetLang)
                         .arg(int(saveTranscript))
                         .arg(int(showOriginal)));
    }

    void startCapture(AudioSourceType source, const QString& deviceId,
                      const QString& appBundleId) override {
        capturing = true;
        calls.append(QStringLiteral("startCapture %1 '%2' '%3'")
                         .arg(int(source))
                         .arg(deviceId, appBundleId));
    }

    void changeSource(AudioSourceType source, const QString& deviceId,
                      const QString& appBundleId) override {
        calls.append(QStringLiteral("changeSource %1 '%2' '%3'")
                         .arg(int(source))
                         .arg(deviceId, appBundleId));
    }

    void stopCapture(std::function<void()> done) override {
        capturing = false;
        pendingStops.append(std::move(done));
        calls.append(QStringLiteral("stopCapture"));
        if (together != nullptr) {
            together->append(calls.last());
        }
    }

    void stopCaptureSync() override {
        capturing = false;
        calls.append(QStringLiteral("stopCaptureSync"));
        finishStops();
    }

    void finishStops() {
        for (const auto& done : std::exchange(pendingStops, {})) {
            done();
        }
    }

    bool capturing = false;
    QList<std::function<void()>> pendingStops;
    QStringList calls;
    QStringList* together = nullptr; ///< Ends, in the order of all that end.
};

class FakeBackend : public BackendControl {
  public:
    bool isRunning() const override { return running; }

    void startBackend() override { calls.append(QStringLiteral("startBackend")); }

    void stopBackend() override {
        calls.append(QStringLiteral("stopBackend"));
        if (together != nullptr) {
            together->append(calls.last());
        }
    }

    void stopForGood() override {
        startsNothing = true;
        stopBackend();
    }

    void leaveRunning() override { calls.append(QStringLiteral("leaveRunning")); }

    bool running = false;
    bool startsNothing = false; ///< It was stopped for good.
    QStringList calls;
    QStringList* together = nullptr; ///< Ends, in the order of all that end.
};

class FakeDialogs : public Dialogs {
  public:
    void showAlert(const Alert& alert, std::function<void(int chosen)> done) override {
        alerts.append(alert);
        answers.append(std::move(done));
    }

    QList<Alert> alerts;
    QList<std::function<void(int chosen)>> answers; ///< Of each alert.
};

class FakeOpener : public DesktopOpener {
  public:
    bool openAddress(const QString& url) override {
        addresses.append(url);
        return true;
    }

    bool revealFolder(const QString& path) override {
        folders.append(path);
        return true;
    }

    QStringList addresses;
    QStringList folders;
};

class FakeUserNotifications : public UserNotifications {
  public:
    void requestAuthorization(
        NotificationOptions asked,
        std::function<void(const NotificationAuthorization& answer)> done) override {
        options = asked;
        answer = std::move(done);
    }

    NotificationOptions options;
    std::function<void(const NotificationAuthorization& answer)> answer;

    void notify(const QString& title, const QString& message) override {
        told.append(title + u": " + message);
    }

    QStringList told;
};

class FakeTray : public Tray {
  public:
    void setListener(Listener* newListener) override { listener = newListener; }

    bool isAvailable() const override { return available; }

    void setIcon(TrayIcon newIcon, const QString& newDescription) override {
        icon = newIcon;
        description = newDescription;
    }

    void showMenu(const QList<TrayMenuItem>& items) override { menus.append(items); }

    QRect geometry() const override { return {700, 0, 24, 24}; }

    void click(TrayClick button) { listener->trayClicked(button); }

    void availabilityChanged(bool is) { listener->trayAvailabilityChanged(is); }

    bool available = true;
    TrayIcon icon = TrayIcon::Translating;
    QString description;
    Listener* listener = nullptr;
    QList<QList<TrayMenuItem>> menus;
};

class FakePanel : public Panel {
  public:
    bool isShown() const override { return shown; }

    void showBeside(const QRect& button) override {
        shown = true;
        calls.append(QStringLiteral("showBeside %1,%2").arg(button.x()).arg(button.y()));
    }

    void showAsWindow() override {
        shown = true;
        calls.append(QStringLiteral("showAsWindow"));
    }

    void close() override {
        shown = false;
        calls.append(QStringLiteral("close"));
    }

    bool shown = false;
    QStringList calls;
};

/// Gives each key in angle brackets, so that a test sees which text was taken.
inline QString keyAsText(const QString& key) {
    return QChar(u'<') + key + QChar(u'>');
}

} // namespace orv::test
