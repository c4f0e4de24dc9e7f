#pragma once

#include <QObject>
#include <QString>
#include <QTranslator>

namespace orv {

class L10n;

/// The translation of the texts that come with Qt (file dialog, the menus of text fields) into the
/// language of the interface, now and whenever it changes. Where Qt's translations are not
/// installed those texts stay English. Main thread only; they are Qt's own again once the object is
/// gone.
class ToolkitTexts : public QObject {
    Q_OBJECT

  public:
    /// `folder` holds Qt's `qtbase_<language>.qm`. `l10n` outlives the object.
    explicit ToolkitTexts(const L10n& l10n, QString folder = installedFolder());

    /// Where this Qt's translations are installed.
    static QString installedFolder();

  private:
    void follow();

    const L10n& l10n_;
    const QString folder_;
    QTranslator translator_;
};

} // namespace orv
