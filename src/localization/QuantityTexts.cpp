#include "QuantityTexts.h"

#include <QLocale>

namespace orv {

namespace {

constexpr qint64 million = 1000000;

bool spacesPercent(UILanguage language) {
    return language != UILanguage::English && language != UILanguage::Italian;
}

} // namespace

QString percentText(UILanguage language, int percent) {
    const QLocale locale(language.rawValue());
    const QString space = spacesPercent(language) ? QString(QChar::Nbsp) : QString();
    return locale.toString(percent) + space + locale.percent();
}

QString fileSizeText(UILanguage language, int megabytes) {
    const int decimals = megabytes < 1000 ? 0 : 1;
    return QLocale(language.rawValue())
        .formattedDataSize(megabytes * million, decimals, QLocale::DataSizeSIFormat)
        .replace(u' ', QChar::Nbsp);
}

} // namespace orv
