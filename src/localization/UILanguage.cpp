#include "UILanguage.h"

using namespace Qt::StringLiterals;

namespace orv {

std::optional<UILanguage> UILanguage::fromRawValue(const QString& code) {
    for (const UILanguage language : allCases()) {
        if (language.rawValue() == code) {
            return language;
        }
    }
    return {};
}

QString UILanguage::rawValue() const {
    switch (case_) {
    case German:
        return u"de"_s;
    case English:
        return u"en"_s;
    case Spanish:
        return u"es"_s;
    case French:
        return u"fr"_s;
    case Italian:
        return u"it"_s;
    }
    Q_UNREACHABLE();
}

QString UILanguage::label() const {
    switch (case_) {
    case German:
        return u"🇩🇪 Deutsch"_s;
    case English:
        return u"🇬🇧 English"_s;
    case Spanish:
        return u"🇪🇸 Español"_s;
    case French:
        return u"🇫🇷 Français"_s;
    case Italian:
        return u"🇮🇹 Italiano"_s;
    }
    Q_UNREACHABLE();
}

} // namespace orv
