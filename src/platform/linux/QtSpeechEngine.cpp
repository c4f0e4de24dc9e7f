#include "QtSpeechEngine.h"

#include "ThreadedSpeech.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

std::unique_ptr<SpeechEngine> QtSpeechEngine::create(const QStringList& names) {
    for (const QString& name : names) {
        auto engine = std::make_unique<QtSpeechEngine>(name);
        if (engine->works() && !engine->speech_->availableLocales().isEmpty()) {
            return engine;
        }
    }
    return nullptr;
}

QtSpeechEngine::~QtSpeechEngine() {
#ifdef ORVANE_TSAN
    // libspeechd ends its reading thread by cancelling it wherever it is. Inside an allocation,
    // that is more than the thread sanitizer survives: the program would hang instead of ending.
    static_cast<void>(speech_.release());
#endif
}

bool QtSpeechEngine::works() const {
    return speech_->state() != QTextToSpeech::Error;
}

bool QtSpeechEngine::say(const QString& text) {
    speech_->say(text);
    return works();
}

void QtSpeechEngine::stop() {
    speech_->stop(QTextToSpeech::BoundaryHint::Immediate);
}

QStringList preferredSpeechEngines(const QStringList& installed) {
    // The module's test double speaks without a sound.
    QStringList names = installed;
    names.removeAll(u"mock"_s);
    const auto rank = [](const QString& name) { return name == "flite"_L1 ? 1 : 0; };
    std::stable_sort(names.begin(), names.end(), [rank](const QString& one, const QString& other) {
        return rank(one) < rank(other);
    });
    return names;
}

std::unique_ptr<SpeechSynthesizer> createSystemSpeechSynthesizer() {
    return std::make_unique<ThreadedSpeech>([] {
        return QtSpeechEngine::create(preferredSpeechEngines(QTextToSpeech::availableEngines()));
    });
}

} // namespace orv
