#include "NearRecognisers.h"

#include "ThreadChecks.h"

using namespace Qt::StringLiterals;

namespace orv {

NearRecognisers::NearRecognisers(const LocalSpeechEnvironment& environment, QObject* parent)
    : QObject(parent)
    , tool_(environment) {
    connect(&tool_, &ServerTool::ended, this, &NearRecognisers::ended);
}

void NearRecognisers::refresh() {
    ORV_ON_MAIN();
    if (!isAtWork_) {
        problems_.clear();
        run({u"list"_s});
    }
}

void NearRecognisers::accept(const KnownRecogniser& recogniser) {
    ORV_ON_MAIN();
    QStringList arguments = {u"accept"_s, recogniser.kind, recogniser.address};
    if (!recogniser.model.isEmpty()) {
        arguments.append(recogniser.model);
    }
    if (!isAtWork_) {
        problems_.clear();
        run(arguments);
    }
}

void NearRecognisers::forget(const KnownRecogniser& recogniser) {
    ORV_ON_MAIN();
    if (!isAtWork_) {
        problems_.clear();
        run({u"forget"_s, recogniser.name});
    }
}

void NearRecognisers::run(const QStringList& arguments) {
    isAtWork_ = true;
    isLooking_ = arguments.constFirst() == u"list";
    tool_.run(u"recognisers.py"_s, arguments);
    Q_EMIT changed();
}

void NearRecognisers::ended(int status, const QByteArray& printed) {
    const RecogniserList told = parseRecogniserList(printed);
    if (!isLooking_) {
        // What there is now tells whether it has worked, and why not.
        problems_ = told.notices;
        run({u"list"_s});
        return;
    }
    isAtWork_ = false;
    list_ = status == 0 ? std::optional(told) : std::nullopt;
    Q_EMIT changed();
}

} // namespace orv
