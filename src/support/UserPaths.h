#pragma once

#include <QString>

namespace orv {

/// Where the program keeps a user's files. Everything derives from these folders, and they from
/// the home unless somebody chose others, so that another home is another, separate user. All paths
/// are absolute and without a trailing slash.
struct UserPaths {
    QString home = {};       ///< The user's home directory.
    QString configHome = {}; ///< Folder for configuration files.
    QString cacheHome = {};  ///< Folder for what can be fetched again; empty: ".cache" in the home.
    QString runtime = {};    ///< Folder for what lasts as long as the program; the user's alone.

    /// False: the name of the home is not UTF-8, so that none of these paths leads into it.
    bool homeHasName = true;

    /// From `HOME` (else, or if that is relative, the account's home directory) and
    /// `XDG_CONFIG_HOME` and `XDG_CACHE_HOME` (else ".config" and ".cache" in the home; a relative
    /// value is ignored, as the XDG base directory rules ask). The runtime folder is
    /// `XDG_RUNTIME_DIR`, else the one that the system has made for the user; where that is missing
    /// or somebody else's, the settings' folder.
    static UserPaths fromEnvironment();

    QString settingsFolder() const;     ///< The program's own among those for configuration.
    QString defaultsFile() const;       ///< The store behind all settings.
    QString supportFolder() const;      ///< "Library/Application Support/Orvane" in the home.
    QString backendInterpreter() const; ///< The Python interpreter of the speech server.
    QString backendScript() const;      ///< The speech server's program.
    QString modelScript() const;        ///< What the speech server has for fetching models.
    QString backendLog() const;         ///< The speech server's log file.
    QString earlierBackendLog() const;  ///< The one before, which was full.
    QString outputFolder() const;       ///< Transcripts and subtitles.
    QString whisperCache() const;       ///< Where the recognition library keeps its models.
};

} // namespace orv
