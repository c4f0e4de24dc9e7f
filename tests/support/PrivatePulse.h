#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <chrono>
#include <memory>
#include <sys/types.h>
#include <vector>

namespace orv::test {

/// A running program, killed with the object if it has not ended by then.
///
/// Not a `QProcess`: the thread sanitizer loses sight of the locks of a thread that has started
/// one.
class Program {
  public:
    /// `output` is the file that receives what it prints.
    Program(const QString& name, const QStringList& arguments,
            const QProcessEnvironment& environment,
            const QString& output = QStringLiteral("/dev/null"));
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits for the end. The exit code; negative when it did not exit by itself.
    int wait();

  private:
    pid_t process_ = -1;
};

/// A sound server of the test's own: no hardware, a private folder and socket, nobody's settings.
/// It has what `modules` load, and ends with the object.
class PrivatePulse {
  public:
    /// `modules` are loaded in order, e.g. "module-null-sink sink_name=speakers". The default rate
    /// is 44.1 kHz, the alternate one 48 kHz.
    explicit PrivatePulse(QStringList modules = {});
    ~PrivatePulse();
    PrivatePulse(const PrivatePulse&) = delete;
    PrivatePulse& operator=(const PrivatePulse&) = delete;

    /// The address for clients.
    QByteArray server() const;

    /// Starts the daemon and waits until it answers. Fails the test when it does not.
    void start();
    /// Ends the daemon the hard way.
    void kill();

    /// Loads a module into the running daemon; returns its number.
    QString load(const QString& module);
    /// Unloads the module with this number, or every one of this name, and waits until it is gone.
    void unload(const QString& module);
    /// Runs `pactl`; returns what it printed, trimmed. Fails the test when it fails.
    QString pactl(const QStringList& arguments) const;

    QString folder() const { return folder_.path(); }

    const QProcessEnvironment& environment() const { return environment_; }

  private:
    bool answers() const;
    bool hasModule(const QString& module) const;

    const QTemporaryDir folder_;
    const QStringList modules_;
    QProcessEnvironment environment_;
    std::unique_ptr<Program> daemon_;
};

/// A program that plays 16-bit mono samples at 48 kHz to a `PrivatePulse`, over and over, until the
/// object is destroyed.
class PulsePlayer {
  public:
    /// `application` becomes the identifier and the name of the application; `sink` may be empty.
    /// `ahead` is how much sound is handed over before it is heard: so long may the player be late
    /// without a gap.
    PulsePlayer(const PrivatePulse& pulse, const std::vector<qint16>& samples,
                const QString& application, const QString& sink = {},
                std::chrono::milliseconds ahead = std::chrono::milliseconds(60));
    ~PulsePlayer();
    PulsePlayer(const PulsePlayer&) = delete;
    PulsePlayer& operator=(const PulsePlayer&) = delete;

  private:
    std::unique_ptr<Program> process_;
};

} // namespace orv::test
