#pragma once

#include "DesktopOpener.h"
#include "Dialogs.h"
#include "FileChooser.h"
#include "UpdateControl.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <utility>

namespace orv::test {

/// Keeps the alerts; a test answers them.
class AnsweredDialogs : public Dialogs {
  public:
    void showAlert(const Alert& alert, std::function<void(int chosen)> done = {}) override {
        alerts.append(alert);
        answers.append(std::move(done));
    }

    /// Chooses a button of the latest alert.
    void answer(int button) {
        if (const auto done = std::exchange(answers.last(), {})) {
            done(button);
        }
    }

    QList<Alert> alerts;
    QList<std::function<void(int)>> answers;
};

class FakeChooser : public FileChooser {
  public:
    void chooseFile(const FileChoice& choice,
                    std::function<void(const QString& path)> chosen) override {
        choices.append(choice);
        pending = std::move(chosen);
    }

    QList<FileChoice> choices;
    std::function<void(const QString& path)> pending;
};

class FakeOpener : public DesktopOpener {
  public:
    bool openAddress(const QString& url) override {
        opened.append(url);
        return true;
    }

    bool revealFolder(const QString& path) override {
        opened.append(path);
        return true;
    }

    QStringList opened;
};

class FakeUpdates : public UpdateControl {
  public:
    QString currentVersion() const override { return QStringLiteral("4.2"); }

    QString availableVersion() const override { return available; }

    void checkForUpdate(std::function<void(UpdateOutcome outcome)> done) override {
        ++checks;
        pending = std::move(done);
    }

    void openDownload() override { ++downloads; }

    void follow(QObject* context, std::function<void()> changed) override {
        QObject::connect(&news, &QObject::objectNameChanged, context, changed);
    }

    /// As if a check that nobody asked for had found a release.
    void find(const QString& version) {
        available = version;
        news.setObjectName(version);
    }

    QObject news; ///< Tells of finds.
    QString available;
    int checks = 0;
    int downloads = 0;
    std::function<void(UpdateOutcome outcome)> pending;
};

/// Gives each key in angle brackets, so that a test sees which text was taken.
inline QString bracketed(const QString& key) {
    return QChar(u'<') + key + QChar(u'>');
}

} // namespace orv::test
