#include "ResultHub.h"

#include "Output.h"

#include <QThread>

namespace orv {

void ResultHub::add(Output& output) {
    outputs_.push_back(&output);
}

void ResultHub::ShowTranslation(const Result& result) {
    Q_ASSERT(QThread::currentThread() == thread());
    for (Output* output : outputs_) {
        output->take(result);
    }
}

} // namespace orv
