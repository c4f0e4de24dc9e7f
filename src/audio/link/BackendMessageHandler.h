#pragma once

#include "BackendLink.h"
#include "PostTarget.h"

#include <QByteArray>
#include <QString>

namespace orv {

/// The handler of what comes over a link: parses each message on the link thread and tells the
/// link's listener of it on the owner's thread. A value, which is copied to the link thread and
/// called there.
class BackendMessageHandler {
  public:
    /// `owner` posts to the listener's thread as long as the link exists, and no longer than the
    /// listener does.
    BackendMessageHandler(BackendLink::Listener& listener, PostTarget::Handle owner);

    /// Parses one downstream message and dispatches it by its kind. One that is to be ignored is
    /// told to nobody.
    void handleTranslation(const QByteArray& utf8) const;

    /// Tells that nothing follows.
    void handleFailure(const QString& error) const;

  private:
    BackendLink::Listener* listener_;
    PostTarget::Handle owner_;
};

} // namespace orv
