#pragma once

#include <QString>

#include <array>
#include <optional>

namespace orv {

/// A language of the user interface. A plain value; the order of the cases is the order of the
/// picker and of the tables.
class UILanguage {
  public:
    enum Case { German, English, Spanish, French, Italian };

    // Implicit: a case is a language.
    constexpr UILanguage(Case value) // NOLINT(google-explicit-constructor)
        : case_(value) {}

    /// The language whose raw value is `code`; none for every other text.
    static std::optional<UILanguage> fromRawValue(const QString& code);

    /// All languages in their order.
    static constexpr std::array<Case, 5> allCases() {
        return {German, English, Spanish, French, Italian};
    }

    /// The two-letter code, which is also what the store holds.
    QString rawValue() const;

    /// For pickers: the flag, one blank, the language's own name.
    QString label() const;

    constexpr operator Case() const { return case_; } // NOLINT(google-explicit-constructor)

  private:
    Case case_;
};

} // namespace orv
