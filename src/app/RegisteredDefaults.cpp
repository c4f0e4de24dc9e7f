#include "RegisteredDefaults.h"

#include "DefaultsStore.h"

using namespace Qt::StringLiterals;

namespace orv {

void registerDefaultValues(DefaultsStore& store) {
    store.registerDefaults({{u"showOverlay"_s, true},
                            {u"speakTranslations"_s, false},
                            {u"sourceLang"_s, u"auto"_s},
                            {u"targetLang"_s, u"de"_s},
                            {u"audioSourceType"_s, 0},
                            {u"selectedInputDevice"_s, QString(u""_s)},
                            {u"selectedAppBundleId"_s, QString(u""_s)},
                            {u"audioGain"_s, 1.0},
                            {u"autoGain"_s, true},
                            {u"autoStartBackend"_s, false},
                            {u"autoStopBackend"_s, true}});
}

} // namespace orv
