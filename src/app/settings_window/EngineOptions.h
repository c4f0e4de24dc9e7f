#pragma once

#include <QString>

#include <span>

namespace orv {

/// A speech engine as the settings offer it.
struct EngineOption {
    QString id;        ///< The value stored as the selected engine.
    QString name;      ///< A product's name, the same in every language; empty with a `nameKey`.
    QString nameKey;   ///< Key of the name, where it is translated.
    QString detailKey; ///< Key of one line about the engine.
    QString icon;      ///< Name of a picture of the settings window.
};

/// The engines in the order in which they are offered.
std::span<const EngineOption> engineOptions();

/// One line on who recognises, who translates and whether the backend is needed. German, shown as
/// it stands in every language of the interface; empty for an unknown engine.
QString engineInfoText(const QString& engineId);

/// Who translates what this engine has recognised: names of products.
QString translatorName(const QString& engineId);

} // namespace orv
