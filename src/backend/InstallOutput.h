#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace orv {

/// What an installation prints, put together from the pieces in which it arrives.
class InstallOutput {
  public:
    /// Takes in a piece of output; returns the lines that are whole now, without line feeds and
    /// without the marks that the installer's lines begin with ("==> ", "error: ").
    QStringList take(const QByteArray& bytes);

    /// Where the installation is, "2/3", as its lines have told ("[2/3] ..."); empty before.
    QString step() const { return step_; }

    /// How much of the current step's download is there, of 100, as lines like "37 % ..." have
    /// told; nothing before, and when the next step begins.
    std::optional<int> percent() const { return percent_; }

    /// The last line with something on it; empty when there was none.
    QString lastLine() const;

  private:
    void takeLine(const QString& line);

    QByteArray unfinished_;
    QString step_;
    std::optional<int> percent_;
    QString lastLine_;
};

} // namespace orv
