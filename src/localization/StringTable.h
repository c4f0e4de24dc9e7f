#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <initializer_list>
#include <optional>
#include <span>

namespace orv {

/// One line of a table file.
struct TextEntry {
    QStringView key;
    QStringView text;
};

// The table files, one for each language of the user interface. All hold the same keys in the same
// order. A key that ends in ".linux" is the variant of the key before it for this platform, where
// the text names something that only the platform of origin has.
std::span<const TextEntry> germanTexts();
std::span<const TextEntry> englishTexts();
std::span<const TextEntry> spanishTexts();
std::span<const TextEntry> frenchTexts();
std::span<const TextEntry> italianTexts();

// What the speech server tells, in the same way: "backend." and its code, with the code's
// parameters in braces. A first line says what is the matter, further ones what to do.
std::span<const TextEntry> germanBackendTexts();
std::span<const TextEntry> englishBackendTexts();
std::span<const TextEntry> spanishBackendTexts();
std::span<const TextEntry> frenchBackendTexts();
std::span<const TextEntry> italianBackendTexts();

// What is wrong with a cloud service, likewise: its code, which begins with "service.".
std::span<const TextEntry> germanServiceTexts();
std::span<const TextEntry> englishServiceTexts();
std::span<const TextEntry> spanishServiceTexts();
std::span<const TextEntry> frenchServiceTexts();
std::span<const TextEntry> italianServiceTexts();

/// The texts of one language, in the order of its table file and quick to look up. Immutable.
class StringTable {
  public:
    /// The table of several files, one after the other. A key that occurs twice keeps its first
    /// text.
    explicit StringTable(std::initializer_list<std::span<const TextEntry>> files);

    /// All keys in the table's order, doubles included.
    const QStringList& keys() const { return keys_; }

    /// The text of `key`, if the table holds it.
    std::optional<QString> text(const QString& key) const;

  private:
    void add(std::span<const TextEntry> entries);

    QStringList keys_;
    QHash<QString, QString> texts_;
};

} // namespace orv
