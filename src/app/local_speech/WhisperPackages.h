#pragma once

#include "LocalSpeechEnvironment.h"
#include "ServerTool.h"
#include "WhisperInventory.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace orv {

class BackendInstaller;

/// Knows what there is of Whisper in the speech server's environment, and installs and removes the
/// packages that run it, one at a time, by the installer of the server: a package asked for before
/// there is a server brings that along. What is broken off goes on the next time. Main thread only.
class WhisperPackages : public QObject {
    Q_OBJECT

  public:
    enum class Work { None, Installing, Removing };

    explicit WhisperPackages(LocalSpeechEnvironment environment, QObject* parent = nullptr);

    /// Breaks off what is under way, as `giveUp` does, and waits for that as long as it may take.
    ~WhisperPackages() override;

    const WhisperInventory& inventory() const { return inventory_; }

    /// Whether `inventory` is what the server told, or that there is none; before that nobody knows
    /// what is there.
    bool isKnown() const { return isKnown_; }

    /// Whether packages can be installed and removed at all.
    bool canChange() const { return !environment_.installer.isEmpty(); }

    /// Looks again, in the background. `model` is the one that is chosen.
    void refresh(const QString& model);

    /// What is being done with a package.
    Work work(const QString& package) const;

    bool isAtWork() const { return bool(installer_); }

    /// Where that is: "5/7", empty before it is told; and how much of a download is there, of 100.
    QString step() const;
    std::optional<int> percent() const;

    /// Why the latest change of a package has failed; empty if it has not, or was given up.
    QString failure(const QString& package) const { return failures_.value(package); }

    void install(const QString& package);
    void remove(const QString& package);

    /// Removes what packages have put into other places than openai-whisper's cache of a model;
    /// `modelDeleted` follows.
    void deleteModel(const QString& id);

    /// Breaks off what is under way, without waiting. What has come stays for another time.
    void giveUp();

  Q_SIGNALS:
    void changed();

    /// A change has failed.
    void failed(const QString& package, const QString& reason);

    /// `problem` is empty when nothing of the model is left.
    void modelDeleted(const QString& id, const QString& problem);

  private:
    void change(const QString& package, Work work, const QString& option);
    void changeEnded(bool done, const QString& reason);
    void deleteNext();
    void deleted(int status, const QByteArray& printed);
    void looked(int status, const QByteArray& printed);

    const LocalSpeechEnvironment environment_;
    WhisperInventory inventory_ = nothingOfWhisper();
    bool isKnown_ = false;
    QString model_;
    bool isToLookAgain_ = false;
    ServerTool tool_; ///< Looks.
    QStringList toDelete_;
    ServerTool deleter_;
    QString package_; ///< The one that is being changed.
    Work work_ = Work::None;
    bool isGivenUp_ = false;
    QHash<QString, QString> failures_;
    std::unique_ptr<BackendInstaller> installer_;
};

} // namespace orv
