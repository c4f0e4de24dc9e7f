#pragma once

#include "LocalSpeechEnvironment.h"
#include "RecogniserList.h"
#include "ServerTool.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace orv {

/// The recognisers that run on this computer already, or that the user has named: looks for them,
/// and writes into the speech server's file who is to serve. None of them hears anything before.
/// Main thread only.
class NearRecognisers : public QObject {
    Q_OBJECT

  public:
    explicit NearRecognisers(const LocalSpeechEnvironment& environment, QObject* parent = nullptr);

    /// What was found the last time; nothing before, or where there is no server to ask.
    const std::optional<RecogniserList>& list() const { return list_; }

    /// Whether it is being looked for, or written.
    bool isAtWork() const { return isAtWork_; }

    /// What the latest change has failed with; empty if it has not.
    const QList<StatusMessage>& problems() const { return problems_; }

    /// Looks, in the background.
    void refresh();

    /// From now on this one serves.
    void accept(const KnownRecogniser& recogniser);

    /// It serves no longer.
    void forget(const KnownRecogniser& recogniser);

  Q_SIGNALS:
    void changed();

  private:
    void run(const QStringList& arguments);
    void ended(int status, const QByteArray& printed);

    std::optional<RecogniserList> list_;
    QList<StatusMessage> problems_;
    bool isAtWork_ = false;
    bool isLooking_ = false;
    ServerTool tool_;
};

} // namespace orv
