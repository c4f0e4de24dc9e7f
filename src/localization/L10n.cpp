#include "L10n.h"

#include "ThreadChecks.h"

#include <QLocale>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

#ifdef Q_OS_LINUX
const QString platformSuffix = u".linux"_s;
#else
const QString platformSuffix;
#endif

std::optional<QString> lookUp(UILanguage language, const QString& key) {
    return L10n::strings().at(language).text(key);
}

} // namespace

QString languageCode(const QString& localeName) {
    qsizetype length = 0;
    while (length < localeName.size() && localeName.at(length).isLetter()) {
        ++length;
    }
    const QString code = localeName.left(length).toLower();
    return code.isEmpty() || code == u"c" || code == u"posix" ? u"en"_s : code;
}

QString systemLanguageCode() {
    return languageCode(QLocale::system().uiLanguages().value(0));
}

L10n::L10n(Setting<QString>& choice, const QString& systemLanguage, QObject* parent)
    : QObject(parent)
    , choice_(choice)
    , systemLanguage_(systemLanguage)
    , current_(chosenLanguage()) {
    choice_.watch(this, [this](const QString& /*code*/) { followChoice(); });
}

UILanguage L10n::chosenLanguage() const {
    if (const auto chosen = UILanguage::fromRawValue(choice_.get())) {
        return *chosen;
    }
    return UILanguage::fromRawValue(systemLanguage_).value_or(UILanguage::English);
}

void L10n::followChoice() {
    ORV_ON_MAIN();
    const UILanguage language = chosenLanguage();
    if (std::exchange(current_, language) != language) {
        Q_EMIT currentChanged();
    }
}

L10n& L10n::shared() {
    return SharedInstance<L10n>::get();
}

const std::map<UILanguage::Case, StringTable>& L10n::strings() {
    static const std::map<UILanguage::Case, StringTable> tables = {
        {UILanguage::German,
         StringTable({germanTexts(), germanBackendTexts(), germanServiceTexts()})},
        {UILanguage::English,
         StringTable({englishTexts(), englishBackendTexts(), englishServiceTexts()})},
        {UILanguage::Spanish,
         StringTable({spanishTexts(), spanishBackendTexts(), spanishServiceTexts()})},
        {UILanguage::French,
         StringTable({frenchTexts(), frenchBackendTexts(), frenchServiceTexts()})},
        {UILanguage::Italian,
         StringTable({italianTexts(), italianBackendTexts(), italianServiceTexts()})},
    };
    return tables;
}

QString L10n::s(const QString& key) const {
    ORV_ON_MAIN();
    if (const auto text = lookUp(current_, key)) {
        return *text;
    }
    return lookUp(UILanguage::English, key).value_or(key);
}

QString L10n::platformText(const QString& key) const {
    ORV_ON_MAIN();
    const QString variant = key + platformSuffix;
    const QString text = s(variant);
    return text == variant ? s(key) : text;
}

void L10n::setCurrent(UILanguage language) {
    ORV_ON_MAIN();
    choice_.set(language.rawValue());
}

} // namespace orv
