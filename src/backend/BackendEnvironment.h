#pragma once

#include "ChildProcess.h"
#include "TextLookup.h"

#include <QString>

#include <chrono>
#include <functional>

namespace orv {

class BackendLog;
class Dialogs;
class PortProbe;

/// The supervisor's fixed times.
struct BackendTimings {
    std::chrono::milliseconds modelLoading{
        6000};                                   ///< From the launch to the first look at the port.
    std::chrono::milliseconds portRecheck{2000}; ///< Between looks while the port is closed.
    std::chrono::milliseconds liveness{10000};   ///< Between looks at a running backend's port.
    std::chrono::milliseconds stopPause{1000};   ///< Between the steps of stopping.
    /// From being told that the backend may be gone to a look at the port.
    std::chrono::milliseconds doubt{500};
};

/// What the supervisor is given. The references must outlive it; the functions are called on the
/// main thread.
struct BackendEnvironment {
    QString interpreter; ///< Absolute path of the Python interpreter.
    QString script;      ///< Absolute path of the server's program.
    PortProbe& probe;
    Dialogs& dialogs;
    TextLookup text;
    std::function<bool()> networkAccess; ///< Whether others may reach the backend.

    /// Whether the backend may go on running should the program be killed. A program that ends in
    /// order says so with `leaveRunning` instead.
    std::function<bool()> mayOutlive = [] { return false; };

    /// Absolute path of the program that installs the backend; empty when there is none to offer.
    QString installer = {};

    BackendTimings timings = {};
    quint16 port = 8765;

    /// The user's home directory, told to what is launched; empty: as in the program's own
    /// environment.
    QString home = {};

    /// Gets what the server and its installer print; null: they are not recorded.
    BackendLog* log = nullptr;

    /// Looks for interpreter and program, and says in the log where and what is missing.
    bool isInstalled() const;

    /// How the server is launched.
    ChildCommand serverCommand() const;

    /// How it is installed.
    ChildCommand installerCommand() const;
};

} // namespace orv
