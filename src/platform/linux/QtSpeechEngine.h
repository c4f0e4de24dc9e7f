#pragma once

#include "SpeechEngine.h"

#include <QStringList>
#include <QTextToSpeech>

#include <memory>

namespace orv {

/// Speech by one of the engines of Qt's text-to-speech module.
class QtSpeechEngine : public SpeechEngine {
  public:
    /// The first engine of `names` that is installed, can be reached and knows a language; null
    /// when there is none. Reaching one may start its service, which takes a second or two.
    static std::unique_ptr<SpeechEngine> create(const QStringList& names);

    explicit QtSpeechEngine(const QString& name)
        : speech_(std::make_unique<QTextToSpeech>(name)) {}

    ~QtSpeechEngine() override;

    QtSpeechEngine(const QtSpeechEngine&) = delete;
    QtSpeechEngine& operator=(const QtSpeechEngine&) = delete;

    bool say(const QString& text) override;
    void stop() override;

  private:
    bool works() const;

    std::unique_ptr<QTextToSpeech> speech_;
};

/// The installed engines in the order of preference: services that follow the user's choice of
/// voice before those that come with a voice of their own.
QStringList preferredSpeechEngines(const QStringList& installed);

} // namespace orv
