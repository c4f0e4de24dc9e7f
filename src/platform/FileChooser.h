#pragma once

#include "Answer.h"

#include <QString>

namespace orv {

/// What to ask for: one existing file, no folder.
struct FileChoice {
    QString title;      ///< Of the panel.
    QString suffix;     ///< Only files that end in "." and this are offered, in any case.
    QString startsWith; ///< A file whose folder is shown first; may be empty.
};

/// The desktop's panel in which the user chooses a file. Main thread only.
class FileChooser {
  public:
    virtual ~FileChooser() = default;

    /// Shows a panel and returns at once. The answer is the file's absolute path; there is none
    /// when the user cancels. While a panel is open, asking again only brings it to the front.
    virtual void chooseFile(const FileChoice& choice, Answer<const QString&> chosen) = 0;
};

} // namespace orv
