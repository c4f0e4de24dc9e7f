#pragma once

#include <QString>

namespace orv::test {

/// The table of docs/settings.md: a row for each setting that a person can make, in the order of
/// the places where it is made.
QString settingsTable();

/// `document` with `settingsTable()` in the place of its own table.
QString withSettingsTable(const QString& document);

} // namespace orv::test
