#pragma once

#include <QString>

namespace orv {

/// Where the program keeps a user's files. Everything derives from two folders, so that another
/// home is another, separate user. All paths are absolute and without a trailing slash.
struct UserPaths {
    QString home;       ///< The user's home directory.
    QString configHome; ///< Folder for configuration files.

    /// From `HOME` (else, or if that is relative, the account's home directory) and
    /// `XDG_CONFIG_HOME` (else ".config" in the home; a relative value is ignored, as the XDG base
    /// directory rules ask).
    static UserPaths fromEnvironment();

    QString defaultsFile() const;       ///< The store behind all settings.
    QString supportFolder() const;      ///< "Library/Application Support/Orvane" in the home.
    QString backendInterpreter() const; ///< The Python interpreter of the speech server.
    QString backendScript() const;      ///< The speech server's program.
    QString backendLog() const;         ///< The speech server's log file.
    QString outputFolder() const;       ///< Transcripts and subtitles.
    QString whisperCache() const;       ///< Where the recognition library keeps its models.
};

} // namespace orv
