#include "SettingsActions.h"

#include "DesktopOpener.h"
#include "Dialogs.h"
#include "FileChooser.h"
#include "FileJobs.h"
#include "Log.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Why the file could not be deleted; empty when it is not there any more.
QString deleteFile(const QString& path) {
    QFile file(path);
    const bool isThere = file.exists() || QFileInfo(path).isSymLink();
    if (!isThere || file.remove()) {
        return {};
    }
    return QString(path + u": "_s + file.errorString());
}

/// Deletes as many as can be; what the first of the others says, empty when there is none.
QString deleteFiles(const QStringList& paths) {
    QString problem;
    for (const QString& path : paths) {
        const QString found = deleteFile(path);
        problem = problem.isEmpty() ? found : problem;
    }
    return problem;
}

} // namespace

SettingsActions::SettingsActions(ActionsEnvironment environment)
    : environment_(std::move(environment)) {}

SettingsActions::~SettingsActions() = default;

void SettingsActions::pickServiceAccountJSON() {
    ORV_ON_MAIN();
    environment_.chooser.chooseFile(
        {.title = environment_.text(u"settings.engine.choose_file"_s),
         .suffix = u"json"_s,
         .startsWith = environment_.settings.googleServiceAccountPath.get()},
        [this, alive = std::weak_ptr(alive_)](const QString& path) {
            if (!alive.expired()) {
                environment_.settings.googleServiceAccountPath.set(path);
            }
        });
}

void SettingsActions::clearServiceAccount() {
    ORV_ON_MAIN();
    environment_.settings.googleServiceAccountPath.set({});
}

void SettingsActions::openSupportDirectory() {
    ORV_ON_MAIN();
    openFolder(environment_.supportFolder);
}

void SettingsActions::openOutputDirectory() {
    ORV_ON_MAIN();
    openFolder(environment_.outputFolder);
}

void SettingsActions::openFolder(const QString& path) {
    environment_.files.run([path] { return QDir().mkpath(path); },
                           [this, path, alive = std::weak_ptr(alive_)](bool isThere) {
                               if (alive.expired()) {
                                   return;
                               }
                               if (isThere) {
                                   environment_.opener.revealFolder(path);
                               } else {
                                   showProblem(path);
                               }
                           });
}

void SettingsActions::clearCache() {
    ORV_ON_MAIN();
    environment_.dialogs.showAlert({.style = AlertStyle::Warning,
                                    .title = environment_.text(u"alert.cache.title"_s),
                                    .message = environment_.text(u"alert.cache.msg"_s),
                                    .buttons = {environment_.text(u"alert.cache.delete"_s),
                                                environment_.text(u"alert.cache.cancel"_s)}},
                                   [this, alive = std::weak_ptr(alive_)](int chosen) {
                                       if (chosen == 0 && !alive.expired()) {
                                           deleteLogs();
                                       }
                                   });
}

void SettingsActions::deleteLogs() {
    const QStringList logs = {environment_.backendLog, environment_.earlierLog};
    environment_.files.run([logs] { return deleteFiles(logs); },
                           [this, alive = std::weak_ptr(alive_)](const QString& problem) {
                               if (alive.expired()) {
                                   return;
                               }
                               if (!problem.isEmpty()) {
                                   showProblem(problem);
                                   return;
                               }
                               environment_.dialogs.showAlert(
                                   {.style = AlertStyle::Informational,
                                    .title = environment_.text(u"alert.cache.done.title"_s),
                                    .message = environment_.text(u"alert.cache.done.msg"_s),
                                    .buttons = {environment_.text(u"alert.ok"_s)}});
                           });
}

void SettingsActions::showProblem(const QString& message) const {
    ORV_ON_MAIN();
    logLine(u"❌ "_s + message);
    environment_.dialogs.showAlert({.style = AlertStyle::Warning,
                                    .title = environment_.text(u"alert.failed.title"_s),
                                    .message = message,
                                    .buttons = {environment_.text(u"alert.ok"_s)}});
}

} // namespace orv
