#pragma once

#include "PortProbe.h"
#include "PostTarget.h"
#include "SerialQueue.h"

#include <memory>

namespace orv {

/// A port probe whose looks hold nobody up. Even the kernel's own tables take tens of milliseconds
/// to read on a machine with tens of thousands of connections, the closed ones of the last minute
/// among them. Belongs to the thread that it is made on.
class ThreadedPortProbe : public PortProbe {
  public:
    /// `probe` is asked on either thread, at times on both, and so must keep nothing between looks.
    explicit ThreadedPortProbe(std::unique_ptr<PortProbe> probe);

    /// Waits for a look that is under way.
    ~ThreadedPortProbe() override;

    /// Looks on the calling thread.
    std::optional<bool> isPortInUse(quint16 port) override;

    void look(quint16 port, const std::function<void(std::optional<bool>)>& answered) override;

  private:
    const std::unique_ptr<PortProbe> probe_;
    const PostTarget home_;
    SerialQueue elsewhere_; ///< Ends before what its jobs use.
};

} // namespace orv
