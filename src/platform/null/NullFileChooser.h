#pragma once

#include "FileChooser.h"

namespace orv {

/// A desktop on which no file can be chosen: as if the user cancelled each time.
class NullFileChooser : public FileChooser {
  public:
    void chooseFile(const FileChoice& /*choice*/, Answer<const QString&> /*chosen*/) override {}
};

} // namespace orv
