#include "ToolkitTexts.h"

#include "L10n.h"
#include "ThreadChecks.h"

#include <QCoreApplication>
#include <QLibraryInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

ToolkitTexts::ToolkitTexts(const L10n& l10n, QString folder)
    : l10n_(l10n)
    , folder_(std::move(folder)) {
    connect(&l10n_, &L10n::currentChanged, this, &ToolkitTexts::follow);
    follow();
}

QString ToolkitTexts::installedFolder() {
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
}

void ToolkitTexts::follow() {
    ORV_ON_MAIN();
    QCoreApplication::removeTranslator(&translator_);
    if (translator_.load(u"qtbase_"_s + l10n_.current().rawValue(), folder_)) {
        QCoreApplication::installTranslator(&translator_);
    }
}

} // namespace orv
