#include "ServiceLocales.h"

using namespace Qt::StringLiterals;

namespace orv {

ServiceLocales commonLocales() {
    return {{u"de"_s, u"de-DE"_s},  {u"en"_s, u"en-US"_s}, {u"es"_s, u"es-ES"_s},
            {u"fr"_s, u"fr-FR"_s},  {u"it"_s, u"it-IT"_s}, {u"pt"_s, u"pt-PT"_s},
            {u"nl"_s, u"nl-NL"_s},  {u"pl"_s, u"pl-PL"_s}, {u"ru"_s, u"ru-RU"_s},
            {u"zh"_s, u"zh-CN"_s},  {u"ja"_s, u"ja-JP"_s}, {u"ko"_s, u"ko-KR"_s},
            {u"ar"_s, u"ar-SA"_s},  {u"hi"_s, u"hi-IN"_s}, {u"tr"_s, u"tr-TR"_s},
            {u"auto"_s, u"de-DE"_s}};
}

QString localeFrom(const ServiceLocales& locales, const QString& code) {
    const auto found = locales.constFind(code);
    return found != locales.cend() ? *found : code + u"-"_s + code.toUpper();
}

bool isLanguageOf(const QString& code, const QString& locale) {
    return QStringView(locale).left(2) == code;
}

} // namespace orv
