#pragma once

#include <QString>

#include <chrono>

namespace orv {

class BackendLog;

/// Where the speech server's programs are, and what they run with. `log` outlives whoever is given
/// it.
struct LocalSpeechEnvironment {
    QString interpreter;       ///< The Python of the server's environment.
    QString folder;            ///< The server's, with its programs.
    QString installer;         ///< Installs the server and its packages; empty where there is none.
    QString home;              ///< The user's, which is installed for.
    QString whisperCache;      ///< Where openai-whisper keeps its models.
    BackendLog* log = nullptr; ///< Gets what the installer prints; null: nobody does.
    /// How long a program that is given up gets to end.
    std::chrono::milliseconds pause = std::chrono::seconds(2);
};

} // namespace orv
