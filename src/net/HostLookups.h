#pragma once

#include "PostTarget.h"

#include <QHostAddress>
#include <QList>
#include <QString>

#include <deque>
#include <functional>
#include <vector>

namespace orv {

/// What a host name stands for, the system's preference first; or why that is unknown.
struct HostAnswer {
    QList<QHostAddress> addresses;
    QString error; ///< Empty when there are addresses.
};

/// Asks for a host name and waits for the answer, as long as the system takes. Called on threads
/// that nobody waits for, several at once.
using LookUpHost = std::function<HostAnswer(const QString& host)>;

/// The system's own way: files, DNS and whatever else it is set up to ask.
HostAnswer systemLookUp(const QString& host);

/// Host names made addresses without anybody waiting. Lives on the main thread.
///
/// Questions are asked anew each time; only those for a name that is being asked for just then
/// share its answer. The system cannot be told to give a question up, so each is asked on a
/// thread of its own that nobody joins: a name server that is silent must not hold up the end of
/// the program. At most `maximumThreads` are under way, whatever comes; a further name is refused,
/// and so is one for which the system has no thread.
/// At most `maximumWaiting` questions wait; of more, the oldest are forgotten, unanswered.
class HostLookups {
  public:
    using Done = std::function<void(const HostAnswer& answer)>;

    static constexpr std::size_t maximumThreads = 4;
    static constexpr std::size_t maximumWaiting = 32;

    explicit HostLookups(LookUpHost lookUp = systemLookUp);

    /// Forgets every question.
    ~HostLookups() = default;

    HostLookups(const HostLookups&) = delete;
    HostLookups& operator=(const HostLookups&) = delete;

    /// Answers by calling `done` on this thread: within the call for a numeric address or a
    /// refusal, later for a name.
    void resolve(const QString& host, Done done);

  private:
    struct Question {
        QString host;
        Done done;
    };

    bool startThread(const QString& host);
    void answered(const QString& host, const HostAnswer& answer);

    LookUpHost lookUp_;
    std::deque<Question> waiting_;
    QStringList underWay_; ///< The names that threads are asking for.
    PostTarget home_;      ///< Goes first, so that no answer comes to an object half destroyed.
};

} // namespace orv
