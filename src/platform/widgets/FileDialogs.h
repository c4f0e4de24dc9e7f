#pragma once

#include "FileChooser.h"

#include <QPointer>

class QFileDialog;

namespace orv {

/// The desktop's file dialog. One that is still open when the object is destroyed closes without
/// an answer.
class FileDialogs : public FileChooser {
  public:
    FileDialogs() = default;
    ~FileDialogs() override;
    FileDialogs(const FileDialogs&) = delete;
    FileDialogs& operator=(const FileDialogs&) = delete;

    void chooseFile(const FileChoice& choice, Answer<const QString&> chosen) override;

  private:
    QPointer<QFileDialog> open_;
};

} // namespace orv
