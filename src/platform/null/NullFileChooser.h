#pragma once

#include "FileChooser.h"

namespace orv {

/// A desktop on which no file can be chosen: as if the user cancelled each time.
class NullFileChooser : public FileChooser {
  public:
    void chooseFile(const FileChoice& /*choice*/,
                    std::function<void(const QString& path)> /*chosen*/) override {}
};

} // namespace orv
