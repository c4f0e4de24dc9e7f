#pragma once

#include <QString>

#include <functional>

namespace orv {

/// What to ask for: one existing file, no folder.
struct FileChoice {
    QString title;      ///< Of the panel.
    QString suffix;     ///< Only files that end in "." and this are offered, in any case.
    QString startsWith; ///< A file whose folder is shown first; may be empty.
};

/// Lets the user choose a file. Main thread only.
class FileChooser {
  public:
    virtual ~FileChooser() = default;

    /// Shows a panel and returns at once. `chosen` is called later with the file's absolute path,
    /// once, or not at all when the user cancels. While a panel is open, asking again only brings
    /// it to the front.
    virtual void chooseFile(const FileChoice& choice,
                            std::function<void(const QString& path)> chosen) = 0;
};

} // namespace orv
