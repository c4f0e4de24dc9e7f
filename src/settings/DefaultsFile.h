#pragma once

#include "AtomicFile.h"

#include <QJsonObject>
#include <QString>

#include <functional>

namespace orv {

/// The file of settings, one JSON object: what is read from it, and what comes before it may be
/// replaced, so that nothing a person had in it is lost. Every call may wait for the disk; one
/// thread at a time.
class DefaultsFile {
  public:
    /// `path` may be a symbolic link: the file is then the one behind it. Removes temporary files
    /// that a killed process left behind.
    explicit DefaultsFile(const QString& path);

    /// The values, and others' rights to the file are taken away. Empty, with a line in the log,
    /// for a file that cannot be used, which is kept under another name, and for one that the disk
    /// does not give out for the time being, which is left alone.
    QJsonObject load();

    /// The disk did not give the file out: values may be in it that nobody knows.
    bool isUnread() const { return isUnread_; }

    /// Makes the file ready to be replaced, or tells why it must not be. `found` gets the values of
    /// one that `load` could not read.
    FileProblem prepare(const std::function<void(const QJsonObject& values)>& found);

    /// Replaces the file, which `prepare` has made ready.
    FileProblem replace(const QJsonObject& values) const;

    /// Writes a line when the disk refuses, and one when it takes the values again.
    void report(const FileProblem& problem);

  private:
    FileProblem readLate(const std::function<void(const QJsonObject& values)>& found);
    void keepUnusableFile(const QString& problem);

    const QString path_;
    bool isRefused_ = false;     ///< As was reported.
    bool isUnread_ = false;      ///< A file at `path_` could not be read for the time being.
    bool mustKeepFirst_ = false; ///< An unusable file still lies at `path_`.
};

} // namespace orv
